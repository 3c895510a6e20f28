#include "bench/stretching.h"

#include "bench/file_player.h"
#include "bench/music.h"

#include <algorithm>
#include <cmath>

namespace bench {
namespace {

constexpr std::size_t largestPiece = 1024; // as the units have it

/// `frames` frames of the music from `at` on, which moves; less at its end, behind which it begins anew.
std::size_t take(std::size_t& at, std::size_t frames, std::size_t& first)
{
    if (at == musicFrames) at = 0;
    first = at;
    const std::size_t now = std::min(frames, musicFrames - at);
    at += now;
    return now;
}

} // namespace

RubberBandAlone::RubberBandAlone(double timeRatio, double pitchScale, double framesOut_)
    : band(static_cast<std::size_t>(musicRate), 2, options, timeRatio, pitchScale), framesOut(framesOut_)
{
    band.setMaxProcessSize(largestPiece);
    for (std::vector<float>& each : out) each.resize(static_cast<std::size_t>(framesOut) + 1);
    for (int i = 0; i < 100; ++i) step(); // what it begins with
}

std::size_t RubberBandAlone::step()
{
    owed += framesOut;
    const auto frames = static_cast<std::size_t>(owed);
    owed -= static_cast<double>(frames);
    for (std::size_t done = 0; done < frames;) {
        while (band.available() <= 0) {
            const std::size_t wanted = std::clamp<std::size_t>(band.getSamplesRequired(), 1, largestPiece);
            std::size_t first;
            const std::size_t now = take(at, wanted, first);
            const float* const in[] = {musicPlanes()[0] + first, musicPlanes()[1] + first};
            band.process(in, now, false);
        }
        float* const place[] = {out[0].data() + done, out[1].data() + done};
        done += band.retrieve(place, std::min(frames - done, static_cast<std::size_t>(band.available())));
    }
    return frames;
}

SoundTouchAlone::SoundTouchAlone(double tempo, double semitones) : out(2 * sliceFrames)
{
    touch.setSampleRate(static_cast<unsigned>(musicRate));
    touch.setChannels(2);
    touch.setTempo(tempo);
    touch.setPitchSemiTones(semitones);
    for (int i = 0; i < 100; ++i) step();
}

const float* SoundTouchAlone::step()
{
    for (unsigned done = 0; done < sliceFrames;) {
        done += touch.receiveSamples(out.data() + 2 * done, sliceFrames - done);
        if (done == sliceFrames) break;
        std::size_t first;
        const std::size_t now = take(at, sliceFrames, first);
        touch.putSamples(music(2).data() + 2 * first, static_cast<unsigned>(now));
    }
    return out.data();
}

} // namespace bench
