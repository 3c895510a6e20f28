// Some libraries print warnings, and no option turns the warnings off: decoders of libsndfile, and the
// database of JACK. While any thread is silenced, the C library's stdout and stderr are filter streams, which
// drop the output of silenced threads and pass on the output of all other threads.
#pragma once

namespace kvxplatform {

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

} // namespace kvxplatform
