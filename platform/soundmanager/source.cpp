#include "platform/soundmanager/source.h"

#include "platform/pcm/linear_pcm.h"
#include "platform/soundmanager/sound_format.h"

#include <algorithm>
#include <cmath>

namespace kvxplatform::soundmanager {
namespace {

Float32 gain(UInt32 volume) { return static_cast<Float32>(volume & 0xFFFF) / kFullVolume; }

/// Whether counter `a` is before counter `b`. Counters wrap, so their distance must be less than 2^31.
bool isBefore(UInt32 a, UInt32 b) { return static_cast<SInt32>(a - b) < 0; }

/// Convert the channel count: mono is copied to both channels, and stereo becomes the mean of its channels.
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
    if (left == 1 && right == 1) return; // at full volume the samples stay bit-exact
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

// ---- functions for client threads ----

/// Free the unused conversions, then return the newest conversion if it has this rate, otherwise a new one.
/// Returns  null if `rate` is the mixer's rate, or too far from the mixer's rate.
Source::Conversion* Source::conversionFor(Float64 rate)
{
    // `played_` is read before `active_`, because a conversion whose last entry has been played cannot become
    // active again.
    const UInt32 played = played_;
    const Conversion* const active = active_;
    const auto isUnused = [&](const auto& each) {
        return each != conversions_.back() && each.get() != active && isBefore(each->lastEntry, played);
    };
    conversions_.erase(std::remove_if(conversions_.begin(), conversions_.end(), isUnused),
                       conversions_.end());
    if (rate == format_.sampleRate) return nullptr;
    if (conversions_.empty() || conversions_.back()->rate != rate) {
        auto next = std::make_unique<Conversion>();
        if (!next->converter.prepare(rate, format_.sampleRate, format_.channels,
                                     pcm::FixedRateConverter::Quality::high))
            return nullptr;
        next->rate = rate;
        next->ratio = format_.sampleRate / rate;
        conversions_.push_back(std::move(next));
    }
    conversions_.back()->lastEntry = queued_;
    return conversions_.back().get();
}

void Source::setBlock(Entry& entry, SoundParamBlockPtr block)
{
    entry.block = block;
    entry.samples = block->desc.buffer;
    entry.frames = static_cast<UInt32>(block->desc.sampleCount);
    entry.left = gain(static_cast<UInt16>(block->leftVolume));
    entry.right = gain(static_cast<UInt16>(block->rightVolume));
}

OSErr Source::queue(SoundParamBlockPtr block)
{
    Entry entry = {};
    if (const OSErr refusal = linearPCM(block->desc, entry.format)) return refusal;
    if (!block->desc.buffer || block->desc.sampleCount < 0) return paramErr;
    if (queued_ - played_ >= capacity) return queueFull;

    const UnsignedFixed multiplier = block->rateMultiplier ? block->rateMultiplier : 0x10000;
    const Float64 rate = entry.format.mSampleRate * hertz(multiplier) * hertz(rateMultiplier);
    entry.conversion = conversionFor(rate);
    if (!entry.conversion && rate != format_.sampleRate) return siInvalidSampleRate;
    setBlock(entry, block);
    entries_[queued_ % capacity] = entry;
    ++queued_;
    return noErr;
}

std::unique_ptr<Source> Source::withoutBuffers() const
{
    auto made = std::make_unique<Source>(format_);
    made->volume = volume.load();
    made->rateMultiplier = rateMultiplier.load();
    return made;
}

// ---- functions for the render thread ----

/// Continue a played front entry with the block that the "more" routine supplies, or complete the entry. The
/// client's routines may stop or remove this source, but it stays alive until the render call ends.
void Source::finish(Entry& entry)
{
    framesPlayed_ = 0;
    const SoundParamBlockPtr block = entry.block;
    SoundParamBlockPtr more = block;
    const bool hasMore =
        block->moreRtn && block->moreRtn(&more) && more && more->desc.buffer && more->desc.sampleCount > 0;
    if (hasEnded_) return;
    if (hasMore)
        // The block is read in the entry's format, because another conversion would need an allocation.
        setBlock(entry, more);
    else
        ++played_;
    if (hasMore && more == block) return;
    block->result = noErr;
    SoundParamBlockPtr done = block;
    if (block->completionRtn) block->completionRtn(&done);
}

/// Decode the next frames of an entry, at most `spanFrames`, and convert them to the mixer's channel count.
/// Returns  the number of decoded frames.
UInt32 Source::decode(const Entry& entry, UInt32 frames, Float32* out)
{
    const UInt32 channels = entry.format.mChannelsPerFrame;
    const UInt32 count = std::min({frames, entry.frames - framesPlayed_, spanFrames});
    AudioBufferList list;
    list.mNumberBuffers = 1;
    list.mBuffers[0] = {
        channels, count * entry.format.mBytesPerFrame,
        const_cast<Byte*>(entry.samples + std::size_t{framesPlayed_} * entry.format.mBytesPerFrame)};
    pcm::decode(entry.format, list, count, decoded_.data());
    const UInt32 volumes = volume;
    const Float32 left = entry.left * gain(volumes), right = entry.right * gain(volumes >> 16);
    if (channels == 2) applyGain(decoded_.data(), channels, count, left, right);
    fold(decoded_.data(), channels, out, format_.channels, count);
    if (channels == 1) applyGain(out, format_.channels, count, left, right);
    return count;
}

/// Decode frames for the converter, or read its output once it has enough input.
/// Returns  the number of frames read.
UInt32 Source::convert(const Entry& entry, Conversion& conversion, Float32* out, UInt32 frames)
{
    const pcm::FixedRateConverter::Span free = conversion.converter.freeInput();
    const UInt32 missing = std::min(conversion.converter.framesFor(frames), free.frames);
    if (!missing) return read(conversion, out, frames);
    const UInt32 count = decode(entry, missing, free.samples);
    conversion.converter.addInput(count);
    framesPlayed_ += count;
    conversion.hasInput = true;
    conversion.due += count * conversion.ratio;
    return 0;
}

/// Read output of a converter, at most the frames that are due.
UInt32 Source::read(Conversion& conversion, Float32* out, UInt32 frames)
{
    const pcm::FixedRateConverter::Span ready = conversion.converter.output();
    const auto due = static_cast<UInt32>(std::lround(std::max(conversion.due, 0.0)));
    const UInt32 count = std::min({frames, ready.frames, due});
    std::copy_n(ready.samples, std::size_t{count} * format_.channels, out);
    conversion.converter.removeOutput(count);
    conversion.due -= count;
    return count;
}

/// Render the tail of a conversion, then reset the conversion. Silence is appended to the input as late as
/// possible, because until then a buffer of the same rate can continue the sound without a seam.
UInt32 Source::drain(Conversion& conversion, Float32* out, UInt32 frames)
{
    UInt32 made = read(conversion, out, frames);
    while (made < frames && conversion.due >= 0.5) {
        conversion.isDraining = true;
        conversion.converter.addSilence();
        made += read(conversion, out + std::size_t{made} * format_.channels, frames - made);
    }
    if (conversion.due < 0.5) {
        conversion.converter.reset();
        conversion.due = 0;
        conversion.hasInput = conversion.isDraining = false;
    }
    return made;
}

UInt32 Source::render(Float32* out, UInt32 frames)
{
    UInt32 made = 0, emptyEntries = 0;
    while (made < frames && isPlaying && !hasEnded_) {
        Float32* const next = out + std::size_t{made} * format_.channels;
        Entry* const entry = played_ == queued_ ? nullptr : &entries_[played_ % capacity];
        Conversion* const active = active_;
        if (active && active->hasInput && (!entry || entry->conversion != active || active->isDraining)) {
            made += drain(*active, next, frames - made);
            continue;
        }
        if (!entry) break;
        active_ = entry->conversion;
        if (entry->conversion) {
            made += convert(*entry, *entry->conversion, next, frames - made);
        } else {
            const UInt32 count = decode(*entry, frames - made, next);
            framesPlayed_ += count;
            made += count;
        }
        if (framesPlayed_ < entry->frames) continue;
        // The limit is needed because a completion routine may queue the same empty buffer for ever.
        if (entry->frames == 0 && ++emptyEntries > capacity) break;
        finish(*entry);
    }
    return made;
}

} // namespace kvxplatform::soundmanager
