// The links of an Ogg file: files joined one after another. libsndfile decodes the first link only.
#pragma once

#include "platform/audiofile/byte_reader.h"
#include "platform/audiofile/file_view.h"

#include <vector>

namespace kvxplatform::audiofile {

struct OggLinks {
    /// Bounds the time to open a file: finding the length of a link takes a decoder.
    static constexpr std::size_t mostLinks = 1024;

    std::vector<std::vector<Span>> links; ///< at least one; each link's spans for the decoder
    UInt32 omitted = 0;                   ///< links after the 1,024th
};

/// Find the links at and after an offset. libsndfile does not decode FLAC in Ogg pages, so the spans of such
/// a link are the FLAC file inside the pages. Throws std::bad_alloc. [any]
OggLinks oggLinks(ByteReader& file, SInt64 offset);

} // namespace kvxplatform::audiofile
