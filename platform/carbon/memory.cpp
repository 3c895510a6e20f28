// Memory handles. Each handle's memory block is a separate allocation of the C library, so that memory
// checkers detect writes past the end of the block.
#include "platform/support/border.h"
#include "platform/support/free_deleter.h"
#include "platform/support/live_count.h"

#include <Carbon/Carbon.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <unordered_map>

namespace {

kvxplatform::LiveCount liveHandles("Handle");

thread_local OSErr lastError = noErr;

/// The sizes of all handles. They are never destroyed, because programs dispose of handles while they exit.
struct Handles {
    std::mutex lock;
    std::unordered_map<Handle, Size> sizes;
};
Handles& handles()
{
    static Handles& all = *new Handles;
    return all;
}

/// Allocate zeroed memory. The result is a valid pointer even for size 0.
/// Returns  null if memory runs out.
Ptr newBlock(Size size)
{
    return static_cast<Ptr>(std::calloc(static_cast<std::size_t>(std::max<Size>(size, 1)), 1));
}

Handle newHandle(Size size)
{
    if (size < 0) return nullptr;
    kvxplatform::Freed<char> block(newBlock(size));
    kvxplatform::Freed<Ptr> master(static_cast<Handle>(std::malloc(sizeof(Ptr))));
    if (!block || !master) return nullptr;
    Handles& all = handles();
    const std::lock_guard<std::mutex> guard(all.lock);
    all.sizes[master.get()] = size;
    liveHandles.add();
    *master = block.release();
    return master.release();
}

/// Get the size of a handle's memory block and set `lastError`. The caller holds the lock of `all`.
/// Returns  -1 for an invalid handle.
/// [any]
Size sizeOf(const Handles& all, Handle h)
{
    const auto found = all.sizes.find(h);
    lastError = !h ? nilHandleErr : found == all.sizes.end() ? memWZErr : noErr;
    return lastError ? -1 : found->second;
}

} // namespace

Handle NewHandleClear(Size size)
{
    const Handle made = kvxplatform::withinBorder(nullptr, [&] { return newHandle(size); });
    lastError = made ? noErr : memFullErr;
    return made;
}

Handle NewHandle(Size size) { return NewHandleClear(size); }

void DisposeHandle(Handle h)
{
    lastError = noErr;
    if (!h) return;
    Handles& all = handles();
    {
        const std::lock_guard<std::mutex> guard(all.lock);
        if (sizeOf(all, h) < 0) return;
        all.sizes.erase(h);
    }
    liveHandles.remove();
    std::free(*h);
    std::free(h);
}

Size GetHandleSize(Handle h)
{
    Handles& all = handles();
    const std::lock_guard<std::mutex> guard(all.lock);
    return std::max<Size>(sizeOf(all, h), 0);
}

void SetHandleSize(Handle h, Size newSize)
{
    Handles& all = handles();
    const std::lock_guard<std::mutex> guard(all.lock);
    const Size size = sizeOf(all, h);
    if (size < 0) return;
    const Ptr block = newSize < 0 ? nullptr : newBlock(newSize);
    if (!block) {
        lastError = memFullErr;
        return;
    }
    std::memcpy(block, *h, static_cast<std::size_t>(std::min(size, newSize)));
    std::free(*h);
    *h = block;
    all.sizes[h] = newSize;
}

void HLock(Handle) { lastError = noErr; }
void HUnlock(Handle) { lastError = noErr; }

OSErr MemError()
{
    const OSErr error = lastError;
    lastError = noErr;
    return error;
}
