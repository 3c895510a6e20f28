#include "platform/audiofile/data_format.h"

#include <algorithm>
#include <iterator>

namespace kvxplatform::audiofile {
namespace {

constexpr UInt32 anyContainer = 0;
// 'ms' in the upper 16 bits; the lower 16 bits are the coding's number in WAVE files.
constexpr UInt32 waveTag = 0x6D730000;

/// A linear PCM subtype of libsndfile, with its sample width and format flags.
struct Plain {
    int subtype;
    UInt32 bits;
    UInt32 flags; ///< format flags apart from the byte order
};

// clang-format off
constexpr Plain plains[] = {
    {SF_FORMAT_PCM_S8,  8, kAudioFormatFlagIsPacked | kAudioFormatFlagIsSignedInteger},
    {SF_FORMAT_PCM_U8,  8, kAudioFormatFlagIsPacked},
    {SF_FORMAT_PCM_16, 16, kAudioFormatFlagIsPacked | kAudioFormatFlagIsSignedInteger},
    {SF_FORMAT_PCM_24, 24, kAudioFormatFlagIsPacked | kAudioFormatFlagIsSignedInteger},
    {SF_FORMAT_PCM_32, 32, kAudioFormatFlagIsPacked | kAudioFormatFlagIsSignedInteger},
    {SF_FORMAT_FLOAT,  32, kAudioFormatFlagIsPacked | kAudioFormatFlagIsFloat},
    {SF_FORMAT_DOUBLE, 64, kAudioFormatFlagIsPacked | kAudioFormatFlagIsFloat},
};

/// A subtype of libsndfile that is not linear PCM in this container. The first matching row applies.
struct Coding {
    int subtype;
    UInt32 container; ///< libsndfile's container; anyContainer: every container without an earlier row
    UInt32 format;
    UInt32 framesPerPacket; ///< frames per packet; 0: varying or unknown
    UInt32 packetBytes; ///< bytes per packet and channel; 0: varying or unknown
    UInt32 largestPacket; ///< largest packet in bytes of all channels, if packets vary; 0: unknown
    SInt32 sourceBits;
};

// The format ID of a coding is its four-character name if it has one, otherwise its number in WAVE files.
constexpr Coding codings[] = {
    // subtype                   container         format                      frames bytes largest bits
    {SF_FORMAT_ULAW,             anyContainer,     kAudioFormatULaw,               1,  1,      0,  0},
    {SF_FORMAT_ALAW,             anyContainer,     kAudioFormatALaw,               1,  1,      0,  0},
    {SF_FORMAT_IMA_ADPCM,        SF_FORMAT_AIFF,   kAudioFormatAppleIMA4,         64, 34,      0,  0},
    {SF_FORMAT_IMA_ADPCM,        SF_FORMAT_CAF,    kAudioFormatAppleIMA4,         64, 34,      0,  0},
    {SF_FORMAT_IMA_ADPCM,        anyContainer,     kAudioFormatDVIIntelIMA,        0,  0,      0,  0},
    {SF_FORMAT_MS_ADPCM,         anyContainer,     waveTag | 0x02,                 0,  0,      0,  0},
    {SF_FORMAT_GSM610,           SF_FORMAT_WAV,    kAudioFormatMicrosoftGSM,     320, 65,      0,  0},
    {SF_FORMAT_GSM610,           SF_FORMAT_WAVEX,  kAudioFormatMicrosoftGSM,     320, 65,      0,  0},
    {SF_FORMAT_GSM610,           SF_FORMAT_W64,    kAudioFormatMicrosoftGSM,     320, 65,      0,  0},
    {SF_FORMAT_GSM610,           anyContainer,     'agsm',                       160, 33,      0,  0},
    {SF_FORMAT_VOX_ADPCM,        anyContainer,     waveTag | 0x17,                 0,  0,      0,  0},
    {SF_FORMAT_NMS_ADPCM_16,     anyContainer,     waveTag | 0x38,                 0,  0,      0,  0},
    {SF_FORMAT_NMS_ADPCM_24,     anyContainer,     waveTag | 0x38,                 0,  0,      0,  0},
    {SF_FORMAT_NMS_ADPCM_32,     anyContainer,     waveTag | 0x38,                 0,  0,      0,  0},
    {SF_FORMAT_G721_32,          anyContainer,     waveTag | 0x40,                 0,  0,      0,  0},
    {SF_FORMAT_G723_24,          anyContainer,     waveTag | 0x14,                 0,  0,      0,  0},
    {SF_FORMAT_G723_40,          anyContainer,     waveTag | 0x14,                 0,  0,      0,  0},
    {SF_FORMAT_DWVW_12,          anyContainer,     'DWVW',                         0,  0,      0, 12},
    {SF_FORMAT_DWVW_16,          anyContainer,     'DWVW',                         0,  0,      0, 16},
    {SF_FORMAT_DWVW_24,          anyContainer,     'DWVW',                         0,  0,      0, 24},
    {SF_FORMAT_DWVW_N,           anyContainer,     'DWVW',                         0,  0,      0,  0},
    {SF_FORMAT_DPCM_8,           anyContainer,     'dpcm',                         1,  1,      0,  8},
    {SF_FORMAT_DPCM_16,          anyContainer,     'dpcm',                         1,  2,      0, 16},
    {SF_FORMAT_ALAC_16,          anyContainer,     kAudioFormatAppleLossless,   4096,  0,      0, 16},
    {SF_FORMAT_ALAC_20,          anyContainer,     kAudioFormatAppleLossless,   4096,  0,      0, 20},
    {SF_FORMAT_ALAC_24,          anyContainer,     kAudioFormatAppleLossless,   4096,  0,      0, 24},
    {SF_FORMAT_ALAC_32,          anyContainer,     kAudioFormatAppleLossless,   4096,  0,      0, 32},
    {SF_FORMAT_PCM_S8,           SF_FORMAT_FLAC,   'flac',                         0,  0,      0,  8},
    {SF_FORMAT_PCM_16,           SF_FORMAT_FLAC,   'flac',                         0,  0,      0, 16},
    {SF_FORMAT_PCM_24,           SF_FORMAT_FLAC,   'flac',                         0,  0,      0, 24},
    {SF_FORMAT_PCM_S8,           SF_FORMAT_OGG,    'flac',                         0,  0,      0,  8},
    {SF_FORMAT_PCM_16,           SF_FORMAT_OGG,    'flac',                         0,  0,      0, 16},
    {SF_FORMAT_PCM_24,           SF_FORMAT_OGG,    'flac',                         0,  0,      0, 24},
    {SF_FORMAT_VORBIS,           anyContainer,     'vorb',                         0,  0,      0,  0},
    {SF_FORMAT_OPUS,             anyContainer,     'opus',                         0,  0,      0,  0},
    {SF_FORMAT_MPEG_LAYER_I,     anyContainer,     kAudioFormatMPEGLayer1,       384,  0,    676,  0},
    {SF_FORMAT_MPEG_LAYER_II,    anyContainer,     kAudioFormatMPEGLayer2,      1152,  0,   1729,  0},
    {SF_FORMAT_MPEG_LAYER_III,   anyContainer,     kAudioFormatMPEGLayer3,      1152,  0,   1441,  0},
};

/// Containers for which the platform has a file type.
constexpr struct {
    int container;
    AudioFileTypeID type;
} types[] = {
    {SF_FORMAT_WAV,   kAudioFileWAVEType}, {SF_FORMAT_WAVEX, kAudioFileWAVEType},
    {SF_FORMAT_AU,    kAudioFileNextType}, {SF_FORMAT_CAF,   kAudioFileCAFType},
    {SF_FORMAT_SD2,   kAudioFileSoundDesigner2Type},
};
// clang-format on

// Sample rate in Hz; below this rate a layer III packet has half as many frames.
constexpr int lowestMPEG1Rate = 32000;

template <class Row, std::size_t count>
const Row* rowOf(const Row (&rows)[count], int subtype)
{
    const Row* row =
        std::find_if(rows, rows + count, [&](const Row& each) { return each.subtype == subtype; });
    return row == rows + count ? nullptr : row;
}

const Coding* codingOf(int container, int subtype)
{
    const auto* row = std::find_if(std::begin(codings), std::end(codings), [&](const Coding& each) {
        return each.subtype == subtype &&
               (each.container == anyContainer || each.container == static_cast<UInt32>(container));
    });
    return row == std::end(codings) ? nullptr : row;
}

AudioFileTypeID typeOf(int container, int subtype, UInt32 formType)
{
    if (container == SF_FORMAT_AIFF) return formType == 'AIFC' ? kAudioFileAIFCType : kAudioFileAIFFType;
    if (subtype == SF_FORMAT_MPEG_LAYER_I) return kAudioFileMP1Type;
    if (subtype == SF_FORMAT_MPEG_LAYER_II) return kAudioFileMP2Type;
    if (subtype == SF_FORMAT_MPEG_LAYER_III) return kAudioFileMP3Type;
    const auto* row = std::find_if(std::begin(types), std::end(types),
                                   [&](const auto& each) { return each.container == container; });
    return row == std::end(types) ? 0 : row->type;
}

void describePlain(const Plain& plain, bool isBigEndian, Facts& facts)
{
    AudioStreamBasicDescription& format = facts.format;
    format.mFormatID = kAudioFormatLinearPCM;
    format.mFormatFlags = plain.flags | (isBigEndian && plain.bits > 8 ? kAudioFormatFlagIsBigEndian : 0);
    format.mBitsPerChannel = plain.bits;
    format.mBytesPerFrame = plain.bits / 8 * format.mChannelsPerFrame;
    format.mFramesPerPacket = 1;
    format.mBytesPerPacket = format.mBytesPerFrame;
    facts.largestPacket = format.mBytesPerPacket;
    facts.sourceBits = static_cast<SInt32>(plain.bits);
}

void describeCoded(const Coding& coding, int rate, Facts& facts)
{
    AudioStreamBasicDescription& format = facts.format;
    format.mFormatID = coding.format;
    format.mFramesPerPacket = coding.framesPerPacket;
    if (coding.subtype == SF_FORMAT_MPEG_LAYER_III && rate < lowestMPEG1Rate) format.mFramesPerPacket /= 2;
    format.mBytesPerPacket = coding.packetBytes * format.mChannelsPerFrame;
    if (coding.framesPerPacket == 1) { // one or two bytes per sample
        format.mBytesPerFrame = format.mBytesPerPacket;
        format.mBitsPerChannel = coding.packetBytes * 8;
    }
    // The format flags of a lossless coding state the sample width: 1, 2, 3 and 4 mean 16, 20, 24 and 32
    // bits.
    if (coding.format == kAudioFormatAppleLossless || coding.format == 'flac')
        format.mFormatFlags = coding.sourceBits == 16   ? 1
                              : coding.sourceBits == 20 ? 2
                              : coding.sourceBits == 24 ? 3
                              : coding.sourceBits == 32 ? 4
                                                        : 0;
    facts.largestPacket = format.mBytesPerPacket ? format.mBytesPerPacket : coding.largestPacket;
    facts.sourceBits = coding.sourceBits;
}

} // namespace

Facts describe(SNDFILE* file, const SF_INFO& info, UInt32 formType)
{
    const int container = info.format & SF_FORMAT_TYPEMASK;
    const int subtype = info.format & SF_FORMAT_SUBMASK;
    Facts facts;
    facts.format.mSampleRate = info.samplerate;
    facts.format.mChannelsPerFrame = static_cast<UInt32>(info.channels);
    facts.type = typeOf(container, subtype, formType);
    const Plain* plain = rowOf(plains, subtype);
    if (const Coding* coding = codingOf(container, subtype)) {
        describeCoded(*coding, info.samplerate, facts);
    } else if (plain) {
        const bool isSwapped = sf_command(file, SFC_RAW_DATA_NEEDS_ENDSWAP, nullptr, 0) != 0;
        describePlain(*plain, isSwapped, facts);
        // SDS and PAF files store samples in blocks with headers, so their bytes cannot be copied as frames.
        facts.isPlain = container != SF_FORMAT_SDS && container != SF_FORMAT_PAF;
    }
    return facts;
}

} // namespace kvxplatform::audiofile
