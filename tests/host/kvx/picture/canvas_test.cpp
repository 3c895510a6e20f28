#include "host/kvx/picture/canvas.h"
#include "host/kvx/text/failure.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace {

using kvx::Area;
using kvx::Picture;
using kvx::TextAt;

constexpr kvx::Colour white = {255, 255, 255}, black = {0, 0, 0};

/// The smallest area that contains all pixels that are not white.
Area painted(const Picture& picture)
{
    int left = picture.width, top = picture.height, right = 0, bottom = 0;
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
            if (picture.rgb[std::size_t(y * picture.width + x) * 3] != 255) {
                left = std::min(left, x);
                right = std::max(right, x + 1);
                top = std::min(top, y);
                bottom = std::max(bottom, y + 1);
            }
    return {left, top, right - left, bottom - top};
}

TEST(Canvas, FillsThePartOfAnAreaThatLiesInside)
{
    Picture picture(4, 3, white);
    picture.fill({-5, 1, 7, 9}, black);
    std::string text;
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 4; ++x) text += picture.rgb[std::size_t(y * 4 + x) * 3] == 0 ? '#' : '.';
    EXPECT_EQ(text, "...."
                    "##.."
                    "##..");
}

TEST(Canvas, DrawsTextAroundTheGivenPoint)
{
    const int width = kvx::textWidth("H0H", 20);
    const struct {
        TextAt at;
        int left;
    } facts[] = {{TextAt::left, 100}, {TextAt::centre, 100 - width / 2}, {TextAt::right, 100 - width}};
    for (const auto& fact : facts) {
        Picture picture(200, 60, white);
        kvx::drawText(picture, 100, 30, "H0H", 20, black, fact.at);
        const Area area = painted(picture);
        EXPECT_NEAR(area.x, fact.left, 2);
        EXPECT_NEAR(area.right(), fact.left + width, 2);
        EXPECT_NEAR(area.y + area.height / 2, 30, 1) << "the middle of the letters";
        EXPECT_NEAR(area.height, 14, 2) << "the height of capital letters";
    }
}

TEST(Canvas, DrawsTextPartlyOutsideThePicture)
{
    Picture picture(20, 10, white);
    kvx::drawText(picture, -10, 0, "HHHHHHHHHH", 20, black);
    EXPECT_GT(painted(picture).width, 15);
}

TEST(Canvas, DrawsCharactersOtherThanAscii)
{
    const auto bytes = [](const char* text) {
        Picture picture(40, 40, white);
        kvx::drawText(picture, 5, 20, text, 20, black);
        return picture.rgb;
    };
    EXPECT_NE(bytes("Ü"), bytes("U"));
    EXPECT_NE(bytes("−∞"), bytes("??"));
    EXPECT_EQ(bytes("\xFF"), bytes("?")) << "an invalid byte";
}

TEST(Canvas, CutsTextToAWidth)
{
    EXPECT_EQ(kvx::cutToPixels("song.wav", 14, 500), "song.wav");
    const std::string text = "a long name of a söng.wav";
    const std::string cut = kvx::cutToPixels(text, 14, 100);
    EXPECT_EQ(cut, "a long name o…");
    EXPECT_LE(kvx::textWidth(cut, 14), 100);
    EXPECT_EQ(kvx::cutToPixels("üüüü", 14, kvx::textWidth("ü…", 14)), "ü…") << "whole characters";
    EXPECT_EQ(kvx::cutToPixels("song", 14, 0), "");
}

TEST(Canvas, WritesPng)
{
    support::TemporaryFolder folder;
    kvx::writePicture(Picture(7, 9, black), folder / "a.png");
    std::ifstream file(folder / "a.png", std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    ASSERT_GT(bytes.size(), 24u);
    EXPECT_EQ(bytes.substr(0, 8), "\x89PNG\r\n\x1a\n");
    EXPECT_EQ(bytes.substr(16, 8), std::string("\0\0\0\x07\0\0\0\x09", 8)) << "width and height";
    EXPECT_THROW(kvx::writePicture(Picture(2, 2, black), folder / "no/a.png"), kvx::Failure);
}

} // namespace
