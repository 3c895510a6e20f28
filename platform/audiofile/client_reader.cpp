#include "platform/audiofile/client_reader.h"

#include "platform/pcm/linear_pcm.h"
#include "platform/pcm/stream_format.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace kvxplatform::audiofile {
namespace {

constexpr UInt32 blockSamples = 1 << 14; // of the wider side, in a work buffer
constexpr UInt32 mostBlockFrames = 1 << 12;

/// Native float, one buffer.
bool isStraight(const AudioStreamBasicDescription& format)
{
    AudioStreamBasicDescription straight = pcm::canonicalFormat(format.mSampleRate, 1);
    straight.mChannelsPerFrame = format.mChannelsPerFrame;
    straight.mBytesPerFrame *= format.mChannelsPerFrame;
    straight.mBytesPerPacket = straight.mBytesPerFrame;
    // With a single channel, one buffer a channel and one for all are the same.
    const UInt32 separate =
        format.mChannelsPerFrame == 1 ? format.mFormatFlags & kAudioFormatFlagIsNonInterleaved : UInt32{0};
    straight.mFormatFlags = kAudioFormatFlagsNativeFloatPacked | separate;
    return pcm::isSameFormat(straight, format);
}

/// Where an output channel comes from; `from` itself for silence.
UInt32 sourceOf(UInt32 channel, UInt32 from)
{
    if (from == 1) return channel < 2 ? 0 : from;
    return std::min(channel, from);
}

void mapChannels(const Float32* in, UInt32 from, Float32* out, UInt32 to, std::size_t frames)
{
    for (UInt32 c = 0; c < to; ++c) {
        const UInt32 source = sourceOf(c, from);
        for (std::size_t f = 0; f < frames; ++f) out[f * to + c] = source == from ? 0 : in[f * from + source];
    }
}

} // namespace

ClientReader::ClientReader(SoundFile& file, const AudioStreamBasicDescription& client)
    : file_(file), client_(client), fileChannels_(file.facts().format.mChannelsPerFrame),
      clientChannels_(client.mChannelsPerFrame), sharedChannels_(std::min(fileChannels_, clientChannels_)),
      way_(Way::byChannels), start_(file.position())
{
    const Facts& facts = file.facts();
    const bool isSameRate = client.mSampleRate == facts.format.mSampleRate;
    if (facts.isPlain && pcm::isSameFormat(client, facts.format))
        way_ = Way::plain;
    else if (!isSameRate)
        way_ = Way::byRate;
    else if (isStraight(client) && fileChannels_ == clientChannels_)
        way_ = Way::straight;
}

bool ClientReader::prepare()
{
    if (way_ == Way::plain || way_ == Way::straight) return true;
    const UInt32 widest = std::max(fileChannels_, clientChannels_);
    blockFrames_ = std::clamp<UInt32>(blockSamples / widest, 1, mostBlockFrames);
    const auto block = [&](UInt32 channels) {
        return std::vector<Float32>(std::size_t{blockFrames_} * channels);
    };
    fileBlock_ = block(fileChannels_);
    clientBlock_ = block(clientChannels_);
    if (way_ != Way::byRate) return true;
    sharedBlock_ = block(sharedChannels_);
    ratedBlock_ = block(sharedChannels_);
    return converter_.prepare(file_.facts().format.mSampleRate, client_.mSampleRate, sharedChannels_,
                              pcm::RateConverter::Quality::best);
}

SInt64 ClientReader::read(UInt32 frames, AudioBufferList& list)
{
    void* memory = list.mBuffers[0].mData;
    switch (way_) {
    case Way::plain:
        return file_.readPlain(memory, frames);
    case Way::straight:
        return file_.read(static_cast<Float32*>(memory), frames);
    default:
        return readConverted(frames, list);
    }
}

SInt64 ClientReader::readConverted(UInt32 frames, AudioBufferList& list)
{
    UInt32 done = 0;
    while (done < frames) {
        const UInt32 wanted = std::min(frames - done, blockFrames_);
        const SInt64 got = way_ == Way::byRate ? nextAtNewRate(wanted) : nextFrames(wanted);
        if (got < 0 && done == 0) return got; // what has been read is given; the next read says it
        if (got <= 0) break;
        const auto count = static_cast<UInt32>(got);
        pcm::encode(client_, clientBlock_.data(), count, list, done);
        done += count;
    }
    return done;
}

/// Up to `frames` frames of the file's rate into the client block.
SInt64 ClientReader::nextFrames(UInt32 frames)
{
    const SInt64 got = file_.read(fileBlock_.data(), frames);
    if (got > 0)
        mapChannels(fileBlock_.data(), fileChannels_, clientBlock_.data(), clientChannels_,
                    static_cast<std::size_t>(got));
    return got;
}

/// Up to `frames` frames of the client's rate into the client block.
SInt64 ClientReader::nextAtNewRate(UInt32 frames)
{
    const SInt64 left = framesUpTo(file_.facts().frames - start_) - made_;
    auto count = std::min<SInt64>(frames, left);
    if (count <= 0) return 0;
    converter_.convert(ratedBlock_.data(), static_cast<UInt32>(count), blockFrames_, {pull, this});
    if (hasFailed_) return -1;
    if (isAtEnd_) count = std::min(count, framesUpTo(taken_) - made_); // the file was shorter than it said
    if (count <= 0) return 0;
    mapChannels(ratedBlock_.data(), sharedChannels_, clientBlock_.data(), clientChannels_,
                static_cast<std::size_t>(count));
    made_ += count;
    return count;
}

const Float32* ClientReader::pull(void* self, UInt32 frames)
{
    auto& reader = *static_cast<ClientReader*>(self);
    const SInt64 before = reader.file_.position();
    const SInt64 got = reader.isAtEnd_ ? 0 : reader.file_.read(reader.fileBlock_.data(), frames);
    if (got >= 0) reader.start_ += reader.file_.position() - before - got; // frames lost to damage
    if (got < 0) reader.hasFailed_ = true;
    const auto count = static_cast<UInt32>(std::max<SInt64>(got, 0));
    if (count < frames) reader.isAtEnd_ = true;
    reader.taken_ += count;
    Float32* out = reader.sharedBlock_.data();
    mapChannels(reader.fileBlock_.data(), reader.fileChannels_, out, reader.sharedChannels_, count);
    std::fill(out + std::size_t{count} * reader.sharedChannels_,
              out + std::size_t{frames} * reader.sharedChannels_, 0.0f);
    return out;
}

/// The client's frames before the end of so many of the file.
SInt64 ClientReader::framesUpTo(SInt64 fileFrames) const
{
    const double frames =
        std::ceil(static_cast<double>(fileFrames) * client_.mSampleRate / file_.facts().format.mSampleRate);
    return static_cast<SInt64>(std::min(frames, 9e18));
}

SInt64 ClientReader::tell() const
{
    if (way_ != Way::byRate) return file_.position();
    const double frames = static_cast<double>(made_) * file_.facts().format.mSampleRate / client_.mSampleRate;
    return std::min(start_ + static_cast<SInt64>(std::min(frames, 9e18)), file_.facts().frames);
}

bool ClientReader::seek(SInt64 frame)
{
    if (!file_.seek(frame)) return false;
    start_ = frame;
    taken_ = made_ = 0;
    isAtEnd_ = hasFailed_ = false;
    if (way_ == Way::byRate) converter_.reset();
    return true;
}

} // namespace kvxplatform::audiofile
