#include "plugin/four_character_code.h"

#include "plugin/rb_text.h"

#include <algorithm>

std::uint32_t REALstringToOSType(REALstringStruct* text)
{
    rbText reader(text);
    const char* const bytes = reader.ConvertMacRoman(); // address of at least four readable bytes

    std::uint32_t code = 0x20202020;
    const HostInteger count = std::min<HostInteger>(reader.lengthMacRoman(), 4);
    for (HostInteger i = 0; i < count; ++i) {
        const auto byte = static_cast<unsigned char>(bytes[3 - i]);
        code = (code & ~(0xFFu << 8 * i)) | static_cast<std::uint32_t>(byte) << 8 * i;
    }
    return code;
}
