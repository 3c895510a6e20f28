#include "platform/audiofile/audio_file.h"

#include "platform/audiofile/handles.h"
#include "platform/audiofile/sound_file.h"
#include "platform/corefoundation/url.h"
#include "platform/support/live_count.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>

namespace kvxplatform::audiofile {
namespace {

LiveCount account("AudioFile");

/// All that is asked of such a file was found out as it was opened.
struct AudioFile {
    AudioFile(std::shared_ptr<const Facts> ofFacts, bool ofCaller)
        : facts(std::move(ofFacts)), isCallers(ofCaller)
    {
        if (isCallers) account.add();
    }
    ~AudioFile()
    {
        if (isCallers) account.remove();
    }
    AudioFile(const AudioFile&) = delete;
    AudioFile& operator=(const AudioFile&) = delete;

    const std::shared_ptr<const Facts> facts;
    const bool isCallers; // to close; else an extended file's
};

using AudioFiles = Handles<AudioFile, AudioFileID, 2>;

// ---- properties: each writes its value, or says that this file does not have it ----

template <class Value>
bool give(void* out, Value value)
{
    std::memcpy(out, &value, sizeof value);
    return true;
}

double secondsOf(const Facts& facts) { return static_cast<double>(facts.frames) / facts.format.mSampleRate; }

// The packets of a coding whose packets differ cannot be counted without reading them all.
bool hasSamplePackets(const Facts& facts)
{
    return facts.format.mFramesPerPacket == 1 && facts.format.mBytesPerPacket > 0;
}

bool getType(const Facts& facts, void* out) { return give<UInt32>(out, facts.type); }
bool getFormat(const Facts& facts, void* out) { return give(out, facts.format); }
bool getByteCount(const Facts& facts, void* out)
{
    return hasSamplePackets(facts) &&
           give(out, static_cast<UInt64>(facts.frames) * facts.format.mBytesPerPacket);
}
bool getPacketCount(const Facts& facts, void* out)
{
    return hasSamplePackets(facts) && give(out, static_cast<UInt64>(facts.frames));
}
bool getLargestPacket(const Facts& facts, void* out)
{
    return facts.largestPacket != 0 && give(out, facts.largestPacket);
}
bool getBitRate(const Facts& facts, void* out)
{
    const auto bytesPerFrame = static_cast<double>(facts.format.mBytesPerPacket);
    const double bits = hasSamplePackets(facts) ? bytesPerFrame * 8 * facts.format.mSampleRate
                        : facts.frames > 0      ? static_cast<double>(facts.fileBytes) * 8 / secondsOf(facts)
                                                : 0;
    return give(out, static_cast<UInt32>(std::min(std::round(bits), 4294967295.0)));
}
bool getSourceBits(const Facts& facts, void* out)
{
    return facts.sourceBits != 0 && give(out, facts.sourceBits);
}
bool getDuration(const Facts& facts, void* out) { return give(out, secondsOf(facts)); }

constexpr struct Property {
    AudioFilePropertyID property;
    UInt32 bytes;
    bool (*get)(const Facts&, void* out);
} properties[] = {
    // clang-format off
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
    return AudioFiles::add(std::make_unique<AudioFile>(std::move(facts), false));
}

bool isOpen(AudioFileID file) { return static_cast<bool>(AudioFiles::use(file)); }

void takeBack(AudioFileID file) { AudioFiles::close(file); }

} // namespace kvxplatform::audiofile

using namespace kvxplatform::audiofile;

OSStatus AudioFileOpenURL(CFURLRef url, SInt8 permissions, AudioFileTypeID, AudioFileID* out_file)
{
    if (!out_file) return paramErr;
    *out_file = nullptr;
    if (!url) return paramErr;
    if (permissions != kAudioFileReadPermission) return kAudioFilePermissionsError;
    return withinBorder([&]() -> OSStatus {
        std::unique_ptr<SoundFile> file;
        const OSStatus status = SoundFile::open(url->path, file);
        if (status != noErr) return status;
        auto facts = std::make_shared<const Facts>(file->facts());
        *out_file = AudioFiles::add(std::make_unique<AudioFile>(std::move(facts), true));
        return *out_file ? noErr : tmfoErr;
    });
}

OSStatus AudioFileClose(AudioFileID file)
{
    return withinBorder([&] { return AudioFiles::close(file) ? noErr : paramErr; });
}

OSStatus AudioFileGetPropertyInfo(AudioFileID file, AudioFilePropertyID property, UInt32* out_size,
                                  UInt32* out_is_writable)
{
    return withinBorder([&]() -> OSStatus {
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
    return withinBorder([&]() -> OSStatus {
        const auto use = AudioFiles::use(file);
        if (!use || !io_size || !out_data) return paramErr;
        const Property* row = find(property);
        if (!row) return kAudioFileUnsupportedPropertyError;
        if (*io_size < row->bytes) return kAudioFileBadPropertySizeError;
        if (!row->get(*use->facts, out_data)) return kAudioFileUnsupportedPropertyError;
        *io_size = row->bytes;
        return noErr;
    });
}
