// Listeners are notified of exactly those properties that a change of a device changes. The test compares all
// property values before and after the change.
#include "tests/platform/hal/recording_listener.h"
#include "tests/platform/hal/selectors.h"

#include <CoreFoundation/CoreFoundation.h>

#include <map>
#include <set>

namespace {

using namespace haltest;

constexpr auto global = kAudioObjectPropertyScopeGlobal, output = kAudioDevicePropertyScopeOutput,
               input = kAudioDevicePropertyScopeInput;

struct Address {
    AudioObjectID object;
    AudioObjectPropertyAddress at;

    bool operator<(const Address& other) const
    {
        const auto key = [](const Address& p) {
            return std::make_tuple(p.object, p.at.mSelector, p.at.mScope, p.at.mElement);
        };
        return key(*this) < key(other);
    }
};
using Values = std::map<Address, std::vector<char>>;

/// Whether the caller's buffer is also the property's input, so that the property has no value to compare.
bool isTranslation(const Selector& selector)
{
    constexpr UInt32 translations[] = {'sfm?', 'sfmm', 'pft?', 'pftm', 'v2db', 'db2v', 'suse'};
    return selector.kind == Kind::translation || std::find(std::begin(translations), std::end(translations),
                                                           selector.code) != std::end(translations);
}

void read(Values& values, AudioObjectID object, const std::vector<Selector>& selectors)
{
    for (const Selector& selector : selectors)
        for (UInt32 scope : {global, input, output})
            for (UInt32 element = 0; element < 5; ++element) {
                const auto at = address(selector.code, scope, element);
                std::vector<char> bytes(4096);
                UInt32 size = static_cast<UInt32>(bytes.size());
                if (isTranslation(selector) ||
                    AudioObjectGetPropertyData(object, &at, 0, nullptr, &size, bytes.data()) != noErr)
                    continue;
                bytes.resize(size);
                if (selector.kind == Kind::string) {
                    CFStringRef string;
                    std::memcpy(&string, bytes.data(), sizeof string);
                    bytes.assign(100, 0);
                    CFStringGetCString(string, bytes.data(), 100, kCFStringEncodingUTF8);
                    CFRelease(string);
                }
                values[{object, at}] = bytes;
            }
}

std::string print(AudioObjectID object, UInt32 selector, UInt32 element)
{
    return std::to_string(object) + " " + text(selector) + " " + std::to_string(element);
}

/// A device, its streams and the system object, each with a list of all its selectors.
struct Everything {
    std::vector<std::pair<AudioObjectID, const std::vector<Selector>*>> objects;

    explicit Everything(AudioDeviceID device)
    {
        objects = {{AudioObjectID{kAudioObjectSystemObject}, &systemSelectors}, {device, &deviceSelectors}};
        for (AudioStreamID stream : getAll<AudioStreamID>(device, address('ownd')))
            objects.push_back({stream, &streamSelectors});
    }

    Values values() const
    {
        Values all;
        for (const auto& each : objects) read(all, each.first, *each.second);
        return all;
    }
};

/// The test parameter is the device's number of inputs. The device also has two outputs.
class Changes : public testing::TestWithParam<uint32_t> {};

TEST_P(Changes, AreNotifiedOnceAtTheirAddress)
{
    KVXSimulatedDevice description = Device::stepped();
    description.outputChannels = 2;
    description.inputChannels = GetParam();
    Device device(description);
    const Everything everything(device);
    const auto rate = [&](double hertz) { return set<Float64>(device, address('nsrt'), hertz); };
    const auto configure = [&](double hertz, uint32_t channels, uint32_t slice) {
        return KVXPlatformConfigureDevice(device, hertz, channels, slice);
    };
    const struct {
        const char* what;
        std::function<OSStatus()> change;
    } facts[] = {
        {"another common rate", [&] { return rate(48000); }},
        {"an uncommon rate", [&] { return rate(12345); }},
        {"another uncommon rate", [&] { return rate(12346); }},
        {"a common rate again", [&] { return rate(44100); }},
        {"a slice", [&] { return set<UInt32>(device, address('fsiz'), 128); }},
        {"a slice in bytes", [&] { return set<UInt32>(device, address('bsiz', output), 1000); }},
        {"four channels", [&] { return configure(0, 4, 0); }},
        {"three channels", [&] { return configure(0, 3, 0); }},
        {"one channel", [&] { return configure(0, 1, 0); }},
        {"two channels again", [&] { return configure(0, 2, 0); }},
        {"everything at once", [&] { return configure(11111, 1, 64); }},
        {"a volume", [&] { return set<Float32>(device, address('volm', output, 1), 0.5f); }},
        {"a volume in decibels", [&] { return set<Float32>(device, address('vold', output, 1), -3); }},
        {"a mute", [&] { return set<UInt32>(device, address('mute', output, 1), 1); }},
        {"all muted", [&] { return set<UInt32>(device, address('mute', output, 0), 1); }},
        {"a source", [&] { return set<UInt32>(device, address('ssrc', output), 'hdpn'); }},
        {"hog mode", [&] { return set<SInt32>(device, address('oink'), 0); }},
        {"its death", [&] { return KVXPlatformKillDevice(device); }},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.what);
        const Values before = everything.values();
        std::vector<std::unique_ptr<RecordingListener>> byObject, byAddress;
        std::vector<Address> watched;
        for (const auto& each : everything.objects)
            if (each.first != kAudioObjectSystemObject)
                byObject.push_back(std::make_unique<RecordingListener>(each.first));
        for (const auto& value : before) {
            // waitForNotifications() itself changes properties of the system object.
            if (value.first.object == kAudioObjectSystemObject) continue;
            watched.push_back(value.first);
            byAddress.push_back(std::make_unique<RecordingListener>(value.first.object, value.first.at));
        }
        ASSERT_EQ(fact.change(), noErr);
        waitForNotifications();
        const Values after = everything.values();
        std::set<std::string> changedSelectors, receivedSelectors;
        for (std::size_t i = 0; i < watched.size(); ++i) {
            const auto now = after.find(watched[i]);
            const bool isPresent = now != after.end();
            const bool isChanged = isPresent && now->second != before.at(watched[i]);
            const auto& at = watched[i].at;
            if (isChanged) changedSelectors.insert(print(watched[i].object, at.mSelector, 0));
            if (at.mScope == input && GetParam() == 0)
                // Without inputs, a listener of the input scope receives the changes of the whole device.
                continue;
            // A listener of the global scope receives the changes of both sides, so its count is checked for
            // changed values only.
            if (isPresent && at.mScope != global)
                EXPECT_EQ(byAddress[i]->count(), isChanged ? 1 : 0)
                    << text(at) << " of " << watched[i].object;
            else if (isChanged)
                EXPECT_EQ(byAddress[i]->count(), 1) << text(at) << " of " << watched[i].object;
        }
        std::size_t index = 0;
        for (const auto& each : everything.objects) {
            if (each.first == kAudioObjectSystemObject) continue;
            std::vector<std::string> received = byObject[index++]->takeReceived();
            EXPECT_EQ(std::set<std::string>(received.begin(), received.end()).size(), received.size())
                << "each once";
            for (const std::string& line : received)
                receivedSelectors.insert(std::to_string(each.first) + " " + line.substr(0, 4) + " 0");
        }
        EXPECT_EQ(receivedSelectors, changedSelectors);
        EXPECT_FALSE(changedSelectors.empty());
    }
}

INSTANTIATE_TEST_SUITE_P(Device, Changes, testing::Values(0u, 2u));

TEST(SystemChanges, NotifyTheListAndTheOwnedObjects)
{
    RecordingListener list(kAudioObjectSystemObject, address('dev#')),
        owned(kAudioObjectSystemObject, address('ownd'));
    {
        const Device device;
        waitForNotifications();
        EXPECT_EQ(list.count(), 1);
        EXPECT_EQ(owned.count(), 1);
    }
    waitForNotifications();
    EXPECT_EQ(list.count(), 2);
    EXPECT_EQ(owned.count(), 2);
}

} // namespace
