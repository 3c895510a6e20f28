#include "host/soundclient/sample_bytes.h"

#include <gmock/gmock.h>

#include <vector>

namespace soundclient {
namespace {

TEST(SampleBytes, HaveTheByteOrderAndTheFormatCodeOfTheLabelling)
{
    const std::int16_t samples[] = {0x0102, -2, 0, 32767, -32768};
    const std::vector<int> big = {1, 2, 0xFF, 0xFE, 0, 0, 0x7F, 0xFF, 0x80, 0};
    const std::vector<int> little = {2, 1, 0xFE, 0xFF, 0, 0, 0xFF, 0x7F, 0, 0x80};
    const struct {
        Labelling labelling;
        std::uint32_t format;
        const std::vector<int>& bytes;
    } facts[] = {
        {Labelling::bigAsLittle, 'sowt', big},
        {Labelling::little, 'sowt', little},
        {Labelling::big, 'twos', big},
    };
    for (const auto& fact : facts) {
        std::vector<std::uint8_t> bytes(10);
        writeSamples(fact.labelling, samples, 5, bytes.data());
        EXPECT_EQ(std::vector<int>(bytes.begin(), bytes.end()), fact.bytes);
        EXPECT_EQ(formatOf(fact.labelling), fact.format);
    }
}

} // namespace
} // namespace soundclient
