#include "platform/audiounit/rate/rate_path.h"

#include "platform/audiounit/rate/splice.h"

#include <algorithm>
#include <cmath>

namespace kvxplatform::audiounit {
namespace {

constexpr UInt32 blockFrames = 512;
constexpr UInt32 fadeFrames = 1024;

// A voice that gets ready takes so much more than what is heard meanwhile.
constexpr double headway = 2.25;

/// How much of the new sound is in a fade's frame: it begins and ends flat.
Float32 shareAt(UInt32 frame)
{
    const double x = (frame + 0.5) / fadeFrames;
    return static_cast<Float32>(x * x * (3 - 2 * x));
}

} // namespace

void RatePath::prepare(const AudioStreamBasicDescription& format)
{
    tape.prepare(format);
    planes.resize(format.mChannelsPerFrame);
    rest.resize(format.mChannelsPerFrame);
    isFresh = true;
}

void RatePath::prepareForVoices(double tapeFrames)
{
    if (tape.hasRoom()) return;
    fading.assign(std::size_t{blockFrames} * tape.channels(), 0);
    fadingPlanes.resize(tape.channels());
    for (UInt32 channel = 0; channel < tape.channels(); ++channel)
        fadingPlanes[channel] = fading.data() + std::size_t{channel} * blockFrames;
    tape.makeRoom(tapeFrames); // last: with room, all is there
}

void RatePath::release() { *this = RatePath(); }

void RatePath::begin(Float64 time, const Wish& wish, VoiceBox& box)
{
    isFresh = false;
    tape.start(time);
    asIs = 0;
    now = nullptr;
    change = Change::none;
    takeVoice(box);
    if (!wish.isVoiced || !voice) return;
    target = wish.setting;
    voice->start(0, target);
    now = voice.get();
}

// A voice that waits is taken where it can be: at once, or as one that shall replace the one heard.
void RatePath::takeVoice(VoiceBox& box)
{
    if (change != Change::none) return;
    if (incoming && !now) {
        box.retire(std::move(voice));
        voice = std::move(incoming);
    }
    if (incoming || !box.isFull()) return;
    if (now) {
        incoming = box.take();
    } else {
        if (voice) box.retire(std::move(voice));
        voice = box.take();
    }
}

void RatePath::startNext(Voice& starting, std::int64_t frame, const Setting& setting)
{
    next = &starting;
    nextTarget = setting;
    changeAt = frame;
    change = Change::ahead;
    starting.start(frame, setting);
}

void RatePath::plan(const Wish& wish)
{
    if (change != Change::none) return;
    const Setting neutral;
    if (!now) {
        if (wish.isVoiced && voice) startNext(*voice, asIs + voice->leadIn(neutral), neutral);
    } else if (!wish.isVoiced) {
        if (!now->isNeutral()) return;
        next = nullptr;
        change = Change::fading;
        faded = 0;
    } else if (incoming) {
        const auto from = static_cast<std::int64_t>(std::ceil(now->position()));
        startNext(*incoming, from + incoming->leadIn(target), target);
    }
}

// What the voice that is heard shall do: during a change it stays as it is.
void RatePath::choose(const Wish& wish)
{
    if (!now || change != Change::none) return;
    target = wish.isVoiced ? wish.setting : Setting{};
}

OSStatus RatePath::render(Unit& unit, Slice& slice, const Wish& wish, VoiceBox& box)
{
    AudioUnitRenderActionFlags flags = slice.flags;
    InputTape::Request request{unit, flags, slice.time};
    Reader reader{tape, request};
    if (isFresh) begin(slice.time.mSampleTime, wish, box);
    takeVoice(box);

    bool isUntouched = true;
    for (UInt32 done = 0; done < slice.frames;) {
        plan(wish);
        choose(wish);
        isUntouched = isUntouched && !now && change == Change::none && asIs == tape.end();
        for (UInt32 channel = 0; channel < tape.channels(); ++channel)
            planes[channel] = static_cast<Float32*>(slice.out.mBuffers[channel].mData) + done;
        done += play(reader, planes.data(), slice.frames - done, box);
        const std::int64_t past = now ? spliceReach : 0; // for the way back
        const auto left = static_cast<std::int64_t>(std::floor(position())) - past;
        tape.forget(change == Change::fading && !next ? std::min(left, asIs) : left);
    }
    // What the input says about its silence holds for what comes out only where that is the same.
    slice.flags =
        isUntouched ? flags : flags & ~AudioUnitRenderActionFlags{kAudioUnitRenderAction_OutputIsSilence};
    return request.status;
}

UInt32 RatePath::play(Reader& reader, Float32* const* out, UInt32 frames, VoiceBox& box)
{
    if (change == Change::fading) return fade(reader, out, std::min(frames, blockFrames), box);
    if (change == Change::ahead) return playUntilFade(reader, out, std::min(frames, blockFrames));
    if (now) frames = std::min(frames, blockFrames);
    play(now, reader, out, frames);
    return frames;
}

UInt32 RatePath::playUntilFade(Reader& reader, Float32* const* out, UInt32 frames)
{
    const double left = std::ceil((static_cast<double>(changeAt) - position()) / rate());
    if (left <= 0) {
        while (!next->prepare(reader, blockFrames)) {
        }
        change = Change::fading;
        faded = 0;
        return 0;
    }
    frames = static_cast<UInt32>(std::min<double>(frames, left));
    play(now, reader, out, frames);
    next->prepare(reader, static_cast<std::int64_t>(std::ceil(frames * rate() * headway)));
    return frames;
}

UInt32 RatePath::fade(Reader& reader, Float32* const* out, UInt32 frames, VoiceBox& box)
{
    frames = std::min(frames, fadeFrames - faded);
    if (faded == 0 && !next)
        asIs = std::clamp<std::int64_t>(std::llround(position()), tape.begin(), tape.end());
    play(now, reader, out, frames);
    if (faded == 0 && !next) asIs = bestSplice(tape, asIs, out, frames);
    if (next)
        next->read(reader, nextTarget, fadingPlanes.data(), frames);
    else
        playAsIs(reader, fadingPlanes.data(), frames);
    for (UInt32 frame = 0; frame < frames; ++frame) {
        const Float32 share = shareAt(faded + frame);
        for (UInt32 channel = 0; channel < tape.channels(); ++channel)
            out[channel][frame] += share * (fadingPlanes[channel][frame] - out[channel][frame]);
    }
    faded += frames;
    if (faded < fadeFrames) return frames;

    change = Change::none;
    now = next;
    target = nextTarget;
    if (next && next == incoming.get()) {
        box.retire(std::move(voice));
        voice = std::move(incoming);
    }
    return frames;
}

void RatePath::play(Voice* from, Reader& reader, Float32* const* out, UInt32 frames)
{
    if (from)
        from->read(reader, target, out, frames);
    else
        playAsIs(reader, out, frames);
}

void RatePath::playAsIs(Reader& reader, Float32* const* out, UInt32 frames)
{
    if (change != Change::none) tape.pullUntil(reader.request, asIs + frames);
    const auto here = static_cast<UInt32>(std::min<std::int64_t>(frames, tape.end() - asIs));
    if (here) tape.copy(asIs, here, out);
    asIs += here;
    if (here == frames) return;
    tape.forget(asIs);
    for (UInt32 channel = 0; channel < tape.channels(); ++channel) rest[channel] = out[channel] + here;
    tape.pullThrough(reader.request, rest.data(), frames - here);
    asIs += frames - here;
}

double RatePath::framesAhead() const { return static_cast<double>(tape.end()) - position(); }

} // namespace kvxplatform::audiounit
