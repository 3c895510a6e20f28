#include "platform/soundmanager/source.h"

#include "platform/audiounit/linear_pcm.h"
#include "platform/soundmanager/sound_format.h"

#include <algorithm>
#include <cmath>

namespace kvxplatform::soundmanager {
namespace {

constexpr auto quality = audiounit::RateConverter::Quality::best;

Float32 gain(UInt32 volume) { return static_cast<Float32>(volume & 0xFFFF) / kFullVolume; }

/// Counters wrap; this orders two that are close.
bool isBefore(UInt32 a, UInt32 b) { return static_cast<SInt32>(a - b) < 0; }

/// One channel into two, two into their mean, or as they are.
void fold(const Float32* in, UInt32 inChannels, Float32* out, UInt32 outChannels, UInt32 frames)
{
    if (inChannels == outChannels)
        std::copy_n(in, std::size_t{frames} * inChannels, out);
    else if (inChannels == 1)
        for (UInt32 i = 0; i < frames; ++i) out[2 * i] = out[2 * i + 1] = in[i];
    else
        for (UInt32 i = 0; i < frames; ++i) out[i] = (in[2 * i] + in[2 * i + 1]) / 2;
}

void applyGain(Float32* samples, UInt32 channels, UInt32 frames, Float32 left, Float32 right)
{
    if (left == 1 && right == 1) return; // to the last bit
    for (UInt32 i = 0; i < frames; ++i) {
        if (channels == 1) {
            samples[i] *= (left + right) / 2;
        } else {
            samples[2 * i] *= left;
            samples[2 * i + 1] *= right;
        }
    }
}

} // namespace

// ---- clients ----

/// The run that a buffer of this rate belongs to: the newest, or a new one. Null at the mixer's own rate.
Source::Run* Source::runFor(Float64 rate)
{
    const UInt32 done = used;
    runs.erase(
        std::remove_if(runs.begin(), runs.end(),
                       [&](const auto& run) { return run != runs.back() && isBefore(run->lastEntry, done); }),
        runs.end());
    if (rate == form.sampleRate) return nullptr;
    if (runs.empty() || runs.back()->rate != rate) {
        auto run = std::make_unique<Run>();
        if (!run->converter.prepare(rate, form.sampleRate, form.channels, quality)) return nullptr;
        run->rate = rate;
        run->framesPerFrame = form.sampleRate / rate;
        runs.push_back(std::move(run));
    }
    runs.back()->lastEntry = given;
    return runs.back().get();
}

OSErr Source::give(SoundParamBlockPtr block)
{
    Entry entry = {};
    if (const OSErr refusal = linearPCM(block->desc, entry.format)) return refusal;
    if (!block->desc.buffer || block->desc.sampleCount < 0) return paramErr;
    if (given - used >= capacity) return queueFull;

    const UnsignedFixed multiplier = block->rateMultiplier ? block->rateMultiplier : 0x10000;
    const Float64 rate = entry.format.mSampleRate * hertz(multiplier) * hertz(rateMultiplier);
    entry.run = runFor(rate);
    if (!entry.run && rate != form.sampleRate) return siInvalidSampleRate;
    entry.block = block;
    entry.samples = block->desc.buffer;
    entry.frames = static_cast<UInt32>(block->desc.sampleCount);
    entry.left = gain(static_cast<UInt16>(block->leftVolume));
    entry.right = gain(static_cast<UInt16>(block->rightVolume));
    entries[given % capacity] = entry;
    ++given;
    return noErr;
}

// ---- the audio thread ----

/// The entry to play from; null when none waits. Those thrown away are gone by now, and their run with them.
Source::Entry* Source::front()
{
    const UInt32 firstKept = thrownAway;
    if (isBefore(used, firstKept)) {
        used = firstKept;
        active = nullptr;
    }
    if (used == given) return nullptr;
    if (entryBegun != used || framesTaken == 0) {
        entryBegun = used;
        framesTaken = 0;
    }
    return &entries[used % capacity];
}

void Source::finish(Entry& entry)
{
    const SoundParamBlockPtr block = entry.block;
    SoundParamBlockPtr next = block;
    framesTaken = 0;
    if (block->moreRtn && block->moreRtn(&next) && next && next->desc.buffer && next->desc.sampleCount > 0) {
        entry.block = next; // in the same form: there is no time here to prepare for another
        entry.samples = next->desc.buffer;
        entry.frames = static_cast<UInt32>(next->desc.sampleCount);
        return;
    }
    ++used;
    block->result = noErr;
    if (block->completionRtn) {
        SoundParamBlockPtr done = block;
        block->completionRtn(&done);
    }
}

/// The next frames of an entry, at most a piece, as the mixer's channels.
UInt32 Source::take(const Entry& entry, UInt32 frames, Float32* out)
{
    const UInt32 count = std::min({frames, entry.frames - framesTaken, pieceFrames});
    AudioBufferList list;
    list.mNumberBuffers = 1;
    list.mBuffers[0] = {
        entry.format.mChannelsPerFrame, count * entry.format.mBytesPerFrame,
        const_cast<Byte*>(entry.samples + std::size_t{framesTaken} * entry.format.mBytesPerFrame)};
    audiounit::decode(entry.format, list, count, decoded.data());
    fold(decoded.data(), entry.format.mChannelsPerFrame, out, form.channels, count);
    const UInt32 levels = volume;
    applyGain(out, form.channels, count, entry.left * gain(levels), entry.right * gain(levels >> 16));
    return count;
}

UInt32 Source::convert(Entry& entry, Float32* out, UInt32 room)
{
    const UInt32 count = take(entry, pieceFrames, piece.data());
    const auto done = active->converter.process(piece.data(), count, out, room);
    framesTaken += done.used;
    active->isUnder = true;
    active->owed += done.used * active->framesPerFrame - done.made;
    return done.made;
}

/// What the run still owes for the input it had.
UInt32 Source::drain(Float32* out, UInt32 room)
{
    if (!active || !active->isUnder) return 0;
    piece.fill(0);
    UInt32 made = 0;
    while (made < room && active->owed >= 0.5) {
        const UInt32 wanted = std::min(room - made, static_cast<UInt32>(std::lround(active->owed)));
        const auto done =
            active->converter.process(piece.data(), pieceFrames, out + made * form.channels, wanted);
        made += done.made;
        active->owed -= done.made;
    }
    if (active->owed < 0.5) {
        active->converter.reset(); // what comes next begins anew
        active->owed = 0;
        active->isUnder = false;
    }
    return made;
}

UInt32 Source::render(Float32* out, UInt32 frames)
{
    UInt32 made = 0;
    while (made < frames) {
        Float32* const place = out + std::size_t{made} * form.channels;
        Entry* const entry = front();
        if (!entry || entry->run != active) {
            made += drain(place, frames - made);
            if (!entry || made == frames) break;
            if (active && active->isUnder) continue;
            active = entry->run;
            if (active) {
                active->converter.reset();
                active->owed = 0;
                active->isUnder = false;
            }
            continue;
        }
        if (active) {
            made += convert(*entry, place, frames - made);
        } else {
            const UInt32 count = take(*entry, frames - made, place);
            framesTaken += count;
            made += count;
        }
        if (framesTaken >= entry->frames) finish(*entry);
    }
    return made;
}

} // namespace kvxplatform::soundmanager
