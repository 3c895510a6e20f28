#include "host/kvx/play/equaliser_curve.h"
#include "host/kvx/text/failure.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace {

std::string repeated(std::size_t count, const std::string& value)
{
    std::string text = value;
    for (std::size_t i = 1; i < count; ++i) text += "," + value;
    return text;
}

std::string refusalOf(const std::string& text)
{
    try {
        kvx::readGains(text);
    } catch (const kvx::Failure& failure) {
        return failure.what();
    }
    return "";
}

TEST(NamedCurves, HaveDifferentNamesAndGainsInRange)
{
    std::set<std::string> names;
    for (const kvx::NamedCurve& curve : kvx::namedCurves()) {
        EXPECT_TRUE(names.insert(curve.name).second) << curve.name;
        EXPECT_NE(std::string(curve.purpose), "");
        for (double gain : curve.gains) {
            EXPECT_GE(gain, kvx::lowestGain) << curve.name;
            EXPECT_LE(gain, kvx::highestGain) << curve.name;
        }
        EXPECT_EQ(kvx::readGains(curve.name), curve.gains);
        EXPECT_NE(kvx::formatNamedCurves().find(std::string(curve.name) + " "), std::string::npos);
    }
    EXPECT_EQ(names.count("list"), 0u) << "`--eq list` prints the names";
    EXPECT_EQ(kvx::readGains("flat"), kvx::Gains{});
    EXPECT_EQ(kvx::readGains("Flat"), kvx::Gains{});
}

TEST(NamedCurves, AreListedWithCentresAndGains)
{
    const std::string list = kvx::formatNamedCurves();
    EXPECT_EQ(
        list.rfind(
            "flat       every band at 0 dB: leaves the sound unchanged\nbass       more below 200 Hz\n", 0),
        0u)
        << list;
    for (const char* row :
         {"\n   Hz  flat  bass  treble  loudness  voice  telephone  warm\n"
          "   20     0     6       0         8    -12        -20     2\n"
          "   25     0     6       0         8    -12        -20     2\n"
          " 31.5     0     6       0         7    -12        -20     2\n",
          "\n 1000     0     0       0         0      3          0     0\n",
          "\n20000     0     0       6         5     -6        -20    -4\n\nNeighbouring bands add up: "})
        EXPECT_NE(list.find(row), std::string::npos) << row << list;
}

TEST(ReadGains, ReadsOneGainPerBand)
{
    std::string text = repeated(30, "0") + ",-20";
    EXPECT_EQ(kvx::readGains(text)[30], -20.0);
    EXPECT_EQ(kvx::readGains(repeated(31, "20"))[0], 20.0);
    const struct {
        std::string text, says;
    } facts[] = {
        {repeated(30, "0"), "30 gains are given and the equaliser has 31 bands"},
        {repeated(32, "0"), "32 gains are given"},
        {repeated(31, "20.01"), "gains go from -20 to 20 dB"},
        {repeated(31, "-20.01"), "gains go from -20 to 20 dB"},
        {"nosuch", "nosuch is neither a curve nor a list of gains; the curves are flat, bass"},
        {"", "is neither"},
        {"fla", "fla is neither"},
        {"flatter", "flatter is neither"},
    };
    for (const auto& fact : facts)
        EXPECT_NE(refusalOf(fact.text).find(fact.says), std::string::npos) << refusalOf(fact.text);
}

} // namespace
