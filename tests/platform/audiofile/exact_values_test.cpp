// Integer samples of n bits read as float are exactly value / 2^(n-1); float samples keep their bits.
#include "tests/platform/audiofile/sound_files.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace {

using sound::Bytes;

void put(Bytes& out, std::uint64_t value, int bytes, bool isBigEndian = false)
{
    for (int i = 0; i < bytes; ++i)
        out.push_back(static_cast<std::uint8_t>(value >> 8 * (isBigEndian ? bytes - 1 - i : i)));
}

void put(Bytes& out, const char* text) { out.insert(out.end(), text, text + 4); }

/// Make a mono WAV file of these data bytes. `kind` is 1 for integer samples, 3 for float samples.
Bytes wave(const Bytes& data, int kind, int bits)
{
    Bytes file;
    put(file, "RIFF");
    put(file, 36 + data.size(), 4);
    put(file, "WAVE");
    put(file, "fmt ");
    put(file, 16, 4);
    put(file, static_cast<std::uint64_t>(kind), 2);
    put(file, 1, 2);
    put(file, 44100, 4);
    put(file, 44100u * static_cast<unsigned>(bits) / 8, 4);
    put(file, static_cast<unsigned>(bits) / 8, 2);
    put(file, static_cast<unsigned>(bits), 2);
    put(file, "data");
    put(file, data.size(), 4);
    file.insert(file.end(), data.begin(), data.end());
    return file;
}

std::vector<float> readBack(const Bytes& bytes, SInt64 frames)
{
    const sound::Folder folder;
    sound::save(folder / "x.wav", bytes);
    const sound::File file(folder / "x.wav");
    EXPECT_EQ(file.status, noErr);
    EXPECT_EQ(file.frames(), frames);
    EXPECT_EQ(file.setClient(sound::floats(44100, 1)), noErr);
    return file.readFloats(1);
}

TEST(ExactValues, IntegersAreScaledExactly)
{
    const struct {
        int bits;
        // Values start at `first` and grow by `step`; `offset` makes them unsigned.
        std::int64_t first, step, offset;
        const char* why;
    } facts[] = {
        {8, -128, 1, 128, "all values, unsigned in the file"},
        {16, -32768, 1, 0, "all values"},
        {24, -8388608, 997, 0, "from the lowest"},
        {24, -500, 1, 0, "around zero"},
        {24, 8387000, 1, 0, "to the highest"},
        {32, -2147483648LL, 65521, 0, "rounded to the nearest float"},
        {32, 2147483000LL, 1, 0, "to the highest, which becomes 1"},
        {32, -300, 1, 0, "around zero"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(std::to_string(fact.bits) + " bits: " + fact.why);
        const std::int64_t scale = std::int64_t{1} << (fact.bits - 1);
        Bytes data;
        std::vector<float> expected;
        for (std::int64_t value = fact.first; value < scale && expected.size() < 70000; value += fact.step) {
            put(data, static_cast<std::uint64_t>(value + fact.offset), fact.bits / 8);
            expected.push_back(static_cast<float>(static_cast<double>(value) / static_cast<double>(scale)));
        }
        // For 8-bit data, one more sample makes the data size even.
        if (data.size() % 2) data.push_back(0), expected.push_back(-1);
        EXPECT_TRUE(sound::isSame(readBack(wave(data, 1, fact.bits), static_cast<SInt64>(expected.size())),
                                  expected));
    }
}

TEST(ExactValues, FloatsKeepTheirBits)
{
    const std::uint32_t bits[] = {
        0x00000000, 0x80000000, 0x3F800000, 0xBF800000, // zeros and ones
        0x7F800000, 0xFF800000, 0x7FC00000, 0x7FC12345, // infinities and quiet NaNs
        0x7F812345, 0xFFFFFFFF, 0x00000001, 0x007FFFFF, // a signalling NaN, denormals
        0x7F7FFFFF, 0x42C80000, 0xC2C80000, 0x3F800001, // beyond full scale
    };
    Bytes data;
    for (const std::uint32_t each : bits) put(data, each, 4);
    const std::vector<float> samples = readBack(wave(data, 3, 32), std::size(bits));
    ASSERT_EQ(samples.size(), std::size(bits));
    EXPECT_EQ(std::memcmp(samples.data(), bits, sizeof bits), 0);
}

TEST(ExactValues, DoublesAreRoundedToFloats)
{
    const double values[] = {0.1,        -1.0 / 3, 1e-40,
                             123456.789, 1 + 1e-9, std::numeric_limits<double>::infinity()};
    Bytes data;
    std::vector<float> expected;
    for (const double each : values) {
        std::uint64_t bits;
        std::memcpy(&bits, &each, 8);
        put(data, bits, 8);
        expected.push_back(static_cast<float>(each));
    }
    EXPECT_TRUE(sound::isSame(readBack(wave(data, 3, 64), std::size(values)), expected));
}

TEST(ExactValues, TheFilesFormatGivesItsBytes)
{
    for (const int bits : {32, 64}) { // the samples are values that a 32-bit float cannot hold
        Bytes data;
        for (std::uint64_t i = 0; i < 1000; ++i)
            put(data, 0x3FE0000000000000u + i * 0x123456789ABu, bits / 8);
        const sound::Folder folder;
        sound::save(folder / "x.wav", wave(data, bits == 64 ? 3 : 1, bits));
        const sound::File file(folder / "x.wav");
        Bytes read;
        ASSERT_EQ(file.read(2000, static_cast<UInt32>(bits) / 8, 1, read), noErr);
        EXPECT_EQ(read, data) << bits;
    }
}

} // namespace
