// Settable properties: the values that they accept, the values that they refuse, and their notifications.
#include "tests/platform/hal/recording_listener.h"

#include <CoreFoundation/CoreFoundation.h>

#include <unistd.h>

#include <cmath>
#include <limits>

namespace {

using namespace haltest;

constexpr UInt32 global = kAudioObjectPropertyScopeGlobal, output = kAudioDevicePropertyScopeOutput,
                 input = kAudioDevicePropertyScopeInput;
constexpr AudioObjectID systemObject = kAudioObjectSystemObject;
constexpr float nan = std::numeric_limits<float>::quiet_NaN();

using Notifications = std::vector<std::string>;

/// The notifications that a listener of all properties of the object receives while `act` runs.
Notifications notificationsOf(AudioObjectID object, const std::function<void()>& act)
{
    RecordingListener listener(object);
    act();
    waitForNotifications();
    EXPECT_FALSE(listener.wasCalledHere()) << "never on the thread that sets";
    return listener.takeReceived();
}

AudioStreamID streamOf(AudioDeviceID device) { return getAll<AudioStreamID>(device, address('stm#')).at(0); }

template <class T>
std::vector<char> bytesOf(const T& value)
{
    std::vector<char> bytes(sizeof value);
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

AudioStreamBasicDescription formatAt(double rate)
{
    AudioStreamBasicDescription format = {};
    format.mSampleRate = rate;
    format.mFormatID = kAudioFormatLinearPCM;
    format.mFormatFlags = kAudioFormatFlagsNativeFloatPacked;
    format.mBytesPerPacket = format.mBytesPerFrame = 8;
    format.mFramesPerPacket = 1;
    format.mChannelsPerFrame = 2;
    format.mBitsPerChannel = 32;
    return format;
}

OSStatus setBytes(AudioObjectID object, const AudioObjectPropertyAddress& at, const std::vector<char>& bytes)
{
    return AudioObjectSetPropertyData(object, &at, 0, nullptr, static_cast<UInt32>(bytes.size()),
                                      bytes.data());
}

// ---- every settable property ----

enum class Of { device, stream, system };

struct Setting {
    Of object;
    AudioObjectPropertyAddress at;
    std::vector<char> value;
    Notifications received; ///< expected notifications to a listener of the object itself
};

const Notifications newRate = {"nsrt glob 0", "asrt glob 0", "sfmt glob 0"};
const Notifications newUncommonRate = {"nsrt glob 0", "asrt glob 0", "sfmt glob 0", "sfm# glob 0"};
const Notifications newSlice = {"fsiz glob 0", "bsiz glob 0", "slay glob 0"};
const Notifications newFormat = {"sfmt glob 0", "pft  glob 0"};

std::vector<Setting> settings()
{
    return {
        {Of::device, address('fsiz'), bytesOf<UInt32>(128), newSlice},
        {Of::device, address('fsiz', output), bytesOf<UInt32>(129), newSlice},
        {Of::device, address('fsiz', input), bytesOf<UInt32>(1), newSlice},
        {Of::device, address('fsiz'), bytesOf<UInt32>(8192), newSlice},
        {Of::device, address('bsiz', output), bytesOf<UInt32>(96 * 8), newSlice},
        {Of::device, address('nsrt'), bytesOf<Float64>(48000), newRate},
        {Of::device, address('nsrt', input), bytesOf<Float64>(1000), newUncommonRate},
        {Of::device, address('nsrt', output), bytesOf<Float64>(768000), newUncommonRate},
        {Of::device, address('sfmt'), bytesOf(formatAt(22050)), newUncommonRate},
        {Of::device, address('sfmt', output, 2), bytesOf(formatAt(32000)), newRate},
        {Of::device, address('volm', output, 1), bytesOf<Float32>(0.5f), {"volm outp 1", "vold outp 1"}},
        {Of::device, address('volm', global, 2), bytesOf<Float32>(0), {"volm outp 2", "vold outp 2"}},
        {Of::device, address('vold', output, 1), bytesOf<Float32>(-16), {"volm outp 1", "vold outp 1"}},
        {Of::device, address('mute', output, 0), bytesOf<UInt32>(1), {"mute outp 0"}},
        {Of::device, address('mute', output, 2), bytesOf<UInt32>(1), {"mute outp 2"}},
        {Of::device, address('ncyc'), bytesOf<Float32>(1), {}},
        {Of::device, address('ssrc', output), bytesOf<UInt32>('hdpn'), {"ssrc glob 0"}},
        {Of::device, address('ssrc'), bytesOf<UInt32>('spkr'), {"ssrc glob 0"}},
        {Of::stream, address('sfmt'), bytesOf(formatAt(11025)), newFormat},
        {Of::stream, address('pft '), bytesOf(formatAt(8000)), newFormat},
        {Of::stream, address('sfmt', input), bytesOf(formatAt(96000)), newFormat},
        {Of::system, address('slep'), bytesOf<UInt32>(0), {"slep glob 0"}},
        {Of::system, address('unld', output), bytesOf<UInt32>(1), {"unld glob 0"}},
    };
}

TEST(Setting, IsReadBackAndNotifiedOnce)
{
    Device device;
    const AudioStreamID stream = streamOf(device);
    for (const Setting& setting : settings()) {
        SCOPED_TRACE(text(setting.at));
        const AudioObjectID object = setting.object == Of::device   ? AudioObjectID{device}
                                     : setting.object == Of::stream ? stream
                                                                    : systemObject;
        const auto setIt = [&] { EXPECT_EQ(text(setBytes(object, setting.at, setting.value)), text(noErr)); };
        // The wait itself notifies listeners of the system object, so only notifications of this property are
        // counted.
        if (setting.object == Of::system) {
            const auto isThis = [&](const std::string& at) { return at == setting.received[0]; };
            const Notifications first = notificationsOf(object, setIt),
                                again = notificationsOf(object, setIt);
            const int ofTheWait = setting.received[0] == "slep glob 0" ? 2 : 0;
            EXPECT_EQ(std::count_if(first.begin(), first.end(), isThis), 1 + ofTheWait);
            EXPECT_EQ(std::count_if(again.begin(), again.end(), isThis), ofTheWait);
            EXPECT_EQ(getAll<char>(object, setting.at), setting.value);
            continue;
        }
        EXPECT_EQ(notificationsOf(object, setIt), setting.received);
        EXPECT_EQ(getAll<char>(object, setting.at), setting.value);
        EXPECT_EQ(notificationsOf(object, setIt), Notifications{}) << "unchanged";
    }
    for (auto selector : {'slep', 'unld'})
        set<UInt32>(systemObject, address(static_cast<UInt32>(selector)), selector == 'slep');
}

// The device and its streams have one common rate, so a change at one of these objects notifies the listeners
// of all these objects.
TEST(Setting, RateNotifiesDeviceAndStream)
{
    Device device;
    const AudioStreamID stream = streamOf(device);
    const struct {
        AudioObjectID object;
        AudioObjectPropertyAddress at;
        std::vector<char> value;
    } facts[] = {
        {device, address('nsrt'), bytesOf<Float64>(48000)},
        {device, address('sfmt', output), bytesOf(formatAt(22050))},
        {stream, address('sfmt'), bytesOf(formatAt(32000))},
        {stream, address('pft '), bytesOf(formatAt(8000))},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(text(fact.at));
        RecordingListener ofDevice(device), ofStream(stream);
        ASSERT_EQ(setBytes(fact.object, fact.at, fact.value), noErr);
        waitForNotifications();
        EXPECT_EQ(ofDevice.takeReceived(), newRate);
        EXPECT_EQ(ofStream.takeReceived(), newFormat);
        EXPECT_EQ(get<Float64>(device, address('nsrt')),
                  get<AudioStreamBasicDescription>(stream, address('pft ')).mSampleRate);
    }
}

// A listener's notification does not depend on the scope or the interface through which the property was set.
TEST(Setting, NotifiesListenersAtTheirOwnAddress)
{
    Device device;
    float level = 1;
    const auto lower = [&] { return level -= 0.0625f; };
    UInt32 slice = 64;
    const struct {
        AudioObjectPropertyAddress watched;
        std::function<OSStatus()> change;
        Notifications received;
    } facts[] = {
        {address('fsiz'),
         [&] {
             ++slice;
             return AudioDeviceSetProperty(device, nullptr, 0, false, 'fsiz', 4, &slice);
         },
         {"fsiz glob 0"}},
        {address('fsiz', input), [&] { return set(device, address('fsiz'), ++slice); }, {"fsiz inpt 0"}},
        {address('fsiz', anyScope, anyElement),
         [&] { return set(device, address('fsiz', input), ++slice); },
         {"fsiz glob 0"}},
        {address('sfmt', output, 1),
         [&] { return set<Float64>(device, address('nsrt'), 48000); },
         {"sfmt outp 1"}},
        {address('sfmt', global, 2),
         [&] { return set(device, address('sfmt', output, 1), formatAt(44100)); },
         {"sfmt glob 2"}},
        {address('volm', global, 1),
         [&] { return set<Float32>(device, address('volm', output, 1), lower()); },
         {"volm glob 1"}},
        {address('volm', output, 1),
         [&] { return set<Float32>(device, address('volm', global, 1), lower()); },
         {"volm outp 1"}},
        {address('volm', output, 1),
         [&] { return set<Float32>(device, address('volm', output, 2), lower()); },
         {}},
        {address('volm', input, 1),
         [&] { return set<Float32>(device, address('volm', output, 1), lower()); },
         {}},
        {address(anySelector, output, 2),
         [&] { return set<Float32>(device, address('vold', output, 2), lower()); },
         {"volm outp 2", "vold outp 2"}},
        {address('mute', output, anyElement),
         [&] { return set<UInt32>(device, address('mute', output, 1), 1); },
         {"mute outp 1"}},
        {address('mute', output, 0), [&] { return set<UInt32>(device, address('mute', output, 2), 1); }, {}},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(text(fact.watched));
        RecordingListener listener(device, fact.watched);
        EXPECT_EQ(text(fact.change()), text(noErr));
        waitForNotifications();
        EXPECT_EQ(listener.takeReceived(), fact.received);
    }
}

TEST(Setting, OutOfRangeIsRefusedWithoutNotification)
{
    Device device;
    const AudioStreamID stream = streamOf(device);
    const auto wrong = [](auto change) {
        AudioStreamBasicDescription format = formatAt(44100);
        change(format);
        return bytesOf(format);
    };
    const struct {
        AudioObjectID object;
        AudioObjectPropertyAddress at;
        std::vector<char> value;
        const char* status;
    } facts[] = {
        {device, address('fsiz'), bytesOf<UInt32>(0), "nope"},
        {device, address('fsiz'), bytesOf<UInt32>(8193), "nope"},
        {device, address('fsiz'), bytesOf<UInt32>(0xFFFFFFFF), "nope"},
        {device, address('bsiz', output), bytesOf<UInt32>(0), "nope"},
        // 511 bytes are not a whole number of frames.
        {device, address('bsiz', output), bytesOf<UInt32>(511), "nope"},
        {device, address('bsiz', output), bytesOf<UInt32>(8193 * 8), "nope"},
        {device, address('nsrt'), bytesOf<Float64>(999.999), "!dat"},
        {device, address('nsrt'), bytesOf<Float64>(768000.1), "!dat"},
        {device, address('nsrt'), bytesOf<Float64>(double{nan}), "!dat"},
        {device, address('sfmt', output), wrong([](auto& f) { f.mChannelsPerFrame = 1; }), "!dat"},
        {device, address('sfmt', output), wrong([](auto& f) { f.mFormatFlags = 4; }), "!dat"},
        {device, address('sfmt', output), wrong([](auto& f) { f.mSampleRate = -1; }), "!dat"},
        {stream, address('sfmt'), wrong([](auto& f) { f.mFormatID = 'aac '; }), "!dat"},
        {stream, address('pft '), wrong([](auto& f) { f.mBitsPerChannel = 16; }), "!dat"},
        {device, address('ssrc', output), bytesOf<UInt32>('imic'), "nope"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(text(fact.at));
        const auto before = getAll<char>(fact.object, fact.at);
        const auto refuse = [&] { EXPECT_EQ(text(setBytes(fact.object, fact.at, fact.value)), fact.status); };
        EXPECT_EQ(notificationsOf(fact.object, refuse), Notifications{});
        EXPECT_EQ(getAll<char>(fact.object, fact.at), before);
    }
}

// A format's fields of 0 are ignored, so a program may set a format in which only the rate is given.
TEST(Setting, FormatMayLeaveFieldsZero)
{
    Device device;
    AudioStreamBasicDescription format = {};
    EXPECT_EQ(set(device, address('sfmt', output), format), noErr);
    EXPECT_EQ(get<Float64>(device, address('nsrt')), 44100.0);
    format.mSampleRate = 48000;
    EXPECT_EQ(set(device, address('sfmt', output), format), noErr);
    EXPECT_EQ(get<Float64>(device, address('nsrt')), 48000.0);
}

// ---- levels ----

TEST(Setting, ConvertsBetweenScalarsAndDecibels)
{
    Device device;
    const auto convert = [&](UInt32 selector, Float32 value) {
        const auto at = address(selector, output, 1);
        UInt32 size = sizeof value;
        EXPECT_EQ(AudioObjectGetPropertyData(device, &at, 0, nullptr, &size, &value), noErr);
        return value;
    };
    const struct {
        float scalar, decibels;
    } exact[] = {{0, -64}, {0.25f, -48}, {0.5f, -32}, {0.75f, -16}, {1, 0}};
    for (const auto& fact : exact) {
        EXPECT_EQ(convert('v2db', fact.scalar), fact.decibels);
        EXPECT_EQ(convert('db2v', fact.decibels), fact.scalar);
        set<Float32>(device, address('volm', output, 1), fact.scalar);
        EXPECT_EQ(get<Float32>(device, address('vold', output, 1)), fact.decibels);
        set<Float32>(device, address('vold', output, 2), fact.decibels);
        EXPECT_EQ(get<Float32>(device, address('volm', output, 2)), fact.scalar);
    }
    float last = -65;
    for (int i = 0; i <= 1000; ++i) {
        const float scalar = static_cast<float>(i) / 1000, decibels = convert('v2db', scalar);
        EXPECT_GT(decibels, last) << "monotonic";
        EXPECT_NEAR(convert('db2v', decibels), scalar, 1e-6f);
        last = decibels;
    }
    const struct {
        UInt32 selector;
        float value, expected;
        const char* why;
    } edges[] = {
        {'v2db', -1, -64, "silence is the lowest"},         {'v2db', 2, 0, "full volume is the highest"},
        {'v2db', INFINITY, 0, "infinity is clamped"},       {'db2v', -1000, 0, "below the range"},
        {'db2v', -INFINITY, 0, "the logarithm of silence"}, {'db2v', 6, 1, "no amplification"},
    };
    for (const auto& fact : edges) EXPECT_EQ(convert(fact.selector, fact.value), fact.expected) << fact.why;
}

TEST(Setting, VolumeIsClamped)
{
    Device device;
    const struct {
        UInt32 selector;
        float value, scalar;
    } facts[] = {{'volm', 2, 1},        {'volm', -1, 0},        {'volm', nan, 0},     {'volm', INFINITY, 1},
                 {'vold', 20, 1},       {'vold', -100, 0},      {'vold', nan, 0},     {'volm', -INFINITY, 0},
                 {'vold', INFINITY, 1}, {'vold', -INFINITY, 0}, {'volm', -0.0f, 0.0f}};
    for (const auto& fact : facts) {
        set<Float32>(device, address('volm', output, 1), 0.5f);
        EXPECT_EQ(set<Float32>(device, address(fact.selector, output, 1), fact.value), noErr);
        EXPECT_EQ(get<Float32>(device, address('volm', output, 1)), fact.scalar)
            << text(fact.selector) << " " << fact.value;
    }
    EXPECT_EQ(get<Float32>(device, address('volm', output, 2)), 1.0f) << "the other channel is unchanged";
}

// ---- data sources ----

TEST(Setting, DataSourceChangesTheTerminalType)
{
    Device device;
    const AudioStreamID stream = streamOf(device);
    const struct {
        UInt32 source, terminal;
        Notifications received; ///< expected notifications to a listener of the stream
    } facts[] = {
        {'spkr', 'spkr', {}},
        {'hdpn', 'hdph', {"term glob 0"}},
        {'hdpn', 'hdph', {}},
        {'spkr', 'spkr', {"term glob 0"}},
    };
    for (const auto& fact : facts) {
        EXPECT_EQ(notificationsOf(
                      stream, [&] { EXPECT_EQ(set(device, address('ssrc', output), fact.source), noErr); }),
                  fact.received);
        EXPECT_EQ(text(get<UInt32>(device, address('ssrc'))), text(fact.source));
        EXPECT_EQ(text(get<UInt32>(stream, address('term'))), text(fact.terminal));
    }
    EXPECT_EQ(text(set<UInt32>(get<AudioDeviceID>(systemObject, address('dIn ')), address('ssrc'), 'spkr')),
              "nope");
}

// ---- hog mode ----

// The caller's value is not changed, because its memory may be shared with other objects.
TEST(Setting, HogModeTogglesAndKeepsTheCallersValue)
{
    Device device;
    const auto at = address('oink');
    const auto self = static_cast<SInt32>(getpid());
    for (SInt32 given : {self, SInt32{-1}, SInt32{4711}, SInt32{0}}) // the given value is ignored
        for (SInt32 owner : {self, SInt32{-1}}) {
            SInt32 value = given;
            const auto toggle = [&] {
                EXPECT_EQ(AudioObjectSetPropertyData(device, &at, 0, nullptr, sizeof value, &value), noErr);
            };
            EXPECT_EQ(notificationsOf(device, toggle), Notifications{"oink glob 0"});
            EXPECT_EQ(value, given);
            EXPECT_EQ(get<SInt32>(device, at), owner);
        }
}

// ---- default devices ----

struct Role {
    UInt32 selector;
    bool isInput;
};
constexpr Role roles[] = {{'dOut', false}, {'sOut', false}, {'dIn ', true}};

TEST(Setting, DefaultDeviceMustBeAliveAndHaveThatSide)
{
    Device device, dead;
    KVXPlatformKillDevice(dead);
    const AudioDeviceID microphone = get<AudioDeviceID>(systemObject, address('dIn '));
    const AudioDeviceID builtIn = KVXPlatformBuiltInSimulatedDevice();
    AudioDeviceID ended;
    {
        Device passing;
        ended = passing;
    }
    for (const Role& role : roles) {
        SCOPED_TRACE(text(role.selector));
        const auto at = address(role.selector);
        const AudioDeviceID before = get<AudioDeviceID>(systemObject, at);
        const struct {
            AudioDeviceID device;
            const char* why;
        } unfit[] = {{0, "no device"},
                     {systemObject, "the system object"},
                     {0x7FFFFFFF, "a missing device"},
                     {streamOf(device), "a stream"},
                     {dead, "a dead device"},
                     {ended, "an ended device"},
                     {role.isInput ? AudioDeviceID{device} : microphone, "a device without that side"}};
        RecordingListener listener(systemObject, at);
        for (const auto& fact : unfit) {
            EXPECT_EQ(text(set(systemObject, at, fact.device)), "!dev") << fact.why;
            EXPECT_EQ(AudioHardwareSetProperty(role.selector, 4, &fact.device), kAudioHardwareBadDeviceError);
            EXPECT_EQ(get<AudioDeviceID>(systemObject, at), before) << fact.why;
        }
        EXPECT_EQ(set(systemObject, at, before), noErr);
        waitForNotifications();
        EXPECT_EQ(listener.count(), 0) << "unchanged";
        if (role.isInput) continue; // no second device has an input that could become the default
        for (AudioDeviceID next : {AudioDeviceID{device}, builtIn}) {
            EXPECT_EQ(set(systemObject, at, next), noErr);
            EXPECT_EQ(get<AudioDeviceID>(systemObject, at), next);
        }
        waitForNotifications();
        EXPECT_EQ(listener.takeReceived(), (Notifications{text(at), text(at)}));
    }
}

// ---- qualifiers and translations ----

TEST(Setting, QualifierSelectsOwnedObjects)
{
    Device device;
    const auto at = address('ownd');
    const AudioStreamID stream = streamOf(device);
    const struct {
        AudioObjectID object;
        std::vector<AudioClassID> classes;
        std::size_t owned;
        const char* why;
    } facts[] = {
        {device, {}, 1, "all"},
        {device, {'astr'}, 1, "streams"},
        {device, {'adev'}, 0, "a device owns no devices"},
        {device, {'aobj'}, 1, "all are objects"},
        {device, {'actl', 'astr'}, 1, "either"},
        {device, {'actl', 'aplg'}, 0, "neither"},
        {systemObject, {'adev'}, 3, "devices"},
        {systemObject, {'astr'}, 0, "devices own the streams"},
        {systemObject, {'aobj', 'aobj'}, 3, "each only once"},
    };
    for (const auto& fact : facts) {
        const auto bytes = static_cast<UInt32>(fact.classes.size() * sizeof(AudioClassID));
        UInt32 size = 99;
        EXPECT_EQ(AudioObjectGetPropertyDataSize(fact.object, &at, bytes, fact.classes.data(), &size), noErr);
        EXPECT_EQ(size, fact.owned * sizeof(AudioObjectID)) << fact.why;
        std::vector<AudioObjectID> found(10);
        size = 40;
        EXPECT_EQ(
            AudioObjectGetPropertyData(fact.object, &at, bytes, fact.classes.data(), &size, found.data()),
            noErr);
        EXPECT_EQ(size, fact.owned * sizeof(AudioObjectID)) << fact.why;
        if (fact.object == device && fact.owned) EXPECT_EQ(found[0], stream);
    }
    UInt32 size = 0;
    EXPECT_EQ(AudioObjectGetPropertyDataSize(device, &at, 4, nullptr, &size), noErr)
        << "a null list is not a qualifier";
    EXPECT_EQ(size, 4u);
    const AudioClassID streams = 'astr';
    EXPECT_EQ(AudioObjectGetPropertyDataSize(device, &at, 3, &streams, &size), noErr)
        << "less than one class is not a qualifier";
    EXPECT_EQ(size, 4u);
}

TEST(Setting, TranslationFindsDevicesByUID)
{
    const uint32_t strings = liveCount("CFString");
    {
        KVXSimulatedDevice description = Device::stepped();
        description.uid = "kvx:test:\xC3\xBC";
        Device device(description);
        const struct {
            const char* uid; ///< text of the UID; null if the test passes no string
            AudioDeviceID device;
        } facts[] = {{"kvx:test:\xC3\xBC", device},
                     {"kvx:test:", 0},
                     {"", 0},
                     {"kvx:simulated:input", get<AudioDeviceID>(systemObject, address('dIn '))},
                     {nullptr, 0}};
        for (const auto& fact : facts) {
            CFStringRef uid =
                fact.uid ? CFStringCreateWithCString(nullptr, fact.uid, kCFStringEncodingUTF8) : nullptr;
            AudioDeviceID found = 0xCCCCCCCC;
            AudioValueTranslation translation = {&uid, sizeof uid, &found, sizeof found};
            UInt32 size = sizeof translation;
            EXPECT_EQ(AudioHardwareGetProperty('duid', &size, &translation), noErr);
            EXPECT_EQ(found, fact.device) << (fact.uid ? fact.uid : "(none)");
            const auto at = address('duid');
            found = 0xCCCCCCCC;
            EXPECT_EQ(AudioObjectGetPropertyData(systemObject, &at, 0, nullptr, &size, &translation), noErr);
            EXPECT_EQ(found, fact.device);
            if (uid) CFRelease(uid);
        }
        CFStringRef uid = nullptr;
        AudioDeviceID found = 0;
        const AudioValueTranslation bad[] = {{nullptr, sizeof uid, &found, 4},
                                             {&uid, sizeof uid, nullptr, 4},
                                             {&uid, 3, &found, 4},
                                             {&uid, sizeof uid, &found, 5}};
        for (AudioValueTranslation translation : bad) {
            UInt32 size = sizeof translation;
            EXPECT_EQ(text(AudioHardwareGetProperty('duid', &size, &translation)), "!siz");
        }
    }
    EXPECT_EQ(liveCount("CFString"), strings);
}

TEST(Setting, TranslationNamesDataSources)
{
    Device device;
    const AudioDeviceID microphone = get<AudioDeviceID>(systemObject, address('dIn '));
    const struct {
        AudioDeviceID device;
        bool isInput;
        UInt32 source;
        const char* status;
        const char* name;
    } facts[] = {
        {device, false, 'spkr', nullptr, "Simulated Speakers"},
        {device, false, 'hdpn', nullptr, "Simulated Headphones"},
        {microphone, true, 'imic', nullptr, "Simulated Microphone"},
        {device, false, 'imic', "nope", "a source of the other side"},
        {microphone, true, 'zzzz', "nope", "an unknown source"},
        {device, true, 'spkr', "who?", "no such side"},
        {microphone, false, 'imic', "who?", "no such side"},
    };
    for (const auto& fact : facts) {
        UInt32 source = fact.source;
        char name[40] = "";
        CFStringRef string = nullptr;
        AudioValueTranslation asText = {&source, sizeof source, name, sizeof name};
        AudioValueTranslation asString = {&source, sizeof source, &string, sizeof string};
        UInt32 size = sizeof asText;
        const OSStatus first = AudioDeviceGetProperty(fact.device, 0, fact.isInput, 'sscn', &size, &asText);
        const OSStatus second =
            AudioDeviceGetProperty(fact.device, 0, fact.isInput, 'lscn', &size, &asString);
        EXPECT_EQ(text(first), text(second)) << fact.name;
        if (fact.status) {
            EXPECT_EQ(text(first), fact.status) << fact.name;
            continue;
        }
        EXPECT_EQ(text(first), text(noErr));
        EXPECT_STREQ(name, fact.name);
        char copy[40] = "";
        ASSERT_TRUE(string);
        CFStringGetCString(string, copy, sizeof copy, kCFStringEncodingUTF8);
        EXPECT_STREQ(copy, fact.name);
        CFRelease(string);

        asText.mOutputDataSize =
            static_cast<UInt32>(std::strlen(fact.name)); // the buffer has no space for the terminating zero
        EXPECT_EQ(text(AudioDeviceGetProperty(fact.device, 0, fact.isInput, 'sscn', &size, &asText)), "!siz");
        ++asText.mOutputDataSize;
        EXPECT_EQ(AudioDeviceGetProperty(fact.device, 0, fact.isInput, 'sscn', &size, &asText), noErr);
        asString.mOutputDataSize = 1;
        EXPECT_EQ(text(AudioDeviceGetProperty(fact.device, 0, fact.isInput, 'lscn', &size, &asString)),
                  "!siz");
    }
}

} // namespace
