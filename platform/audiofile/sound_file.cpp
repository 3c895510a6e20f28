#include "platform/audiofile/sound_file.h"

#include "platform/audiofile/byte_reader.h"
#include "platform/audiofile/container.h"
#include "platform/audiofile/mpeg_frames.h"
#include "platform/audiofile/ogg_links.h"
#include "platform/audiofile/tags.h"
#include "platform/support/silenced_streams.h"

#include <Carbon/MacErrors.h>
#include <KVXPlatform/KVXPlatform.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace kvxplatform::audiofile {
namespace {

// A file that states more frames per byte than this is checked at its last frame. Music has fewer frames per
// byte, and a caller may allocate memory for the stated length.
constexpr SInt64 plausibleFramesPerByte = 16;

constexpr std::size_t skippedSamples = 1 << 14; // samples decoded per read while frames are skipped

OSStatus statusOfDecoder(int error)
{
    switch (error) {
    case SF_ERR_UNRECOGNISED_FORMAT:
        return kAudioFileUnsupportedFileTypeError;
    case SF_ERR_UNSUPPORTED_ENCODING:
        return kAudioFileUnsupportedDataFormatError;
    case SF_ERR_SYSTEM:
        return ioErr;
    default:
        // libsndfile has no public error number for "too many channels", so the message is compared.
        return std::strcmp(sf_error_number(error), "Too many channels specified.") == 0
                   ? kAudioFileUnsupportedDataFormatError
                   : kAudioFileInvalidFileError;
    }
}

bool isWithinLimits(const SF_INFO& info)
{
    return info.samplerate >= KVXLowestFileRate && info.samplerate <= KVXHighestFileRate &&
           info.channels <= KVXMostFileChannels;
}

/// Whether a file is FLAC. FLAC decoders do not check the stated length.
bool isFlac(const SF_INFO& info) { return (info.format & SF_FORMAT_TYPEMASK) == SF_FORMAT_FLAC; }

bool hasFormat(const AudioStreamBasicDescription& format, const SF_INFO& info)
{
    return info.samplerate == format.mSampleRate &&
           static_cast<UInt32>(info.channels) == format.mChannelsPerFrame;
}

} // namespace

SoundFile::SoundFile() = default;
SoundFile::~SoundFile() = default;

void SoundFile::Close::operator()(SNDFILE* file) const { sf_close(file); }

OSStatus SoundFile::open(const std::string& path, std::unique_ptr<SoundFile>& out)
{
    std::unique_ptr<SoundFile> file(new SoundFile);
    OSStatus status = openDescriptor(path, file->disk_);
    if (status != noErr) return status;
    const SilencedStreams silenced;
    status = file->prepare();
    if (status == noErr) out = std::move(file);
    return status;
}

OSStatus SoundFile::prepare()
{
    ByteReader bytes(disk_.descriptor.number(), disk_.bytes);
    const SInt64 start = afterTags(bytes, 0);
    const UInt32 magic = bytes.word(start);
    if (magic == 'OggS') return prepareOgg(bytes, start);
    constexpr UInt32 mpegSync = 0xFFE00000;
    if ((magic & mpegSync) == mpegSync) return prepareMpeg(bytes, start);
    const OSStatus status = preparePlain(bytes, start);
    // The file may still have an MPEG stream after other data.
    return status == kAudioFileUnsupportedFileTypeError ? prepareMpeg(bytes, start) : status;
}

OSStatus SoundFile::prepareMpeg(ByteReader& bytes, SInt64 start)
{
    MpegFrames found = findMpegFrames(bytes, start);
    if (found.count == 0) return kAudioFileUnsupportedFileTypeError;
    parts_.clear();
    addPart(std::move(found.spans), {}, found.claimedBytes());
    SF_INFO info = {};
    OSStatus status = enter(0, info);
    if (status == noErr) status = acceptFirst(info, bytes, start);
    if (status != noErr) return status;
    Part& part = parts_.front();
    facts_.omittedStreams = found.otherStreams;
    facts_.frames = part.frames = found.samples;
    part.lead = found.lead;
    facts_.isCutShort = found.isCutShort;
    facts_.statedFrames =
        found.statedCount == found.count ? found.samples : found.statedCount * found.first.samples;
    return enter(0) ? noErr : kAudioFileInvalidFileError;
}

OSStatus SoundFile::prepareOgg(ByteReader& bytes, SInt64 start)
{
    OggLinks found = oggLinks(bytes, start);
    for (std::vector<Span>& link : found.links) addPart(std::move(link));
    OSStatus result = noErr; // status of the first link
    bool isDescribed = false, statesLength = true;
    for (std::size_t i = 0; i < parts_.size(); ++i) {
        SF_INFO info = {};
        OSStatus status = enter(i, info);
        if (status == noErr && !isDescribed) {
            status = acceptFirst(info, bytes, start);
        } else if (status == noErr && !hasFormat(facts_.format, info)) {
            status = kAudioFileUnsupportedDataFormatError;
        }
        if (status == noErr) status = measure(info);
        parts_[i].isOmitted = status != noErr;
        if (status == noErr) {
            isDescribed = true;
            statesLength &= isFlac(info);
        }
        if (i == 0) result = status;
    }
    if (!statesLength) facts_.statedFrames = 0;
    if (!isDescribed || parts_.size() == 1) return result;
    decoder_.reset(); // closed because the decoder has the address of a part, and the parts move below
    const auto isOmitted = [](const Part& part) { return part.isOmitted; };
    const auto omitted = std::remove_if(parts_.begin(), parts_.end(), isOmitted);
    facts_.omittedStreams = found.omitted + static_cast<UInt32>(parts_.end() - omitted);
    parts_.erase(omitted, parts_.end());
    return enter(0) ? noErr : kAudioFileInvalidFileError;
}

OSStatus SoundFile::preparePlain(ByteReader& bytes, SInt64 start)
{
    const StatedData stated = start == 0 ? statedData(bytes) : StatedData{};
    if (stated.hasTooManyChunks) return kAudioFileInvalidFileError;
    const SInt64 end = stated.end > 0 ? stated.end : disk_.bytes;
    addPart({{start, end - start}}, stated.length);
    SF_INFO info = {};
    OSStatus status = enter(0, info);
    if (status == noErr) status = acceptFirst(info, bytes, start);
    if (status == noErr) status = measure(info);
    if (status != noErr || stated.bytes == 0) return status;
    facts_.isCutShort = stated.bytes > disk_.bytes - stated.start;
    const SInt64 bytesPerFrame = facts_.format.mBytesPerFrame;
    facts_.statedFrames = bytesPerFrame > 0   ? stated.bytes / bytesPerFrame
                          : facts_.isCutShort ? 0
                                              : facts_.frames;
    return noErr;
}

/// Describe the file by the first part that can be opened.
OSStatus SoundFile::acceptFirst(const SF_INFO& info, ByteReader& bytes, SInt64 start)
{
    if (info.channels < 1 || info.samplerate < 1 || info.frames < 0) return kAudioFileInvalidFileError;
    if (!isWithinLimits(info)) return kAudioFileUnsupportedDataFormatError;
    const int container = info.format & SF_FORMAT_TYPEMASK;
    isNoisy_ = container == SF_FORMAT_MPEG || container == SF_FORMAT_SDS;
    facts_ = describe(decoder_.get(), info, bytes.word(start + 8));
    facts_.fileBytes = disk_.bytes;
    return noErr;
}

void SoundFile::addPart(std::vector<Span> spans, const Patch& patch, SInt64 statedBytes)
{
    parts_.push_back({FileView(disk_.descriptor.number(), std::move(spans), patch, statedBytes)});
}

/// Open a decoder at the start of a part, and skip the part's lead.
OSStatus SoundFile::enter(std::size_t part, SF_INFO& info)
{
    decoder_.reset();
    part_ = part;
    position_ = parts_[part].begin;
    info = {};
    decoder_.reset(parts_[part].view.open(info));
    if (!decoder_) return statusOfDecoder(sf_error(nullptr));
    return skip(parts_[part].lead) == parts_[part].lead ? noErr : kAudioFileInvalidFileError;
}

bool SoundFile::enter(std::size_t part)
{
    SF_INFO ignored;
    return enter(part, ignored) == noErr;
}

/// Find the number of decodable frames of the open part, and add it to the number of frames of the file.
OSStatus SoundFile::measure(const SF_INFO& info)
{
    Part& part = parts_[part_];
    const SInt64 stated = info.frames;
    part.begin = facts_.frames;
    const bool isPlausible = !isFlac(info) && stated / plausibleFramesPerByte <= facts_.fileBytes;
    SInt64 frames = stated;
    if (!isPlausible) {
        const bool isKnown = stated > 0 && stated < std::numeric_limits<SInt64>::max();
        if (isFlac(info) && isKnown) facts_.statedFrames += stated;
        const bool isExact = isKnown && isReachable(stated - 1);
        // The decoder is opened again, because its samples after a seek differ slightly from those after
        // opening.
        if (!enter(part_)) return kAudioFileInvalidFileError;
        if (!isExact) {
            frames = skip(stated);
            facts_.isCutShort |= isFlac(info) && isKnown && frames < stated;
            if (!enter(part_)) return kAudioFileInvalidFileError;
        }
    }
    part.frames = frames;
    facts_.frames += frames;
    return noErr;
}

bool SoundFile::isReachable(SInt64 frame)
{
    std::vector<Float32> samples(facts_.format.mChannelsPerFrame);
    return sf_seek(decoder_.get(), frame, SEEK_SET) == frame &&
           sf_readf_float(decoder_.get(), samples.data(), 1) == 1;
}

SInt64 SoundFile::skip(SInt64 frames)
{
    if (frames == 0) return 0; // before the file is described, its channel count is unknown
    const UInt32 channels = facts_.format.mChannelsPerFrame;
    std::vector<Float32> samples(std::max<std::size_t>(skippedSamples, channels));
    const auto most = static_cast<SInt64>(samples.size() / channels);
    SInt64 done = 0;
    while (done < frames) {
        const SInt64 got = sf_readf_float(decoder_.get(), samples.data(), std::min(frames - done, most));
        if (got <= 0) break;
        done += got;
    }
    return done;
}

SInt64 SoundFile::read(Float32* out, SInt64 frames)
{
    std::optional<SilencedStreams> silenced;
    if (isNoisy_) silenced.emplace();
    const SInt64 count = std::min(frames, facts_.frames - position_);
    SInt64 done = 0;
    while (done < count) {
        const Part& part = parts_[part_];
        const bool isLast = part_ + 1 == parts_.size();
        const SInt64 left = part.begin + part.frames - position_;
        if (left <= 0) {
            if (isLast) break;
            enter(part_ + 1); // if this fails, no frame of the part decodes, and the next pass skips the part
            continue;
        }
        Float32* to = out + static_cast<std::size_t>(done) * facts_.format.mChannelsPerFrame;
        const SInt64 got = sf_readf_float(decoder_.get(), to, std::min(count - done, left));
        if (got <= 0) {
            if (isLast || part.view.hasFailed()) break;
            position_ += left; // skip the rest of the part, which does not decode
            continue;
        }
        done += got;
        position_ += got;
    }
    return done == 0 && count > 0 && parts_[part_].view.hasFailed() ? -1 : done;
}

SInt64 SoundFile::readPlain(void* out, SInt64 frames)
{
    const SInt64 bytesPerFrame = facts_.format.mBytesPerFrame;
    const SInt64 count = std::min(frames, facts_.frames - position_);
    if (count <= 0) return 0;
    const SInt64 got = sf_read_raw(decoder_.get(), out, count * bytesPerFrame);
    if (got <= 0) return parts_[part_].view.hasFailed() ? -1 : 0;
    position_ += got / bytesPerFrame;
    return got / bytesPerFrame;
}

bool SoundFile::seek(SInt64 frame)
{
    if (frame == position_) return true;
    std::optional<SilencedStreams> silenced;
    if (isNoisy_) silenced.emplace();
    const auto isBefore = [](SInt64 at, const Part& part) { return at < part.begin + part.frames; };
    const auto found = std::upper_bound(parts_.begin(), parts_.end() - 1, frame, isBefore);
    const auto part = static_cast<std::size_t>(found - parts_.begin());
    if (part != part_ && !enter(part)) return false;
    // Seek to frame 0 first, because libsndfile is one frame off in some Vorbis files after a seek from
    // another position.
    SNDFILE* decoder = decoder_.get();
    const SInt64 inPart = frame - found->begin;
    const SInt64 decoded = found->lead + inPart;
    if (sf_seek(decoder, 0, SEEK_SET) == 0 && sf_seek(decoder, decoded, SEEK_SET) == decoded) {
        position_ = frame;
        return true;
    }
    // A coding without seeking is decoded again from the start of the part.
    if (!enter(part)) return false;
    position_ += skip(inPart);
    return position_ == frame;
}

} // namespace kvxplatform::audiofile
