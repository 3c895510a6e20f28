#include "coreaudio/constants.h"

#include "plugin/host_string.h"

namespace coreaudio {

REALstringStruct* selectorText(std::uint32_t selector)
{
    const char text[4] = {static_cast<char>(selector >> 24), static_cast<char>(selector >> 16),
                          static_cast<char>(selector >> 8), static_cast<char>(selector)};
    return REALBuildUnicodeString(text, sizeof text, encodingASCII);
}

} // namespace coreaudio
