#include "platform/audiofile/sound_file.h"

#include "platform/audiofile/byte_reader.h"
#include "platform/audiofile/container.h"
#include "platform/audiofile/mpeg_stream.h"
#include "platform/audiofile/quiet.h"

#include <Carbon/MacErrors.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <optional>
#include <vector>

#include <unistd.h>

namespace kvxplatform::audiofile {
namespace {

// More frames a byte than any music has: such a length is not believed unless its last frame is there.
// Otherwise a few bytes could have their reader ask for all memory.
constexpr SInt64 believedFramesPerByte = 16;

constexpr std::size_t skippedSamples = 1 << 14; // at a time

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
        return kAudioFileInvalidFileError;
    }
}

UInt32 wordAt(int descriptor, off_t place)
{
    UInt8 bytes[4] = {};
    if (pread(descriptor, bytes, sizeof bytes, place) != sizeof bytes) return 0;
    return UInt32{bytes[0]} << 24 | UInt32{bytes[1]} << 16 | UInt32{bytes[2]} << 8 | bytes[3];
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
    const Quiet quiet;
    SF_INFO info = {};
    status = file->openDecoder(info);
    if (status == noErr) status = file->prepare(info);
    if (status == noErr) out = std::move(file);
    return status;
}

OSStatus SoundFile::openDecoder(SF_INFO& info)
{
    decoder_.reset();
    place_ = 0;
    info = {};
    if (mpeg_) {
        decoder_.reset(mpeg_->open(info));
    } else {
        lseek(disk_.descriptor.number(), 0, SEEK_SET); // it takes where it stands for the beginning
        decoder_.reset(sf_open_fd(disk_.descriptor.number(), SFM_READ, &info, SF_FALSE));
    }
    return decoder_ ? noErr : statusOfDecoder(sf_error(nullptr));
}

OSStatus SoundFile::openAgain()
{
    SF_INFO ignored;
    return openDecoder(ignored);
}

OSStatus SoundFile::prepare(const SF_INFO& first)
{
    SF_INFO info = first;
    const int container = info.format & SF_FORMAT_TYPEMASK;
    isNoisy_ = container == SF_FORMAT_MPEG || container == SF_FORMAT_SDS;
    if (container == SF_FORMAT_MPEG) {
        const OSStatus status = countMpeg(info);
        if (status != noErr) return status;
    }
    if (info.channels < 1 || info.samplerate < 1 || info.frames < 0) return kAudioFileInvalidFileError;
    facts_ = describe(decoder_.get(), info, wordAt(disk_.descriptor.number(), 8));
    facts_.frames = info.frames;
    facts_.fileBytes = disk_.bytes;
    const OSStatus status = makeLengthSure();
    compareWithStated();
    return status;
}

void SoundFile::compareWithStated()
{
    ByteReader bytes(disk_.descriptor.number(), disk_.bytes);
    const StatedData stated = statedData(bytes);
    if (stated.bytes == 0) return;
    facts_.isCutShort = stated.bytes > disk_.bytes - stated.start;
    const SInt64 bytesPerFrame = facts_.format.mBytesPerFrame;
    facts_.statedFrames = bytesPerFrame > 0   ? stated.bytes / bytesPerFrame
                          : facts_.isCutShort ? 0
                                              : facts_.frames;
}

OSStatus SoundFile::countMpeg(SF_INFO& info)
{
    const MpegFrames found = countMpegFrames(disk_.descriptor.number(), disk_.bytes);
    if (found.hasLength || found.count == 0) return noErr;
    const SInt64 frames = SInt64{found.count} * found.first.samples;
    if (info.frames < frames) {
        mpeg_ = std::make_unique<MpegStream>(disk_.descriptor.number(), disk_.bytes, found);
        OSStatus status = openDecoder(info);
        if (status != noErr) { // what it guesses is better than nothing
            mpeg_.reset();
            status = openDecoder(info);
        }
        if (status != noErr) return status;
    }
    info.frames = std::min<SInt64>(info.frames, frames);
    return noErr;
}

OSStatus SoundFile::makeLengthSure()
{
    if (facts_.frames / believedFramesPerByte <= facts_.fileBytes) return noErr;
    const SInt64 said = facts_.frames;
    const bool isTrue = said < std::numeric_limits<SInt64>::max() && isReachable(said - 1);
    OSStatus status = openAgain(); // a decoder that has been elsewhere is not quite a new one
    if (isTrue || status != noErr) return status;
    facts_.frames = skip(said);
    return openAgain();
}

bool SoundFile::isReachable(SInt64 frame)
{
    std::vector<Float32> samples(facts_.format.mChannelsPerFrame);
    return sf_seek(decoder_.get(), frame, SEEK_SET) == frame &&
           sf_readf_float(decoder_.get(), samples.data(), 1) == 1;
}

SInt64 SoundFile::skip(SInt64 frames)
{
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
    std::optional<Quiet> quiet;
    if (isNoisy_) quiet.emplace();
    const SInt64 wanted = std::min(frames, facts_.frames - place_);
    SInt64 done = 0;
    while (done < wanted) { // once, unless the data breaks off
        Float32* to = out + static_cast<std::size_t>(done) * facts_.format.mChannelsPerFrame;
        const SInt64 got = sf_readf_float(decoder_.get(), to, wanted - done);
        if (got <= 0) break;
        done += got;
    }
    place_ += done;
    const bool hasFailed = done == 0 && wanted > 0 && sf_error(decoder_.get()) == SF_ERR_SYSTEM;
    return hasFailed ? -1 : done;
}

SInt64 SoundFile::readPlain(void* out, SInt64 frames)
{
    const SInt64 bytesPerFrame = facts_.format.mBytesPerFrame;
    const SInt64 wanted = std::min(frames, facts_.frames - place_);
    if (wanted <= 0) return 0;
    const SInt64 got = sf_read_raw(decoder_.get(), out, wanted * bytesPerFrame);
    if (got <= 0) return sf_error(decoder_.get()) == SF_ERR_SYSTEM ? -1 : 0;
    place_ += got / bytesPerFrame;
    return got / bytesPerFrame;
}

bool SoundFile::seek(SInt64 frame)
{
    if (frame == place_) return true;
    std::optional<Quiet> quiet;
    if (isNoisy_) quiet.emplace();
    // By way of the beginning: from elsewhere, libsndfile lands a frame beside in some Vorbis files.
    SNDFILE* decoder = decoder_.get();
    if (sf_seek(decoder, 0, SEEK_SET) == 0 && sf_seek(decoder, frame, SEEK_SET) == frame) {
        place_ = frame;
        return true;
    }
    // Codings that only go forward: once more from the beginning.
    if (openAgain() != noErr) return false;
    place_ = skip(frame);
    return place_ == frame;
}

} // namespace kvxplatform::audiofile
