#include "host/kvx/devices/demo.h"

#include "host/kvx/devices/output_device.h"
#include "host/kvx/text/failure.h"

#include <fmt/core.h>

#include <iterator>

namespace kvx {

Demo::Demo(host::Host& host, const CoreAudio& core, double secondsPerStep)
    : host_(host), core_(core),
      pause_(std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(secondsPerStep))),
      next_(Clock::now() + pause_)
{
}

Demo::~Demo()
{
    try {
        if (player_) stop();
        if (device_) KVXPlatformRemoveSimulatedDevice(device_);
    } catch (const std::exception&) {
        // The error is ignored, because a destructor must not throw and the process ends anyway.
    }
}

bool Demo::stepIfDue()
{
    if (Clock::now() < next_) return false;
    // clang-format off
    static constexpr void (*steps[])(Demo&) = {
        [](Demo& demo) { demo.add(); },
        [](Demo& demo) { demo.write({systemObject, 'dOut'}, bytesOf(ObjectID{demo.device_})); },
        [](Demo& demo) { demo.write({demo.device_, 'nsrt'}, bytesOf(48000.0)); },
        [](Demo& demo) { demo.write({demo.device_, 'fsiz'}, bytesOf(std::uint32_t{256})); },
        [](Demo& demo) { demo.write({demo.device_, 'volm', outputScope, 1}, bytesOf(0.5f)); },
        [](Demo& demo) { demo.write({demo.device_, 'mute', outputScope}, bytesOf(std::uint32_t{1})); },
        [](Demo& demo) { demo.write({demo.device_, 'mute', outputScope}, bytesOf(std::uint32_t{0})); },
        [](Demo& demo) { demo.start(); },
        [](Demo& demo) { demo.stop(); },
        [](Demo& demo) { demo.kill(); },
        [](Demo& demo) { demo.remove(); },
    };
    // clang-format on
    steps[step_](*this);
    step_ = (step_ + 1) % std::size(steps);
    next_ = Clock::now() + pause_;
    return true;
}

void Demo::write(const PropertyAddress& address, const std::string& bytes)
{
    if (const Status status = core_.write(address, bytes); status != 0)
        throw Failure(fmt::format("--demo: {} cannot be written: {}; close other programs",
                                  formatCode(address.selector), formatStatus(status)));
}

void Demo::add()
{
    const std::string name = fmt::format("Demo Device {}", ++deviceCount_);
    KVXSimulatedDevice description = {};
    description.name = name.c_str();
    device_ = KVXPlatformAddSimulatedDevice(&description);
    if (!device_) throw Failure(KVXPlatformErrorText());
}

void Demo::start()
{
    // A player whose property NoUnderflow is true keeps the device running in silence.
    player_ = host_.create("CoreAudioPlayerKVX");
    player_.set("OutputDeviceID", std::int64_t{device_});
    player_.set("NoUnderflow", true);
    if (!player_.call("Start").boolean())
        throw Failure("--demo: the device does not start; close other programs");
}

void Demo::stop()
{
    player_.set("NoUnderflow", false);
    player_.call("Stop");
    player_ = nullptr;
}

void Demo::kill() { checkControl(KVXPlatformKillDevice(device_)); }

void Demo::remove()
{
    checkControl(KVXPlatformRemoveSimulatedDevice(device_));
    device_ = 0;
}

} // namespace kvx
