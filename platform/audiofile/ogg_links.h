// The links of an Ogg file: files that were joined, one after the other. libsndfile decodes the first only.
#pragma once

#include "platform/audiofile/byte_reader.h"
#include "platform/audiofile/file_view.h"

#include <vector>

namespace kvxplatform::audiofile {

struct OggLinks {
    /// Bounds the time to open a file: a decoder is opened for each link, to find its length.
    static constexpr std::size_t mostLinks = 1024;

    std::vector<std::vector<Span>> links; ///< at least one: the spans that libsndfile is to see of each
    UInt32 omitted = 0;                   ///< links after the first 1,024
};

/// The links from an offset on. libsndfile does not decode FLAC in Ogg pages, so such a link is shown as the
/// FLAC file that its pages carry. Throws std::bad_alloc.
OggLinks oggLinks(ByteReader& file, SInt64 offset);

} // namespace kvxplatform::audiofile
