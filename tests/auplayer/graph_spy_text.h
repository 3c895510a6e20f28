// The arguments of recorded calls as text, in addition to those of platform_text.h. Internal to the spy.
#pragma once

#include "tests/auplayer/graph_spy.h"
#include "tests/support/platform_text.h"

#include <Carbon/Carbon.h>

namespace graph_spy {

using spy::Bytes;
using spy::Code;
using spy::InOut;
using spy::Line;

struct Node {
    AUNode number;
};
Line& operator<<(Line& line, Node node);

struct Scope {
    AudioUnitScope number;
};
inline Line& operator<<(Line& line, Scope scope)
{
    static const char* const scopes[] = {"global", "input", "output"};
    return scope.number < 3 ? line << scopes[scope.number] : line << "scope " << scope.number;
}

/// The new value of a property.
struct Value {
    const void* bytes;
    UInt32 size;
};
inline Line& operator<<(Line& line, Value value)
{
    if (value.bytes && value.size == sizeof(AudioStreamBasicDescription))
        return line << static_cast<const AudioStreamBasicDescription*>(value.bytes);
    if (!value.bytes || value.size != sizeof(UInt32)) return line << value.bytes;
    UInt32 word;
    std::memcpy(&word, value.bytes, sizeof word);
    return line << word;
}

/// A file reference whose bytes are text.
struct Reference {
    const FSRef* bytes;
};
inline Line& operator<<(Line& line, Reference reference)
{
    if (!reference.bytes) return line << "null";
    const auto* const text = reinterpret_cast<const char*>(reference.bytes);
    return line << "\"" << std::string_view(text, strnlen(text, sizeof(FSRef))) << "\"";
}

/// UTF-16 units, of which the first 20 are shown.
struct Characters {
    const UniChar* units;
    CFIndex count;
};
inline Line& operator<<(Line& line, Characters characters)
{
    line << "\"";
    for (CFIndex i = 0; i < std::min<CFIndex>(characters.count, 20); ++i) {
        const UniChar unit = characters.units[i];
        if (unit >= ' ' && unit <= '~')
            line.print("%c", unit);
        else
            line << "<" << spy::Hex{unit} << ">";
    }
    return line << (characters.count > 20 ? "...\"" : "\"");
}

} // namespace graph_spy

namespace spy {

inline Line& operator<<(Line& line, CFAllocatorRef allocator)
{
    return line << (allocator ? "an allocator" : "default");
}

inline Line& operator<<(Line& line, const AudioObjectPropertyAddress* address)
{
    if (!address) return line << "null";
    return line << "{" << Code{address->mSelector} << ", " << Code{address->mScope} << ", "
                << address->mElement << "}";
}

inline Line& operator<<(Line& line, const AudioComponentDescription* d)
{
    if (!d) return line << "null";
    return line << "{" << Code{d->componentType} << ", " << Code{d->componentSubType} << ", "
                << Code{d->componentManufacturer} << ", " << d->componentFlags << ", "
                << d->componentFlagsMask << "}";
}

inline Line& operator<<(Line& line, const AudioBufferList* list)
{
    if (!list) return line << "null";
    line << "{";
    for (UInt32 i = 0; i < list->mNumberBuffers; ++i) {
        const AudioBuffer& buffer = list->mBuffers[i];
        line << (i ? "; " : "") << buffer.mNumberChannels << " channels, " << buffer.mDataByteSize
             << " bytes, " << static_cast<const void*>(buffer.mData);
    }
    return line << "}";
}

} // namespace spy
