// The waveform of a sound file as a picture.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kvx {

/// The lowest and the highest sample of one column of the picture, all channels together.
struct Column {
    float low = 0;
    float high = 0;
};

/// Shape   rgb[(y * width + x) * 3 + component], rows from the top
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgb;
};

/// The file in `count` columns of equal length in time. Throws Failure when it cannot be read.
std::vector<Column> columnsOf(const std::string& path, std::size_t count);

/// One column of pixels a Column; full scale reaches the edges, and what lies beyond is cut.
Picture drawWaveform(const std::vector<Column>& columns, int height);

/// Write a PNG. Throws Failure; nothing is left behind then.
void writePicture(const Picture& picture, const std::string& path);

} // namespace kvx
