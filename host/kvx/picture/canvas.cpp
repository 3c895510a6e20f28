#include "host/kvx/picture/canvas.h"

#include "host/kvx/files/atomic_file.h"
#include "host/kvx/picture/font.h"

#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wunused-function"
#endif
#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#include <stb/stb_image_write.h>
#define STB_TRUETYPE_IMPLEMENTATION
#define STBTT_STATIC
#include <stb/stb_truetype.h>
#if defined(__clang__)
#pragma clang diagnostic pop
#endif

#include <utf8proc.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>

namespace kvx {
namespace {

constexpr std::size_t components = 3;

const stbtt_fontinfo& font()
{
    static const stbtt_fontinfo info = [] {
        stbtt_fontinfo loaded = {};
        stbtt_InitFont(&loaded, fontBytes(), 0);
        return loaded;
    }();
    return info;
}

std::vector<int> codePointsOf(std::string_view utf8)
{
    std::vector<int> points;
    while (!utf8.empty()) {
        utf8proc_int32_t point = 0;
        const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(utf8.data());
        const utf8proc_ssize_t used =
            utf8proc_iterate(bytes, static_cast<utf8proc_ssize_t>(utf8.size()), &point);
        points.push_back(used > 0 ? point : '?');
        utf8.remove_prefix(used > 0 ? static_cast<std::size_t>(used) : 1);
    }
    return points;
}

/// Call visit(point, x) for each character of a text. x is the distance from the start of the text in pixels.
/// Returns  the distance of the end.
template <class Visit>
float layOut(std::string_view utf8, int size, Visit visit)
{
    const float scale = stbtt_ScaleForPixelHeight(&font(), static_cast<float>(size));
    float x = 0;
    int former = 0;
    for (const int point : codePointsOf(utf8)) {
        if (former) x += scale * static_cast<float>(stbtt_GetCodepointKernAdvance(&font(), former, point));
        visit(point, x);
        int advance = 0, bearing = 0;
        stbtt_GetCodepointHMetrics(&font(), point, &advance, &bearing);
        x += scale * static_cast<float>(advance);
        former = point;
    }
    return x;
}

std::uint8_t mix(std::uint8_t under, std::uint8_t over, std::uint8_t share)
{
    return static_cast<std::uint8_t>((under * (255 - share) + over * share + 127) / 255);
}

/// Draw a character whose origin is at the baseline row `y`.
void drawCharacter(Picture& picture, int point, float x, int y, float scale, Colour colour)
{
    const float whole = std::floor(x);
    int width = 0, height = 0, left = 0, top = 0;
    unsigned char* const shares = stbtt_GetCodepointBitmapSubpixel(&font(), scale, scale, x - whole, 0, point,
                                                                   &width, &height, &left, &top);
    if (!shares) return; // a character without a shape, such as a blank
    for (int row = 0; row < height; ++row)
        for (int column = 0; column < width; ++column) {
            const int atX = static_cast<int>(whole) + left + column, atY = y + top + row;
            if (atX < 0 || atX >= picture.width || atY < 0 || atY >= picture.height) continue;
            const std::uint8_t share = shares[row * width + column];
            const std::uint8_t* pixel =
                &picture.rgb[static_cast<std::size_t>(atY * picture.width + atX) * components];
            picture.paint(atX, atY,
                          {mix(pixel[0], colour.red, share), mix(pixel[1], colour.green, share),
                           mix(pixel[2], colour.blue, share)});
        }
    stbtt_FreeBitmap(shares, nullptr);
}

} // namespace

Picture::Picture(int newWidth, int newHeight, Colour background)
    : width(newWidth), height(newHeight),
      rgb(static_cast<std::size_t>(newWidth) * static_cast<std::size_t>(newHeight) * components)
{
    fill({0, 0, width, height}, background);
}

void Picture::paint(int x, int y, Colour colour)
{
    std::uint8_t* pixel = &rgb[static_cast<std::size_t>(y * width + x) * components];
    pixel[0] = colour.red;
    pixel[1] = colour.green;
    pixel[2] = colour.blue;
}

void Picture::fill(const Area& area, Colour colour)
{
    for (int y = std::max(0, area.y); y < std::min(height, area.bottom()); ++y)
        for (int x = std::max(0, area.x); x < std::min(width, area.right()); ++x) paint(x, y, colour);
}

int textWidth(std::string_view utf8, int size)
{
    return static_cast<int>(std::ceil(layOut(utf8, size, [](int, float) {})));
}

std::string cutToPixels(std::string_view utf8, int size, int width)
{
    if (textWidth(utf8, size) <= width) return std::string(utf8);
    while (!utf8.empty()) {
        // Remove the last character: its continuation bytes, then its first byte.
        while (utf8.size() > 1 && (static_cast<unsigned char>(utf8.back()) & 0xC0) == 0x80)
            utf8.remove_suffix(1);
        utf8.remove_suffix(1);
        if (const std::string cut = std::string(utf8) + "…"; textWidth(cut, size) <= width) return cut;
    }
    return {};
}

void drawText(Picture& picture, int x, int y, std::string_view utf8, int size, Colour colour, TextAt at)
{
    const float scale = stbtt_ScaleForPixelHeight(&font(), static_cast<float>(size));
    int x0 = 0, y0 = 0, x1 = 0, y1 = 0;
    stbtt_GetCodepointBitmapBox(&font(), 'H', scale, scale, &x0, &y0, &x1, &y1);
    const int baseline = y - (y0 + y1) / 2;
    const int width = textWidth(utf8, size);
    const int start = at == TextAt::left ? x : at == TextAt::centre ? x - width / 2 : x - width;
    layOut(utf8, size, [&](int point, float distance) {
        drawCharacter(picture, point, static_cast<float>(start) + distance, baseline, scale, colour);
    });
}

void writePicture(const Picture& picture, const std::string& path)
{
    const std::string temporary = temporaryPathFor(path);
    errno = 0;
    if (!stbi_write_png(temporary.c_str(), picture.width, picture.height, components, picture.rgb.data(),
                        picture.width * static_cast<int>(components)))
        giveUpWriting(temporary, path, errno);
    moveIntoPlace(temporary, path);
}

} // namespace kvx
