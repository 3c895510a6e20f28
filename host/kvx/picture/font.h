// The font of the pictures, which the build copies into the program.
#pragma once

namespace kvx {

/// The bytes of a TrueType font.
/// [any]
const unsigned char* fontBytes();

} // namespace kvx
