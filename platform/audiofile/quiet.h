// Some of libsndfile's decoders print their doubts about a file, and offer no way to ask them not to. While
// somebody decodes, the C library's stdout and stderr are streams of ours, which drop what the decoding
// threads write and pass on what all others do.
#pragma once

namespace kvxplatform::audiofile {

/// Nothing that this thread prints is seen while one of these lives. Nests. Thread [any].
class Quiet {
public:
    Quiet();
    ~Quiet();
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;
};

} // namespace kvxplatform::audiofile
