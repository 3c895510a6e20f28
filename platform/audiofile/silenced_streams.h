// Some of libsndfile's decoders print warnings, and no option turns the warnings off. While any thread
// decodes, the C library's stdout and stderr are filter streams, which drop the output of decoding threads
// and pass on the output of all other threads.
#pragma once

namespace kvxplatform::audiofile {

/// Drops what its thread prints to stdout and stderr during the object's lifetime. One thread may have
/// several objects.
/// [any]
class SilencedStreams {
public:
    SilencedStreams();
    ~SilencedStreams();
    SilencedStreams(const SilencedStreams&) = delete;
    SilencedStreams& operator=(const SilencedStreams&) = delete;
};

} // namespace kvxplatform::audiofile
