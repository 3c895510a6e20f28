#include "platform/audiounit/output/device_watch.h"

#include "platform/audiounit/output/device_output.h"
#include "platform/audiounit/unit_handle.h"

#include <algorithm>
#include <condition_variable>
#include <iterator>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace kvxplatform::audiounit {
namespace {

constexpr AudioObjectPropertyAddress systemChanges[] = {
    {kAudioHardwarePropertyDefaultOutputDevice, kAudioObjectPropertyScopeGlobal,
     kAudioObjectPropertyElementMaster},
    {kAudioHardwarePropertyDefaultSystemOutputDevice, kAudioObjectPropertyScopeGlobal,
     kAudioObjectPropertyElementMaster},
};
constexpr AudioObjectPropertyAddress deviceChanges[] = {
    {kAudioDevicePropertyNominalSampleRate, kAudioObjectPropertyScopeWildcard,
     kAudioObjectPropertyElementWildcard},
    {kAudioDevicePropertyStreamConfiguration, kAudioObjectPropertyScopeWildcard,
     kAudioObjectPropertyElementWildcard},
};

constexpr std::size_t usualStops = 64; // inside slices, before the thread comes round: room for them

struct Watch {
    std::mutex lock;
    std::condition_variable changed;
    bool hasChanged = false;
    bool hasThread = false;
    std::vector<AudioUnit> units;
    std::vector<UnitUse> kept; // also to be asked
    std::mutex listening;      // taken first
    bool isListening = false;  // to the system: while there are units
};

// Never destroyed: its thread lives as long as the program.
Watch& watch()
{
    static Watch& only = *new Watch;
    return only;
}

OSStatus noteChange(AudioObjectID, UInt32, const AudioObjectPropertyAddress*, void*)
{
    askSoon();
    return noErr;
}

void askUnits()
{
    for (Watch& all = watch();;) {
        std::vector<AudioUnit> units;
        std::vector<UnitUse> kept;
        {
            std::unique_lock<std::mutex> guard(all.lock);
            all.changed.wait(guard, [&] { return all.hasChanged; });
            all.hasChanged = false;
            units = all.units;
            kept.swap(all.kept);
            all.kept.reserve(usualStops);
        }
        for (const UnitUse& unit : kept) reconsiderDevice(*unit);
        for (AudioUnit each : units)
            if (const UnitUse unit = use(each); !unit.status) reconsiderDevice(*unit);
    }
}

bool hasUnits(Watch& all)
{
    const std::lock_guard<std::mutex> guard(all.lock);
    return !all.units.empty();
}

// The listeners go with the last unit, or they would be found left over at a program's end.
void listenWhileWatching()
{
    Watch& all = watch();
    const std::lock_guard<std::mutex> guard(all.listening);
    const bool isWanted = hasUnits(all);
    if (isWanted == all.isListening) return;
    for (const AudioObjectPropertyAddress& address : systemChanges)
        if (isWanted)
            AudioObjectAddPropertyListener(kAudioObjectSystemObject, &address, noteChange, nullptr);
        else
            AudioObjectRemovePropertyListener(kAudioObjectSystemObject, &address, noteChange, nullptr);
    all.isListening = isWanted;
}

} // namespace

void beginWatching(AudioUnit unit)
{
    Watch& all = watch();
    {
        const std::lock_guard<std::mutex> guard(all.lock);
        if (std::find(all.units.begin(), all.units.end(), unit) == all.units.end()) all.units.push_back(unit);
        all.kept.reserve(usualStops);
        if (!all.hasThread) std::thread(askUnits).detach();
        all.hasThread = true;
    }
    listenWhileWatching();
}

void endWatching(AudioUnit unit)
{
    Watch& all = watch();
    {
        const std::lock_guard<std::mutex> guard(all.lock);
        all.units.erase(std::remove(all.units.begin(), all.units.end(), unit), all.units.end());
    }
    listenWhileWatching();
}

void beginListening(AudioDeviceID device)
{
    for (const AudioObjectPropertyAddress& address : deviceChanges)
        AudioObjectAddPropertyListener(device, &address, noteChange, nullptr);
}

void endListening(AudioDeviceID device)
{
    for (const AudioObjectPropertyAddress& address : deviceChanges)
        AudioObjectRemovePropertyListener(device, &address, noteChange, nullptr);
}

void askSoonFor(AudioUnit handle)
{
    UnitUse unit = use(handle);
    if (unit.status) return;
    Watch& all = watch();
    const std::lock_guard<std::mutex> guard(all.lock);
    all.kept.push_back(std::move(unit));
    all.hasChanged = true;
    all.changed.notify_one();
}

void askSoon()
{
    Watch& all = watch();
    const std::lock_guard<std::mutex> guard(all.lock);
    all.hasChanged = true;
    all.changed.notify_one();
}

} // namespace kvxplatform::audiounit
