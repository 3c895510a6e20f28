#include "platform/audiounit/output/device_watch.h"

#include "platform/audiounit/unit_handle.h"

#include <algorithm>
#include <condition_variable>
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

// Capacity reserved in advance, so that a stop inside a slice does not allocate.
constexpr std::size_t usualStops = 64;

template <class Handle>
struct Watched {
    Handle unit;
    UpdateDevice update;
};

struct Watch {
    std::mutex lock;
    std::condition_variable changed;
    bool hasChanged = false;
    bool hasThread = false;
    std::vector<Watched<AudioUnit>> units;
    std::vector<Watched<UnitUse>> stopped; ///< units that were stopped inside their own slice
    std::mutex listening;                  ///< lock of isListening, taken before `lock`
    bool isListening = false;              ///< whether the listeners of the system object are registered
};

// The object is never destroyed, because the thread that uses it runs until the process ends.
Watch& watch()
{
    static Watch& only = *new Watch;
    return only;
}

OSStatus noteChange(AudioObjectID, UInt32, const AudioObjectPropertyAddress*, void*)
{
    updateSoon();
    return noErr;
}

void updateUnits()
{
    for (Watch& all = watch();;) {
        std::vector<Watched<AudioUnit>> units;
        std::vector<Watched<UnitUse>> stopped;
        {
            std::unique_lock<std::mutex> guard(all.lock);
            all.changed.wait(guard, [&] { return all.hasChanged; });
            all.hasChanged = false;
            units = all.units;
            stopped.swap(all.stopped);
            all.stopped.reserve(usualStops);
        }
        for (const Watched<UnitUse>& each : stopped) each.update(*each.unit);
        for (const Watched<AudioUnit>& each : units)
            if (const UnitUse unit = use(each.unit); !unit.status) each.update(*unit);
    }
}

bool hasUnits(Watch& all)
{
    const std::lock_guard<std::mutex> guard(all.lock);
    return !all.units.empty();
}

// The listeners are removed with the last unit, so that a leak check at the end of a program finds none.
void listenWhileWatching()
{
    Watch& all = watch();
    const std::lock_guard<std::mutex> guard(all.listening);
    const bool isNeeded = hasUnits(all);
    if (isNeeded == all.isListening) return;
    for (const AudioObjectPropertyAddress& address : systemChanges)
        if (isNeeded)
            AudioObjectAddPropertyListener(kAudioObjectSystemObject, &address, noteChange, nullptr);
        else
            AudioObjectRemovePropertyListener(kAudioObjectSystemObject, &address, noteChange, nullptr);
    all.isListening = isNeeded;
}

} // namespace

void beginWatching(AudioUnit unit, UpdateDevice update)
{
    Watch& all = watch();
    {
        const std::lock_guard<std::mutex> guard(all.lock);
        const auto isUnit = [unit](const Watched<AudioUnit>& each) { return each.unit == unit; };
        if (std::none_of(all.units.begin(), all.units.end(), isUnit)) all.units.push_back({unit, update});
        all.stopped.reserve(usualStops);
        if (!all.hasThread) std::thread(updateUnits).detach();
        all.hasThread = true;
    }
    listenWhileWatching();
}

void endWatching(AudioUnit unit)
{
    Watch& all = watch();
    {
        const std::lock_guard<std::mutex> guard(all.lock);
        const auto isUnit = [unit](const Watched<AudioUnit>& each) { return each.unit == unit; };
        all.units.erase(std::remove_if(all.units.begin(), all.units.end(), isUnit), all.units.end());
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

void updateSoon()
{
    Watch& all = watch();
    const std::lock_guard<std::mutex> guard(all.lock);
    all.hasChanged = true;
    all.changed.notify_one();
}

void updateSoon(AudioUnit handle, UpdateDevice update)
{
    UnitUse unit = use(handle);
    if (unit.status) return;
    Watch& all = watch();
    const std::lock_guard<std::mutex> guard(all.lock);
    all.stopped.push_back({std::move(unit), update});
    all.hasChanged = true;
    all.changed.notify_one();
}

} // namespace kvxplatform::audiounit
