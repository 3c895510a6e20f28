#include "host/kvx/play/buffered_play.h"

#include "host/kvx/play/file_play.h"
#include "host/kvx/text/failure.h"
#include "host/runtime/support/checked_size.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>

namespace kvx {
namespace {

constexpr int blockSeconds = 4;
constexpr std::size_t leastBlockFrames = 4096, mostBlockFrames = 1 << 20;
constexpr std::int64_t blocksAhead = 5; // number of blocks to keep in the queue, at most 40 MiB
constexpr std::int64_t queueCapacity = 200;

/// Plays one format group, and applies the keys of the user.
class GroupPlayback {
public:
    GroupPlayback(host::Host& host, const FormatGroup& group, std::size_t first, const PlayOrder& order,
                  float gain, Session& session)
        : group_(group), first_(first), order_(order), gain_(gain), session_(session),
          player_(host, group, gain * static_cast<float>(session.volume().value))
    {
        transport_.keys = bufferedKeys();
        transport_.status = [this] {
            return formatPlayStatus({seconds(), file().format.duration(), session_.meter().takePeak(),
                                     !player_.isPlaying(), session_.volume().value, note_});
        };
        transport_.press = [this](Key key) { press(key); };
        transport_.isPlaying = [this] { return player_.isPlaying(); };
        transport_.pause = [this] { player_.stop(); };
        transport_.play = [this] { player_.start(session_.device()); };
    }

    /// Play from a frame of the group.
    /// Returns  the number of the file that plays next; nullopt if playback has ended.
    std::optional<std::size_t> run(std::int64_t startFrame)
    {
        player_.seek(startFrame);
        player_.start(session_.device());
        const PlaylistFile* announced = nullptr;
        do {
            if (&file() != announced) announce(file(), file().format.channels, session_.progress());
            announced = &file();
        } while (!skipTo_ && session_.poll(transport_) && player_.advance());
        player_.stop();

        for (const std::string& path : player_.damagedFiles()) session_.progress().warn(formatDamage(path));
        if (player_.hadGap()) printGap();
        if (session_.isOver()) return std::nullopt;
        return skipTo_ ? skipTo_ : order_.after(first_ + group_.files.size() - 1);
    }

private:
    const PlaylistFile& file() const { return group_.fileAt(static_cast<std::int64_t>(player_.position())); }

    /// The number of the present file, or of the file to which the user skips.
    std::size_t fileNumber() const
    {
        if (skipTo_) return *skipTo_;
        return first_ + static_cast<std::size_t>(&file() - group_.files.data());
    }

    /// The position in the file, in seconds.
    double seconds() const
    {
        return (player_.position() - static_cast<double>(group_.firstFrameOf(file()))) / group_.sampleRate();
    }

    void press(Key key)
    {
        note_.clear();
        Volume& volume = session_.volume();
        switch (key) {
        case Key::pause:
            player_.isPlaying() ? player_.stop() : player_.start(session_.device());
            break;
        case Key::back:
        case Key::forward:
            seek(seconds() + (key == Key::back ? -seekStep : seekStep));
            break;
        case Key::next:
            if (const auto after = order_.after(fileNumber()))
                skipTo_ = after;
            else
                note_ = lastFileNote;
            break;
        case Key::previous:
            if (const auto before = order_.before(fileNumber()); before && seconds() < restartSeconds)
                skipTo_ = before;
            else
                seek(0);
            break;
        case Key::louder:
        case Key::softer:
            volume.value = stepped(volume.value, key == Key::louder ? volumeStep : -volumeStep, volumeRange);
            applyVolume();
            break;
        case Key::mute:
            volume.toggleMute();
            applyVolume();
            break;
        default:
            break;
        }
    }

    /// Move to a time of the present file.
    void seek(double time)
    {
        const double limited = std::clamp(time, 0.0, file().format.duration());
        const std::int64_t frame = group_.firstFrameOf(file()) + std::llround(limited * group_.sampleRate());
        whileStopped([&] { player_.seek(frame); });
    }

    void applyVolume()
    {
        whileStopped([this] { player_.setGain(gain_ * static_cast<float>(session_.volume().value)); });
    }

    template <class Change>
    void whileStopped(const Change& change)
    {
        const bool wasPlaying = player_.isPlaying();
        player_.stop();
        change();
        if (wasPlaying) player_.start(session_.device());
    }

    const FormatGroup& group_;
    std::size_t first_;
    const PlayOrder& order_;
    float gain_;
    Session& session_;
    BufferedPlayer player_;
    Transport transport_;
    std::string note_;                  // for the live line: the reason why the last key had no effect, or ""
    std::optional<std::size_t> skipTo_; // number of the file to which the user skips
};

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

void BufferedPlayer::feed(std::int64_t blocks)
{
    while (!isFed_ && player_.call("HasFreeSpace").boolean() &&
           queueCapacity - player_.call("FreeSpace").integer() < blocks) {
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
    reader_.seek(start_);
    isFed_ = false;
    feed(1);
    isPlaying_ = true;
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
    if (!isPlaying_) return true;
    if (isFed_) return player_.get("IsRunning").boolean();
    feed(blocksAhead);
    if (player_.get("HadUnderflow").boolean()) hadGap_ = true;
    if (isFed_) player_.set("NoUnderflow", false);
    return true;
}

void BufferedPlayer::stop()
{
    if (!player_ || !isPlaying_) return;
    player_.set("NoUnderflow", false); // the player refuses to stop while NoUnderflow is true
    player_.call("Stop");
    start_ = static_cast<std::int64_t>(position());
    isPlaying_ = false;
}

// The class counts the frames since its start.
double BufferedPlayer::position() const
{
    return static_cast<double>(start_) + (isPlaying_ ? player_.get("OutputPosition").number() : 0);
}

std::vector<Key> bufferedKeys()
{
    return {Key::pause,  Key::back,   Key::forward, Key::next, Key::previous,
            Key::louder, Key::softer, Key::mute,    Key::help, Key::quit};
}

std::optional<std::size_t> playBuffered(host::Host& host, const FormatGroup& group, std::size_t first,
                                        std::int64_t startFrame, const PlayOrder& order, float gain,
                                        Session& session)
{
    return GroupPlayback(host, group, first, order, gain, session).run(startFrame);
}

} // namespace kvx
