#include "soundstream/component_info.h"

#include <cstring>

namespace soundstream {

namespace {

struct Answer {
    OSType selector;
    bool isList; ///< whether the answer is a SoundInfoList with one value
    Size bytes;
    UInt32 value;
};

// clang-format off
const Answer answers[] = {
    // selector               list   bytes  value
    {siNumberChannels,        false, 2,     channelCount},
    {siChannelAvailable,      true,  2,     channelCount},
    {siSampleRate,            false, 4,     sampleRate44100},
    {siSampleRateAvailable,   true,  4,     sampleRate44100},
    {siSampleSizeAvailable,   true,  2,     sampleBits},
    {siSampleSize,            false, 2,     sampleBits},
};
// clang-format on

struct Setting {
    OSType selector;
    /// Whether `info` points to a 32-bit value; otherwise the low 16 bits of `info` are the value.
    bool isPointedTo;
    UInt32 value;
    OSErr refusal;
};

// clang-format off
const Setting settings[] = {
    // selector          pointed to  value            refusal of other values
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

/// Write the row's value to `out` in the row's size. `out` may have any alignment.
void write(void* out, const Answer& row)
{
    const auto narrow = static_cast<UInt16>(row.value);
    std::memcpy(out, row.bytes == 2 ? static_cast<const void*>(&narrow) : &row.value,
                static_cast<std::size_t>(row.bytes));
}

ComponentResult writeList(void* out, const Answer& row)
{
    SoundInfoList list = {1, NewHandle(row.bytes)};
    if (!list.infoHandle) return memFullErr;
    write(*list.infoHandle, row);
    std::memcpy(out, &list, sizeof list);
    return noErr;
}

bool isAccepted(const Setting& row, const void* info)
{
    if (!row.isPointedTo) return (reinterpret_cast<std::uintptr_t>(info) & 0xFFFF) == row.value;
    UInt32 value = 0;
    if (info) std::memcpy(&value, info, sizeof value);
    return value == row.value;
}

} // namespace

ComponentResult GetInfo(QTSoundStreamGlobals* globals, SoundSource source, OSType selector, void* info)
{
    const Answer* const row = find(answers, selector);
    if (!row) return SoundComponentGetInfo(mixerOf(globals), source, selector, info);
    if (!info) return paramErr;
    if (row->isList) return writeList(info, *row);
    write(info, *row);
    return noErr;
}

ComponentResult SetInfo(QTSoundStreamGlobals* globals, SoundSource source, OSType selector, void* info)
{
    const Setting* const row = find(settings, selector);
    if (!row) return SoundComponentSetInfo(mixerOf(globals), source, selector, info);
    return isAccepted(*row, info) ? ComponentResult{noErr} : ComponentResult{row->refusal};
}

} // namespace soundstream
