// A picture in memory, with rectangles and text, and its PNG file.
// All functions: [main].
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kvx {

struct Colour {
    std::uint8_t red = 0, green = 0, blue = 0;
};

/// A part of a picture, in pixels; x and y are those of its upper left pixel.
struct Area {
    int x = 0, y = 0, width = 0, height = 0;

    int right() const { return x + width; }   ///< x of the first column after the area
    int bottom() const { return y + height; } ///< y of the first row after the area
};

/// A picture in memory.
/// Shape  rgb[(y * width + x) * 3 + component]; row 0 is the top.
struct Picture {
    Picture(int newWidth, int newHeight, Colour background);

    int width;
    int height;
    std::vector<std::uint8_t> rgb;

    void paint(int x, int y, Colour colour);
    void fill(const Area& area, Colour colour); ///< paint the part of the area that lies inside the picture
};

/// The point of a text that lies at the given x.
enum class TextAt { left, centre, right };

/// The width of a text in pixels. `size` is the height of a line of text in pixels.
int textWidth(std::string_view utf8, int size);

/// Cut a text to `width` pixels. A cut text ends with an ellipsis.
std::string cutToPixels(std::string_view utf8, int size, int width);

/// Draw a text. The row `y` is the middle of capital letters.
void drawText(Picture& picture, int x, int y, std::string_view utf8, int size, Colour colour,
              TextAt at = TextAt::left);

/// Write a picture to a PNG file.
/// Errors  throws Failure; no incomplete file is left.
void writePicture(const Picture& picture, const std::string& path);

} // namespace kvx
