// Memory blocks into a player, by every method, at any rate and channel count, and out through a stepped
// device.
#include "abi/entry_point.h"
#include "fuzz/require.h"
#include "host/runtime/host.h"

#include <KVXPlatform/KVXPlatform.h>

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>

extern "C" void REALPluginMain(REALResolver resolver);

namespace {

host::Host& theHost()
{
    static host::Host* host = [] {
        auto* made = new host::Host; // for the life of the process, as the library is
        made->enter(REALPluginMain);
        return made;
    }();
    return *host;
}

KVXDeviceID theDevice()
{
    static const KVXDeviceID device = [] {
        KVXSimulatedDevice description = {};
        description.name = "Stepped";
        description.isStepped = 1;
        description.sliceFrames = 64;
        return KVXPlatformAddSimulatedDevice(&description);
    }();
    return device;
}

/// A range for a block: mostly one that lies inside it, since staying inside is the caller's duty; else one
/// that is refused whatever the block holds.
struct Range {
    std::int32_t offset, count;
};
Range pickRange(FuzzedDataProvider& input, std::size_t size)
{
    if (input.ConsumeBool())
        return {input.ConsumeIntegralInRange(INT32_MIN, -1), input.ConsumeIntegral<std::int32_t>()};
    if (input.ConsumeBool())
        return {input.ConsumeIntegral<std::int32_t>(), input.ConsumeIntegralInRange(INT32_MIN, -1)};
    const auto offset = input.ConsumeIntegralInRange<std::int32_t>(0, std::int32_t(size));
    const auto count = input.ConsumeIntegralInRange<std::int32_t>(0, std::int32_t(size) - offset);
    return count == 0 ? Range{0, 0}
                      : Range{offset, count}; // no count means the whole block, whatever the offset
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
        require(error.className() == "NilObjectException", "only a block without bytes raises");
        require(!block.data(), "and only such a one");
    }
    const auto space = player.call("FreeSpace").integer();
    require(space >= 0 && space <= 200, "the queue has 200 places");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    FuzzedDataProvider input(bytes, size);
    host::Host& host = theHost();
    {
        host::Object player = host.create("CoreAudioPlayerKVX");
        player.set("OutputDeviceID", std::int64_t(theDevice()));
        player.set("SampleRate", input.ConsumeFloatingPoint<float>());
        player.set("NumberOfChannels", input.ConsumeIntegralInRange(-1, 3));
        player.set("NoUnderflow", input.ConsumeBool());
        for (int i = 0; i < 8; ++i) {
            add(input, player);
            if (input.ConsumeBool()) player.call("Start");
            KVXPlatformStep(theDevice(), input.ConsumeIntegralInRange<std::uint32_t>(0, 200));
        }
        player.set("NoUnderflow", false);
        player.call("Stop");
        require(!player.get("IsRunning").boolean(), "a stopped player does not run");
        require(player.call("FreeSpace").integer() == 200, "and holds nothing");
    }
    require(host.leaks().isClean(), "every reference is given back");
    require(host.misuses().empty(), "the host was used as it wants to be");
    return 0;
}
