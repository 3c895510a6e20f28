// The play method `buffered`: each file is decoded while it plays, and files of one format play without gaps.
#pragma once

#include "host/kvx/play/play_order.h"
#include "host/kvx/play/playlist.h"
#include "host/kvx/play/session.h"
#include "host/runtime/host.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kvx {

/// Plays one format group of the playlist through the library's class CoreAudioPlayerKVX, and decodes the
/// files ahead of the audible position. Call start(), then call advance() until it returns false.
/// The class has neither pause, seek nor volume: stop() drops the queue, and start() fills it again.
/// Shape   the queue holds several interleaved blocks of four seconds, at most 8 MiB each. Blocks are long,
///         because the class loses one frame per block if it converts the sample rate.
/// [main]
class BufferedPlayer {
public:
    /// Create the player. `gain` is a factor; 1 leaves all samples unchanged. `group` must outlive it.
    /// Errors  throws Failure.
    BufferedPlayer(host::Host& host, const FormatGroup& group, float gain);

    /// Stop the player. If the device is running, wait until it has stopped.
    ~BufferedPlayer();
    BufferedPlayer(const BufferedPlayer&) = delete;
    BufferedPlayer& operator=(const BufferedPlayer&) = delete;

    /// Queue a block of samples from the position on, and start the device.
    /// Errors  throws Failure if the device does not start. The library's player object may leak then.
    void start(const KVXDeviceInfo& device);

    /// Decode and queue the next blocks of samples, until the queue has enough blocks.
    /// Returns  false after the device has played the whole group.
    bool advance();

    /// Stop playback at once, and drop the queued blocks of samples. The position stays.
    void stop();

    bool isPlaying() const { return isPlaying_; } ///< whether start() has been called since the last stop()

    /// Set the position or the gain of a stopped player. `frame` is from 0 to the number of frames of the
    /// group.
    void seek(std::int64_t frame) { start_ = frame; }
    void setGain(float gain) { gain_ = gain; }

    /// The position: the number of frames from the start of the group to the next frame that plays.
    double position() const;

    /// Paths of the files whose data stopped decoding before the last frame.
    const std::vector<std::string>& damagedFiles() const { return reader_.damagedFiles(); }

    /// Whether the queue became empty before the end of the group, which causes a gap in the sound.
    bool hadGap() const { return hadGap_; }

private:
    void feed(std::int64_t blocks);

    host::Object player_;
    GroupReader reader_;
    float gain_;
    std::size_t blockFrames_;
    std::size_t channels_;
    host::MemoryBlock block_;
    std::int64_t start_ = 0; // frame of the group at which the class has started or will start
    bool isPlaying_ = false;
    bool isFed_ = false; // whether the last block of the group is in the queue
    bool hadGap_ = false;
};

/// The keys that playBuffered() applies.
std::vector<Key> bufferedKeys();

/// Play a group from the frame number `startFrame` to its end, or until a key or a signal of the user ends
/// it.
/// Shape    `first` is the number of the group's first file in `order`; `gain` is a factor.
/// Returns  the number of the file that plays next; nullopt if playback has ended.
/// Errors   throws Failure.
/// [main]
std::optional<std::size_t> playBuffered(host::Host& host, const FormatGroup& group, std::size_t first,
                                        std::int64_t startFrame, const PlayOrder& order, float gain,
                                        Session& session);

} // namespace kvx
