// Numbers and records of the platform as text, as the call logs of the platform spies print them.
#pragma once

#include <CoreAudio/CoreAudio.h>

#include <algorithm>
#include <cstdio>
#include <string>

namespace record_text {

inline std::string hex(unsigned long long number)
{
    char text[24];
    std::snprintf(text, sizeof text, "0x%llX", number);
    return text;
}

inline std::string real(double number)
{
    char text[40];
    std::snprintf(text, sizeof text, "%g", number);
    return text;
}

/// A four-character code in quotes, such as 'lpcm'; empty if a character is not printable.
inline std::string quotedCode(UInt32 code)
{
    const char text[] = {'\'',
                         static_cast<char>(code >> 24),
                         static_cast<char>(code >> 16),
                         static_cast<char>(code >> 8),
                         static_cast<char>(code),
                         '\''};
    const bool isPrintable =
        std::all_of(text, text + sizeof text, [](char letter) { return letter >= ' ' && letter <= '~'; });
    return isPrintable ? std::string(text, sizeof text) : std::string();
}

/// A stream format; `formatID` is its format ID as text.
inline std::string streamFormat(const AudioStreamBasicDescription& f, const std::string& formatID)
{
    std::string text = "{" + real(f.mSampleRate) + ", " + formatID + ", " + hex(f.mFormatFlags);
    for (const UInt32 number : {f.mBytesPerPacket, f.mFramesPerPacket, f.mBytesPerFrame, f.mChannelsPerFrame,
                                f.mBitsPerChannel, f.mReserved})
        text += ", " + std::to_string(number);
    return text + "}";
}

} // namespace record_text
