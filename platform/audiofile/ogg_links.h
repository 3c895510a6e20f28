// Finds the links of an Ogg file. A link is one of several Ogg files that were joined one after another.
// libsndfile decodes the first link only.
#pragma once

#include "platform/audiofile/byte_reader.h"
#include "platform/audiofile/file_view.h"

#include <vector>

namespace kvxplatform::audiofile {

struct OggLinks {
    /// Largest number of links that are decoded. It bounds the time to open a file, because a decoder must
    /// find the length of each link.
    static constexpr std::size_t mostLinks = 1024;

    std::vector<std::vector<Span>> links; ///< spans of each link, for a decoder; at least one link
    UInt32 omitted = 0;                   ///< number of links after the 1,024th
};

/// Find the links at and after an offset. The spans of a FLAC link cover the FLAC data inside the pages,
/// because libsndfile does not decode FLAC in Ogg pages. Throws std::bad_alloc.
/// [any]
OggLinks oggLinks(ByteReader& file, SInt64 offset);

} // namespace kvxplatform::audiofile
