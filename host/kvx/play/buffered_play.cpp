#include "host/kvx/play/buffered_play.h"

#include "host/kvx/terminal/interrupt.h"
#include "host/kvx/text/failure.h"
#include "host/runtime/support/checked_size.h"

#include <fmt/core.h>

#include <algorithm>

namespace kvx {
namespace {

constexpr int blockSeconds = 4;
constexpr std::size_t leastBlockFrames = 4096, mostBlockFrames = 1 << 20;
constexpr std::int64_t blocksAhead = 5; // number of blocks to keep in the queue, at most 40 MiB
constexpr std::int64_t queueCapacity = 200;

void playGroup(host::Host& host, const FormatGroup& group, float gain, Session& session)
{
    BufferedPlayer player(host, group, gain);
    player.start(session.device());

    const PlaylistFile* announced = nullptr;
    Transport transport;
    transport.status = [&] {
        return formatPlayStatus(
            {(player.position() - static_cast<double>(group.firstFrameOf(*announced))) / group.sampleRate(),
             announced->format.duration(), session.meter().takePeak()});
    };
    do {
        const PlaylistFile& audible = group.fileAt(static_cast<std::int64_t>(player.position()));
        if (&audible != announced) announce(audible, audible.format.channels, session.progress());
        announced = &audible;
    } while (session.poll(transport) && player.advance());
    player.stop();

    for (const std::string& path : player.damagedFiles()) session.progress().warn(formatDamage(path));
    if (player.hadGap()) printGap();
}

} // namespace

BufferedPlayer::BufferedPlayer(host::Host& host, const FormatGroup& group, float gain)
    : player_(host.create("CoreAudioPlayerKVX")), reader_(group), gain_(gain),
      blockFrames_(
          std::clamp(host::checkedSize(group.sampleRate(), blockSeconds), leastBlockFrames, mostBlockFrames)),
      channels_(static_cast<std::size_t>(group.channels()))
{
    block_ = host::MemoryBlock::ofSize(
        static_cast<std::int64_t>(host::checkedSize(blockFrames_, channels_, sizeof(float))));
    if (!block_) throw Failure("there is not enough memory for a block of sound; close other programs");
    player_.set("SampleRate", static_cast<float>(group.sampleRate()));
    player_.set("NumberOfChannels", group.channels());
}

BufferedPlayer::~BufferedPlayer()
{
    try {
        stop();
    } catch (const std::exception&) {
        // The error is ignored, because the destructor of the library's player object also stops the device.
    }
}

void BufferedPlayer::feed()
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
        if (!player_.call("AddFloatAudio", block_, 0, static_cast<std::int64_t>(count * sizeof(float)))
                 .boolean())
            throw Failure(
                "the player refused a block of sound: there may be too little memory; close other programs");
    }
}

void BufferedPlayer::start(const KVXDeviceInfo& device)
{
    feed();
    // While the property NoUnderflow is true, the device keeps running when the queue is empty. While it is
    // false, the device stops after the last block of the queue.
    player_.set("NoUnderflow", !isFed_);
    if (player_.call("Start").boolean()) return;
    // If the device refuses to start, the player object may report that it is running. The destructor of the
    // object would then wait forever, so the object is leaked.
    if (player_.get("IsRunning").boolean()) (void)player_.detach();
    throw Failure(fmt::format("{} does not start; choose another device with --device (see `kvx devices`)",
                              device.name));
}

bool BufferedPlayer::advance()
{
    if (isFed_) return player_.get("IsRunning").boolean();
    feed();
    if (player_.get("HadUnderflow").boolean()) hadGap_ = true;
    if (isFed_) player_.set("NoUnderflow", false);
    return true;
}

void BufferedPlayer::stop()
{
    if (!player_) return;
    player_.set("NoUnderflow", false); // the player refuses to stop while NoUnderflow is true
    player_.call("Stop");
}

double BufferedPlayer::position() const { return player_.get("OutputPosition").number(); }

void playBuffered(host::Host& host, const Playlist& playlist, float gain, Session& session)
{
    for (const FormatGroup& group : playlist)
        if (!isInterrupted()) playGroup(host, group, gain, session);
}

} // namespace kvx
