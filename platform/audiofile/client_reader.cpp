#include "platform/audiofile/client_reader.h"

#include "platform/pcm/stream_format.h"

#include <Carbon/MacErrors.h>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace kvxplatform::audiofile {
namespace {

constexpr UInt32 blockSamples = 1 << 14;
constexpr UInt32 mostBlockFrames = 1 << 12;

/// Whether samples in this format have the memory layout of SoundFile::read: interleaved native 32-bit float.
bool isDecoded(const AudioStreamBasicDescription& format)
{
    // One channel has the same memory layout, interleaved or not.
    const bool isSingle = format.mChannelsPerFrame == 1;
    return pcm::isSameFormat(format, pcm::interleavedFormat(format.mSampleRate, format.mChannelsPerFrame)) ||
           (isSingle && pcm::isCanonical(format));
}

} // namespace

ClientReader::ClientReader(SoundFile& file, const AudioStreamBasicDescription& client)
    : file_(file), client_(client), start_(file.position())
{
    const Facts& facts = file.facts();
    if (facts.isPlain && pcm::isSameFormat(client, facts.format))
        path_ = Path::bytes;
    else if (isDecoded(client) && client.mSampleRate == facts.format.mSampleRate &&
             client.mChannelsPerFrame == facts.format.mChannelsPerFrame)
        path_ = Path::floats;
}

bool ClientReader::prepare()
{
    if (path_ != Path::conversion) return true;
    const UInt32 channels = file_.facts().format.mChannelsPerFrame;
    blockFrames_ = std::clamp<UInt32>(blockSamples / channels, 1, mostBlockFrames);
    block_.resize(std::size_t{blockFrames_} * channels);
    return prepare(conversion_);
}

bool ClientReader::prepare(pcm::Conversion& conversion) const
{
    const AudioStreamBasicDescription& format = file_.facts().format;
    return conversion.prepare(pcm::interleavedFormat(format.mSampleRate, format.mChannelsPerFrame), client_,
                              pcm::foldedChannelMap(format.mChannelsPerFrame, client_.mChannelsPerFrame),
                              pcm::Conversion::Quality::veryHigh);
}

SInt64 ClientReader::read(UInt32 frames, AudioBufferList& list)
{
    void* memory = list.mBuffers[0].mData;
    switch (path_) {
    case Path::bytes:
        return file_.readPlain(memory, frames);
    case Path::floats:
        return file_.read(static_cast<Float32*>(memory), frames);
    default:
        return readConverted(frames, list);
    }
}

SInt64 ClientReader::readConverted(UInt32 frames, AudioBufferList& list)
{
    UInt32 made = 0;
    const OSStatus status = pcm::convertPulled(conversion_, input_, list, frames, made,
                                               [&](UInt32 missing) { return pull(missing); });
    made_ += made;
    return status != noErr && made == 0 ? -1 : SInt64{made}; // frames made before an error are returned first
}

/// Decode up to `frames` frames into block_, as the next input of the conversion.
OSStatus ClientReader::pull(UInt32 frames)
{
    const SInt64 before = file_.position();
    const SInt64 got = file_.read(block_.data(), std::min(frames, blockFrames_));
    if (got < 0) return ioErr;
    start_ += file_.position() - before - got;
    input_.first = 0;
    input_.count = static_cast<UInt32>(got);
    input_.hasEnded = got == 0;
    const UInt32 channels = file_.facts().format.mChannelsPerFrame;
    blockList_ = {1, {{channels, static_cast<UInt32>(block_.size() * sizeof(Float32)), block_.data()}}};
    input_.list = &blockList_;
    return noErr;
}

SInt64 ClientReader::tell() const
{
    if (!conversion_.convertsRate()) return file_.position();
    const double frames = static_cast<double>(made_) * file_.facts().format.mSampleRate / client_.mSampleRate;
    return std::min(start_ + static_cast<SInt64>(std::min(frames, 9e18)), file_.facts().frames);
}

bool ClientReader::seek(SInt64 frame)
{
    // After a reset, the output could be shifted by up to half a frame.
    pcm::Conversion next;
    if (conversion_.convertsRate()) prepare(next); // succeeds, as with the same formats before
    if (!file_.seek(frame)) return false;
    start_ = frame;
    made_ = 0;
    input_.reset();
    if (conversion_.convertsRate()) conversion_ = std::move(next);
    return true;
}

} // namespace kvxplatform::audiofile
