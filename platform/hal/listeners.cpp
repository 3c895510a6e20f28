#include "platform/hal/listeners.h"

#include "platform/hal/property.h"
#include "platform/support/live_count.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace kvxplatform::hal {

namespace {

LiveCount addedListeners("property listener");

struct Listener {
    UInt64 serial;
    AudioObjectID object;
    AudioObjectPropertyAddress address; ///< may hold wildcards
    AudioObjectPropertyListenerProc proc;
    void* client;
};

struct Change {
    AudioObjectID object;
    AudioObjectPropertyAddress address; ///< the wildcard element: all of them
    UInt64 nextSerial;                  ///< of listeners that were added later, and hear nothing of it
};

struct Notifier {
    std::mutex lock;
    std::condition_variable wake, idle;
    std::vector<Listener> listeners;
    std::deque<Change> changes;
    UInt64 nextSerial = 1;
    UInt64 calling = 0; ///< the listener that is being called; 0: none
    std::thread::id thread;
};

constexpr auto anySelector = kAudioObjectPropertySelectorWildcard;
constexpr auto anyScope = kAudioObjectPropertyScopeWildcard, global = kAudioObjectPropertyScopeGlobal;
constexpr auto anyElement = kAudioObjectPropertyElementWildcard;

// What is true of the whole is true of its sides, and who watches the whole watches its sides.
bool scopesMatch(AudioObjectPropertyScope wanted, AudioObjectPropertyScope changed)
{
    return wanted == anyScope || wanted == changed || wanted == global || changed == global;
}

bool elementsMatch(AudioObjectPropertyElement wanted, AudioObjectPropertyElement changed)
{
    return wanted == anyElement || wanted == changed || changed == anyElement;
}

bool matches(const Listener& listener, const Change& change)
{
    const AudioObjectPropertyAddress &wanted = listener.address, &changed = change.address;
    return listener.serial < change.nextSerial && listener.object == change.object &&
           (wanted.mSelector == anySelector || wanted.mSelector == changed.mSelector) &&
           scopesMatch(wanted.mScope, changed.mScope) && elementsMatch(wanted.mElement, changed.mElement);
}

/// The address that a listener is told: the one it asked for, with its wildcards filled in.
AudioObjectPropertyAddress addressFor(const Listener& listener, const Change& change)
{
    const AudioObjectPropertyAddress &wanted = listener.address, &changed = change.address;
    AudioObjectPropertyAddress told = {changed.mSelector, wanted.mScope, wanted.mElement};
    if (told.mScope == anyScope) told.mScope = changed.mScope;
    if (told.mElement == anyElement) told.mElement = changed.mElement;
    if (told.mElement == anyElement) told.mElement = kAudioObjectPropertyElementMaster;
    return told;
}

/// Call one listener, if it is still there. `lock` is held at both ends, and let go during the call.
void call(Notifier& notifier, std::unique_lock<std::mutex>& lock, UInt64 serial, const Change& change)
{
    const auto found = std::find_if(notifier.listeners.begin(), notifier.listeners.end(),
                                    [serial](const Listener& each) { return each.serial == serial; });
    if (found == notifier.listeners.end()) return;
    const Listener listener = *found;
    const AudioObjectPropertyAddress address = addressFor(listener, change);
    notifier.calling = serial;
    lock.unlock();
    listener.proc(change.object, 1, &address, listener.client);
    lock.lock();
    notifier.calling = 0;
    notifier.idle.notify_all();
}

void run(Notifier& notifier)
{
    std::unique_lock<std::mutex> lock(notifier.lock);
    notifier.thread = std::this_thread::get_id();
    for (;;) {
        notifier.wake.wait(lock, [&] { return !notifier.changes.empty(); });
        const Change change = notifier.changes.front();
        notifier.changes.pop_front();
        std::vector<UInt64> told;
        for (const Listener& listener : notifier.listeners)
            if (matches(listener, change)) told.push_back(listener.serial);
        for (UInt64 serial : told) call(notifier, lock, serial, change);
    }
}

/// Lives as long as the process.
Notifier& notifier()
{
    static Notifier& instance = []() -> Notifier& {
        auto made = std::make_unique<Notifier>();
        std::thread(run, std::ref(*made)).detach();
        return *made.release();
    }();
    return instance;
}

bool isSame(const AudioObjectPropertyAddress& a, const AudioObjectPropertyAddress& b)
{
    return a.mSelector == b.mSelector && a.mScope == b.mScope && a.mElement == b.mElement;
}

} // namespace

void postChange(AudioObjectID object, AudioObjectPropertySelector selector, AudioObjectPropertyScope scope,
                AudioObjectPropertyElement element)
{
    Notifier& n = notifier();
    const std::lock_guard<std::mutex> lock(n.lock);
    if (std::none_of(n.listeners.begin(), n.listeners.end(),
                     [object](const Listener& each) { return each.object == object; }))
        return;
    n.changes.push_back({object, {selector, scope, element}, n.nextSerial});
    n.wake.notify_one();
}

} // namespace kvxplatform::hal

using namespace kvxplatform::hal;

OSStatus AudioObjectAddPropertyListener(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                        AudioObjectPropertyListenerProc proc, void* client)
try {
    if (!exists(object)) return kAudioHardwareBadObjectError;
    if (!address || !proc) return kAudioHardwareIllegalOperationError;
    Notifier& n = notifier();
    const std::lock_guard<std::mutex> lock(n.lock);
    n.listeners.push_back({n.nextSerial++, object, *address, proc, client});
    addedListeners.add();
    return noErr;
} catch (const std::exception&) {
    return kAudioHardwareUnspecifiedError;
}

// The object may have gone meanwhile: its listeners are still here to be taken back.
OSStatus AudioObjectRemovePropertyListener(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                           AudioObjectPropertyListenerProc proc, void* client)
try {
    if (!address) return kAudioHardwareIllegalOperationError;
    Notifier& n = notifier();
    std::unique_lock<std::mutex> lock(n.lock);
    const auto found = std::find_if(n.listeners.begin(), n.listeners.end(), [&](const Listener& each) {
        return each.object == object && isSame(each.address, *address) && each.proc == proc &&
               each.client == client;
    });
    if (found == n.listeners.end()) return kAudioHardwareIllegalOperationError;
    const UInt64 serial = found->serial;
    n.listeners.erase(found);
    addedListeners.remove();
    if (std::this_thread::get_id() != n.thread) n.idle.wait(lock, [&] { return n.calling != serial; });
    return noErr;
} catch (const std::exception&) {
    return kAudioHardwareUnspecifiedError;
}
