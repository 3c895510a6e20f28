// Tests of the GetInfo and SetInfo calls of a mixer.
#include "tests/platform/soundmanager/sound.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using namespace test;

// Information selectors that a mixer supports, and others that it does not support.
const OSType codes[] = {'chan', 'chav', 'ssiz', 'ssav', 'srat', 'srav', 'rmul', 'volu', 'hvol',
                        'svol', 'pvol', 'hstp', 'hdst', 'hmut', 'smut', 'pmut', 'hmnp', 'hwbs',
                        'hwfm', 'hbal', 'comp', 'cmav', 'cmfa', 'qual', 'olte', 'onam', 'prmx',
                        'psmx', 'chac', 'lmac', 'twos', 'asyn', 'name', 'flap', 'exfl', 'srcx',
                        'cvbr', 'sclc', 'sclk', 'hlid', 'huid', 0,      'CHAN'};

std::string text(OSType code)
{
    std::string four;
    for (int shift = 24; shift >= 0; shift -= 8) four += static_cast<char>(code >> shift);
    return four;
}

template <class T>
T readAs(const void* memory)
{
    T value;
    std::memcpy(&value, memory, sizeof value);
    return value;
}

TEST(MixerInformation, GetInfoAnswersEightSelectors)
{
    const Form forms[] = {{}, {'raw ', 8, 1, 22050}};
    for (const Form& form : forms) {
        Mixer mixer(form);
        const SoundSource source = mixer.add();
        for (OSType code : codes) {
            SCOPED_TRACE(text(code));
            Byte value[32];
            std::memset(value, 0xA5, sizeof value);
            const ComponentResult status = SoundComponentGetInfo(mixer.instance, source, code, value);
            std::size_t written = 0;
            const auto isShort = [&](short expected) {
                EXPECT_EQ(status, noErr);
                EXPECT_EQ(readAs<short>(value), expected);
                written = 2;
            };
            const auto isWord = [&](UInt32 expected) {
                EXPECT_EQ(status, noErr);
                EXPECT_EQ(readAs<UInt32>(value), expected);
                written = 4;
            };
            const auto isList = [&](Size size) {
                EXPECT_EQ(status, noErr);
                const auto list = readAs<SoundInfoList>(value);
                EXPECT_EQ(list.count, 1);
                EXPECT_EQ(GetHandleSize(list.infoHandle), size);
                written = sizeof list;
                return list.infoHandle;
            };
            const auto rate = static_cast<UInt32>(form.hertz * 65536);
            switch (code) {
            case 'chan':
                isShort(form.channels);
                break;
            case 'ssiz':
                isShort(form.bits);
                break;
            case 'srat':
                isWord(rate);
                break;
            case 'volu':
                isWord(0x01000100);
                break;
            case 'rmul':
                isWord(0x10000);
                break;
            case 'chav':
            case 'ssav': {
                const Handle handle = isList(2);
                EXPECT_EQ(readAs<short>(*handle), code == 'chav' ? form.channels : form.bits);
                DisposeHandle(handle);
                break;
            }
            case 'srav': {
                const Handle handle = isList(4);
                EXPECT_EQ(readAs<UInt32>(*handle), rate);
                DisposeHandle(handle);
                break;
            }
            default:
                EXPECT_EQ(status, siUnknownInfoType);
            }
            for (std::size_t i = written; i < sizeof value; ++i)
                ASSERT_EQ(value[i], 0xA5) << "written past the value at " << i;
            EXPECT_EQ(SoundComponentGetInfo(mixer.instance, source, code, nullptr), paramErr);
        }
    }
    EXPECT_EQ(liveCount("Handle"), 0);
}

TEST(MixerInformation, SetInfoTakesVolumeAndRateMultiplier)
{
    Mixer mixer;
    const SoundSource source = mixer.add(), other = mixer.add();
    for (OSType code : codes) {
        SCOPED_TRACE(text(code));
        for (std::uintptr_t value : {0x00800040u, 1u, 0u, 0xFFFFFFFFu}) {
            const bool isOurs = code == 'volu' || code == 'rmul';
            const ComponentResult expected = !isOurs ? ComponentResult{siUnknownInfoType}
                                             : code == 'rmul' && value == 0
                                                 ? ComponentResult{siInvalidSampleRate}
                                                 : ComponentResult{noErr};
            UInt32 before = 0, now = 0;
            SoundComponentGetInfo(mixer.instance, source, code, isOurs ? &before : nullptr);
            EXPECT_EQ(SoundComponentSetInfo(mixer.instance, source, code, reinterpret_cast<void*>(value)),
                      expected);
            if (!isOurs) continue;
            EXPECT_EQ(SoundComponentGetInfo(mixer.instance, source, code, &now), noErr);
            EXPECT_EQ(now, expected == noErr ? value : before);
        }
    }
    UInt32 volume = 0;
    EXPECT_EQ(SoundComponentGetInfo(mixer.instance, other, siVolume, &volume), noErr);
    EXPECT_EQ(volume, 0x01000100u) << "the volume of another source";
}

TEST(MixerInformation, SourceSelectorsNeedASource)
{
    Mixer mixer;
    Byte value[8];
    for (SoundSource name : {static_cast<SoundSource>(nullptr), reinterpret_cast<SoundSource>(1)}) {
        for (OSType code : {'volu', 'rmul'}) {
            EXPECT_EQ(SoundComponentGetInfo(mixer.instance, name, code, value), badChannel);
            EXPECT_EQ(SoundComponentSetInfo(mixer.instance, name, code, reinterpret_cast<void*>(1)),
                      badChannel);
        }
        EXPECT_EQ(SoundComponentGetInfo(mixer.instance, name, siNumberChannels, value), noErr)
            << "a selector of the mixer";
        EXPECT_EQ(SoundComponentGetInfo(mixer.instance, name, 'what', value), siUnknownInfoType);
    }
    EXPECT_EQ(SoundComponentGetInfo(nullptr, nullptr, siNumberChannels, value), badComponentInstance);
    EXPECT_EQ(SoundComponentSetInfo(nullptr, nullptr, siNumberChannels, value), badComponentInstance);
}

} // namespace
