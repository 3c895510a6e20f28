// Passes memory blocks to a buffered player with every method that takes blocks, at arbitrary rates and
// numbers of channels, and renders them on a stepped device.
#include "fuzz/library.h"
#include "fuzz/require.h"

#include <fuzzer/FuzzedDataProvider.h>

namespace {

struct Range {
    std::int32_t offset, count;
};

/// Choose a byte range inside a block of `size` bytes, or a range with a negative number, which the player
/// refuses. No other range is used, because callers must not pass a range outside the block.
Range pickRange(FuzzedDataProvider& input, std::size_t size)
{
    if (input.ConsumeBool())
        return {input.ConsumeIntegralInRange(INT32_MIN, -1), input.ConsumeIntegral<std::int32_t>()};
    if (input.ConsumeBool())
        return {input.ConsumeIntegral<std::int32_t>(), input.ConsumeIntegralInRange(INT32_MIN, -1)};
    const auto offset = input.ConsumeIntegralInRange<std::int32_t>(0, std::int32_t(size));
    const auto count = input.ConsumeIntegralInRange<std::int32_t>(0, std::int32_t(size) - offset);
    // A count of 0 means the whole block, so the offset must be 0 as well.
    return count == 0 ? Range{0, 0} : Range{offset, count};
}

void add(FuzzedDataProvider& input, host::Object& player)
{
    const auto bytes = input.ConsumeBytes<std::uint8_t>(input.ConsumeIntegralInRange<std::size_t>(0, 512));
    const auto block =
        input.ConsumeProbability<float>() < 0.05f ? host::MemoryBlock() : host::MemoryBlock::copyOf(bytes);
    const auto [offset, count] = pickRange(input, block.size());
    const int bits = input.ConsumeIntegralInRange(5, 34);
    const bool clears = input.ConsumeBool();
    try {
        switch (input.ConsumeIntegralInRange(0, 3)) {
        case 0:
            player.call("AddAudio", block, offset, count, bits, clears);
            break;
        case 1:
            player.call("AddFloatAudio", block, offset, count, clears);
            break;
        case 2:
            player.call("AddAudioStereo", block, block, offset, count, bits, clears);
            break;
        case 3:
            player.call("AddFloatAudioStereo", block, block, offset, count, clears);
            break;
        }
    } catch (const host::HostException& error) {
        require(error.className() == "NilObjectException",
                "a method raises no exception but NilObjectException");
        require(!block.data(), "a block with bytes raises no exception");
    }
    const auto space = player.call("FreeSpace").integer();
    require(space >= 0 && space <= 200, "the queue has 200 slots");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    FuzzedDataProvider input(bytes, size);
    host::Host& host = hostWithLibrary();
    {
        host::Object player = host.create("CoreAudioPlayerKVX");
        const KVXDeviceID device = steppedDevice(0, 64); // 0 requests the default sample rate
        player.set("OutputDeviceID", std::int64_t{device});
        player.set("SampleRate", input.ConsumeFloatingPoint<float>());
        player.set("NumberOfChannels", input.ConsumeIntegralInRange(-1, 3));
        player.set("NoUnderflow", input.ConsumeBool());
        for (int i = 0; i < 8; ++i) {
            add(input, player);
            if (input.ConsumeBool()) player.call("Start");
            KVXPlatformStep(device, input.ConsumeIntegralInRange<std::uint32_t>(0, 200));
        }
        player.set("NoUnderflow", false);
        player.call("Stop");
        require(!player.get("IsRunning").boolean(), "a stopped player does not run");
        require(player.call("FreeSpace").integer() == 200, "a stopped player has an empty queue");
    }
    require(host.leaks().isClean(), "every host value is released");
    require(host.misuses().empty(), "the plug-in makes no misuse of the host");
    return 0;
}
