#include "tests/auplayer/graph_spy_text.h"

#include "tests/auplayer/graph_spy_state.h"
#include "tests/support/record_text.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace graph_spy {

namespace {

std::string decimal(unsigned long long number) { return std::to_string(number); }

using record_text::hex;
using record_text::real;

/// Return a four-character code as text in quotes, such as 'lpcm', if all characters are printable, otherwise
/// as a number.
std::string code(UInt32 word)
{
    const std::string quoted = record_text::quotedCode(word);
    return quoted.empty() ? decimal(word) : quoted;
}

std::string format(const void* bytes)
{
    AudioStreamBasicDescription f;
    std::memcpy(&f, bytes, sizeof f);
    return record_text::streamFormat(f, code(f.mFormatID));
}

} // namespace

std::string text(const void* pointer)
{
    if (!pointer) return "null";
    const auto named = state.names.find(pointer);
    if (named != state.names.end()) return named->second;
    if (const PlatformObject* object = find(pointer)) {
        if (!object->isLive) state.faults.push_back(object->name + " used after its release");
        return object->name;
    }
    return "memory";
}

std::string text(CFAllocatorRef allocator) { return allocator ? "an allocator" : "default"; }

std::string text(Node node)
{
    const auto found = state.nodes.find(node.number);
    return found == state.nodes.end() ? "node " + std::to_string(node.number) : found->second + " node";
}

std::string text(Scope scope)
{
    static const char* const scopes[] = {"global", "input", "output"};
    return scope.number < 3 ? scopes[scope.number] : "scope " + decimal(scope.number);
}

std::string text(Code word) { return code(word.word); }

std::string text(Number number) { return decimal(number.value); }

std::string text(Bytes bytes) { return decimal(bytes.count) + " bytes"; }

std::string text(InOut size) { return size.size ? "size " + decimal(*size.size) : "no size"; }

/// Return the number as text with nine digits, which distinguish any two floats.
std::string text(Float32 number)
{
    char digits[40];
    std::snprintf(digits, sizeof digits, "%.9g", static_cast<double>(number));
    return digits;
}

std::string text(const AudioObjectPropertyAddress* address)
{
    if (!address) return "null";
    return "{" + code(address->mSelector) + ", " + code(address->mScope) + ", " + decimal(address->mElement) +
           "}";
}

std::string text(const AudioComponentDescription* d)
{
    if (!d) return "null";
    return "{" + code(d->componentType) + ", " + code(d->componentSubType) + ", " +
           code(d->componentManufacturer) + ", " + decimal(d->componentFlags) + ", " +
           decimal(d->componentFlagsMask) + "}";
}

std::string text(const AURenderCallbackStruct* given)
{
    if (!given) return "null";
    return "{" + text(reinterpret_cast<const void*>(given->inputProc)) + ", " + text(given->inputProcRefCon) +
           "}";
}

std::string text(Value given)
{
    if (!given.bytes) return "null";
    if (given.size == sizeof(AudioStreamBasicDescription)) return format(given.bytes);
    if (given.size != sizeof(UInt32)) return text(given.bytes);
    UInt32 word;
    std::memcpy(&word, given.bytes, sizeof word);
    return decimal(word);
}

std::string text(Reference reference)
{
    if (!reference.of) return "null";
    const auto* bytes = reinterpret_cast<const char*>(reference.of);
    return '"' + std::string(bytes, strnlen(bytes, sizeof(FSRef))) + '"';
}

std::string text(Characters characters)
{
    std::string shown = "\"";
    for (CFIndex i = 0; i < std::min<CFIndex>(characters.count, 20); ++i) {
        const UniChar unit = characters.units[i];
        shown += unit >= ' ' && unit <= '~' ? std::string(1, static_cast<char>(unit)) : "<" + hex(unit) + ">";
    }
    return shown + (characters.count > 20 ? "...\"" : "\"");
}

std::string text(const AudioBufferList* list)
{
    if (!list) return "null";
    std::string shown = "{";
    for (UInt32 i = 0; i < list->mNumberBuffers; ++i) {
        const AudioBuffer& buffer = list->mBuffers[i];
        shown += (i ? "; " : "") + decimal(buffer.mNumberChannels) + " channels, " +
                 decimal(buffer.mDataByteSize) + " bytes, " + text(buffer.mData);
    }
    return shown + "}";
}

} // namespace graph_spy
