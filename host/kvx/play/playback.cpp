#include "host/kvx/play/playback.h"

#include "host/kvx/text/failure.h"
#include "host/runtime/support/checked_size.h"

#include <fmt/format.h>

#include <algorithm>

namespace kvx {
namespace {

constexpr int blockSeconds = 4;
constexpr std::size_t leastBlockFrames = 4096, mostBlockFrames = 1 << 20;
constexpr std::int64_t blocksAhead = 5; // at most 40 MiB
constexpr std::int64_t queueCapacity = 200;

} // namespace

Playback::Playback(host::Host& host, const Run& run, float gain)
    : player_(host.create("CoreAudioPlayerKVX")), reader_(run), gain_(gain),
      blockFrames_(
          std::clamp(host::checkedSize(run.sampleRate(), blockSeconds), leastBlockFrames, mostBlockFrames)),
      channels_(std::size_t(run.channels()))
{
    block_ =
        host::MemoryBlock::ofSize(std::int64_t(host::checkedSize(blockFrames_, channels_, sizeof(float))));
    if (!block_) throw Failure("there is not enough memory for a block of sound; close other programs");
    player_.set("SampleRate", float(run.sampleRate()));
    player_.set("NumberOfChannels", run.channels());
}

Playback::~Playback()
{
    try {
        stop();
    } catch (const std::exception&) {
        // Nobody is left to tell; the object's destructor stops the device as well.
    }
}

void Playback::feed()
{
    while (!isFed_ && player_.call("HasFreeSpace").boolean() &&
           queueCapacity - player_.call("FreeSpace").integer() < blocksAhead) {
        float* samples = block_.as<float>();
        const std::size_t frames = reader_.read(samples, blockFrames_);
        isFed_ = frames < blockFrames_;
        if (frames == 0) break;
        const std::size_t count = frames * channels_;
        if (gain_ != 1.0f)
            std::transform(samples, samples + count, samples, [this](float s) { return s * gain_; });
        if (!player_.call("AddFloatAudio", block_, 0, std::int64_t(count * sizeof(float))).boolean())
            throw Failure("the player refused a block of sound; there may be too little memory");
    }
}

void Playback::begin(const KVXDeviceInfo& device)
{
    feed();
    // While more is to come the device goes on when the queue runs dry; it ends by itself only after the last
    // block.
    player_.set("NoUnderflow", !isFed_);
    if (player_.call("Start").boolean()) return;
    // A player whose device refuses counts as running, and would be waited for without end: it is left as it
    // is.
    if (player_.get("IsRunning").boolean()) (void)player_.detach();
    throw Failure(fmt::format("{} does not start; choose another device with --device (see `kvx devices`)",
                              device.name));
}

bool Playback::turn()
{
    if (isFed_) return player_.get("IsRunning").boolean();
    feed();
    if (player_.get("HadUnderflow").boolean()) hadGap_ = true;
    if (isFed_) player_.set("NoUnderflow", false);
    return true;
}

void Playback::stop()
{
    if (!player_) return;
    // A player that must not run dry would refuse to stop.
    player_.set("NoUnderflow", false);
    player_.call("Stop");
}

double Playback::position() const { return player_.get("OutputPosition").number(); }

} // namespace kvx
