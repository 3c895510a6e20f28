// The exported ExtAudioFile functions, which read a file's frames in the caller's PCM format.
#include "platform/audiofile/audio_file.h"
#include "platform/audiofile/client_reader.h"
#include "platform/audiofile/handles.h"
#include "platform/corefoundation/url.h"
#include "platform/pcm/linear_pcm.h"
#include "platform/support/border.h"
#include "platform/support/live_count.h"

#include <AudioToolbox/ExtendedAudioFile.h>
#include <Carbon/MacErrors.h>
#include <KVXPlatform/KVXPlatform.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>

#include <sys/mman.h>

namespace kvxplatform::audiofile {
namespace {

LiveCount liveCount("ExtAudioFile");

struct ExtendedFile {
    explicit ExtendedFile(std::unique_ptr<SoundFile> ofFile)
        : file(std::move(ofFile)), facts(std::make_shared<const Facts>(file->facts()))
    {
        liveCount.add();
    }
    ~ExtendedFile()
    {
        closeLentAudioFile(audioFile);
        liveCount.remove();
    }
    ExtendedFile(const ExtendedFile&) = delete;
    ExtendedFile& operator=(const ExtendedFile&) = delete;

    const std::unique_ptr<SoundFile> file;
    const std::shared_ptr<const Facts> facts; ///< facts of the file, shared with the lent AudioFile
    /// Reader in the client format; null for a compressed file without a client format.
    std::unique_ptr<ClientReader> reader;
    AudioFileID audioFile = nullptr; ///< AudioFile lent to callers; null until a caller first gets it
};

using ExtendedFiles = Handles<ExtendedFile, ExtAudioFileRef, 3>;

SInt64 positionOf(const ExtendedFile& file)
{
    return file.reader ? file.reader->tell() : file.file->position();
}

// ---- properties ----

template <class Value>
OSStatus store(void* out, Value value)
{
    std::memcpy(out, &value, sizeof value);
    return noErr;
}

const AudioStreamBasicDescription& clientFormat(const ExtendedFile& file)
{
    return file.reader ? file.reader->client() : file.facts->format;
}

OSStatus getFileFormat(ExtendedFile& file, void* out) { return store(out, file.facts->format); }
OSStatus getClientFormat(ExtendedFile& file, void* out) { return store(out, clientFormat(file)); }

OSStatus setClientFormat(ExtendedFile& file, const void* data)
{
    AudioStreamBasicDescription format;
    std::memcpy(&format, data, sizeof format);
    if (!pcm::isLinearPCM(format)) return kExtAudioFileError_NonPCMClientFormat;
    // Position of the next client frame; the decoder may already be further ahead.
    const SInt64 position = positionOf(file);
    auto reader = std::make_unique<ClientReader>(*file.file, format);
    if (!reader->prepare()) return kExtAudioFileError_InvalidDataFormat;
    if (!reader->seek(position)) return kExtAudioFileError_InvalidSeek;
    file.reader = std::move(reader);
    return noErr;
}

OSStatus getAudioFile(ExtendedFile& file, void* out)
{
    if (!isOpen(file.audioFile)) file.audioFile = lendAudioFile(file.facts);
    return file.audioFile ? store(out, file.audioFile) : tmfoErr;
}

OSStatus getFilePacket(ExtendedFile& file, void* out)
{
    if (file.facts->largestPacket == 0) return kExtAudioFileError_MaxPacketSizeUnknown;
    return store(out, file.facts->largestPacket);
}

OSStatus getClientPacket(ExtendedFile& file, void* out)
{
    if (!file.reader) return getFilePacket(file, out);
    return store(out, clientFormat(file).mBytesPerPacket);
}

OSStatus getLength(ExtendedFile& file, void* out) { return store(out, file.facts->frames); }

constexpr struct Property {
    ExtAudioFilePropertyID property;
    UInt32 bytes;
    OSStatus (*get)(ExtendedFile&, void* out);
    OSStatus (*set)(ExtendedFile&, const void* data); ///< setter; null for a read-only property
} properties[] = {
    // clang-format off
    // property                                 bytes                                getter           setter
    {kExtAudioFileProperty_FileDataFormat,      sizeof(AudioStreamBasicDescription), getFileFormat,   nullptr},
    {kExtAudioFileProperty_ClientDataFormat,    sizeof(AudioStreamBasicDescription), getClientFormat, setClientFormat},
    {kExtAudioFileProperty_AudioFile,           sizeof(AudioFileID),                 getAudioFile,    nullptr},
    {kExtAudioFileProperty_FileMaxPacketSize,   sizeof(UInt32),                      getFilePacket,   nullptr},
    {kExtAudioFileProperty_ClientMaxPacketSize, sizeof(UInt32),                      getClientPacket, nullptr},
    {kExtAudioFileProperty_FileLengthFrames,    sizeof(SInt64),                      getLength,       nullptr},
    // clang-format on
};

const Property* find(ExtAudioFilePropertyID property)
{
    const auto* found = std::find_if(std::begin(properties), std::end(properties),
                                     [&](const Property& each) { return each.property == property; });
    return found == std::end(properties) ? nullptr : found;
}

/// Call `body` with the open file of a handle. Returns paramErr for a null, closed or unknown handle.
template <class Body>
OSStatus with(ExtAudioFileRef file, Body body) noexcept
{
    return kvxplatform::withinBorder(memFullErr, [&]() -> OSStatus {
        const ExtendedFiles::Use use = ExtendedFiles::use(file);
        return use ? body(*use) : paramErr;
    });
}

/// Ask the system for huge pages in the memory of a long read, which causes a page fault per page. A refusal
/// changes nothing.
void preferHugePages(const AudioBuffer& buffer, std::size_t bytes)
{
    constexpr std::size_t leastBytes = 4u << 20, pageBytes = 4096;
    if (bytes < leastBytes) return;
    const auto memory = reinterpret_cast<std::uintptr_t>(buffer.mData);
    const std::uintptr_t begin = (memory + pageBytes - 1) / pageBytes * pageBytes;
    const std::uintptr_t end = (memory + bytes) / pageBytes * pageBytes;
    madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
}

OSStatus read(ExtendedFile& file, UInt32& ioFrames, AudioBufferList& list)
{
    if (!file.reader) return kExtAudioFileError_InvalidOperationOrder;
    const AudioStreamBasicDescription& format = file.reader->client();
    SInt64 got = 0;
    if (ioFrames > 0) {
        const UInt32 capacity = pcm::capacityOf(format, list).value_or(0);
        if (capacity == 0) return paramErr; // noErr with 0 frames would mean the end of the file
        const UInt32 frames = std::min(ioFrames, capacity);
        for (UInt32 i = 0; i < list.mNumberBuffers; ++i)
            preferHugePages(list.mBuffers[i], std::size_t{frames} * format.mBytesPerFrame);
        got = file.reader->read(frames, list);
        if (got < 0) return ioErr;
    }
    ioFrames = static_cast<UInt32>(got);
    for (UInt32 i = 0; i < list.mNumberBuffers; ++i)
        list.mBuffers[i].mDataByteSize = ioFrames * format.mBytesPerFrame;
    return noErr;
}

} // namespace
} // namespace kvxplatform::audiofile

using namespace kvxplatform::audiofile;

OSStatus ExtAudioFileOpenURL(CFURLRef url, ExtAudioFileRef* out_file)
{
    if (!out_file) return paramErr;
    *out_file = nullptr;
    if (!url) return paramErr;
    return kvxplatform::withinBorder(memFullErr, [&]() -> OSStatus {
        std::unique_ptr<SoundFile> opened;
        const OSStatus status = SoundFile::open(url->path, opened);
        if (status != noErr) return status;
        auto file = std::make_unique<ExtendedFile>(std::move(opened));
        // The client format of a PCM file is the file's format until the caller sets another client format.
        const AudioStreamBasicDescription& format = file->facts->format;
        if (kvxplatform::pcm::isLinearPCM(format)) {
            auto reader = std::make_unique<ClientReader>(*file->file, format);
            if (reader->prepare()) file->reader = std::move(reader);
        }
        *out_file = ExtendedFiles::add(std::move(file));
        return *out_file ? noErr : tmfoErr;
    });
}

OSStatus ExtAudioFileDispose(ExtAudioFileRef file)
{
    return kvxplatform::withinBorder(memFullErr,
                                     [&] { return ExtendedFiles::close(file) ? noErr : paramErr; });
}

OSStatus ExtAudioFileGetPropertyInfo(ExtAudioFileRef file, ExtAudioFilePropertyID property, UInt32* out_size,
                                     Boolean* out_writable)
{
    return with(file, [&](ExtendedFile&) -> OSStatus {
        const Property* row = find(property);
        if (!row) return kExtAudioFileError_InvalidProperty;
        if (out_size) *out_size = row->bytes;
        if (out_writable) *out_writable = row->set != nullptr;
        return noErr;
    });
}

OSStatus ExtAudioFileGetProperty(ExtAudioFileRef file, ExtAudioFilePropertyID property, UInt32* io_size,
                                 void* out_data)
{
    return with(file, [&](ExtendedFile& each) -> OSStatus {
        if (!io_size || !out_data) return paramErr;
        const Property* row = find(property);
        if (!row) return kExtAudioFileError_InvalidProperty;
        if (*io_size < row->bytes) return kExtAudioFileError_InvalidPropertySize;
        const OSStatus status = row->get(each, out_data);
        if (status == noErr) *io_size = row->bytes;
        return status;
    });
}

OSStatus ExtAudioFileSetProperty(ExtAudioFileRef file, ExtAudioFilePropertyID property, UInt32 size,
                                 const void* data)
{
    return with(file, [&](ExtendedFile& each) -> OSStatus {
        if (!data) return paramErr;
        const Property* row = find(property);
        if (!row || !row->set) return kExtAudioFileError_InvalidProperty;
        if (size != row->bytes) return kExtAudioFileError_InvalidPropertySize;
        return row->set(each, data);
    });
}

OSStatus ExtAudioFileRead(ExtAudioFileRef file, UInt32* io_frames, AudioBufferList* io_data)
{
    return with(file, [&](ExtendedFile& each) -> OSStatus {
        return io_frames && io_data ? read(each, *io_frames, *io_data) : paramErr;
    });
}

OSStatus ExtAudioFileSeek(ExtAudioFileRef file, SInt64 frame)
{
    return with(file, [&](ExtendedFile& each) -> OSStatus {
        if (frame < 0 || frame > each.facts->frames) return kExtAudioFileError_InvalidSeek;
        const bool isThere = each.reader ? each.reader->seek(frame) : each.file->seek(frame);
        return isThere ? noErr : kExtAudioFileError_InvalidSeek;
    });
}

OSStatus ExtAudioFileTell(ExtAudioFileRef file, SInt64* out_frame)
{
    return with(file, [&](ExtendedFile& each) -> OSStatus {
        if (!out_frame) return paramErr;
        *out_frame = positionOf(each);
        return noErr;
    });
}

int32_t KVXPlatformReportSoundFile(ExtAudioFileRef file, KVXSoundFileReport* outReport)
{
    return static_cast<int32_t>(with(file, [&](ExtendedFile& each) -> OSStatus {
        if (!outReport) return paramErr;
        const Facts& facts = *each.facts;
        *outReport = {facts.frames, facts.statedFrames, facts.isCutShort,
                      static_cast<uint32_t>(facts.omittedStreams)};
        return noErr;
    }));
}
