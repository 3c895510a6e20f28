#include "platform/audiounit/rate/varispeed_voice.h"

#include <algorithm>
#include <new>

namespace kvxplatform::audiounit {
namespace {

constexpr UInt32 blockFrames = 512;

} // namespace

VarispeedVoice::VarispeedVoice(const AudioStreamBasicDescription& format, pcm::RateConverter::Quality quality)
    : channels(format.mChannelsPerFrame), filter(quality), pulled(std::size_t{blockFrames} * channels),
      converted(pulled.size()), in(channels)
{
    if (!converter.prepare(1, 1, channels, quality)) throw std::bad_alloc();
}

void VarispeedVoice::start(std::int64_t frame, const Setting& setting)
{
    converter.reset();
    rate.jump(setting.rate);
    converter.setRatio(1 / setting.rate);
    fed = frame;
    heard = static_cast<double>(frame);
}

struct VarispeedVoice::Pulling {
    VarispeedVoice& voice;
    Reader& reader;

    static const Float32* pull(void* context, UInt32 frames)
    {
        auto& self = *static_cast<Pulling*>(context);
        VarispeedVoice& voice = self.voice;
        self.reader.tape.pullUntil(self.reader.request, voice.fed + frames);
        for (UInt32 done = 0; done < frames;) {
            const UInt32 now = self.reader.tape.look(voice.fed, frames - done, voice.in.data());
            for (UInt32 channel = 0; channel < voice.channels; ++channel)
                for (UInt32 frame = 0; frame < now; ++frame)
                    voice.pulled[std::size_t{done + frame} * voice.channels + channel] =
                        voice.in[channel][frame];
            voice.fed += now;
            done += now;
        }
        return voice.pulled.data();
    }
};

void VarispeedVoice::read(Reader& reader, const Setting& setting, Float32* const* out, UInt32 frames)
{
    rate.aim(setting.rate);
    Pulling pulling{*this, reader};
    for (UInt32 done = 0; done < frames;) {
        const UInt32 now = rate.next(std::min(frames - done, blockFrames));
        converter.setRatio(1 / rate.value());
        converter.convert(converted.data(), now, blockFrames, {Pulling::pull, &pulling});
        heard += now * rate.value();
        for (UInt32 channel = 0; channel < channels; ++channel)
            for (UInt32 frame = 0; frame < now; ++frame)
                out[channel][done + frame] = converted[std::size_t{frame} * channels + channel];
        done += now;
    }
}

double VarispeedVoice::framesAhead(const Setting& setting) const
{
    return pcm::RateConverter::lookAhead(setting.rate, 1, filter) / setting.rate;
}

double VarispeedVoice::framesOfTail(const Setting& setting) const { return framesAhead(setting); }

} // namespace kvxplatform::audiounit
