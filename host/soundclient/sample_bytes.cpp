#include "host/soundclient/sample_bytes.h"

#include <Carbon/Carbon.h>

namespace soundclient {

std::uint32_t formatOf(Labelling labelling)
{
    return labelling == Labelling::big ? kTwosComplement : k16BitLittleEndianFormat;
}

void writeSamples(Labelling labelling, const std::int16_t* samples, std::size_t count, std::uint8_t* out)
{
    const bool isLittle = labelling == Labelling::little;
    for (std::size_t i = 0; i < count; ++i) {
        const auto bits = static_cast<std::uint16_t>(samples[i]);
        out[2 * i + !isLittle] = static_cast<std::uint8_t>(bits & 0xFF);
        out[2 * i + isLittle] = static_cast<std::uint8_t>(bits >> 8);
    }
}

} // namespace soundclient
