// Draws the waveform and the spectrogram of a sound file, with axes.
// All functions: [main].
#pragma once

#include "host/kvx/picture/canvas.h"
#include "host/kvx/picture/sound_analysis.h"

#include <string>
#include <vector>

namespace kvx {

constexpr int leastPictureWidth = 320, leastPictureHeight = 240, mostPictureSize = 4096; // pixels

/// The size of a picture in pixels.
struct PictureSize {
    int width = 1200;
    int height = 800;
};

/// The plots of a picture: one lane for each channel, and the spectrogram. All have the same columns.
struct PictureLayout {
    std::vector<Area> lanes;
    Area spectrogram;

    AnalysisSize analysisSize() const
    {
        return {spectrogram.width, spectrogram.height, static_cast<int>(lanes.size())};
    }
};

/// Divide a picture. If the height does not suffice for a lane for each channel, the first channels get
/// lanes.
PictureLayout layOutPicture(const PictureSize& size, int fileChannels);

/// The colour of a level in a spectrogram. A higher level, from silentDb to 0 dB, has a lighter colour.
Colour colourOfLevel(double db);

/// Draw an analysis of the size of `layOutPicture(size, …)`. `title` is the name of the file.
Picture drawSound(const SoundAnalysis& analysis, const std::string& title, const PictureSize& size);

/// The positions of an axis's labels.
struct Ticks {
    double step = 1; ///< distance between two labels, in the unit of the axis
    double end = 0;  ///< largest value on the axis
};

/// Choose round times (seconds) or round frequencies (Hz) at least `leastPixels` apart on an axis from 0 to
/// `end` of `pixels` pixels.
Ticks timeTicks(double end, int pixels, int leastPixels);
Ticks frequencyTicks(double end, int pixels, int leastPixels);

/// Format the time of a label: "0.25 s"; from a minute on, "1:30" or "1:00:00".
std::string formatTickTime(double seconds, const Ticks& ticks);

} // namespace kvx
