#include "tests/soundstream/stream_object.h"

#include <algorithm>
#include <cstring>

namespace soundstream_test {

namespace {

constexpr std::size_t guardBytes = 64; // number of guard bytes after the class data
constexpr std::size_t objectBytes =
    StreamObject::dataOffset + sizeof(soundstream::SoundStreamData) + guardBytes;
constexpr char guardByte = 0x5A;

} // namespace

StreamObject::StreamObject() : memory_(new char[objectBytes])
{
    soundStreamClass.dataOffset = dataOffset;
    construct();
}

StreamObject::~StreamObject() { destroy(); }

void StreamObject::construct()
{
    std::memset(memory_.get(), guardByte, objectBytes);
    members.construct(get());
    isAlive_ = true;
}

void StreamObject::destroy()
{
    if (!isAlive_) return;
    isAlive_ = false;
    members.destruct(get());
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
