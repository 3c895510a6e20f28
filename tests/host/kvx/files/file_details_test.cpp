// Container, codec, bit depth and tags of sound files.
#include "host/kvx/files/file_details.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>
#include <sndfile.h>

namespace {

/// Write one second of silence, with a title and an artist if `hasTags` is set.
void write(const std::string& path, int format, bool hasTags)
{
    SF_INFO info = {};
    info.samplerate = 48000;
    info.channels = 1;
    info.format = format;
    SNDFILE* const file = sf_open(path.c_str(), SFM_WRITE, &info);
    ASSERT_TRUE(file) << sf_strerror(nullptr);
    if (hasTags) {
        sf_set_string(file, SF_STR_TITLE, "Ein Lied");
        sf_set_string(file, SF_STR_ARTIST, "Bj\xC3\xB6rn");
    }
    const std::vector<float> silence(48000);
    sf_writef_float(file, silence.data(), 48000);
    sf_close(file);
}

TEST(FileDetails, NameContainerCodecAndBitDepth)
{
    const struct {
        const char* name;
        int format;
        const char *container, *codec;
        int bitDepth;
    } facts[] = {
        {"a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, "WAV (Microsoft)", "Signed 16 bit PCM", 16},
        {"b.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, "WAV (Microsoft)", "32 bit float", 32},
        {"c.wav", SF_FORMAT_WAV | SF_FORMAT_DOUBLE, "WAV (Microsoft)", "64 bit float", 64},
        {"d.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_U8, "WAV (Microsoft)", "Unsigned 8 bit PCM", 8},
        {"e.wav", SF_FORMAT_WAV | SF_FORMAT_ULAW, "WAV (Microsoft)", "U-Law", 0},
        {"f.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_24, "AIFF (Apple/SGI)", "Signed 24 bit PCM", 24},
        {"g.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_S8, "FLAC (Free Lossless Audio Codec)", "Signed 8 bit PCM",
         8},
        {"h.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, "OGG (OGG Container format)", "Vorbis", 0},
        {"i.caf", SF_FORMAT_CAF | SF_FORMAT_ALAC_20, "CAF (Apple Core Audio File)", "20 bit ALAC", 20},
    };
    const support::TemporaryFolder folder;
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.name);
        write(folder / fact.name, fact.format, false);
        const kvx::FileDetails details = kvx::readFileDetails(folder / fact.name);
        EXPECT_EQ(details.container, fact.container);
        EXPECT_EQ(details.codec, fact.codec);
        EXPECT_EQ(details.bitDepth, fact.bitDepth);
    }
}

TEST(FileDetails, ListTheTags)
{
    const support::TemporaryFolder folder;
    for (const auto& [name, format] : {std::pair("a.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16),
                                       std::pair("b.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS)}) {
        SCOPED_TRACE(name);
        write(folder / name, format, true);
        const auto tags = kvx::readFileDetails(folder / name).tags;
        ASSERT_GE(tags.size(), 2u);
        EXPECT_EQ(tags[0], (std::pair<std::string, std::string>("title", "Ein Lied")));
        EXPECT_EQ(tags[1], (std::pair<std::string, std::string>("artist", "Bj\xC3\xB6rn")));
    }
    write(folder / "none.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, false);
    EXPECT_TRUE(kvx::readFileDetails(folder / "none.wav").tags.empty());
}

TEST(FileDetails, AreEmptyForAFileThatDoesNotOpen)
{
    const kvx::FileDetails details = kvx::readFileDetails("/no/such/file.wav");
    EXPECT_EQ(details.container + details.codec, "");
    EXPECT_EQ(details.bitDepth, 0);
    EXPECT_TRUE(details.tags.empty());
}

} // namespace
