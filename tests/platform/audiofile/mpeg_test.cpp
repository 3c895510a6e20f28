// MPEG files: headers, length, joined and damaged files.
#include "tests/platform/audiofile/sound_files.h"

#include "platform/audiofile/mpeg_header.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

using kvxplatform::audiofile::MpegHeader;
using kvxplatform::audiofile::readMpegHeader;
using sound::Bytes;
using sound::joined;
using sound::ofText;

TEST(MpegHeaders, AreParsed)
{
    const struct {
        std::uint32_t word;
        UInt32 layer, bytes, samples;
        bool isMPEG1, isMono;
        const char* why;
    } facts[] = {
        // clang-format off
        {0xFFFB9000, 3, 417,  1152, true,  false, "128 kbit/s at 44.1 kHz"},
        {0xFFFB9200, 3, 418,  1152, true,  false, "padded"},
        {0xFFFA9000, 3, 417,  1152, true,  false, "with a checksum, counted in the size"},
        {0xFFFBE400, 3, 960,  1152, true,  false, "320 kbit/s at 48 kHz"},
        {0xFFFBEAC0, 3, 1441, 1152, true,  true,  "the longest: 320 kbit/s at 32 kHz, padded; mono"},
        {0xFFF38000, 3, 208,  576,  false, false, "MPEG-2: 64 kbit/s at 22.05 kHz"},
        {0xFFE318C0, 3, 72,   576,  false, true,  "MPEG-2.5: 8 kbit/s at 8 kHz"},
        {0xFFFDA000, 2, 626,  1152, true,  false, "layer II: 192 kbit/s"},
        {0xFFFF4000, 1, 136,  384,  true,  false, "layer I: 128 kbit/s, in units of 4 bytes"},
        {0xFFFB0000, 0, 0,    0,    false, false, "free format"},
        {0xFFFBF000, 0, 0,    0,    false, false, "no bit rate"},
        {0xFFFB9C00, 0, 0,    0,    false, false, "no sample rate"},
        {0xFFEB9000, 0, 0,    0,    false, false, "no version"},
        {0xFFF99000, 0, 0,    0,    false, false, "no layer"},
        {0xFF7B9000, 0, 0,    0,    false, false, "no sync word"},
        {0x00000000, 0, 0,    0,    false, false, "zero"},
        // clang-format on
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        MpegHeader header;
        ASSERT_EQ(readMpegHeader(fact.word, header), fact.bytes != 0);
        if (!fact.bytes) continue;
        EXPECT_EQ(header.layer, fact.layer);
        EXPECT_EQ(header.bytes, fact.bytes);
        EXPECT_EQ(header.samples, fact.samples);
        EXPECT_EQ(header.isMPEG1, fact.isMPEG1);
        EXPECT_EQ(header.isMono, fact.isMono);
    }
}

/// Make silent frames. Each pair is a frame header and the number of frames with that header.
Bytes silentFrames(std::initializer_list<std::pair<std::uint32_t, int>> runs)
{
    Bytes bytes;
    for (const auto& [word, count] : runs) {
        MpegHeader header;
        EXPECT_TRUE(readMpegHeader(word, header));
        for (int i = 0; i < count; ++i) {
            const std::size_t start = bytes.size();
            bytes.resize(start + header.bytes);
            for (std::size_t b = 0; b < 4; ++b)
                bytes[start + b] = static_cast<std::uint8_t>(word >> (24 - 8 * b));
        }
    }
    return bytes;
}

constexpr std::uint32_t at128 = 0xFFFB9000, at32 = 0xFFFB1000, at320 = 0xFFFBE000, mono22 = 0xFFF380C0;

TEST(MpegLength, CountsAllFrames)
{
    Bytes tag = ofText("ID3\3", 10 + 300); // the tag states its size in four bytes of 7 bits
    tag[8] = 300 >> 7, tag[9] = 300 & 127;
    const struct {
        Bytes bytes;
        SInt64 frames;
        UInt32 channels;
        const char* why;
    } facts[] = {
        // clang-format off
        {silentFrames({{at128, 100}}),                                    115200, 2, "constant bit rate"},
        {silentFrames({{at320, 2}, {at32, 500}}),                         578304, 2, "the highest rate first: an estimate is too short"},
        {silentFrames({{at32, 2}, {at320, 200}}),                         232704, 2, "the lowest rate first: an estimate is too long"},
        {silentFrames({{mono22, 100}}),                                    57600, 1, "frames of 576 samples"},
        {joined({tag, silentFrames({{at320, 2}, {at32, 98}})}),           115200, 2, "after a tag"},
        {joined({silentFrames({{at320, 2}, {at32, 98}}), ofText("TAG", 128)}), 115200, 2, "before a tag"},
        {joined({silentFrames({{at320, 2}, {at32, 98}}), Bytes(50, 0xFF)}), 115200, 2, "other bytes follow"},
        {silentFrames({{0xFFFDE000, 2}, {0xFFFD1000, 98}}),                 115200, 2, "layer II"},
        {silentFrames({{at128, 1}, {at32, 2}}),                             3456, 2, "three frames"},
        // clang-format on
    };
    const sound::Folder folder;
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        sound::save(folder / "x.mp3", fact.bytes);
        const sound::File file(folder / "x.mp3");
        ASSERT_EQ(file.status, noErr);
        EXPECT_EQ(file.frames(), fact.frames);
        const UInt32 channels = file.format().mChannelsPerFrame;
        EXPECT_EQ(channels, fact.channels);
        ASSERT_EQ(file.setClient(sound::floats(file.format().mSampleRate, channels)), noErr);
        EXPECT_EQ(file.readFloats(channels).size(), static_cast<std::size_t>(fact.frames) * channels);
        ASSERT_EQ(ExtAudioFileSeek(file, fact.frames - 100), noErr);
        EXPECT_EQ(file.readFloats(channels).size(), 100u * channels) << "up to the end";
    }
}

TEST(MpegLength, MissingInfoFrameChangesNoSample)
{
    const sound::Folder folder;
    const Bytes whole = sound::varyingMp3(folder / "v.mp3");
    const sound::Decoded expected = sound::decode(folder / "v.mp3");
    ASSERT_EQ(expected.info.frames, 441000);

    MpegHeader info;
    ASSERT_TRUE(
        readMpegHeader(std::uint32_t{whole[0]} << 24 | whole[1] << 16 | whole[2] << 8 | whole[3], info));
    ASSERT_EQ(std::memcmp(&whole[kvxplatform::audiofile::infoOffset(info)], "Xing", 4), 0);
    sound::save(folder / "x.mp3", Bytes(whole.begin() + static_cast<long>(info.bytes), whole.end()));
    const std::vector<float> estimated = sound::decode(folder / "x.mp3").samples;
    ASSERT_LT(estimated.size(), 441000u) << "libsndfile estimates by the first frame";

    const sound::File file(folder / "x.mp3");
    EXPECT_EQ(file.frames() % 1152, 0) << "all frames, with the encoder's delay and padding";
    EXPECT_GT(file.frames(), 441000);
    EXPECT_LT(file.frames(), 441000 + 4 * 1152);
    ASSERT_EQ(file.setClient(sound::floats(44100, 2)), noErr);
    const std::vector<float> samples = file.readFloats(2);
    ASSERT_EQ(samples.size(), static_cast<std::size_t>(file.frames()) * 2);
    EXPECT_EQ(std::memcmp(samples.data(), estimated.data(), estimated.size() * sizeof(float)), 0)
        << "identical up to the estimated length";
    // The same samples follow after the delay of encoder and decoder.
    bool isFound = false;
    for (std::size_t shift = 0; shift < 4000 && !isFound; ++shift)
        isFound = std::memcmp(&samples[(20000 + shift) * 2], &expected.samples[40000], 300000 * 8) == 0;
    EXPECT_TRUE(isFound);
}

// ---- joined, truncated, tagged and damaged files ----

void put(Bytes& bytes, std::size_t at, std::uint32_t word)
{
    for (std::size_t b = 0; b < 4; ++b) bytes[at + b] = static_cast<std::uint8_t>(word >> (24 - 8 * b));
}

/// Make an info frame that states a number of frames, and a number of bytes if `size` is not 0.
Bytes infoFrame(std::uint32_t header, const char* name, std::uint32_t frames, std::size_t size = 0)
{
    Bytes bytes = silentFrames({{header, 1}});
    MpegHeader read;
    EXPECT_TRUE(readMpegHeader(header, read));
    const bool isVbri = std::strcmp(name, "VBRI") == 0;
    const std::size_t at = isVbri ? 36 : kvxplatform::audiofile::infoOffset(read);
    std::memcpy(&bytes[at], name, 4);
    if (!isVbri) put(bytes, at + 4, size > 0 ? 3 : 1); // one flag bit for each field: frames, bytes
    put(bytes, at + (isVbri ? 14 : 8), frames);
    if (size > 0) put(bytes, at + (isVbri ? 10 : 12), static_cast<std::uint32_t>(size));
    return bytes;
}

/// Make an ID3v2 tag of `size` bytes, some of which look like frame headers.
Bytes tagOf(std::size_t size)
{
    Bytes bytes = ofText("ID3\3", 10 + size);
    for (std::size_t i = 0; i < 4; ++i) bytes[6 + i] = static_cast<std::uint8_t>(size >> (21 - 7 * i) & 127);
    for (std::size_t i = 10; i + 4 <= bytes.size(); i += 1000) put(bytes, i, at128);
    return bytes;
}

/// Make random bytes that contain groups of up to three consecutive frame headers.
Bytes noise(std::size_t size)
{
    Bytes bytes(size);
    std::uint32_t state = 7;
    for (auto& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<std::uint8_t>(state >> 24);
    }
    for (std::size_t i = 100; i + 840 <= size; i += 5000)
        for (const std::size_t distance : {0u, 417u, 834u}) put(bytes, i + distance, at128);
    return bytes;
}

/// Make free-format frames of one size.
Bytes freeFrames(std::size_t bytes, int count)
{
    Bytes frames;
    for (int i = 0; i < count; ++i) {
        const std::size_t start = frames.size();
        frames.resize(start + bytes);
        put(frames, start, 0xFFFB0000);
    }
    return frames;
}

TEST(MpegFiles, AllFramesAreRead)
{
    const Bytes hundred = silentFrames({{at128, 100}}), fifty = silentFrames({{at128, 50}});
    const Bytes other = silentFrames({{mono22, 40}}), cut = sound::firstOf(hundred, hundred.size() - 7);
    const std::size_t size = 417 + hundred.size(); // size of the info frame and the hundred frames
    const Bytes ape = joined({ofText("APETAGEX\xD0\x07", 32), Bytes(1, 0)});
    Bytes apeTag = ofText("APETAGEX", 32 + 300 + 32);
    // Size of the tag's items and footer.
    apeTag[12] = static_cast<std::uint8_t>(332 & 0xFF), apeTag[13] = 332 >> 8;
    apeTag[23] = 0xA0; // flags: the tag has a header, and this is the header
    std::memcpy(&apeTag[332], "APETAGEX", 8);
    Bytes xingTwice = joined({infoFrame(at128, "Xing", 100), hundred});
    xingTwice = joined({xingTwice, xingTwice});
    constexpr SInt64 h = 115200; // samples per channel in a hundred frames
    const struct {
        Bytes bytes;
        SInt64 frames, stated;
        bool isCutShort;
        UInt32 omitted;
        const char* why;
    } facts[] = {
        // clang-format off
        {hundred,                                                      h,         0,     false, 0, "no info frame"},
        {joined({infoFrame(at128, "Xing", 100), hundred}),                  h,         h,     false, 0, "an info frame"},
        {joined({infoFrame(at128, "Info", 100), hundred}),                  h,         h,     false, 0, "an info frame of a constant rate"},
        {joined({infoFrame(at128, "VBRI", 100), hundred}),                  h,         h,     false, 0, "a VBRI info frame"},
        {joined({infoFrame(at128, "Xing", 50), hundred}),                   h,         h / 2, false, 0, "an info frame that states too few"},
        {joined({infoFrame(at128, "Xing", 200), hundred}),                  h,         2 * h, true,  0, "an info frame that states too many"},
        {joined({infoFrame(at128, "Xing", 200, size), hundred}),       h,         2 * h, false, 0, "too many, but the right bytes"},
        {joined({infoFrame(at128, "VBRI", 200, size), hundred}),       h,         2 * h, false, 0, "the same with VBRI"},
        {joined({infoFrame(at128, "Xing", 200, 2 * size), hundred}),   h,         2 * h, true,  0, "too many, in frames and bytes"},
        {joined({infoFrame(at128, "Xing", 100, 2 * size), hundred}),   h,         h,     false, 0, "too many bytes"},
        {joined({infoFrame(at128, "Xing", 100, size), cut}),           h - 1152,  h,     true,  0, "truncated in the last frame, with stated bytes"},
        {joined({infoFrame(at128, "VBRI", 100, size), cut}),           h - 1152,  h,     true,  0, "the same with VBRI"},
        {joined({tagOf(9), infoFrame(at128, "Xing", 100, size), cut}), h - 1152,  h,     true,  0, "the same after a tag"},
        {joined({infoFrame(at128, "Xing", 0xFFFFFFFF), hundred}),      h,         0,     false, 0, "a placeholder"},
        {joined({infoFrame(at128, "Xing", 100), cut}),                      h - 1152,  h,     true,  0, "truncated in the last frame"},
        {cut,                                                          h - 1152,  0,     false, 0, "truncated, without a stated length"},
        {xingTwice,                                                    2 * h,     2 * h, false, 0, "joined, both with info frames"},
        {joined({infoFrame(at128, "Xing", 100), hundred, fifty}),           h + h / 2, h,     false, 0, "joined, the first with an info frame"},
        {joined({fifty, infoFrame(at128, "Xing", 100), hundred}),           h + h / 2, h,     false, 0, "joined, the second with an info frame"},
        {joined({fifty, tagOf(500), infoFrame(at128, "Xing", 100), hundred}), h + h / 2, h,   false, 0, "joined, with a tag between"},
        {joined({cut, infoFrame(at128, "Xing", 100), hundred}),             2 * h - 1152, h,  false, 0, "joined after a truncated frame"},
        {joined({cut, tagOf(500), hundred}),                           2 * h - 1152, 0,  false, 0, "the same, with a tag between"},
        {joined({hundred, other}),                                     h,         0,     false, 1, "joined with another stream"},
        {joined({hundred, other, fifty, other, tagOf(9), other}),      h + h / 2, 0,     false, 2, "alternating streams"},
        {joined({hundred, silentFrames({{at128 | 0xC0, 40}})}),        h,         0,     false, 1, "joined with a mono stream"},
        {joined({tagOf(2u << 20), hundred}),                           h,         0,     false, 0, "after a tag of two mebibytes"},
        {joined({tagOf(9), tagOf(70000), hundred}),                    h,         0,     false, 0, "after two tags"},
        {joined({tagOf(2u << 20), infoFrame(at128, "Xing", 100), hundred}), h,         h,     false, 0, "an info frame after a tag"},
        {joined({hundred, ofText("TAG", 128)}),                        h,         0,     false, 0, "before an ID3v1 tag"},
        {joined({hundred, apeTag}),                                    h,         0,     false, 0, "before an APE tag"},
        {joined({hundred, apeTag, ofText("TAG", 128), fifty}),         h + h / 2, 0,     false, 0, "tags in the middle"},
        {joined({hundred, ape}),                                       h,         0,     false, 0, "before a broken APE tag"},
        {joined({noise(1), hundred}),                                h,         0,     false, 0, "after one byte"},
        {joined({noise(300000), hundred}),                           h,         0,     false, 0, "after much noise"},
        {joined({Bytes(70000), hundred}),                              h,         0,     false, 0, "after zeros"},
        {joined({Bytes(3, 0xFF), hundred}),                            h,         0,     false, 0, "after part of a sync word"},
        {joined({silentFrames({{at32, 1}}), noise(90), hundred}),    h,         0,     false, 0, "after a single header"},
        {joined({hundred, noise(20000), fifty}),                     h + h / 2, 0,     false, 0, "noise in the middle"},
        {joined({hundred, noise(20000)}),                            h,         0,     false, 0, "noise at the end"},
        {freeFrames(700, 100),                                         h,         0,     false, 0, "free format"},
        {silentFrames({{at128, 2}}),                                   2304,      0,     false, 0, "two frames"},
        {joined({silentFrames({{at32, 1}, {at320, 200}})}),            201 * 1152, 0,    false, 0, "the first two frames differ most"},
        // clang-format on
    };
    const sound::Folder folder;
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        sound::save(folder / "x.mp3", fact.bytes);
        const sound::File file(folder / "x.mp3");
        ASSERT_EQ(file.status, noErr);
        const KVXSoundFileReport report = file.report();
        EXPECT_EQ(file.frames(), fact.frames);
        EXPECT_EQ(report.frames, fact.frames);
        EXPECT_EQ(report.statedFrames, fact.stated);
        EXPECT_EQ(report.isCutShort, fact.isCutShort);
        EXPECT_EQ(report.omittedStreams, fact.omitted);
        ASSERT_EQ(file.setClient(sound::floats(file.format().mSampleRate, 2)), noErr);
        EXPECT_EQ(file.readFloats(2).size(), static_cast<std::size_t>(fact.frames) * 2);
        ASSERT_EQ(ExtAudioFileSeek(file, fact.frames - 100), noErr);
        EXPECT_EQ(file.readFloats(2).size(), 200u) << "up to the end";
    }
}

// A frame is never shorter than its header and side information. The decoder would need minutes for a file of
// such frames.
TEST(MpegFiles, TinyFreeFormatFramesAreRefused)
{
    const sound::Folder folder;
    for (const std::size_t bytes : {4u, 12u, 24u, 35u}) {
        SCOPED_TRACE(bytes);
        sound::save(folder / "x.mp3", freeFrames(bytes, 10000));
        EXPECT_EQ(sound::statusOfOpening(folder / "x.mp3"), kAudioFileUnsupportedFileTypeError);
    }
    sound::save(folder / "x.mp3", freeFrames(100, 100));
    EXPECT_EQ(sound::File(folder / "x.mp3").frames(), 115200);
}

TEST(MpegFiles, IsolatedSyncWordsAreRefused)
{
    const sound::Folder folder;
    sound::save(folder / "x.mp3", noise(500000));
    EXPECT_EQ(sound::statusOfOpening(folder / "x.mp3"), kAudioFileUnsupportedFileTypeError);
    sound::save(folder / "x.mp3", joined({silentFrames({{at128, 2}}), Bytes(5000)}));
    EXPECT_EQ(sound::statusOfOpening(folder / "x.mp3"), kAudioFileUnsupportedFileTypeError);
}

/// An MP3 file that libsndfile has written; its info frame states the encoder's delay.
struct Music {
    Bytes bytes;
    std::vector<float> samples;
    UInt32 infoBytes; // size of the info frame
};
Music mp3(const sound::Folder& folder, int frames)
{
    const std::string path = folder / "music.mp3";
    sound::write(path, SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, 44100, 2, sound::music(2, frames));
    Music music{sound::load(path), sound::decode(path).samples, 0};
    MpegHeader first;
    EXPECT_TRUE(readMpegHeader(std::uint32_t{music.bytes[0]} << 24 | music.bytes[1] << 16 |
                                   music.bytes[2] << 8 | music.bytes[3],
                               first));
    music.infoBytes = first.bytes;
    return music;
}

std::vector<float> samplesOf(const std::string& path)
{
    const sound::File file(path);
    EXPECT_EQ(file.status, noErr);
    EXPECT_EQ(file.setClient(sound::floats(44100, 2)), noErr);
    return file.readFloats(2);
}

TEST(MpegFiles, EncoderDelayIsRemovedIfTheInfoFrameIsRight)
{
    const sound::Folder folder;
    const Music music = mp3(folder, 50000);
    ASSERT_EQ(music.samples.size(), 100000u);
    const std::string path = folder / "x.mp3";

    sound::save(path, joined({noise(5000), music.bytes}));
    EXPECT_TRUE(sound::isSame(samplesOf(path), music.samples)) << "noise before the stream has no effect";
    sound::save(path, joined({tagOf(2u << 20), music.bytes, ofText("TAG", 128)}));
    EXPECT_TRUE(sound::isSame(samplesOf(path), music.samples)) << "tags have no effect";

    const Bytes bare(music.bytes.begin() + static_cast<std::ptrdiff_t>(music.infoBytes), music.bytes.end());
    sound::save(path, bare);
    const std::vector<float> all = samplesOf(path);
    EXPECT_EQ(all.size() % (2 * 1152), 0u);
    const std::size_t delay = (576 + 529 + 0) * 2;
    ASSERT_GT(all.size(), music.samples.size() + delay);
    const auto found = std::search(all.begin(), all.end(), music.samples.begin(), music.samples.end());
    ASSERT_NE(found, all.end()) << "the samples follow the delay";

    Bytes wrong = music.bytes;
    const std::uint8_t xing[] = {'X', 'i', 'n', 'g'}, info[] = {'I', 'n', 'f', 'o'};
    auto name = std::search(wrong.begin(), wrong.end(), xing, xing + 4);
    if (name == wrong.end()) name = std::search(wrong.begin(), wrong.end(), info, info + 4);
    ASSERT_NE(name, wrong.end());
    name[11] = static_cast<std::uint8_t>(name[11] - 1); // lowest byte of the frame count in the info frame
    sound::save(path, wrong);
    EXPECT_TRUE(sound::isSame(samplesOf(path), all)) << "the info frame states a wrong length";
}

TEST(MpegFiles, JoinedFilesPlayOneAfterAnother)
{
    const sound::Folder folder;
    const Music first = mp3(folder, 50000), second = mp3(folder, 30000);
    const std::string path = folder / "x.mp3";
    sound::save(path, joined({first.bytes, second.bytes}));
    const std::vector<float> both = samplesOf(path);
    EXPECT_EQ(both.size() % (2 * 1152), 0u);
    // Each of the two files keeps its delay. The samples of the second file differ in the last bits.
    const auto start =
        std::search(both.begin(), both.end(), first.samples.begin(), first.samples.begin() + 90000);
    ASSERT_NE(start, both.end());
    const auto delay = static_cast<std::size_t>(start - both.begin());
    const std::size_t framesOfFirst = (first.samples.size() + delay) / 2 / 1152 + 1;
    const std::size_t begin = framesOfFirst * 1152 * 2 + delay;
    ASSERT_LE(begin + second.samples.size(), both.size());
    float difference = 0;
    for (std::size_t i = 0; i < second.samples.size(); ++i)
        difference = std::max(difference, std::abs(both[begin + i] - second.samples[i]));
    EXPECT_LT(difference, 1e-4f) << "the second file is complete";
}

} // namespace
