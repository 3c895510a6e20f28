// What a change changes is told, and nothing else: the values of every object before and after are compared.
#include "tests/platform/hal/selectors.h"
#include "tests/platform/hal/watcher.h"

#include <CoreFoundation/CoreFoundation.h>

#include <map>
#include <set>

namespace {

using namespace bench;

constexpr auto global = kAudioObjectPropertyScopeGlobal, output = kAudioDevicePropertyScopeOutput,
               input = kAudioDevicePropertyScopeInput;

struct Place {
    AudioObjectID object;
    AudioObjectPropertyAddress at;

    bool operator<(const Place& other) const
    {
        const auto key = [](const Place& p) {
            return std::make_tuple(p.object, p.at.mSelector, p.at.mScope, p.at.mElement);
        };
        return key(*this) < key(other);
    }
};
using Values = std::map<Place, std::vector<char>>;
using Places = std::set<std::string>;

/// Questions rather than values: what they answer depends on what they are asked.
bool isQuestion(const Selector& selector)
{
    constexpr UInt32 questions[] = {'sfm?', 'sfmm', 'pft?', 'pftm', 'v2db', 'db2v', 'suse'};
    return selector.kind == Kind::translation ||
           std::find(std::begin(questions), std::end(questions), selector.code) != std::end(questions);
}

void read(Values& values, AudioObjectID object, const std::vector<Selector>& selectors)
{
    for (const Selector& selector : selectors)
        for (UInt32 scope : {global, input, output})
            for (UInt32 element = 0; element < 5; ++element) {
                const auto at = address(selector.code, scope, element);
                std::vector<char> bytes(4096);
                UInt32 size = static_cast<UInt32>(bytes.size());
                if (isQuestion(selector) ||
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

/// Every place of every object, watched one by one, so that the address that is told is the one that changed.
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

/// Both sides, or one: a device of two outputs, and of two inputs as well.
class Changes : public testing::TestWithParam<uint32_t> {};

TEST_P(Changes, AreToldWhereTheyAreAndOnce)
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
        {"a rate of its own", [&] { return rate(12345); }},
        {"another of its own", [&] { return rate(12346); }},
        {"a common one again", [&] { return rate(44100); }},
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
        std::vector<std::unique_ptr<Watcher>> watchers, places;
        std::vector<Place> watched;
        for (const auto& each : everything.objects)
            if (each.first != kAudioObjectSystemObject)
                watchers.push_back(std::make_unique<Watcher>(each.first));
        for (const auto& value : before) {
            if (value.first.object == kAudioObjectSystemObject) continue; // the wait makes it tell
            watched.push_back(value.first);
            places.push_back(std::make_unique<Watcher>(value.first.object, value.first.at));
        }
        ASSERT_EQ(fact.change(), noErr);
        waitUntilTold();
        const Values after = everything.values();
        std::set<std::string> changedSelectors, toldSelectors;
        for (std::size_t i = 0; i < watched.size(); ++i) {
            const auto now = after.find(watched[i]);
            const bool isThere = now != after.end();
            const bool isChanged = isThere && now->second != before.at(watched[i]);
            const auto& at = watched[i].at;
            if (isChanged) changedSelectors.insert(print(watched[i].object, at.mSelector, 0));
            if (at.mScope == input && GetParam() == 0) continue; // no side of its own: it hears of the whole
            // The whole hears of both sides.
            if (isThere && at.mScope != global)
                EXPECT_EQ(places[i]->count(), isChanged ? 1 : 0) << text(at) << " of " << watched[i].object;
            else if (isChanged)
                EXPECT_EQ(places[i]->count(), 1) << text(at) << " of " << watched[i].object;
        }
        std::size_t index = 0;
        for (const auto& each : everything.objects) {
            if (each.first == kAudioObjectSystemObject) continue;
            std::vector<std::string> told = watchers[index++]->takeTold();
            EXPECT_EQ(std::set<std::string>(told.begin(), told.end()).size(), told.size()) << "each once";
            for (const std::string& line : told)
                toldSelectors.insert(std::to_string(each.first) + " " + line.substr(0, 4) + " 0");
        }
        EXPECT_EQ(toldSelectors, changedSelectors);
        EXPECT_FALSE(changedSelectors.empty());
    }
}

INSTANTIATE_TEST_SUITE_P(Device, Changes, testing::Values(0u, 2u));

// A device that comes or goes changes what the system owns as well as its list.
TEST(ChangesOfTheSystem, AreToldAlike)
{
    Watcher list(kAudioObjectSystemObject, address('dev#')), owned(kAudioObjectSystemObject, address('ownd'));
    {
        const Device device;
        waitUntilTold();
        EXPECT_EQ(list.count(), 1);
        EXPECT_EQ(owned.count(), 1);
    }
    waitUntilTold();
    EXPECT_EQ(list.count(), 2);
    EXPECT_EQ(owned.count(), 2);
}

} // namespace
