// The play method `buffered`: each file is decoded while it plays, and files of one format play without gaps.
#pragma once

#include "host/kvx/play/playlist.h"
#include "host/kvx/play/session.h"
#include "host/runtime/host.h"

#include <cstddef>
#include <string>
#include <vector>

namespace kvx {

/// Plays one format group of the playlist through the library's class CoreAudioPlayerKVX, and decodes the
/// files ahead of the audible position. Call start(), then call advance() until it returns false.
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

    /// Queue the first blocks of samples, and start the device.
    /// Errors  throws Failure if the device does not start. The library's player object may leak then.
    void start(const KVXDeviceInfo& device);

    /// Decode and queue the next blocks of samples, until the queue has enough blocks.
    /// Returns  false after the device has played the whole group.
    bool advance();

    /// Stop playback at once, and drop the queued blocks of samples.
    void stop();

    /// The position: the number of frames of the group that the device has played.
    double position() const;

    /// Paths of the files whose data stopped decoding before the last frame.
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
    bool isFed_ = false; // whether the last block of the group is in the queue
    bool hadGap_ = false;
};

/// Play all format groups until the end, or until a signal of the user ends playback. `gain` is a factor.
/// Errors  throws Failure.
/// [main]
void playBuffered(host::Host& host, const Playlist& playlist, float gain, Session& session);

} // namespace kvx
