// libsndfile's MPEG decoder writes its doubts about a file to the terminal, and offers no way to ask it not
// to. While somebody decodes, the C library's stderr is a stream of ours, which drops what the decoding
// threads write and passes on what all others do.
#pragma once

namespace kvxplatform::audiofile {

/// Nothing that this thread prints to stderr is seen while one of these lives. Nests. Thread [any].
class Quiet {
public:
    Quiet();
    ~Quiet();
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;
};

} // namespace kvxplatform::audiofile
