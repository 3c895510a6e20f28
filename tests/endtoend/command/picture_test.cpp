// `kvx picture`: the decoded PNG files, and refusals.
#include "tests/endtoend/command/kvx_runner.h"
#include "tests/endtoend/command/pty_child.h"

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_PNG
#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wunused-function"
#endif
#include <stb/stb_image.h>
#if defined(__clang__)
#pragma clang diagnostic pop
#endif

#include <cmath>
#include <filesystem>

namespace {

using namespace endtoend;

/// A decoded PNG file.
struct Decoded {
    explicit Decoded(const std::string& path)
    {
        int components = 0;
        stbi_uc* const pixels = stbi_load(path.c_str(), &width, &height, &components, 3);
        if (!pixels) throw std::runtime_error(path + ": " + stbi_failure_reason());
        rgb.assign(pixels, pixels + width * height * 3);
        stbi_image_free(pixels);
    }
    int at(int x, int y, int component) const
    {
        return rgb[std::size_t(y * width + x) * 3 + std::size_t(component)];
    }
    /// The sum of the components, which is higher for higher levels in the spectrogram.
    int brightness(int x, int y) const { return at(x, y, 0) + at(x, y, 1) + at(x, y, 2); }

    int width = 0, height = 0;
    std::vector<unsigned char> rgb;
};

// The plots of a picture of 1200 x 800 pixels with one lane.
constexpr int plotLeft = 54, plotRight = 1134, laneTop = 66, laneBottom = 335, plotTop = 361,
              plotBottom = 766;

support::Sound makeTone(double frequency, bool isSquare)
{
    support::Sound sound{44100, 1, std::vector<float>(44100)};
    for (std::size_t i = 0; i < sound.samples.size(); ++i) {
        const double sine = std::sin(2 * 3.14159265358979323846 * frequency * (double(i) + 0.5) / 44100);
        sound.samples[i] = float(isSquare ? (sine > 0 ? 1 : -1) : sine);
    }
    return sound;
}

using KvxPicture = KvxTest;

TEST_F(KvxPicture, HasTheRequestedSizeAndTheSameBytesEachTime)
{
    support::writeSound(support::makeNoise(44100, 2, 44100), folder / "a.wav");
    const struct {
        Arguments options;
        int width, height;
    } facts[] = {
        {{}, 1200, 800}, {{"--width", "320", "--height", "240"}, 320, 240}, {{"--width", "777"}, 777, 800}};
    for (const auto& fact : facts) {
        const auto result = run(joined({"picture", "a.wav", "a.png"}, fact.options));
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(result.out, "Drew a.png: " + std::to_string(fact.width) + " x " +
                                  std::to_string(fact.height) + " pixels\n");
        const Decoded picture(folder / "a.png");
        EXPECT_EQ(picture.width, fact.width);
        EXPECT_EQ(picture.height, fact.height);
        const std::string bytes = bytesOf(folder / "a.png");
        EXPECT_EQ(run(joined({"picture", "--quiet", "a.wav", "b.png"}, fact.options)).out, "");
        EXPECT_TRUE(bytes == bytesOf(folder / "b.png"));
    }
    EXPECT_EQ(folder.count(), 3u) << "no unfinished files";
    EXPECT_EQ(run({"picture", "a.wav", "A.PNG"}).exitCode, 0) << "the extension may have capitals";
}

TEST_F(KvxPicture, ShowsAToneOfOneKilohertzInItsRow)
{
    support::writeSound(makeTone(1000, false), folder / "a.wav");
    ASSERT_EQ(run({"picture", "a.wav", "a.png"}).exitCode, 0);
    const Decoded picture(folder / "a.png");
    const double expected = plotBottom - 1000 / 22050.0 * (plotBottom - plotTop);
    for (int x = plotLeft + 50; x < plotRight - 50; ++x) {
        int brightest = plotTop;
        for (int y = plotTop; y < plotBottom; ++y)
            if (picture.brightness(x, y) > picture.brightness(x, brightest)) brightest = y;
        ASSERT_NEAR(brightest + 0.5, expected, 1.5) << x;
    }
}

TEST_F(KvxPicture, FillsTheLaneWithASquareOfFullScale)
{
    support::writeSound(makeTone(4410, true), folder / "a.wav");
    ASSERT_EQ(run({"picture", "a.wav", "a.png"}).exitCode, 0);
    const Decoded picture(folder / "a.png");
    for (int x = plotLeft; x < plotRight; ++x)
        for (int y = laneTop; y < laneBottom; ++y) ASSERT_LT(picture.at(x, y, 0), 150) << x << " " << y;
}

TEST_F(KvxPicture, ShowsSilenceAsBlack)
{
    support::writeSound({44100, 1, std::vector<float>(44100)}, folder / "a.wav");
    ASSERT_EQ(run({"picture", "a.wav", "a.png"}).exitCode, 0);
    const Decoded picture(folder / "a.png");
    for (int x = plotLeft; x < plotRight; ++x)
        for (int y = plotTop; y < plotBottom; ++y) ASSERT_EQ(picture.brightness(x, y), 4) << x << " " << y;
}

TEST_F(KvxPicture, ShowsEachOfSixChannels)
{
    support::Sound sound{44100, 6, std::vector<float>(6 * 44100)};
    for (std::size_t i = 0; i < sound.samples.size(); ++i)
        if (i % 6 == 4) sound.samples[i] = i % 12 < 6 ? 1.0f : -1.0f;
    support::writeSound(sound, folder / "six.wav");
    ASSERT_EQ(run({"picture", "six.wav", "six.png"}).exitCode, 0);
    const Decoded picture(folder / "six.png");
    for (int lane = 0; lane < 6; ++lane) {
        int rows = 0;
        for (int y = laneTop + lane * 45; y < laneTop + lane * 45 + 39; ++y)
            rows += picture.at(600, y, 0) < 150;
        EXPECT_EQ(rows, lane == 4 ? 39 : 1) << lane;
    }
}

TEST_F(KvxPicture, DrawsADamagedFileAndWarns)
{
    support::writeSound(support::makeNoise(44100, 1, 44100), folder / "a.wav");
    std::filesystem::resize_file(folder / "a.wav", 80000);
    const auto result = run({"picture", "a.wav", "a.png"});
    EXPECT_EQ(result.exitCode, 1);
    expectMessage(result, "picture");
    EXPECT_EQ(Decoded(folder / "a.png").width, 1200);
}

TEST_F(KvxPicture, RefusesWrongArguments)
{
    support::writeSound(support::makeNoise(44100, 1, 4410), folder / "a.wav");
    support::writeSound(support::makeNoise(44100, 1, 4410), folder / "sound.png");
    const struct {
        Arguments arguments;
        int exitCode;
        const char* message;
    } facts[] = {
        {{"a.wav", "a.jpg"}, 2, "a.jpg: the result is a PNG picture; name it a.png"},
        {{"a.wav", "picture"}, 2, "picture: the result is a PNG picture; name it picture.png"},
        {{"a.wav", "sound.png", "--width", "319"}, 2, "--width"},
        {{"a.wav", "b.png", "--height", "4097"}, 2, "--height"},
        {{"none.wav", "b.png"}, 1, "none.wav does not exist; check the name and the folder"},
        {{"a.wav", "no/b.png"}, 1, "no/b.png cannot be written: "},
        {{"sound.png", "sound.png"},
         1,
         "sound.png is being played and cannot be written at the same time; name another file for the "
         "picture"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::PrintToString(fact.arguments));
        const auto result = run(joined({"picture"}, fact.arguments));
        EXPECT_EQ(result.exitCode, fact.exitCode);
        expectMessage(result, "picture");
        EXPECT_NE(result.err.find(fact.message), std::string::npos) << result.err;
    }
    EXPECT_EQ(folder.count(), 2u);
}

TEST_F(KvxPicture, ShowsProgressAndLeavesNoFileAfterASignal)
{
    support::writeSound(support::makeNoise(44100, 2, 44100 * 60), folder / "long.wav");
    PtyChild child(kvxCommand({"picture", "long.wav", "long.png"}), 100, folder.path());
    ASSERT_TRUE(child.waitFor(" / 1:00.0  "));
    child.send(SIGINT);
    EXPECT_EQ(child.wait(), 130);
    EXPECT_EQ(folder.count(), 1u);
}

} // namespace
