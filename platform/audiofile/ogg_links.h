// The links of an Ogg file: files that were joined, one after the other. libsndfile decodes the first only.
#pragma once

#include "platform/audiofile/byte_reader.h"
#include "platform/audiofile/file_view.h"

#include <vector>

namespace kvxplatform::audiofile {

/// The links from an offset on, at least one, as the spans that libsndfile is to see of each. It does not
/// decode FLAC in Ogg pages, so such a link is shown as the FLAC file that its pages carry. At most 4,096
/// links, the last of which then reaches to the end. Throws std::bad_alloc.
std::vector<std::vector<Span>> oggLinks(ByteReader& file, SInt64 offset);

} // namespace kvxplatform::audiofile
