#include "player/render.h"

#include "player/interpolation.h"
#include "player/play_queue.h"
#include "player/sample_reader.h"
#include "player/span.h"
#include "player/underflow.h"
#include "plugin/shared_word.h"
#include "plugin/truncate.h"

namespace player {

namespace {

/// Add one step to outputPositionRelative. The field is read again here because GetSample may have reset it
/// to 0.
void advanceRelative(AudioPlayerData& player, double step)
{
    storeRelaxed(player.outputPositionRelative, player.outputPositionRelative + step);
}

/// Add `frames` steps to outputPositionRelative, with exactly the same result as adding them one at a time.
void advanceRelative(AudioPlayerData& player, double step, UInt32 frames)
{
    double relative = player.outputPositionRelative;
    if (exactFrames(relative, step, frames) == frames)
        relative += frames * step;
    else
        for (UInt32 i = 0; i < frames; ++i) relative += step;
    storeRelaxed(player.outputPositionRelative, relative);
}

/// Render a slice from mono data and return the position after the slice's last frame.
double renderMono(AudioPlayerData& player, OutputBuffers& output, double position, double step)
{
    std::int64_t last = -11111111; // index of no frame: none has been read yet
    float s0 = 0, s1 = 0;
    const UInt32 frames = output.frames();
    for (UInt32 i = 0; i < frames;) {
        const std::int64_t k = truncateTo64(position);
        if (k != last) {
            const Span span = spanAt(player, position, step, frames - i, 1);
            if (span.frames) {
                float block[largestSpan];
                interpolateMono(span, block);
                output.writeMono(i, span.frames, block);
                advanceRelative(player, step, span.frames);
                position += span.frames * step;
                i += span.frames;
                // `last` is not updated here, so the next frame reads its neighbours again.
                continue;
            }
            s0 = GetSample(player, k);
            s1 = GetSample(player, wrappingAdd(k, 1));
            last = k;
        }
        advanceRelative(player, step);
        if (!output.isEmpty()) {
            const double t = position - static_cast<double>(k);
            output.writeMono(i, static_cast<float>(s1 * t + (1.0 - t) * s0));
        }
        position += step;
        ++i;
    }
    return position;
}

/// Render a slice from stereo data and return the position after the slice's last frame.
double renderStereo(AudioPlayerData& player, OutputBuffers& output, double position, double step)
{
    std::int64_t last = -10; // index of no sample: none has been read yet
    float left0 = 0, right0 = 0, left1 = 0, right1 = 0;
    const UInt32 frames = output.frames();
    for (UInt32 i = 0; i < frames;) {
        const std::int64_t k = truncateTo64(position);
        const std::int64_t j = wrappingAdd(k, k);
        if (j != last) {
            const Span span = spanAt(player, position, step, frames - i, 2);
            if (span.frames) {
                if (float* direct = output.directStereo(i, span.frames)) {
                    interpolateStereo(span, direct, output.channels());
                } else {
                    float block[2 * largestSpan];
                    interpolateStereo(span, block, 2);
                    output.writeStereo(i, span.frames, block);
                }
                advanceRelative(player, step, span.frames);
                position += span.frames * step;
                i += span.frames;
                continue; // `last` is not updated, as in renderMono
            }
            left0 = GetSample(player, j);
            right0 = GetSample(player, wrappingAdd(j, 1));
            left1 = GetSample(player, wrappingAdd(j, 2));
            right1 = GetSample(player, wrappingAdd(j, 3));
            last = j;
        }
        advanceRelative(player, step);
        if (!output.isEmpty()) {
            const float t = static_cast<float>(position - static_cast<double>(k));
            output.writeStereo(i, t * left1 + (1.0f - t) * left0, t * right1 + (1.0f - t) * right0);
        }
        position += step;
        ++i;
    }
    return position;
}

} // namespace

OSStatus MyPlayIOProc(AudioDeviceID device, const AudioTimeStamp*, const AudioBufferList*,
                      const AudioTimeStamp*, AudioBufferList* outputData, const AudioTimeStamp*, void* client)
{
    AudioPlayerData& player = *static_cast<AudioPlayerData*>(client);
    OutputBuffers output(*outputData);

    if (loadAcquired(player.stopRequested)) {
        // With noUnderflow set, the stop request is dropped. The waiting stopPlaying then returns only after
        // the host program has cleared noUnderflow and the queue has run empty.
        if (renderUnderflow(player, output, device)) storeRelaxed<std::uint8_t>(player.stopRequested, false);
        return 0;
    }
    if (!player.current.data && !TakeNextPlayItem(player)) {
        renderUnderflow(player, output, device);
        return 0;
    }

    // The single-precision division is intended.
    const double step = loadRelaxed(player.sampleRate) / player.deviceSampleRate;
    const bool isStereo = loadRelaxed(player.numberOfChannels) == 2;
    const double position =
        (isStereo ? renderStereo : renderMono)(player, output, player.outputPosition, step);
    storeRelaxed(player.outputPosition, position);
    return 0;
}

} // namespace player
