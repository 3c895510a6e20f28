// Handles. Each is an allocation of its own in the C library's hands, so that whoever writes past its end is
// found out like everybody else.
#include "platform/support/live_count.h"

#include <Carbon/Carbon.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <unordered_map>

namespace {

kvxplatform::LiveCount account("Handle");

thread_local OSErr lastError = noErr;

/// The sizes of all handles there are. Never destroyed: programs dispose handles while they end.
struct Handles {
    std::mutex lock;
    std::unordered_map<Handle, Size> sizes;
};
Handles& handles()
{
    static Handles& all = *new Handles;
    return all;
}

/// Memory for `size` bytes: never null for a size that can be had.
Ptr newBlock(Size size)
{
    return static_cast<Ptr>(std::calloc(static_cast<std::size_t>(std::max<Size>(size, 1)), 1));
}

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};

Handle newHandle(Size size)
{
    if (size < 0) return nullptr;
    std::unique_ptr<char, Free> block(newBlock(size));
    std::unique_ptr<Ptr, Free> master(static_cast<Handle>(std::malloc(sizeof(Ptr))));
    if (!block || !master) return nullptr;
    Handles& all = handles();
    const std::lock_guard<std::mutex> guard(all.lock);
    all.sizes[master.get()] = size;
    account.add();
    *master = block.release();
    return master.release();
}

/// The size of a handle; -1, with the reason noted, for what is none. With the lock.
Size sizeOf(const Handles& all, Handle h)
{
    const auto found = all.sizes.find(h);
    lastError = !h ? nilHandleErr : found == all.sizes.end() ? memWZErr : noErr;
    return lastError ? -1 : found->second;
}

} // namespace

Handle NewHandleClear(Size size)
{
    Handle made = nullptr;
    try {
        made = newHandle(size);
    } catch (...) { // no memory
    }
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
    account.remove();
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
