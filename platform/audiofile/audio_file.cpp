// The exported AudioFile functions, which report the properties of a sound file.
#include "platform/audiofile/audio_file.h"

#include "platform/audiofile/handles.h"
#include "platform/audiofile/sound_file.h"
#include "platform/corefoundation/url.h"
#include "platform/support/border.h"
#include "platform/support/live_count.h"

#include <Carbon/MacErrors.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>

namespace kvxplatform::audiofile {
namespace {

LiveCount liveCount("AudioFile");

/// An open file. All its properties are computed from the facts that were read when the file was opened.
struct AudioFile {
    AudioFile(std::shared_ptr<const Facts> ofFacts, bool lent) : facts(std::move(ofFacts)), isLent(lent)
    {
        if (!isLent) liveCount.add();
    }
    ~AudioFile()
    {
        if (!isLent) liveCount.remove();
    }
    AudioFile(const AudioFile&) = delete;
    AudioFile& operator=(const AudioFile&) = delete;

    const std::shared_ptr<const Facts> facts;
    const bool isLent; ///< true if an extended audio file owns and closes this AudioFile
};

using AudioFiles = Handles<AudioFile, AudioFileID, 2>;

// ---- properties: a getter writes the value to `out`, or returns false if the file has no such value ----

template <class Value>
bool store(void* out, Value value)
{
    std::memcpy(out, &value, sizeof value);
    return true;
}

double secondsOf(const Facts& facts) { return static_cast<double>(facts.frames) / facts.format.mSampleRate; }

/// Whether every packet is one frame of fixed size. Other packets are not counted, because that would need a
/// pass over the whole file.
bool hasSamplePackets(const Facts& facts)
{
    return facts.format.mFramesPerPacket == 1 && facts.format.mBytesPerPacket > 0;
}

bool getType(const Facts& facts, void* out) { return store<UInt32>(out, facts.type); }
bool getFormat(const Facts& facts, void* out) { return store(out, facts.format); }
bool getByteCount(const Facts& facts, void* out)
{
    return hasSamplePackets(facts) &&
           store(out, static_cast<UInt64>(facts.frames) * facts.format.mBytesPerPacket);
}
bool getPacketCount(const Facts& facts, void* out)
{
    return hasSamplePackets(facts) && store(out, static_cast<UInt64>(facts.frames));
}
bool getLargestPacket(const Facts& facts, void* out)
{
    return facts.largestPacket != 0 && store(out, facts.largestPacket);
}
bool getBitRate(const Facts& facts, void* out)
{
    const auto bytesPerFrame = static_cast<double>(facts.format.mBytesPerPacket);
    const double bits = hasSamplePackets(facts) ? bytesPerFrame * 8 * facts.format.mSampleRate
                        : facts.frames > 0      ? static_cast<double>(facts.fileBytes) * 8 / secondsOf(facts)
                                                : 0;
    return store(out, static_cast<UInt32>(std::min(std::round(bits), 4294967295.0)));
}
bool getSourceBits(const Facts& facts, void* out)
{
    return facts.sourceBits != 0 && store(out, facts.sourceBits);
}
bool getDuration(const Facts& facts, void* out) { return store(out, secondsOf(facts)); }

constexpr struct Property {
    AudioFilePropertyID property;
    UInt32 bytes;
    bool (*get)(const Facts&, void* out);
} properties[] = {
    // clang-format off
    // property                              bytes                                getter
    {kAudioFilePropertyFileFormat,           sizeof(UInt32),                      getType},
    {kAudioFilePropertyDataFormat,           sizeof(AudioStreamBasicDescription), getFormat},
    {kAudioFilePropertyAudioDataByteCount,   sizeof(UInt64),                      getByteCount},
    {kAudioFilePropertyAudioDataPacketCount, sizeof(UInt64),                      getPacketCount},
    {kAudioFilePropertyMaximumPacketSize,    sizeof(UInt32),                      getLargestPacket},
    {kAudioFilePropertyBitRate,              sizeof(UInt32),                      getBitRate},
    {kAudioFilePropertySourceBitDepth,       sizeof(SInt32),                      getSourceBits},
    {kAudioFilePropertyEstimatedDuration,    sizeof(Float64),                     getDuration},
    // clang-format on
};

const Property* find(AudioFilePropertyID property)
{
    const auto* found = std::find_if(std::begin(properties), std::end(properties),
                                     [&](const Property& each) { return each.property == property; });
    return found == std::end(properties) ? nullptr : found;
}

} // namespace

AudioFileID lendAudioFile(std::shared_ptr<const Facts> facts)
{
    return AudioFiles::add(std::make_unique<AudioFile>(std::move(facts), true));
}

bool isOpen(AudioFileID file) { return static_cast<bool>(AudioFiles::use(file)); }

void closeLentAudioFile(AudioFileID file) { AudioFiles::close(file); }

} // namespace kvxplatform::audiofile

using namespace kvxplatform::audiofile;

OSStatus AudioFileOpenURL(CFURLRef url, SInt8 permissions, AudioFileTypeID, AudioFileID* out_file)
{
    if (!out_file) return paramErr;
    *out_file = nullptr;
    if (!url) return paramErr;
    if (permissions != kAudioFileReadPermission) return kAudioFilePermissionsError;
    return kvxplatform::withinBorder(memFullErr, [&]() -> OSStatus {
        std::unique_ptr<SoundFile> file;
        const OSStatus status = SoundFile::open(url->path, file);
        if (status != noErr) return status;
        auto facts = std::make_shared<const Facts>(file->facts());
        *out_file = AudioFiles::add(std::make_unique<AudioFile>(std::move(facts), false));
        return *out_file ? noErr : tmfoErr;
    });
}

OSStatus AudioFileClose(AudioFileID file)
{
    return kvxplatform::withinBorder(memFullErr, [&] { return AudioFiles::close(file) ? noErr : paramErr; });
}

OSStatus AudioFileGetPropertyInfo(AudioFileID file, AudioFilePropertyID property, UInt32* out_size,
                                  UInt32* out_is_writable)
{
    return kvxplatform::withinBorder(memFullErr, [&]() -> OSStatus {
        if (!AudioFiles::use(file)) return paramErr;
        const Property* row = find(property);
        if (!row) return kAudioFileUnsupportedPropertyError;
        if (out_size) *out_size = row->bytes;
        if (out_is_writable) *out_is_writable = 0;
        return noErr;
    });
}

OSStatus AudioFileGetProperty(AudioFileID file, AudioFilePropertyID property, UInt32* io_size, void* out_data)
{
    return kvxplatform::withinBorder(memFullErr, [&]() -> OSStatus {
        const AudioFiles::Use use = AudioFiles::use(file);
        if (!use || !io_size || !out_data) return paramErr;
        const Property* row = find(property);
        if (!row) return kAudioFileUnsupportedPropertyError;
        if (*io_size < row->bytes) return kAudioFileBadPropertySizeError;
        if (!row->get(*use->facts, out_data)) return kAudioFileUnsupportedPropertyError;
        *io_size = row->bytes;
        return noErr;
    });
}
