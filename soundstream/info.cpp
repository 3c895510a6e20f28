#include "soundstream/info.h"

#include <cstring>

namespace soundstream {

namespace {

struct Told {
    OSType selector;
    bool isList; ///< of one value
    Size bytes;
    UInt32 value;
};

// clang-format off
const Told told[] = {
    // selector               list   bytes  value
    {siNumberChannels,        false, 2,     channelCount},
    {siChannelAvailable,      true,  2,     channelCount},
    {siSampleRate,            false, 4,     sampleRate44100},
    {siSampleRateAvailable,   true,  4,     sampleRate44100},
    {siSampleSizeAvailable,   true,  2,     sampleBits},
    {siSampleSize,            false, 2,     sampleBits},
};
// clang-format on

struct Accepted {
    OSType selector;
    bool isPointedTo; ///< the whole value; else its low 16 bits come as the pointer
    UInt32 value;
    OSErr refusal;
};

// clang-format off
const Accepted accepted[] = {
    // selector          pointed to  value            refusal of another
    {siNumberChannels,   false,      channelCount,    notEnoughHardwareErr},
    {siSampleRate,       true,       sampleRate44100, siInvalidSampleRate},
    {siSampleSize,       false,      sampleBits,      siInvalidSampleSize},
};
// clang-format on

template <class Row, std::size_t count>
const Row* find(const Row (&rows)[count], OSType selector)
{
    for (const Row& row : rows)
        if (row.selector == selector) return &row;
    return nullptr;
}

/// At any address, in the row's width.
void write(void* place, const Told& row)
{
    const auto narrow = static_cast<UInt16>(row.value);
    std::memcpy(place, row.bytes == 2 ? static_cast<const void*>(&narrow) : &row.value,
                static_cast<std::size_t>(row.bytes));
}

ComponentResult writeList(void* place, const Told& row)
{
    SoundInfoList list = {1, NewHandle(row.bytes)};
    if (!list.infoHandle) return memFullErr;
    write(*list.infoHandle, row);
    std::memcpy(place, &list, sizeof list);
    return noErr;
}

bool isAccepted(const Accepted& row, const void* info)
{
    if (!row.isPointedTo) return (reinterpret_cast<std::uintptr_t>(info) & 0xFFFF) == row.value;
    UInt32 value = 0;
    if (info) std::memcpy(&value, info, sizeof value);
    return value == row.value;
}

} // namespace

ComponentResult GetInfo(QTSoundStreamGlobals* globals, SoundSource source, OSType selector, void* info)
{
    const Told* const row = find(told, selector);
    if (!row) return SoundComponentGetInfo(mixerOf(globals), source, selector, info);
    if (!info) return paramErr;
    if (row->isList) return writeList(info, *row);
    write(info, *row);
    return noErr;
}

ComponentResult SetInfo(QTSoundStreamGlobals* globals, SoundSource source, OSType selector, void* info)
{
    const Accepted* const row = find(accepted, selector);
    if (!row) return SoundComponentSetInfo(mixerOf(globals), source, selector, info);
    return isAccepted(*row, info) ? ComponentResult{noErr} : ComponentResult{row->refusal};
}

} // namespace soundstream
