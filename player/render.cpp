#include "player/render.h"

#include "player/conversion.h"
#include "player/interpolation.h"
#include "player/play_queue.h"
#include "plugin/shared_word.h"
#include "plugin/truncate.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace player {

namespace {

/// Wraps around: a position that is not a number becomes an index at the very end of the range, and its
/// neighbours must still be defined.
std::int64_t wrappingAdd(std::int64_t a, std::int64_t b)
{
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b));
}

/// The output buffers of one slice. Writes outside a buffer, or to one that is switched off, go nowhere.
class Output {
public:
    explicit Output(AudioBufferList& list) : list_(list) {}

    /// Frames of the first buffer; 0 if that has no channels.
    UInt32 frames() const
    {
        const AudioBuffer& first = list_.mBuffers[0];
        return first.mNumberChannels ? first.mDataByteSize / sizeof(float) / first.mNumberChannels : 0;
    }

    bool hasBuffers() const { return list_.mNumberBuffers > 0; }

    void silence()
    {
        for (UInt32 b = 0; b < list_.mNumberBuffers; ++b)
            if (AudioBuffer& buffer = list_.mBuffers[b]; buffer.mData)
                std::memset(buffer.mData, 0, buffer.mDataByteSize);
    }

    void writeAllChannels(UInt32 frame, float value)
    {
        for (UInt32 b = 0; b < list_.mNumberBuffers; ++b)
            for (UInt32 c = 0; c < list_.mBuffers[b].mNumberChannels; ++c)
                write(list_.mBuffers[b], frame, c, value);
    }

    void writeFirstTwoChannels(UInt32 frame, float left, float right)
    {
        for (UInt32 b = 0; b < list_.mNumberBuffers; ++b)
            writeFirstTwo(list_.mBuffers[b], frame, left, right);
    }

    /// The same for many frames: `values` has one, or two, for each.
    void writeAllChannels(UInt32 first, UInt32 frames, const float* values)
    {
        for (UInt32 b = 0; b < list_.mNumberBuffers; ++b)
            if (float* place = wholeFrames(list_.mBuffers[b], 1, first, frames))
                std::memcpy(place, values, frames * sizeof(float));
            else if (float* pairs = wholeFrames(list_.mBuffers[b], 2, first, frames))
                interleave(values, values, frames, pairs);
            else
                for (UInt32 i = 0; i < frames; ++i)
                    for (UInt32 c = 0; c < list_.mBuffers[b].mNumberChannels; ++c)
                        write(list_.mBuffers[b], first + i, c, values[i]);
    }

    /// Where stereo can be rendered in place; null where it must be distributed.
    float* onlyPairs(UInt32 first, UInt32 frames)
    {
        return list_.mNumberBuffers == 1 ? wholeFrames(list_.mBuffers[0], 2, first, frames) : nullptr;
    }

    void writeFirstTwoChannels(UInt32 first, UInt32 frames, const float* values)
    {
        for (UInt32 b = 0; b < list_.mNumberBuffers; ++b)
            if (float* pairs = wholeFrames(list_.mBuffers[b], 2, first, frames))
                std::memcpy(pairs, values, 2 * frames * sizeof(float));
            else
                for (UInt32 i = 0; i < frames; ++i)
                    writeFirstTwo(list_.mBuffers[b], first + i, values[2 * i], values[2 * i + 1]);
    }

private:
    /// Where these frames stand in a buffer of that many channels that has room for them all; else null.
    static float* wholeFrames(AudioBuffer& buffer, UInt32 channels, UInt32 first, UInt32 frames)
    {
        const std::uint64_t end = (std::uint64_t{first} + frames) * channels * sizeof(float);
        if (!buffer.mData || buffer.mNumberChannels != channels || end > buffer.mDataByteSize) return nullptr;
        return static_cast<float*>(buffer.mData) + std::size_t{first} * channels;
    }

    static void writeFirstTwo(AudioBuffer& buffer, UInt32 frame, float left, float right)
    {
        write(buffer, frame, 0, left);
        if (buffer.mNumberChannels != 1) write(buffer, frame, 1, right);
    }

    static void write(AudioBuffer& buffer, UInt32 frame, UInt32 channel, float value)
    {
        const std::uint64_t index = std::uint64_t{frame} * buffer.mNumberChannels + channel;
        if (buffer.mData && index < buffer.mDataByteSize / sizeof(float))
            static_cast<float*>(buffer.mData)[index] = value;
    }

    AudioBufferList& list_;
};

/// Advance what the host reads as OutputPositionRelative. Reading a sample may have restarted it.
void advanceRelative(AudioPlayerData& player, double step)
{
    storeRelaxed(player.outputPositionRelative, player.outputPositionRelative + step);
}

/// The same, step by step, for many frames.
void advanceRelative(AudioPlayerData& player, double step, UInt32 frames)
{
    double relative = player.outputPositionRelative;
    if (exactFrames(relative, step, frames) == frames)
        relative += frames * step;
    else
        for (UInt32 i = 0; i < frames; ++i) relative += step;
    storeRelaxed(player.outputPositionRelative, relative);
}

constexpr UInt32 blockFrames = 512;

/// The frames from `position` on that can be interpolated at once: a short block inside the current buffer,
/// which no look-ahead leaves. Empty at seams, and for positions that only one step after the other can
/// reach.
Stretch stretchAt(const AudioPlayerData& player, double position, double step, UInt32 frames,
                  std::int32_t samplesPerFrame)
{
    const UInt32 exact = exactFrames(position, step, std::min(frames, blockFrames));
    const bool isPairSplit = samplesPerFrame == 2 && player.baseSampleIndex & 1;
    if (exact == 0 || !player.current.data || isPairSplit) return {};
    const double place = position - static_cast<double>(player.baseSampleIndex) / samplesPerFrame;
    if (!(place >= 0)) return {};
    Stretch stretch = {player.current.data, place, step, exact};
    stretch.frames = framesInside(stretch, player.current.count / samplesPerFrame);
    return stretch;
}

/// Render every frame as mono and return the position behind the last.
double renderMono(AudioPlayerData& player, Output& output, double position, double step)
{
    std::int64_t last = -11111111; // no frame read yet
    float s0 = 0, s1 = 0;
    const UInt32 frames = output.frames();
    for (UInt32 i = 0; i < frames;) {
        const std::int64_t k = truncateTo64(position);
        if (k != last) {
            const Stretch stretch = stretchAt(player, position, step, frames - i, 1);
            if (stretch.frames) {
                float block[blockFrames];
                interpolateMono(stretch, block);
                output.writeAllChannels(i, stretch.frames, block);
                advanceRelative(player, step, stretch.frames);
                position += stretch.frames * step;
                i += stretch.frames;
                continue; // read anew, from the same buffer, what the next frame may share with the last
            }
            s0 = GetSample(player, k);
            s1 = GetSample(player, wrappingAdd(k, 1));
            last = k;
        }
        advanceRelative(player, step);
        if (output.hasBuffers()) {
            const double t = position - static_cast<double>(k);
            output.writeAllChannels(i, static_cast<float>(s1 * t + (1.0 - t) * s0));
        }
        position += step;
        ++i;
    }
    return position;
}

/// Render every frame as stereo and return the position behind the last.
double renderStereo(AudioPlayerData& player, Output& output, double position, double step)
{
    std::int64_t last = -10; // no frame read yet
    float left0 = 0, right0 = 0, left1 = 0, right1 = 0;
    const UInt32 frames = output.frames();
    for (UInt32 i = 0; i < frames;) {
        const std::int64_t k = truncateTo64(position);
        const std::int64_t j = wrappingAdd(k, k);
        if (j != last) {
            const Stretch stretch = stretchAt(player, position, step, frames - i, 2);
            if (stretch.frames) {
                if (float* place = output.onlyPairs(i, stretch.frames)) {
                    interpolateStereo(stretch, place);
                } else {
                    float block[2 * blockFrames];
                    interpolateStereo(stretch, block);
                    output.writeFirstTwoChannels(i, stretch.frames, block);
                }
                advanceRelative(player, step, stretch.frames);
                position += stretch.frames * step;
                i += stretch.frames;
                continue; // read anew, from the same buffer, what the next frame may share with the last
            }
            left0 = GetSample(player, j);
            right0 = GetSample(player, wrappingAdd(j, 1));
            left1 = GetSample(player, wrappingAdd(j, 2));
            right1 = GetSample(player, wrappingAdd(j, 3));
            last = j;
        }
        advanceRelative(player, step);
        if (output.hasBuffers()) {
            const float t = static_cast<float>(position - static_cast<double>(k));
            output.writeFirstTwoChannels(i, t * left1 + (1.0f - t) * left0, t * right1 + (1.0f - t) * right0);
        }
        position += step;
        ++i;
    }
    return position;
}

/// Leave the device. The record may be gone as soon as isRunning is clear.
void removeFromDevice(AudioPlayerData& player, AudioDeviceID device)
{
    AudioDeviceStop(device, player.ioProc);
    AudioDeviceRemoveIOProc(device, player.ioProc);
    storeReleased<std::uint8_t>(player.isRunning, false);
}

/// A slice of silence; then the player leaves - or stays, if it must not run dry, and says that it did.
/// Returns whether it stays.
bool stayOrLeave(AudioPlayerData& player, Output& output, AudioDeviceID device)
{
    output.silence();
    if (!loadRelaxed(player.noUnderflow)) {
        removeFromDevice(player, device);
        return false;
    }
    storeRelaxed<std::uint8_t>(player.hadUnderflow, true);
    return true;
}

} // namespace

float GetSample(AudioPlayerData& player, std::int64_t index)
{
    if (!player.current.data) return 0.0f;
    std::int64_t relative = wrappingAdd(index, -player.baseSampleIndex);
    if (relative < 0) return 0.0f;
    if (relative < player.current.count) return player.current.data[relative];

    relative -= player.current.count;
    player.baseSampleIndex += player.current.count;
    std::free(player.current.data);
    player.current = {};
    if (!TakeNextPlayItem(player)) return 0.0f;
    return relative < player.current.count ? player.current.data[relative] : 0.0f;
}

OSStatus MyPlayIOProc(AudioDeviceID device, const AudioTimeStamp*, const AudioBufferList*,
                      const AudioTimeStamp*, AudioBufferList* outputData, const AudioTimeStamp*, void* client)
{
    AudioPlayerData& player = *static_cast<AudioPlayerData*>(client);
    Output output(*outputData);

    if (loadAcquired(player.stopRequested)) {
        // A player that must not run dry drops the request: whoever waits goes on waiting until the host
        // allows the underflow and the queue has run out.
        if (stayOrLeave(player, output, device)) storeRelaxed<std::uint8_t>(player.stopRequested, false);
        return 0;
    }
    if (!player.current.data && !TakeNextPlayItem(player)) {
        stayOrLeave(player, output, device);
        return 0;
    }

    // The quotient is taken in single precision.
    const double step = loadRelaxed(player.sampleRate) / player.deviceSampleRate;
    const auto render = loadRelaxed(player.numberOfChannels) == 2 ? renderStereo : renderMono;
    storeRelaxed(player.outputPosition, render(player, output, player.outputPosition, step));
    return 0;
}

} // namespace player
