#include "platform/soundmanager/source.h"

#include "platform/pcm/linear_pcm.h"
#include "platform/soundmanager/sound_format.h"

#include <algorithm>
#include <cmath>

namespace kvxplatform::soundmanager {
namespace {

constexpr auto quality = pcm::RateConverter::Quality::best;

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

/// The run that a buffer of this rate belongs to: the newest, or a new one. Null at the mixer's own rate, and
/// for one that is too far from it.
Source::Run* Source::runFor(Float64 rate)
{
    const UInt32 done = used;           // first this: a run without entries
    const Run* const sounding = active; // that does not sound by now never will again
    const auto isOver = [&](const auto& run) {
        return run != runs.back() && run.get() != sounding && isBefore(run->lastEntry, done);
    };
    runs.erase(std::remove_if(runs.begin(), runs.end(), isOver), runs.end());
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

void Source::setBlock(Entry& entry, SoundParamBlockPtr block)
{
    entry.block = block;
    entry.samples = block->desc.buffer;
    entry.frames = static_cast<UInt32>(block->desc.sampleCount);
    entry.left = gain(static_cast<UInt16>(block->leftVolume));
    entry.right = gain(static_cast<UInt16>(block->rightVolume));
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
    setBlock(entry, block);
    entries[given % capacity] = entry;
    ++given;
    return noErr;
}

std::unique_ptr<Source> Source::withoutBuffers() const
{
    auto made = std::make_unique<Source>(form);
    made->volume = volume.load();
    made->rateMultiplier = rateMultiplier.load();
    return made;
}

// ---- the audio thread ----

/// The front entry has been used up: play what its owner has more, or tell that it is done. The owner may do
/// anything meanwhile, but this source stays whole until the slice is over.
void Source::finish(Entry& entry)
{
    framesTaken = 0;
    const SoundParamBlockPtr block = entry.block;
    SoundParamBlockPtr more = block;
    const bool hasMore =
        block->moreRtn && block->moreRtn(&more) && more && more->desc.buffer && more->desc.sampleCount > 0;
    if (hasEnded) return;
    if (hasMore)
        setBlock(entry, more); // in the same form: there is no time here to prepare for another
    else
        ++used;
    if (hasMore && more == block) return;
    block->result = noErr;
    SoundParamBlockPtr done = block;
    if (block->completionRtn) block->completionRtn(&done);
}

/// The next frames of an entry, at most a piece, as the mixer's channels.
UInt32 Source::take(const Entry& entry, UInt32 frames, Float32* out)
{
    const UInt32 channels = entry.format.mChannelsPerFrame;
    const UInt32 count = std::min({frames, entry.frames - framesTaken, pieceFrames});
    AudioBufferList list;
    list.mNumberBuffers = 1;
    list.mBuffers[0] = {
        channels, count * entry.format.mBytesPerFrame,
        const_cast<Byte*>(entry.samples + std::size_t{framesTaken} * entry.format.mBytesPerFrame)};
    pcm::decode(entry.format, list, count, decoded.data());
    const UInt32 levels = volume;
    const Float32 left = entry.left * gain(levels), right = entry.right * gain(levels >> 16);
    if (channels == 2) applyGain(decoded.data(), channels, count, left, right);
    fold(decoded.data(), channels, out, form.channels, count);
    if (channels == 1) applyGain(out, form.channels, count, left, right);
    return count;
}

UInt32 Source::convert(const Entry& entry, Run& run, Float32* out, UInt32 room)
{
    const UInt32 count = take(entry, pieceFrames, piece.data());
    const auto done = run.converter.process(piece.data(), count, out, room);
    framesTaken += done.used;
    run.isUnder = true;
    run.owed += done.used * run.framesPerFrame - done.made;
    return done.made;
}

/// What the run still owes for the input it had; its converter is as new afterwards. Silence goes in behind
/// the input as late as can be: up to then a buffer of the same rate may follow without a seam.
UInt32 Source::drain(Run& run, Float32* out, UInt32 room)
{
    UInt32 made = 0;
    if (!run.isEnding) {
        made = run.converter.process(nullptr, 0, out, room).made;
        run.owed -= made;
        if (made == room) return made;
    }
    run.isEnding = true;
    piece.fill(0);
    while (made < room && run.owed >= 0.5) {
        const UInt32 wanted = std::min(room - made, static_cast<UInt32>(std::lround(run.owed)));
        const auto done =
            run.converter.process(piece.data(), pieceFrames, out + std::size_t{made} * form.channels, wanted);
        made += done.made;
        run.owed -= done.made;
    }
    if (run.owed < 0.5) {
        run.converter.reset();
        run.owed = 0;
        run.isUnder = run.isEnding = false;
    }
    return made;
}

UInt32 Source::render(Float32* out, UInt32 frames)
{
    UInt32 made = 0, empty = 0;
    while (made < frames && isPlaying && !hasEnded) {
        Float32* const place = out + std::size_t{made} * form.channels;
        Entry* const entry = used == given ? nullptr : &entries[used % capacity];
        Run* const run = active;
        if (run && run->isUnder && (!entry || entry->run != run || run->isEnding)) {
            made += drain(*run, place, frames - made);
            continue;
        }
        if (!entry) break;
        active = entry->run;
        if (entry->run) {
            made += convert(*entry, *entry->run, place, frames - made);
        } else {
            const UInt32 count = take(*entry, frames - made, place);
            framesTaken += count;
            made += count;
        }
        if (framesTaken < entry->frames) continue;
        if (entry->frames == 0 && ++empty > capacity) break; // given again by their own completions
        finish(*entry);
    }
    return made;
}

} // namespace kvxplatform::soundmanager
