#include "platform/hal/listeners.h"

#include "platform/support/live_count.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
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
    /// Watched address, in which selector, scope and element may be wildcards.
    AudioObjectPropertyAddress address;
    AudioObjectPropertyListenerProc proc;
    void* client;
};

struct Change {
    AudioObjectID object;
    /// Address of the change, in which the wildcard element means all elements.
    AudioObjectPropertyAddress address;
    UInt64 nextSerial; ///< first serial number of the listeners that were added after the change
};

struct Notifier {
    std::mutex lock;
    std::condition_variable wake, idle;
    std::vector<Listener> listeners;
    std::deque<Change> changes;
    UInt64 nextSerial = 1;
    UInt64 calling = 0; ///< serial number of the listener whose call is in progress; 0 without a call
    std::thread::id thread;
};

constexpr auto anySelector = kAudioObjectPropertySelectorWildcard;
constexpr auto anyScope = kAudioObjectPropertyScopeWildcard, global = kAudioObjectPropertyScopeGlobal;
constexpr auto anyElement = kAudioObjectPropertyElementWildcard;

// Whether a change concerns the watched scope. The global scope includes input and output, both as watched
// and as changed scope.
bool scopesMatch(AudioObjectPropertyScope watched, AudioObjectPropertyScope changed)
{
    return watched == anyScope || watched == changed || watched == global || changed == global;
}

bool elementsMatch(AudioObjectPropertyElement watched, AudioObjectPropertyElement changed)
{
    return watched == anyElement || watched == changed || changed == anyElement;
}

bool matches(const Listener& listener, const Change& change)
{
    const AudioObjectPropertyAddress &watched = listener.address, &changed = change.address;
    return listener.serial < change.nextSerial && listener.object == change.object &&
           (watched.mSelector == anySelector || watched.mSelector == changed.mSelector) &&
           scopesMatch(watched.mScope, changed.mScope) && elementsMatch(watched.mElement, changed.mElement);
}

/// The address that a listener receives: its watched address, with each wildcard replaced by the changed
/// value.
AudioObjectPropertyAddress addressFor(const Listener& listener, const Change& change)
{
    const AudioObjectPropertyAddress &watched = listener.address, &changed = change.address;
    AudioObjectPropertyAddress address = {changed.mSelector, watched.mScope, watched.mElement};
    if (address.mScope == anyScope) address.mScope = changed.mScope;
    if (address.mElement == anyElement) address.mElement = changed.mElement;
    if (address.mElement == anyElement) address.mElement = kAudioObjectPropertyElementMaster;
    return address;
}

/// Call a listener, unless it was removed. `lock` is held on entry and on return, and is released during the
/// call.
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
        std::vector<UInt64> serials;
        for (const Listener& listener : notifier.listeners)
            if (matches(listener, change)) serials.push_back(listener.serial);
        for (UInt64 serial : serials) call(notifier, lock, serial, change);
    }
}

/// The notifier is never freed, because its thread may outlive main().
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

void addListener(AudioObjectID object, const AudioObjectPropertyAddress& address,
                 AudioObjectPropertyListenerProc proc, void* client)
{
    Notifier& n = notifier();
    const std::lock_guard<std::mutex> lock(n.lock);
    n.listeners.push_back({n.nextSerial++, object, address, proc, client});
    addedListeners.add();
}

bool removeListener(AudioObjectID object, const AudioObjectPropertyAddress& address,
                    AudioObjectPropertyListenerProc proc, void* client)
{
    Notifier& n = notifier();
    std::unique_lock<std::mutex> lock(n.lock);
    const auto found = std::find_if(n.listeners.begin(), n.listeners.end(), [&](const Listener& each) {
        return each.object == object && isSame(each.address, address) && each.proc == proc &&
               each.client == client;
    });
    if (found == n.listeners.end()) return false;
    const UInt64 serial = found->serial;
    n.listeners.erase(found);
    addedListeners.remove();
    if (std::this_thread::get_id() != n.thread) n.idle.wait(lock, [&] { return n.calling != serial; });
    return true;
}

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
