#include "tests/soundstream/stream_object.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace soundstream_test {

namespace {

constexpr std::size_t guardBytes = 64; // number of guard bytes after the class data
constexpr std::size_t objectBytes =
    StreamObject::dataOffset + sizeof(soundstream::SoundStreamData) + guardBytes;
constexpr char guardByte = 0x5A;

template <class Row, class Matches>
const Row& find(const void* rows, Word count, Matches matches)
{
    const auto* row = static_cast<const Row*>(rows);
    for (Word i = 0; i < count; ++i)
        if (matches(row[i])) return row[i];
    std::fputs("the class has no such member\n", stderr);
    std::abort();
}

} // namespace

const REALproperty& propertyRow(std::string_view name)
{
    return find<REALproperty>(soundStreamClass.properties, soundStreamClass.propertyCount,
                              [&](const REALproperty& row) { return row.name == name; });
}

const REALmethod& methodRow(std::string_view declaration)
{
    return find<REALmethod>(soundStreamClass.methods, soundStreamClass.methodCount,
                            [&](const REALmethod& row) { return row.declaration == declaration; });
}

StreamObject::StreamObject() : memory_(new char[objectBytes])
{
    soundStreamClass.dataOffset = dataOffset;
    construct();
}

StreamObject::~StreamObject() { destroy(); }

void StreamObject::construct()
{
    std::memset(memory_.get(), guardByte, objectBytes);
    reinterpret_cast<void (*)(Object)>(soundStreamClass.constructor)(get());
    isAlive_ = true;
}

void StreamObject::destroy()
{
    if (!isAlive_) return;
    isAlive_ = false;
    reinterpret_cast<void (*)(Object)>(soundStreamClass.destructor)(get());
}

soundstream::SoundStreamData& StreamObject::data() const
{
    return *reinterpret_cast<soundstream::SoundStreamData*>(memory_.get() + dataOffset);
}

bool StreamObject::isUntouchedAround() const
{
    const auto isGuard = [](char byte) { return byte == guardByte; };
    const char* const end = memory_.get() + objectBytes;
    return std::all_of(memory_.get(), memory_.get() + dataOffset, isGuard) &&
           std::all_of(end - guardBytes, end, isGuard);
}

} // namespace soundstream_test
