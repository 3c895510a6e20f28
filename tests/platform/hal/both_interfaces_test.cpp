// Both property interfaces refuse short buffers, invalid values and objects of a wrong kind in the same way.
// property_test.cpp compares the values that the two interfaces return.
#include "tests/platform/hal/selectors.h"
#include "tests/platform/hal/test_device.h"

#include <CoreFoundation/CoreFoundation.h>

namespace {

using namespace haltest;

constexpr AudioObjectID systemObject = kAudioObjectSystemObject;

/// One property at one scope and element of one object, readable through either property interface.
struct Address {
    AudioObjectID object;
    AudioClassID kind;
    Selector selector;
    UInt32 channel;
    bool isInput;

    AudioObjectPropertyAddress at() const
    {
        return address(selector.code,
                       kind != kAudioDeviceClassID ? AudioObjectPropertyScope{kAudioObjectPropertyScopeGlobal}
                       : isInput                   ? AudioObjectPropertyScope{kAudioDevicePropertyScopeInput}
                                 : AudioObjectPropertyScope{kAudioDevicePropertyScopeOutput},
                       channel);
    }

    OSStatus getByAddress(UInt32* size, void* data) const
    {
        const auto here = at();
        return AudioObjectGetPropertyData(object, &here, 0, nullptr, size, data);
    }
    OSStatus getByTarget(UInt32* size, void* data) const
    {
        if (kind == kAudioSystemObjectClassID) return AudioHardwareGetProperty(selector.code, size, data);
        if (kind == kAudioDeviceClassID)
            return AudioDeviceGetProperty(object, channel, isInput, selector.code, size, data);
        return AudioStreamGetProperty(object, channel, selector.code, size, data);
    }
    OSStatus setByAddress(UInt32 size, const void* data) const
    {
        const auto here = at();
        return AudioObjectSetPropertyData(object, &here, 0, nullptr, size, data);
    }
    OSStatus setByTarget(UInt32 size, const void* data) const
    {
        if (kind == kAudioSystemObjectClassID) return AudioHardwareSetProperty(selector.code, size, data);
        if (kind == kAudioDeviceClassID)
            return AudioDeviceSetProperty(object, nullptr, channel, isInput, selector.code, size, data);
        return AudioStreamSetProperty(object, nullptr, channel, selector.code, size, data);
    }
};

void walk(const std::function<void(const Address&)>& look)
{
    const auto walkObject = [&](AudioObjectID object, AudioClassID kind,
                                const std::vector<Selector>& selectors) {
        const bool isSystem = kind == kAudioSystemObjectClassID, isDevice = kind == kAudioDeviceClassID;
        for (const Selector& selector : selectors)
            for (UInt32 channel = 0; channel < (isSystem ? 1u : 4u); ++channel)
                for (bool isInput : {false, true}) {
                    if (isInput && !isDevice) continue;
                    SCOPED_TRACE("'" + text(selector.code) + "' of " + text(kind) + " " +
                                 std::to_string(object) + ", channel " + std::to_string(channel) +
                                 (isInput ? ", input" : ""));
                    look({object, kind, selector, channel, isInput});
                }
    };
    walkObject(systemObject, kAudioSystemObjectClassID, systemSelectors);
    for (AudioDeviceID device : getAll<AudioDeviceID>(systemObject, address('dev#'))) {
        walkObject(device, kAudioDeviceClassID, deviceSelectors);
        for (AudioStreamID stream : getAll<AudioStreamID>(device, address('ownd')))
            walkObject(stream, kAudioStreamClassID, streamSelectors);
    }
}

TEST(BothInterfaces, RefuseShortBuffersAlike)
{
    Device device;
    walk([](const Address& address) {
        for (UInt32 capacity : {0u, 1u, 2u, 3u, 4u, 5u, 7u, 8u, 12u, 15u, 16u, 39u, 40u, 41u}) {
            const bool hasString = address.selector.kind == Kind::string && capacity >= sizeof(CFStringRef);
            if (hasString) continue; // strings are not compared, because each interface returns a new string
            std::vector<char> a(64, char{0}), b = a;
            UInt32 sizeA = capacity, sizeB = capacity;
            EXPECT_EQ(text(address.getByAddress(&sizeA, a.data())),
                      text(address.getByTarget(&sizeB, b.data())))
                << capacity;
            EXPECT_EQ(sizeA, sizeB) << capacity;
            EXPECT_EQ(a, b) << capacity;
        }
        UInt32 sizeA = 4096, sizeB = 4096;
        EXPECT_EQ(text(address.getByAddress(&sizeA, nullptr)), text(address.getByTarget(&sizeB, nullptr)));
        char data[64];
        EXPECT_EQ(text(address.getByAddress(nullptr, data)), text(address.getByTarget(nullptr, data)));
    });
}

// The values have all lengths; some are invalid, others are equal to the present value.
TEST(BothInterfaces, RefuseInvalidValuesAlike)
{
    Device device;
    walk([](const Address& address) {
        // 'oink' (hog mode) has no invalid value, because any value toggles it.
        if (address.selector.code == 'oink') return;
        std::vector<char> current(4096);
        UInt32 size = static_cast<UInt32>(current.size());
        const bool isPresent = address.getByAddress(&size, current.data()) == noErr;
        if (isPresent)
            EXPECT_EQ(text(address.setByAddress(size, current.data())),
                      text(address.setByTarget(size, current.data())));
        if (isPresent && address.selector.kind == Kind::string) {
            CFStringRef string;
            std::memcpy(&string, current.data(), sizeof string);
            CFRelease(string);
        }
        const std::vector<char> nonsense(64, '\xFF');
        for (UInt32 length : {0u, 1u, 3u, 5u, 7u, 9u, 39u, 41u, 64u})
            EXPECT_EQ(text(address.setByAddress(length, nonsense.data())),
                      text(address.setByTarget(length, nonsense.data())))
                << length;
        for (UInt32 length : {0u, 4u, 8u, 40u})
            EXPECT_EQ(text(address.setByAddress(length, nullptr)), text(address.setByTarget(length, nullptr)))
                << length;
    });
}

TEST(BothInterfaces, ReadWhatEitherSets)
{
    Device device;
    const AudioDeviceID id = device;
    for (UInt32 slice : {32u, 33u, 1024u}) {
        UInt32 found = 0, size = sizeof found;
        ASSERT_EQ(AudioDeviceSetProperty(id, nullptr, 0, false, 'fsiz', sizeof slice, &slice), noErr);
        EXPECT_EQ(get<UInt32>(id, address('fsiz')), slice);
        ++slice;
        ASSERT_EQ(set(id, address('fsiz'), slice), noErr);
        EXPECT_EQ(AudioDeviceGetProperty(id, 0, false, 'fsiz', &size, &found), noErr);
        EXPECT_EQ(found, slice);
    }
    const AudioTimeStamp sometime = {};
    const Float32 level = 0.5f;
    EXPECT_EQ(AudioDeviceSetProperty(id, &sometime, 2, false, 'volm', sizeof level, &level), noErr)
        << "the time is ignored";
    EXPECT_EQ(get<Float32>(id, address('volm', kAudioDevicePropertyScopeOutput, 2)), level);
    EXPECT_EQ(get<Float32>(id, address('volm', kAudioDevicePropertyScopeOutput, 1)), 1.0f);
}

// Other errors in the same call do not change the status for a missing object.
TEST(BothInterfaces, HaveTheirOwnStatusForMissingObjects)
{
    AudioDeviceID endedDevice;
    AudioStreamID endedStream;
    {
        Device device;
        endedDevice = device;
        endedStream = getAll<AudioStreamID>(device, address('stm#')).at(0);
    }
    for (AudioObjectID none :
         {AudioObjectID{0}, endedDevice, endedStream, AudioObjectID{0x7FFFFFFF}, AudioObjectID{0xFFFFFFFF}})
        for (UInt32 selector : {'clas', 'nsrt', 'sfmt', 'zzzz', '****'}) {
            SCOPED_TRACE(std::to_string(none) + " " + text(selector));
            const auto at = address(selector);
            char data[64];
            UInt32 size = sizeof data;
            Boolean isWritable;
            EXPECT_EQ(text(AudioObjectGetPropertyDataSize(none, &at, 0, nullptr, &size)), "!obj");
            EXPECT_EQ(text(AudioObjectIsPropertySettable(none, &at, &isWritable)), "!obj");
            EXPECT_EQ(text(AudioObjectGetPropertyData(none, &at, 0, nullptr, &size, data)), "!obj");
            EXPECT_EQ(text(AudioObjectSetPropertyData(none, &at, 0, nullptr, size, data)), "!obj");
            EXPECT_EQ(text(AudioDeviceGetPropertyInfo(none, 0, false, selector, &size, &isWritable)), "!dev");
            EXPECT_EQ(text(AudioDeviceGetProperty(none, 0, false, selector, &size, data)), "!dev");
            EXPECT_EQ(text(AudioDeviceSetProperty(none, nullptr, 0, false, selector, size, data)), "!dev");
            EXPECT_EQ(text(AudioStreamGetPropertyInfo(none, 0, selector, &size, &isWritable)), "!str");
            EXPECT_EQ(text(AudioStreamGetProperty(none, 0, selector, &size, data)), "!str");
            EXPECT_EQ(text(AudioStreamSetProperty(none, nullptr, 0, selector, size, data)), "!str");
        }
}

// A caller may pass null for the size or for the writable flag.
TEST(BothInterfaces, AcceptNullResults)
{
    Device device;
    UInt32 size = 0;
    Boolean isWritable = false;
    EXPECT_EQ(AudioDeviceGetPropertyInfo(device, 0, false, 'fsiz', &size, nullptr), noErr);
    EXPECT_EQ(AudioDeviceGetPropertyInfo(device, 0, false, 'fsiz', nullptr, &isWritable), noErr);
    EXPECT_EQ(AudioDeviceGetPropertyInfo(device, 0, false, 'fsiz', nullptr, nullptr), noErr);
    EXPECT_EQ(size, 4u);
    EXPECT_TRUE(isWritable);
    EXPECT_EQ(text(AudioDeviceGetPropertyInfo(device, 0, false, 'zzzz', nullptr, nullptr)), "who?");
    EXPECT_EQ(AudioHardwareGetPropertyInfo('dev#', nullptr, &isWritable), noErr);
    EXPECT_FALSE(isWritable);
    EXPECT_EQ(AudioHardwareGetPropertyInfo('dOut', nullptr, &isWritable), noErr);
    EXPECT_TRUE(isWritable);
}

} // namespace
