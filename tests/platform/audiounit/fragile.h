// A render callback with a context that tests free right after a stop. A later call of the callback is
// detected.
#pragma once

#include <AudioUnit/AudioUnit.h>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

namespace test {

struct Fragile {
    std::atomic<int> calls{0};
    std::atomic<bool> isInside{false};
    std::unique_ptr<int> live = std::make_unique<int>(7);
    static OSStatus callback(void* context, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32,
                             UInt32, AudioBufferList*)
    {
        Fragile& self = *static_cast<Fragile*>(context);
        self.isInside = true;
        ++self.calls;
        EXPECT_EQ(++*self.live, 8);
        std::this_thread::yield();
        EXPECT_EQ(--*self.live, 7);
        self.isInside = false;
        return noErr;
    }
};

} // namespace test
