#include "host/kvx/files/wave_header.h"

#include <algorithm>
#include <iterator>

namespace kvx {
namespace {

constexpr std::uint32_t integerTag = 1, floatTag = 3, extensibleTag = 0xFFFE;

// The bytes of the sub-format identifier after its format tag.
constexpr unsigned char subFormatTail[] = {0, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71};

// Speaker masks, indexed by the number of channels: left, right, centre, low frequencies, then back and side
// speakers. A mask of 0 assigns no speakers.
constexpr std::uint32_t speakerMasks[] = {0, 0x4, 0x3, 0x7, 0x33, 0x37, 0x3F, 0x13F, 0x63F};

void append(std::string& bytes, std::uint64_t value, std::size_t width)
{
    constexpr std::uint64_t unknown = 0xFFFFFFFF;
    for (std::uint64_t left = std::min(value, unknown); width > 0; --width, left >>= 8)
        bytes.push_back(static_cast<char>(left & 0xFF));
}

std::string formatChunk(std::uint32_t rate, std::uint32_t channels, std::uint32_t bits)
{
    const bool isFloat = bits == 0;
    const bool isExtensible = channels > 2 || bits > 16;
    const std::uint32_t tag = isFloat ? floatTag : integerTag, storedBits = isFloat ? 32 : bits;
    const std::uint32_t frameBytes = channels * storedBits / 8;
    std::string bytes = "fmt ";
    append(bytes, isExtensible ? 40 : isFloat ? 18 : 16, 4);
    append(bytes, isExtensible ? extensibleTag : tag, 2);
    append(bytes, channels, 2);
    append(bytes, rate, 4);
    append(bytes, std::uint64_t{rate} * frameBytes, 4);
    append(bytes, frameBytes, 2);
    append(bytes, storedBits, 2);
    if (isExtensible || isFloat) append(bytes, isExtensible ? 22 : 0, 2); // bytes that follow in the chunk
    if (!isExtensible) return bytes;
    append(bytes, storedBits, 2);
    append(bytes, channels < std::size(speakerMasks) ? speakerMasks[channels] : 0, 4);
    append(bytes, tag, 2);
    bytes.append(std::begin(subFormatTail), std::end(subFormatTail));
    return bytes;
}

} // namespace

std::string waveHeader(std::uint32_t rate, std::uint32_t channels, std::uint32_t bits, std::uint64_t frames)
{
    const std::uint64_t dataBytes = frames * channels * (bits == 0 ? 32 : bits) / 8;
    std::string rest = "WAVE" + formatChunk(rate, channels, bits);
    if (bits == 0) {
        rest += "fact";
        append(rest, 4, 4);
        append(rest, frames, 4);
    }
    rest += "data";
    append(rest, dataBytes, 4);
    std::string bytes = "RIFF";
    append(bytes, rest.size() + dataBytes + dataBytes % 2, 4);
    return bytes + rest;
}

} // namespace kvx
