#include "platform/audiounit/rate/time_pitch_voice.h"

#include <algorithm>
#include <new>

namespace kvxplatform::audiounit {
namespace {

constexpr UInt32 blockFrames = 512;

// What a conversion that begins in the midst of sound has to have heard before: half its filter, and some.
constexpr UInt32 recentFrames = 32;

double stretchOf(const Setting& setting) { return setting.pitch / setting.rate; }

void interleave(const Float32* const* planes, UInt32 channels, UInt32 frames, Float32* out)
{
    for (UInt32 channel = 0; channel < channels; ++channel)
        for (UInt32 frame = 0; frame < frames; ++frame)
            out[std::size_t{frame} * channels + channel] = planes[channel][frame];
}

} // namespace

TimePitchVoice::TimePitchVoice(const AudioStreamBasicDescription& format, Stretcher::Engine engine)
    : channels(format.mChannelsPerFrame), stretcher(format.mSampleRate, channels, engine),
      stretched(std::size_t{blockFrames} * channels), pulled(stretched.size()), converted(stretched.size()),
      planes(channels), recent(std::size_t{recentFrames} * channels)
{
    // The fast filter: what it leaves out is far below what stretching adds.
    if (!converter.prepare(1, 1, channels, pcm::RateConverter::Quality::fast)) throw std::bad_alloc();
}

void TimePitchVoice::start(std::int64_t frame, const Setting& setting)
{
    stretcher.start(frame, stretchOf(setting));
    pitch.jump(setting.pitch);
    ahead = 0;
    std::fill(recent.begin(), recent.end(), 0.0f);
    converts = setting.pitch != 1;
    if (converts) {
        converter.reset();
        converter.setRatio(1 / setting.pitch);
    }
}

std::int64_t TimePitchVoice::leadIn(const Setting& setting) const
{
    return stretcher.leadIn(stretchOf(setting));
}

bool TimePitchVoice::prepare(Reader& reader, std::int64_t most) { return stretcher.prepare(reader, most); }

struct TimePitchVoice::Pulling {
    TimePitchVoice& voice;
    Reader& reader;

    static const Float32* pull(void* context, UInt32 frames)
    {
        auto& self = *static_cast<Pulling*>(context);
        TimePitchVoice& voice = self.voice;
        for (UInt32 channel = 0; channel < voice.channels; ++channel)
            voice.planes[channel] = voice.stretched.data() + std::size_t{channel} * blockFrames;
        voice.stretcher.read(self.reader, voice.planes.data(), frames);
        interleave(voice.planes.data(), voice.channels, frames, voice.pulled.data());
        voice.ahead += frames;
        return voice.pulled.data();
    }
};

void TimePitchVoice::convert(Reader& reader, Float32* out, UInt32 frames)
{
    Pulling pulling{*this, reader};
    converter.convert(out, frames, blockFrames, {Pulling::pull, &pulling});
    ahead -= frames * pitch.value();
}

void TimePitchVoice::beginConversion(Reader& reader)
{
    struct Past {
        static const Float32* pull(void* context, UInt32 frames)
        {
            auto& self = *static_cast<Past*>(context);
            if (self.given) return Pulling::pull(&self.then, frames);
            self.given = true;
            return self.then.voice.recent.data();
        }
        Pulling then;
        bool given;
    };
    converter.reset();
    converter.setRatio(1);
    Past past{{*this, reader}, false};
    // Asked for as many frames at this ratio, it takes as many first, and then what lies ahead.
    converter.convert(converted.data(), recentFrames, recentFrames, {Past::pull, &past});
    converts = true;
}

void TimePitchVoice::readStretched(Reader& reader, Float32* const* out, UInt32 frames)
{
    stretcher.read(reader, out, frames);
    const UInt32 kept = std::min(frames, recentFrames);
    std::move(recent.begin() + static_cast<std::ptrdiff_t>(kept * channels), recent.end(), recent.begin());
    for (UInt32 channel = 0; channel < channels; ++channel) planes[channel] = out[channel] + (frames - kept);
    interleave(planes.data(), channels, kept, recent.data() + std::size_t{recentFrames - kept} * channels);
}

void TimePitchVoice::read(Reader& reader, const Setting& setting, Float32* const* out, UInt32 frames)
{
    stretcher.setRatio(stretchOf(setting));
    pitch.aim(setting.pitch);
    if (!converts && pitch.isThere()) return readStretched(reader, out, frames);
    if (!converts) beginConversion(reader);

    for (UInt32 done = 0; done < frames;) {
        const UInt32 now = pitch.next(std::min(frames - done, blockFrames));
        converter.setRatio(1 / pitch.value());
        convert(reader, converted.data(), now);
        for (UInt32 channel = 0; channel < channels; ++channel)
            for (UInt32 frame = 0; frame < now; ++frame)
                out[channel][done + frame] = converted[std::size_t{frame} * channels + channel];
        done += now;
    }
}

double TimePitchVoice::position() const { return stretcher.position(ahead); }

bool TimePitchVoice::isNeutral() const
{
    return pitch.isThere() && pitch.value() == 1 && stretcher.isSettled() && stretcher.ratio() == 1;
}

double TimePitchVoice::framesAhead(const Setting& setting) const
{
    return stretcher.framesAhead(stretchOf(setting)) / setting.rate;
}

double TimePitchVoice::framesOfTail(const Setting& setting) const
{
    return stretcher.framesOfTail(stretchOf(setting)) / setting.pitch;
}

} // namespace kvxplatform::audiounit
