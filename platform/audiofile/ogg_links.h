// The links of an Ogg file: files that were joined, one after the other. libsndfile decodes the first only.
#pragma once

#include "platform/audiofile/byte_reader.h"
#include "platform/audiofile/file_view.h"

#include <vector>

namespace kvxplatform::audiofile {

/// The spans of all links from an offset on, at least one; at most 4,096, the last of which then reaches to
/// the end. Throws std::bad_alloc.
std::vector<Span> oggLinks(ByteReader& file, SInt64 offset);

} // namespace kvxplatform::audiofile
