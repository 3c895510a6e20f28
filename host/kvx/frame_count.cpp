#include "host/kvx/frame_count.h"

namespace kvx {

FrameCount::FrameCount(KVXDeviceID device) : device_(device) { KVXPlatformSetOutputTap(device, count, this); }

FrameCount::~FrameCount() { KVXPlatformSetOutputTap(device_, nullptr, nullptr); }

void FrameCount::count(void* context, const float*, std::uint32_t frames, std::uint32_t)
{
    static_cast<FrameCount*>(context)->frames_.fetch_add(frames, std::memory_order_relaxed);
}

} // namespace kvx
