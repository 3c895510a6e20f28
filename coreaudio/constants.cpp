#include "coreaudio/constants.h"

#include "plugin/host_string.h"

namespace coreaudio {

REALstringStruct* getSelector(REALobjectStruct*, HostInteger selector)
{
    const char text[4] = {static_cast<char>(selector >> 24), static_cast<char>(selector >> 16),
                          static_cast<char>(selector >> 8), static_cast<char>(selector)};
    return REALBuildUnicodeString(text, sizeof text, encodingASCII);
}

HostInteger getValue(REALobjectStruct*, HostInteger value) { return value; }

} // namespace coreaudio
