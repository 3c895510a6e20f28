// The text of the arguments of recorded calls, chosen by the type of the argument. Integers are decimal. The
// records in this header select another text for plain numbers and addresses.
#pragma once

#include "tests/support/call_log.h"

#include <AudioUnit/AudioUnit.h>
#include <CoreAudio/CoreAudio.h>

#include <algorithm>
#include <cstdint>

namespace spy {

/// A number in hexadecimal digits.
struct Hex {
    unsigned long long number;
};
inline Line& operator<<(Line& line, Hex hex) { return line.print("0x%llX", hex.number); }

/// A four-character code, such as 'lpcm'; a decimal number if a character is not printable.
struct Code {
    UInt32 word;
};
inline Line& operator<<(Line& line, Code code)
{
    const char text[] = {static_cast<char>(code.word >> 24), static_cast<char>(code.word >> 16),
                         static_cast<char>(code.word >> 8), static_cast<char>(code.word)};
    const bool isPrintable =
        std::all_of(text, text + sizeof text, [](char letter) { return letter >= ' ' && letter <= '~'; });
    return isPrintable ? line << "'" << std::string_view(text, sizeof text) << "'" : line << code.word;
}

struct Bytes {
    UInt32 count;
};
inline Line& operator<<(Line& line, Bytes bytes) { return line << bytes.count << " bytes"; }

/// A size that the caller announces and the platform overwrites.
struct InOut {
    const UInt32* size;
};
inline Line& operator<<(Line& line, InOut size)
{
    return size.size ? line << "size " << *size.size : line << "no size";
}

/// Nine digits, which distinguish any two floats.
inline Line& operator<<(Line& line, Float32 number)
{
    return line.print("%.9g", static_cast<double>(number));
}
inline Line& operator<<(Line& line, Float64 number) { return line.print("%g", number); }

/// The name of a pointer or of a platform object.
Line& operator<<(Line& line, const void* pointer);

template <class Result, class... Arguments>
Line& operator<<(Line& line, Result (*function)(Arguments...))
{
    return line << reinterpret_cast<const void*>(function);
}

inline Line& operator<<(Line& line, const AudioStreamBasicDescription* f)
{
    if (!f) return line << "null";
    return line << "{" << f->mSampleRate << ", " << Code{f->mFormatID} << ", " << Hex{f->mFormatFlags} << ", "
                << f->mBytesPerPacket << ", " << f->mFramesPerPacket << ", " << f->mBytesPerFrame << ", "
                << f->mChannelsPerFrame << ", " << f->mBitsPerChannel << ", " << f->mReserved << "}";
}

inline Line& operator<<(Line& line, const AURenderCallbackStruct* callback)
{
    if (!callback) return line << "null";
    return line << "{" << callback->inputProc << ", " << callback->inputProcRefCon << "}";
}

} // namespace spy
