// Both interfaces refuse alike: buffers that are short, values that are wrong, objects of another kind.
// That they answer alike is in property_test.cpp.
#include "tests/platform/hal/bench.h"
#include "tests/platform/hal/selectors.h"

#include <CoreFoundation/CoreFoundation.h>

namespace {

using namespace bench;

constexpr AudioObjectID systemObject = kAudioObjectSystemObject;

/// One place of one property, and both ways to it.
struct Place {
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

void walk(const std::function<void(const Place&)>& look)
{
    const auto places = [&](AudioObjectID object, AudioClassID kind, const std::vector<Selector>& selectors) {
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
    places(systemObject, kAudioSystemObjectClassID, systemSelectors);
    for (AudioDeviceID device : getAll<AudioDeviceID>(systemObject, address('dev#'))) {
        places(device, kAudioDeviceClassID, deviceSelectors);
        for (AudioStreamID stream : getAll<AudioStreamID>(device, address('ownd')))
            places(stream, kAudioStreamClassID, streamSelectors);
    }
}

TEST(Consistency, OfShortBuffers)
{
    Device device;
    walk([](const Place& place) {
        for (UInt32 room : {0u, 1u, 2u, 3u, 4u, 5u, 7u, 8u, 12u, 15u, 16u, 39u, 40u, 41u}) {
            const bool hasString = place.selector.kind == Kind::string && room >= sizeof(CFStringRef);
            if (hasString) continue; // two strings are two references
            std::vector<char> a(64, char(0)), b = a;
            UInt32 sizeA = room, sizeB = room;
            EXPECT_EQ(text(place.getByAddress(&sizeA, a.data())), text(place.getByTarget(&sizeB, b.data())))
                << room;
            EXPECT_EQ(sizeA, sizeB) << room;
            EXPECT_EQ(a, b) << room;
        }
        UInt32 sizeA = 4096, sizeB = 4096;
        EXPECT_EQ(text(place.getByAddress(&sizeA, nullptr)), text(place.getByTarget(&sizeB, nullptr)));
        char nowhere[64];
        EXPECT_EQ(text(place.getByAddress(nullptr, nowhere)), text(place.getByTarget(nullptr, nowhere)));
    });
}

// Values of all lengths, all of them nonsense or as it was: what one interface refuses, so does the other.
TEST(Consistency, OfRefusedValues)
{
    Device device;
    walk([](const Place& place) {
        if (place.selector.code == 'oink') return; // any value takes it, or gives it back
        std::vector<char> current(4096);
        UInt32 size = static_cast<UInt32>(current.size());
        const bool isThere = place.getByAddress(&size, current.data()) == noErr;
        if (isThere)
            EXPECT_EQ(text(place.setByAddress(size, current.data())),
                      text(place.setByTarget(size, current.data())));
        if (isThere && place.selector.kind == Kind::string) {
            CFStringRef string;
            std::memcpy(&string, current.data(), sizeof string);
            CFRelease(string);
        }
        const std::vector<char> nonsense(64, char(0xFF));
        for (UInt32 length : {0u, 1u, 3u, 5u, 7u, 9u, 39u, 41u, 64u})
            EXPECT_EQ(text(place.setByAddress(length, nonsense.data())),
                      text(place.setByTarget(length, nonsense.data())))
                << length;
        for (UInt32 length : {0u, 4u, 8u, 40u})
            EXPECT_EQ(text(place.setByAddress(length, nullptr)), text(place.setByTarget(length, nullptr)))
                << length;
    });
}

// What one interface sets, the other finds.
TEST(Consistency, OfWhatWasSet)
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
        << "whenever it is wanted, it is now";
    EXPECT_EQ(get<Float32>(id, address('volm', kAudioDevicePropertyScopeOutput, 2)), level);
    EXPECT_EQ(get<Float32>(id, address('volm', kAudioDevicePropertyScopeOutput, 1)), 1.0f);
}

// Each interface has its own name for an object that is not there, and keeps to it whatever else is wrong.
TEST(Consistency, OfObjectsThatAreNotThere)
{
    AudioDeviceID goneDevice;
    AudioStreamID goneStream;
    {
        Device device;
        goneDevice = device;
        goneStream = getAll<AudioStreamID>(device, address('stm#')).at(0);
    }
    for (AudioObjectID none :
         {AudioObjectID{0}, goneDevice, goneStream, AudioObjectID{0x7FFFFFFF}, AudioObjectID{0xFFFFFFFF}})
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

// Of the size and of what may be written, either may be left unasked.
TEST(Consistency, OfHalfQuestions)
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
