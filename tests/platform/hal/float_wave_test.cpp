// The exact bytes of a captured WAV file.
#include "tests/platform/hal/test_device.h"
#include "tests/support/temporary_folder.h"

#include <fstream>
#include <iterator>

namespace {

using namespace haltest;

std::uint32_t numberAt(const std::string& bytes, std::size_t at, std::size_t width)
{
    std::uint32_t value = 0;
    for (std::size_t i = width; i-- > 0;) value = value << 8 | static_cast<std::uint8_t>(bytes.at(at + i));
    return value;
}

std::string captured(uint32_t channels, uint32_t frames)
{
    support::TemporaryFolder folder;
    KVXSimulatedDevice description = Device::stepped();
    description.sampleRate = 48000;
    description.outputChannels = channels;
    Device device(description);
    Procedure procedure(device, [](const Call&) {});
    const std::string path = folder / "a.wav";
    EXPECT_EQ(KVXPlatformStartCapture(device, path.c_str()), 0) << KVXPlatformErrorText();
    procedure.start();
    EXPECT_EQ(KVXPlatformStep(device, frames), frames);
    EXPECT_EQ(KVXPlatformStopCapture(device), 0) << KVXPlatformErrorText();
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void expectChunks(const std::string& bytes, uint32_t channels, uint32_t frames, std::uint32_t formatBytes)
{
    const std::uint32_t dataBytes = frames * channels * 4;
    ASSERT_EQ(bytes.size(), 12 + 8 + formatBytes + 12 + 8 + dataBytes);
    EXPECT_EQ(bytes.substr(0, 4), "RIFF");
    EXPECT_EQ(numberAt(bytes, 4, 4), bytes.size() - 8);
    EXPECT_EQ(bytes.substr(8, 8), "WAVEfmt ");
    EXPECT_EQ(numberAt(bytes, 16, 4), formatBytes);
    EXPECT_EQ(numberAt(bytes, 22, 2), channels);
    EXPECT_EQ(numberAt(bytes, 24, 4), 48000u);
    EXPECT_EQ(numberAt(bytes, 28, 4), 48000u * channels * 4) << "bytes per second";
    EXPECT_EQ(numberAt(bytes, 32, 2), channels * 4) << "bytes per frame";
    EXPECT_EQ(numberAt(bytes, 34, 2), 32u) << "bits";
    EXPECT_EQ(numberAt(bytes, 36, 2), formatBytes - 18) << "bytes of the extension";
    const std::size_t fact = 20 + formatBytes;
    EXPECT_EQ(bytes.substr(fact, 4), "fact");
    EXPECT_EQ(numberAt(bytes, fact + 4, 4), 4u);
    EXPECT_EQ(numberAt(bytes, fact + 8, 4), frames);
    EXPECT_EQ(bytes.substr(fact + 12, 4), "data");
    EXPECT_EQ(numberAt(bytes, fact + 16, 4), dataBytes);
}

TEST(FloatWave, HasFormatTag3ForOneOrTwoChannels)
{
    for (uint32_t channels : {1u, 2u}) {
        const std::string bytes = captured(channels, 100);
        expectChunks(bytes, channels, 100, 18);
        EXPECT_EQ(numberAt(bytes, 20, 2), 3u);
    }
}

TEST(FloatWave, IsExtensibleWithSpeakersForMoreChannels)
{
    const struct {
        uint32_t channels, mask;
    } facts[] = {{3, 0x7}, {4, 0x33}, {5, 0x37}, {6, 0x3F}, {7, 0x13F}, {8, 0x63F}, {9, 0}, {64, 0}};
    const unsigned char floatIdentifier[] = {3,    0, 0, 0,    0, 0,    0x10, 0,
                                             0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71};
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.channels);
        const std::string bytes = captured(fact.channels, 10);
        expectChunks(bytes, fact.channels, 10, 40);
        EXPECT_EQ(numberAt(bytes, 20, 2), 0xFFFEu);
        EXPECT_EQ(numberAt(bytes, 38, 2), 32u) << "valid bits";
        EXPECT_EQ(numberAt(bytes, 40, 4), fact.mask);
        EXPECT_EQ(bytes.compare(44, 16, reinterpret_cast<const char*>(floatIdentifier), 16), 0);
    }
}

} // namespace
