// The text of the arguments in recorded calls. The type of an argument selects its text; integers are
// decimal. A spy wraps an argument in one of the structs below to record it in another form, such as
// Hex{number}.
#pragma once

#include "tests/support/call_log.h"

#include <AudioUnit/AudioUnit.h>
#include <CoreAudio/CoreAudio.h>

#include <algorithm>
#include <cstdint>

namespace spy {

/// A number, recorded in hexadecimal digits.
struct Hex {
    unsigned long long number;
};
inline Line& operator<<(Line& line, Hex hex) { return line.print("0x%llX", hex.number); }

/// A four-character code, recorded as 'lpcm', or as a decimal number if a character is not printable.
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

/// The size variable of a property call: the caller states the size of its buffer, the platform overwrites
/// it.
struct InOut {
    const UInt32* size;
};
inline Line& operator<<(Line& line, InOut size)
{
    return size.size ? line << "size " << *size.size : line << "no size";
}

/// A 32-bit float, recorded with nine digits, which distinguish any two floats.
inline Line& operator<<(Line& line, Float32 number)
{
    return line.print("%.9g", static_cast<double>(number));
}
inline Line& operator<<(Line& line, Float64 number) { return line.print("%g", number); }

/// A pointer, recorded as its name, as the name of its platform object, or as "memory".
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
