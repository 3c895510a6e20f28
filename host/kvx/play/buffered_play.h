// The buffered play method: files are decoded while they play, and a group plays without gaps.
#pragma once

#include "host/kvx/play/playlist.h"
#include "host/kvx/play/session.h"
#include "host/runtime/host.h"

#include <cstddef>
#include <string>
#include <vector>

namespace kvx {

/// Plays one group through the library's class CoreAudioPlayerKVX, and decodes the files ahead of the audible
/// position. The caller calls start(), then advance() until advance() returns false.
/// Shape   interleaved blocks of four seconds, at most 8 MiB each. Several blocks wait in the queue of the
///         player, so decoding may take seconds. If the sample rate differs from that of the device, the
///         class loses one frame per block, so the blocks are long.
/// [main]
class BufferedPlayer {
public:
    /// `gain` is a factor; exactly 1 leaves every sample unchanged. The group must outlive the object.
    BufferedPlayer(host::Host& host, const FormatGroup& group, float gain);

    /// Stops the player. Waits for the device if it is running.
    ~BufferedPlayer();
    BufferedPlayer(const BufferedPlayer&) = delete;
    BufferedPlayer& operator=(const BufferedPlayer&) = delete;

    /// Queue the first blocks and start the device.
    /// Errors  throws Failure if the device does not start. The player object of the library may then leak.
    void start(const KVXDeviceInfo& device);

    /// Decode and queue the next blocks, until the queue has enough blocks.
    /// Returns  false after the device has played the whole group.
    bool advance();

    /// Stop at once, and drop the queued blocks.
    void stop();

    /// The number of frames of the group that have been played.
    double position() const;

    /// Files whose data stopped decoding before the last frame.
    const std::vector<std::string>& damagedFiles() const { return reader_.damagedFiles(); }

    /// Whether the queue became empty before the end of the group, which causes a gap in the sound.
    bool hadGap() const { return hadGap_; }

private:
    void feed();

    host::Object player_;
    GroupReader reader_;
    float gain_;
    std::size_t blockFrames_;
    std::size_t channels_;
    host::MemoryBlock block_;
    bool isFed_ = false; // whether the last block is in the queue
    bool hadGap_ = false;
};

/// Play all groups until the end, or until the user interrupts. `gain` is a factor.
/// Errors  throws Failure.
/// [main]
void playBuffered(host::Host& host, const Playlist& playlist, float gain, Session& session);

} // namespace kvx
