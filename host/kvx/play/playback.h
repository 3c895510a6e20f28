// One run of files through one player object of the loaded library.
#pragma once

#include "host/kvx/devices/output_device.h"
#include "host/kvx/play/programme.h"
#include "host/runtime/host.h"

namespace kvx {

/// Feeds a player ahead of what is heard. The order is: begin(), then turn() until it answers false.
///
/// Shape   blocks of some seconds, interleaved when stereo, at most 8 MiB each; a few wait in the player's
///         queue, so that decoding has seconds to spare. Long blocks also keep seams rare, which cost a frame
///         at rates other than the device's.
/// Thread  [main]
class Playback {
public:
    /// `gain` is a factor; exactly 1 leaves every sample as decoded.
    Playback(host::Host& host, const Run& run, float gain);

    /// Closes the player, which waits for the device if it still plays.
    ~Playback();
    Playback(const Playback&) = delete;
    Playback& operator=(const Playback&) = delete;

    /// Queue the first blocks and start the device. Throws Failure when it does not start; the player object
    /// is then left over until the process ends.
    void begin(const KVXDeviceInfo& device);

    /// Queue what there is room for. False once the run has been heard to its end.
    bool turn();

    /// End early: what is queued is dropped.
    void stop();

    /// Frames of the run that have been heard.
    double position() const;

    /// Files whose data stopped decoding before their last frame.
    const std::vector<std::string>& damagedFiles() const { return reader_.damagedFiles(); }

    /// The player ran dry before the end of the run: the sound had a gap.
    bool hadGap() const { return hadGap_; }

private:
    void feed();

    host::Object player_;
    RunReader reader_;
    float gain_;
    std::size_t blockFrames_;
    std::size_t channels_;
    host::MemoryBlock block_;
    bool isFed_ = false; // the last block is in the queue
    bool hadGap_ = false;
};

} // namespace kvx
