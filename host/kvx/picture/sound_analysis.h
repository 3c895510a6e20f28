// Reads a sound file once, in blocks, and measures what a picture shows: the waveform of each channel, and a
// spectrogram.
// All functions: [main].
#pragma once

#include "host/kvx/files/sound_file.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kvx {

/// The samples of one channel in the part of a file that one column shows.
struct WaveColumn {
    float low = 0;
    float high = 0;
    float rms = 0; ///< square root of the mean square
};

constexpr double silentDb = -120; // the lowest level of a spectrogram

/// What a picture of a file shows. The columns divide the file into parts of equal duration.
struct SoundAnalysis {
    SoundFormat format;
    bool isDamaged = false;                     ///< whether decoding ended before the end of the file
    std::vector<std::vector<WaveColumn>> waves; ///< waves[channel][column]
    /// Levels in dB from silentDb; 0 is a sine of full scale in one channel. Row 0 has the highest frequency.
    std::vector<std::vector<float>> spectra; ///< spectra[column][row]
};

/// The size of an analysis.
struct AnalysisSize {
    int columns = 0;
    int rows = 0;     ///< rows of the spectrogram; they divide 0 Hz to half of the sample rate
    int channels = 0; ///< largest number of channels to read, from the first one on
};

/// The number of frames that a spectrum of this sample rate covers: a power of two, about 1/25 s.
int windowFrames(int sampleRate);

/// Analyse a file. `isContinued` is called after each block with the number of frames read so far. A spectrum
/// uses a Hann window; it shows, for each frequency, the channel with the highest level. A column shows the
/// mean power of the spectra in its part of the file.
/// Returns  nullopt if `isContinued` has returned false, which ends the analysis.
/// Errors   throws Failure if the file cannot be read.
std::optional<SoundAnalysis>
analyseSound(const std::string& path, const AnalysisSize& size,
             const std::function<bool(const SoundFormat&, std::int64_t)>& isContinued);

} // namespace kvx
