// The properties of the system object, its devices and their streams, read and set through both interfaces.
#include "tests/platform/hal/selectors.h"
#include "tests/platform/hal/test_device.h"

#include <CoreFoundation/CoreFoundation.h>

#include <cmath>
#include <set>

namespace {

using namespace haltest;

constexpr UInt32 global = kAudioObjectPropertyScopeGlobal, output = kAudioDevicePropertyScopeOutput,
                 input = kAudioDevicePropertyScopeInput;
constexpr AudioObjectID systemObject = kAudioObjectSystemObject, missing = 0x7FFFFFFF;

std::string take(CFStringRef string)
{
    if (!string) return "(none)";
    std::vector<char> buffer(1000);
    EXPECT_TRUE(CFStringGetCString(string, buffer.data(), static_cast<CFIndex>(buffer.size()),
                                   kCFStringEncodingUTF8));
    CFRelease(string);
    return buffer.data();
}

std::string textOf(AudioObjectID object, const AudioObjectPropertyAddress& at)
{
    const auto characters = getAll<char>(object, at);
    EXPECT_FALSE(characters.empty());
    EXPECT_EQ(characters.back(), '\0');
    return characters.data();
}

KVXSimulatedDevice described()
{
    KVXSimulatedDevice description = Device::stepped();
    description.name = "Gr\xC3\xBCnes Ger\xC3\xA4t";
    description.uid = "kvx:test:green";
    description.sampleRate = 48000;
    description.outputChannels = 2;
    description.sliceFrames = 256;
    description.latencyFrames = 17;
    return description;
}

TEST(Properties, OfADeviceDescribeIt)
{
    Device device(described());
    EXPECT_EQ(take(get<CFStringRef>(device, address('lnam'))), "Gr\xC3\xBCnes Ger\xC3\xA4t");
    EXPECT_EQ(textOf(device, address('name')), "Gr\xC3\xBCnes Ger\xC3\xA4t");
    EXPECT_EQ(take(get<CFStringRef>(device, address('uid '))), "kvx:test:green");
    EXPECT_NE(take(get<CFStringRef>(device, address('lmak'))), "");
    EXPECT_NE(textOf(device, address('makr')), "");
    const struct {
        AudioObjectPropertyAddress at;
        UInt32 expected;
    } words[] = {
        {address('clas'), 'adev'},     {address('stdv'), systemObject},
        {address('livn'), 1},          {address('goin'), 0},
        {address('gone'), 0},          {address('tran'), 'virt'},
        {address('ltnc', output), 17}, {address('saft', output), 0},
        {address('fsiz'), 256},        {address('bsiz', output), 256 * 8},
        {address('dflt', output), 1},  {address('dflt', input), 0},
        {address('sflt', output), 1},  {address('mix?'), 1},
        {address('hidn'), 0},          {address('oink'), 0xFFFFFFFF},
    };
    for (const auto& fact : words)
        EXPECT_EQ(get<UInt32>(device, fact.at), fact.expected) << text(fact.at.mSelector);
    EXPECT_EQ(get<Float64>(device, address('nsrt')), 48000.0);
    EXPECT_EQ(get<Float64>(device, address('asrt')), 48000.0);
    const auto range = get<AudioValueRange>(device, address('fsz#'));
    EXPECT_LE(range.mMinimum, 1);
    EXPECT_GE(range.mMaximum, 4096);
    const auto rates = getAll<AudioValueRange>(device, address('nsr#'));
    EXPECT_TRUE(std::any_of(rates.begin(), rates.end(),
                            [](const auto& r) { return r.mMinimum <= 48000 && 48000 <= r.mMaximum; }));
    const auto pair = getAll<UInt32>(device, address('dch2', output));
    EXPECT_EQ(pair, (std::vector<UInt32>{1, 2}));
}

TEST(Properties, OfItsStreamsDescribeTheirFormat)
{
    Device device(described());
    const auto streams = getAll<AudioStreamID>(device, address('stm#', output));
    ASSERT_EQ(streams.size(), 1u);
    EXPECT_EQ(getAll<AudioStreamID>(device, address('stm#', input)).size(), 0u);
    const AudioStreamID stream = streams[0];
    EXPECT_EQ(get<UInt32>(stream, address('clas')), UInt32{'astr'});
    EXPECT_EQ(get<UInt32>(stream, address('stdv')), AudioDeviceID{device});
    EXPECT_EQ(get<UInt32>(stream, address('sdir')), 0u);
    EXPECT_EQ(get<UInt32>(stream, address('schn')), 1u);

    for (AudioObjectID object : {AudioObjectID{device}, stream}) {
        const auto format =
            get<AudioStreamBasicDescription>(object, address('sfmt', object == stream ? global : output));
        EXPECT_EQ(format.mSampleRate, 48000.0);
        EXPECT_EQ(format.mFormatID, UInt32{kAudioFormatLinearPCM});
        EXPECT_EQ(format.mFormatFlags, UInt32{kAudioFormatFlagsNativeFloatPacked});
        EXPECT_EQ(format.mBytesPerPacket, 8u);
        EXPECT_EQ(format.mFramesPerPacket, 1u);
        EXPECT_EQ(format.mBytesPerFrame, 8u);
        EXPECT_EQ(format.mChannelsPerFrame, 2u);
        EXPECT_EQ(format.mBitsPerChannel, 32u);
        EXPECT_EQ(format.mReserved, 0u);
    }
    const auto bytes = getAll<char>(device, address('slay', output));
    ASSERT_EQ(bytes.size(), sizeof(AudioBufferList));
    AudioBufferList list;
    std::memcpy(&list, bytes.data(), sizeof list);
    EXPECT_EQ(list.mNumberBuffers, 1u);
    EXPECT_EQ(list.mBuffers[0].mNumberChannels, 2u);
    EXPECT_EQ(list.mBuffers[0].mData, nullptr);
    const auto none = getAll<char>(device, address('slay', input));
    UInt32 count = 1;
    ASSERT_GE(none.size(), sizeof count);
    std::memcpy(&count, none.data(), sizeof count);
    EXPECT_EQ(count, 0u);
}

TEST(Properties, OfTheSystemListDevices)
{
    Device device(described());
    const auto devices = getAll<AudioDeviceID>(systemObject, address('dev#'));
    EXPECT_NE(std::find(devices.begin(), devices.end(), AudioDeviceID{device}), devices.end());
    EXPECT_EQ(std::set<AudioDeviceID>(devices.begin(), devices.end()).size(), devices.size())
        << "each only once";
    for (AudioDeviceID id : devices) EXPECT_EQ(get<UInt32>(id, address('clas')), UInt32{'adev'});

    CFStringRef uid = CFStringCreateWithCString(nullptr, "kvx:test:green", kCFStringEncodingUTF8);
    AudioDeviceID found = 0;
    AudioValueTranslation translation = {&uid, sizeof uid, &found, sizeof found};
    UInt32 size = sizeof translation;
    EXPECT_EQ(AudioHardwareGetProperty('duid', &size, &translation), noErr);
    EXPECT_EQ(found, AudioDeviceID{device});
    CFRelease(uid);
    uid = CFStringCreateWithCString(nullptr, "no such device", kCFStringEncodingUTF8);
    EXPECT_EQ(AudioHardwareGetProperty('duid', &size, &translation), noErr);
    EXPECT_EQ(found, AudioDeviceID{kAudioDeviceUnknown});
    CFRelease(uid);
}

TEST(Properties, ReversedSelectorOfTheDeviceListIsUnknown)
{
    UInt32 size = 1000;
    std::vector<char> bytes(size);
    EXPECT_EQ(text(AudioHardwareGetPropertyInfo('#dev', &size, nullptr)), "who?");
    EXPECT_EQ(text(AudioHardwareGetProperty('#dev', &size, bytes.data())), "who?");
    EXPECT_EQ(text(AudioHardwareGetProperty('dev#', &size, bytes.data())), text(noErr));
}

TEST(Properties, RefuseMisuse)
{
    Device device(described());
    const AudioDeviceID id = device;
    const AudioStreamID stream = getAll<AudioStreamID>(device, address('stm#', output))[0];
    UInt32 word = 0, small = 3, four = 4, none = 0;
    const auto alive = address('livn'), unknown = address('zzzz'), scope = address('livn', 'zzzz'),
               list = address('dev#');
    const struct {
        OSStatus status;
        const char* expected;
        const char* why;
    } facts[] = {
        {AudioObjectGetPropertyData(missing, &alive, 0, nullptr, &four, &word), "!obj", "no such object"},
        {AudioObjectGetPropertyData(0, &alive, 0, nullptr, &four, &word), "!obj", "0 is not an object"},
        {AudioDeviceGetProperty(missing, 0, 0, 'livn', &four, &word), "!dev", "no such device"},
        {AudioDeviceGetProperty(stream, 0, 0, 'livn', &four, &word), "!dev", "a stream is not a device"},
        {AudioDeviceGetProperty(systemObject, 0, 0, 'livn', &four, &word), "!dev",
         "the system is not a device"},
        {AudioStreamGetProperty(missing, 0, 'sdir', &four, &word), "!str", "no such stream"},
        {AudioStreamGetProperty(id, 0, 'sdir', &four, &word), "!str", "a device is not a stream"},
        {AudioObjectGetPropertyData(id, &unknown, 0, nullptr, &four, &word), "who?", "no such property"},
        {AudioObjectGetPropertyData(id, &scope, 0, nullptr, &four, &word), "who?", "no such scope"},
        {AudioObjectGetPropertyData(id, &list, 0, nullptr, &four, &word), "who?",
         "a property of the system only"},
        {AudioDeviceGetProperty(id, 1, 0, 'livn', &four, &word), "who?", "no such element"},
        {AudioDeviceGetProperty(id, 3, 0, 'sfmt', &four, &word), "who?", "no such channel"},
        {AudioDeviceGetProperty(id, 0, 0, 'livn', &small, &word), "!siz", "too small a buffer"},
        {AudioDeviceGetProperty(id, 0, 0, 'livn', &none, &word), "!siz", "an empty buffer"},
        {AudioDeviceSetProperty(id, nullptr, 0, 0, 'fsiz', 3, &word), "!siz", "too short a value"},
        {AudioDeviceSetProperty(id, nullptr, 0, 0, 'livn', 4, &word), "unop", "read-only"},
        {AudioDeviceSetProperty(id, nullptr, 0, 0, 'zzzz', 4, &word), "who?", "no such property"},
        {AudioDeviceSetProperty(missing, nullptr, 0, 0, 'fsiz', 4, &word), "!dev", "no such device"},
        {AudioHardwareSetProperty('dev#', 4, &word), "unop", "read-only"},
        {AudioHardwareSetProperty('dOut', 4, &none), "!dev", "0 is not a device"},
        {AudioStreamSetProperty(stream, nullptr, 0, 'sdir', 4, &word), "unop", "read-only"},
        {AudioObjectGetPropertyData(id, nullptr, 0, nullptr, &four, &word), "nope", "no address"},
        {AudioObjectGetPropertyData(id, &alive, 0, nullptr, nullptr, &word), "nope", "no size"},
        {AudioObjectGetPropertyDataSize(id, &alive, 0, nullptr, nullptr), "nope", "no result"},
    };
    for (const auto& fact : facts) EXPECT_EQ(text(fact.status), fact.expected) << fact.why;
    EXPECT_FALSE(AudioObjectHasProperty(id, &unknown));
    EXPECT_FALSE(AudioObjectHasProperty(missing, &alive));
    EXPECT_FALSE(AudioObjectHasProperty(id, nullptr));
    EXPECT_TRUE(AudioObjectHasProperty(id, &alive));
}

TEST(Properties, ListsAreCutToWholeItems)
{
    Device a, b;
    const auto all = getAll<AudioDeviceID>(systemObject, address('dev#'));
    ASSERT_GE(all.size(), 3u);
    for (UInt32 capacity : {0u, 1u, 3u, 4u, 7u, 8u, 11u, 1000u}) {
        std::vector<AudioDeviceID> some(300, 0xCCCCCCCC);
        UInt32 size = capacity;
        EXPECT_EQ(AudioHardwareGetProperty('dev#', &size, some.data()), noErr) << capacity;
        const std::size_t items = std::min<std::size_t>(capacity / 4, all.size());
        EXPECT_EQ(size, items * 4) << capacity;
        EXPECT_TRUE(std::equal(some.begin(), some.begin() + static_cast<std::ptrdiff_t>(items), all.begin()))
            << capacity;
        EXPECT_EQ(some[items], 0xCCCCCCCCu) << "no write past the end";
    }
}

// ---- setting properties ----

TEST(Properties, OfARunningDeviceCanBeSet)
{
    Device device;
    std::vector<UInt32> slices;
    Procedure procedure(device, [&](const Call& call) { slices.push_back(call.frames()); });
    procedure.start();
    KVXPlatformStep(device, 64);
    EXPECT_EQ(set<UInt32>(device, address('fsiz'), 32), noErr);
    EXPECT_EQ(get<UInt32>(device, address('fsiz')), 32u);
    KVXPlatformStep(device, 64);
    EXPECT_EQ(slices, (std::vector<UInt32>{64, 32, 32}));
    for (UInt32 bad : {0u, 0x10000000u}) EXPECT_NE(set<UInt32>(device, address('fsiz'), bad), noErr) << bad;

    EXPECT_EQ(set<Float64>(device, address('nsrt'), 96000), noErr);
    const auto format = get<AudioStreamBasicDescription>(device, address('sfmt', output));
    EXPECT_EQ(format.mSampleRate, 96000.0);
    for (double bad : {0.0, -1.0, 1e9, double{NAN}, double{INFINITY}})
        EXPECT_NE(set<Float64>(device, address('nsrt'), bad), noErr) << bad;
    EXPECT_EQ(get<Float64>(device, address('nsrt')), 96000.0);

    AudioStreamBasicDescription request = format;
    request.mSampleRate = 44100;
    EXPECT_EQ(set(device, address('sfmt', output), request), noErr) << "a new rate is accepted";
    EXPECT_EQ(get<Float64>(device, address('nsrt')), 44100.0);
    request.mChannelsPerFrame = 7;
    EXPECT_EQ(text(set(device, address('sfmt', output), request)), "!dat");
}

TEST(Properties, LevelsChangeTheOutput)
{
    Device device;
    Procedure procedure(device, [](const Call& call) { call.fill(1); });
    Recording recording(device);
    procedure.start();
    KVXPlatformStep(device, 64);
    ASSERT_EQ(set<Float32>(device, address('volm', output, 1), 0.5f), noErr);
    KVXPlatformStep(device, 640); // enough frames for the glide of 512 frames
    ASSERT_EQ(set<UInt32>(device, address('mute', output, 2), 1), noErr);
    KVXPlatformStep(device, 640);
    ASSERT_EQ(set<UInt32>(device, address('mute', output, 0), 1), noErr);
    KVXPlatformStep(device, 640);
    ASSERT_EQ(recording.samples.size(), 2u * (64 + 3 * 640));
    const auto at = [&](std::size_t frame, int channel) { return recording.samples[frame * 2 + channel]; };
    EXPECT_EQ(at(63, 0), 1.0f);
    for (std::size_t frame = 64; frame < 64 + 512; ++frame)
        ASSERT_LT(at(frame, 0), at(frame - 1, 0)) << "no jump";
    const float level = at(703, 0);
    const float decibels = get<Float32>(device, address('vold', output, 1));
    EXPECT_NEAR(20 * std::log10(level), decibels, 0.01f);
    EXPECT_EQ(at(703, 1), 1.0f) << "the other channel is unchanged";
    EXPECT_EQ(at(1343, 0), level);
    EXPECT_EQ(at(1343, 1), 0.0f);
    EXPECT_EQ(at(1983, 0), 0.0f) << "all channels";
}

TEST(Properties, FullVolumeIsExact)
{
    Device device;
    Procedure procedure(device, [](const Call& call) { call.fill(0.3f); });
    Recording recording(device);
    procedure.start();
    set<Float32>(device, address('volm', output, 1), 0.0f);
    KVXPlatformStep(device, 128);
    set<Float32>(device, address('volm', output, 1), 1.0f);
    KVXPlatformStep(device, 512);
    EXPECT_EQ(recording.samples[2 * 127], 0.0f);
    EXPECT_EQ(recording.samples[2 * 639], 0.3f);
}

// ---- all selectors, through both interfaces ----

struct Reading {
    OSStatus infoStatus = noErr, status = noErr;
    UInt32 infoSize = 0, size = 0;
    Boolean isWritable = false;
    std::vector<char> bytes;
};

/// Replace a string's reference by the string's text, and release the string.
void replaceString(Kind kind, Reading& reading)
{
    if (kind != Kind::string || reading.status != noErr) return;
    CFStringRef string;
    ASSERT_EQ(reading.size, sizeof string);
    std::memcpy(&string, reading.bytes.data(), sizeof string);
    const std::string text = take(string);
    reading.bytes.assign(text.begin(), text.end());
}

constexpr UInt32 capacity = 4096;

Reading byAddress(AudioObjectID object, const AudioObjectPropertyAddress& at, Kind kind)
{
    Reading reading;
    reading.bytes.resize(capacity);
    reading.size = capacity;
    reading.infoStatus = AudioObjectGetPropertyDataSize(object, &at, 0, nullptr, &reading.infoSize);
    if (reading.infoStatus == noErr) AudioObjectIsPropertySettable(object, &at, &reading.isWritable);
    reading.status = AudioObjectGetPropertyData(object, &at, 0, nullptr, &reading.size, reading.bytes.data());
    if (reading.status == noErr) reading.bytes.resize(reading.size);
    replaceString(kind, reading);
    return reading;
}

Reading byTarget(AudioObjectID object, AudioClassID type, UInt32 channel, bool isInput,
                 const Selector& selector)
{
    Reading reading;
    reading.bytes.resize(capacity);
    reading.size = capacity;
    char* data = reading.bytes.data();
    switch (type) {
    case kAudioSystemObjectClassID:
        reading.infoStatus =
            AudioHardwareGetPropertyInfo(selector.code, &reading.infoSize, &reading.isWritable);
        reading.status = AudioHardwareGetProperty(selector.code, &reading.size, data);
        break;
    case kAudioDeviceClassID:
        reading.infoStatus = AudioDeviceGetPropertyInfo(object, channel, isInput, selector.code,
                                                        &reading.infoSize, &reading.isWritable);
        reading.status = AudioDeviceGetProperty(object, channel, isInput, selector.code, &reading.size, data);
        break;
    default:
        reading.infoStatus = AudioStreamGetPropertyInfo(object, channel, selector.code, &reading.infoSize,
                                                        &reading.isWritable);
        reading.status = AudioStreamGetProperty(object, channel, selector.code, &reading.size, data);
    }
    if (reading.status == noErr) reading.bytes.resize(reading.size);
    replaceString(selector.kind, reading);
    return reading;
}

void expectSame(const Reading& a, const Reading& b)
{
    EXPECT_EQ(text(a.infoStatus), text(b.infoStatus));
    EXPECT_EQ(text(a.status), text(b.status));
    EXPECT_EQ(a.infoSize, b.infoSize);
    EXPECT_EQ(a.isWritable, b.isWritable);
    if (a.status == noErr && b.status == noErr) EXPECT_EQ(a.bytes, b.bytes);
}

/// The size of a value of this kind; 0 if the size varies.
UInt32 sizeOf(Kind kind)
{
    switch (kind) {
    case Kind::word:
    case Kind::single:
        return 4;
    case Kind::real:
        return 8;
    case Kind::string:
        return sizeof(CFStringRef);
    case Kind::range:
        return sizeof(AudioValueRange);
    case Kind::format:
        return sizeof(AudioStreamBasicDescription);
    case Kind::translation:
        return sizeof(AudioValueTranslation);
    default:
        return 0;
    }
}

void compare(AudioObjectID object, AudioClassID type, const std::vector<Selector>& selectors)
{
    for (const Selector& selector : selectors)
        for (bool isInput : {false, true})
            for (UInt32 channel = 0; channel < 4; ++channel) {
                if (type == kAudioSystemObjectClassID && (channel || isInput)) continue;
                SCOPED_TRACE(text(selector.code) + " of " + text(type) + ", channel " +
                             std::to_string(channel) + (isInput ? ", input" : ""));
                const UInt32 scope = type != kAudioDeviceClassID ? global : isInput ? input : output;
                const Reading a = byAddress(object, address(selector.code, scope, channel), selector.kind);
                expectSame(a, byTarget(object, type, channel, isInput, selector));
                if (a.infoStatus == noErr && sizeOf(selector.kind))
                    EXPECT_EQ(a.infoSize, sizeOf(selector.kind));
                if (a.status == noErr && selector.kind != Kind::string) EXPECT_EQ(a.infoSize, a.size);
            }
}

TEST(Properties, AreEqualThroughBothInterfaces)
{
    Device device(described());
    const uint32_t strings = liveCount("CFString");
    compare(systemObject, kAudioSystemObjectClassID, systemSelectors);
    for (AudioDeviceID id : getAll<AudioDeviceID>(systemObject, address('dev#'))) {
        compare(id, kAudioDeviceClassID, deviceSelectors);
        for (UInt32 scope : {output, input})
            for (AudioStreamID stream : getAll<AudioStreamID>(id, address('stm#', scope)))
                compare(stream, kAudioStreamClassID, streamSelectors);
    }
    EXPECT_EQ(liveCount("CFString"), strings)
        << "the caller released every string, and reading a size made none";
}

TEST(Properties, OfTheSystemAndOfDevicesAreSeparate)
{
    Device device;
    const auto isListed = [](const std::vector<Selector>& all, UInt32 code) {
        return std::any_of(all.begin(), all.end(), [code](const Selector& s) { return s.code == code; });
    };
    for (const Selector& selector : systemSelectors) {
        if (isListed(deviceSelectors, selector.code)) continue;
        const auto at = address(selector.code);
        EXPECT_FALSE(AudioObjectHasProperty(device, &at)) << text(selector.code);
    }
    for (const Selector& selector : deviceSelectors) {
        if (isListed(systemSelectors, selector.code)) continue;
        const auto at = address(selector.code);
        EXPECT_FALSE(AudioObjectHasProperty(systemObject, &at)) << text(selector.code);
    }
}

} // namespace
