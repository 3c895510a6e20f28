// Draws the waveform of a sound file as a picture.
// All functions: [main].
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kvx {

/// The lowest and the highest sample, over all channels, of the part of a file that one column shows.
struct Column {
    float low = 0;
    float high = 0;
};

/// A picture in memory.
/// Shape  rgb[(y * width + x) * 3 + component]; row 0 is the top.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgb;
};

/// Divide a file into `count` columns of equal duration.
/// Errors  throws Failure if the file cannot be read.
std::vector<Column> columnsOf(const std::string& path, std::size_t count);

/// Draw each Column as one column of pixels. Full scale reaches the top and the bottom; larger samples clip.
Picture drawWaveform(const std::vector<Column>& columns, int height);

/// Write a picture to a PNG file.
/// Errors  throws Failure; no incomplete file is left.
void writePicture(const Picture& picture, const std::string& path);

} // namespace kvx
