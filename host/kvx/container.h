// Whether a sound file is all there, as its container promises. Decoders play what is left of a file that was
// cut and say nothing, so this looks at the container itself.
#pragma once

#include <string>

namespace kvx {

/// True when the container of the file at `path` states more sound than the file holds. Known are the chunked
/// formats (WAV, RF64, W64, AIFF, 8SVX, CAF), AU, Ogg, and MP3 with a head frame; of other files nothing is
/// known, which is false. A length that stands for "unknown", as writers leave it that could not go back,
/// promises nothing.
bool isCutShort(const std::string& path);

} // namespace kvx
