#include "host/kvx/files/waveform.h"

#include "host/kvx/files/atomic_file.h"
#include "host/kvx/files/sound_file.h"

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wunused-function"
#endif
#include <stb/stb_image_write.h>
#if defined(__clang__)
#pragma clang diagnostic pop
#endif

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>

namespace kvx {
namespace {

struct Colour {
    std::uint8_t red, green, blue;
};
constexpr Colour background = {250, 250, 247};
constexpr Colour middleLine = {205, 209, 214};
constexpr Colour wave = {32, 104, 168};

void paint(Picture& picture, int x, int y, Colour colour)
{
    std::uint8_t* pixel = &picture.rgb[static_cast<std::size_t>(y * picture.width + x) * 3];
    pixel[0] = colour.red;
    pixel[1] = colour.green;
    pixel[2] = colour.blue;
}

/// The row of pixels that shows a sample: the top row shows +1, the bottom row -1.
int rowOf(float sample, int height)
{
    const float clipped = std::isfinite(sample) ? std::clamp(sample, -1.0f, 1.0f) : 0.0f;
    return static_cast<int>(std::lround((1.0f - clipped) / 2.0f * static_cast<float>(height - 1)));
}

} // namespace

std::vector<Column> columnsOf(const std::string& path, std::size_t count)
{
    constexpr std::size_t blockFrames = 16384;
    SoundFile file(path);
    const auto channels = static_cast<std::size_t>(file.format().channels);
    std::vector<float> block(blockFrames * channels);
    std::vector<Column> columns(count);
    std::vector<bool> isSet(count);
    std::int64_t frame = 0;
    for (std::size_t got = blockFrames; got == blockFrames;) {
        got = file.read(block.data(), blockFrames);
        for (std::size_t i = 0; i < got; ++i, ++frame) {
            const auto at = std::min(
                static_cast<std::size_t>(frame * static_cast<std::int64_t>(count) / file.format().frames),
                count - 1);
            for (std::size_t c = 0; c < channels; ++c) {
                const float sample = block[i * channels + c];
                columns[at].low = isSet[at] ? std::min(columns[at].low, sample) : sample;
                columns[at].high = isSet[at] ? std::max(columns[at].high, sample) : sample;
                isSet[at] = true;
            }
        }
    }
    return columns;
}

Picture drawWaveform(const std::vector<Column>& columns, int height)
{
    Picture picture;
    picture.width = static_cast<int>(columns.size());
    picture.height = height;
    picture.rgb.resize(columns.size() * static_cast<std::size_t>(height) * 3);
    for (int x = 0; x < picture.width; ++x) {
        const int top = rowOf(columns[static_cast<std::size_t>(x)].high, height);
        const int bottom = rowOf(columns[static_cast<std::size_t>(x)].low, height);
        for (int y = 0; y < height; ++y) {
            const bool isWave = y >= top && y <= bottom;
            paint(picture, x, y, isWave ? wave : y == rowOf(0, height) ? middleLine : background);
        }
    }
    return picture;
}

void writePicture(const Picture& picture, const std::string& path)
{
    const std::string temporary = temporaryPathFor(path);
    errno = 0;
    if (!stbi_write_png(temporary.c_str(), picture.width, picture.height, 3, picture.rgb.data(),
                        picture.width * 3))
        giveUpWriting(temporary, path, errno);
    moveIntoPlace(temporary, path);
}

} // namespace kvx
