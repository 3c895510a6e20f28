// Some of libsndfile's decoders print warnings, and no option turns them off. While a thread decodes, the C
// library's stdout and stderr are filters: they drop the decoding threads' output and pass on the rest.
#pragma once

namespace kvxplatform::audiofile {

/// While one of these objects lives, output of its thread is dropped. Nests.
/// [any]
class SilencedStreams {
public:
    SilencedStreams();
    ~SilencedStreams();
    SilencedStreams(const SilencedStreams&) = delete;
    SilencedStreams& operator=(const SilencedStreams&) = delete;
};

} // namespace kvxplatform::audiofile
