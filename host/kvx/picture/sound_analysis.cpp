#include "host/kvx/picture/sound_analysis.h"

#include <kiss_fftr.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>

namespace kvx {
namespace {

constexpr double pi = 3.14159265358979323846;

/// Measures the lowest and the highest sample and the RMS of each column.
class WaveMeter {
public:
    WaveMeter(int channels, int columns, std::int64_t frames)
        : channels_(static_cast<std::size_t>(channels)), columns_(columns), frames_(frames),
          squares_(channels_), waves_(channels_, std::vector<WaveColumn>(static_cast<std::size_t>(columns)))
    {
    }

    /// Shape  block[frame * channels + channel]; blocks follow each other without gaps.
    void add(const float* block, std::int64_t frames)
    {
        for (; column_ < columns_; ++column_) {
            const std::int64_t from = std::max(firstOf(column_), done_);
            const std::int64_t end = endOf(column_), to = std::min(end, done_ + frames);
            if (from >= to) break;
            for (std::size_t channel = 0; channel < channels_; ++channel)
                measure(block + (from - done_) * static_cast<std::int64_t>(channels_) + channel, to - from,
                        channel, from == firstOf(column_));
            if (to < end) break;
        }
        done_ += frames;
    }

    std::vector<std::vector<WaveColumn>> takeWaves() { return std::move(waves_); }

private:
    std::int64_t firstOf(int column) const { return column * frames_ / columns_; }
    /// A column has at least one frame, also if there are more columns than frames.
    std::int64_t endOf(int column) const { return std::max(firstOf(column) + 1, firstOf(column + 1)); }

    void measure(const float* samples, std::int64_t count, std::size_t channel, bool isFirst)
    {
        WaveColumn& wave = waves_[channel][static_cast<std::size_t>(column_)];
        double& squares = squares_[channel];
        if (isFirst) {
            wave.low = wave.high = *samples;
            squares = 0;
        }
        for (std::int64_t i = 0; i < count; ++i) {
            const float sample = samples[i * static_cast<std::int64_t>(channels_)];
            wave.low = std::min(wave.low, sample);
            wave.high = std::max(wave.high, sample);
            squares += double{sample} * sample;
        }
        const std::int64_t measured = std::max(done_, firstOf(column_));
        const std::int64_t total = measured + count - firstOf(column_);
        wave.rms = static_cast<float>(std::sqrt(squares / static_cast<double>(total)));
    }

    std::size_t channels_;
    int columns_;
    std::int64_t frames_;
    std::int64_t done_ = 0;       // frames of the former blocks
    int column_ = 0;              // the first column that lacks frames
    std::vector<double> squares_; // sums over the present column, by channel
    std::vector<std::vector<WaveColumn>> waves_;
};

/// Measures spectra at equal distances. Every column has the same number of spectra, so many that they
/// overlap by half or more.
class SpectrumMeter {
public:
    SpectrumMeter(const SoundFormat& format, int columns, int rows)
        : channels_(static_cast<std::size_t>(format.channels)),
          length_(static_cast<std::size_t>(windowFrames(format.sampleRate))),
          rows_(static_cast<std::size_t>(rows)), columns_(static_cast<std::size_t>(columns)),
          plan_(kiss_fftr_alloc(static_cast<int>(length_), 0, nullptr, nullptr)), window_(length_),
          input_(length_), spectrum_(length_ / 2 + 1), power_(length_ / 2 + 1), strongest_(length_ / 2 + 1)
    {
        if (!plan_) throw std::bad_alloc();
        const double columnFrames = static_cast<double>(format.frames) / columns;
        perColumn_ = static_cast<std::size_t>(
            std::max(1.0, std::ceil(columnFrames / (static_cast<double>(length_) / 2))));
        distance_ = columnFrames / static_cast<double>(perColumn_);
        // A sine of full scale on a bin then has the power 1 there.
        const double gain = 4 / static_cast<double>(length_);
        for (std::size_t i = 0; i < length_; ++i)
            window_[i] = static_cast<float>(gain * (0.5 - 0.5 * std::cos(2 * pi * static_cast<double>(i) /
                                                                         static_cast<double>(length_))));
        // The first window begins before the file.
        start_ = startOf(0);
        samples_.assign(static_cast<std::size_t>(std::max<std::int64_t>(0, -start_)) * channels_, 0.0f);
    }

    /// Shape  block[frame * channels + channel]; blocks follow each other without gaps.
    void add(const float* block, std::size_t frames)
    {
        samples_.insert(samples_.end(), block, block + frames * channels_);
        while (next_ < perColumn_ * columns_ && startOf(next_) + length() <= start_ + held()) measureNext();
        // Drop what no later window covers.
        const std::int64_t unused = std::min(startOf(next_) - start_, held());
        if (unused <= 0) return;
        samples_.erase(samples_.begin(), samples_.begin() + unused * static_cast<std::int64_t>(channels_));
        start_ += unused;
    }

    /// Measure the windows that reach past the end of the file. Returns spectra[column][row].
    std::vector<std::vector<float>> finish()
    {
        while (next_ < perColumn_ * columns_) {
            const std::int64_t missing = startOf(next_) + length() - start_ - held();
            if (missing > 0)
                samples_.resize(samples_.size() + static_cast<std::size_t>(missing) * channels_, 0.0f);
            measureNext();
        }
        return std::move(spectra_);
    }

private:
    std::int64_t length() const { return static_cast<std::int64_t>(length_); }
    std::int64_t held() const { return static_cast<std::int64_t>(samples_.size() / channels_); }
    /// The first frame of a window, whose middle lies in the middle of its part of the file.
    std::int64_t startOf(std::size_t window) const
    {
        return std::llround((static_cast<double>(window) + 0.5) * distance_) - length() / 2;
    }

    void measureNext()
    {
        const auto at = static_cast<std::size_t>(startOf(next_) - start_) * channels_;
        std::fill(strongest_.begin(), strongest_.end(), 0.0f);
        for (std::size_t channel = 0; channel < channels_; ++channel) {
            for (std::size_t i = 0; i < length_; ++i)
                input_[i] = samples_[at + i * channels_ + channel] * window_[i];
            kiss_fftr(plan_.get(), input_.data(), spectrum_.data());
            for (std::size_t bin = 0; bin < spectrum_.size(); ++bin) {
                const kiss_fft_cpx& value = spectrum_[bin];
                strongest_[bin] = std::max(strongest_[bin], value.r * value.r + value.i * value.i);
            }
        }
        for (std::size_t bin = 0; bin < power_.size(); ++bin) power_[bin] += strongest_[bin];
        if (++next_ % perColumn_ == 0) finishColumn();
    }

    void finishColumn()
    {
        std::vector<float> levels(rows_);
        const std::size_t last = power_.size() - 1;
        for (std::size_t row = 0; row < rows_; ++row) {
            // The row shows the bins in its range of frequencies, or the nearest one if there is none.
            const double low = static_cast<double>(last * (rows_ - 1 - row)) / static_cast<double>(rows_);
            const double high = static_cast<double>(last * (rows_ - row)) / static_cast<double>(rows_);
            auto first = static_cast<std::size_t>(std::ceil(low));
            auto end = static_cast<std::size_t>(std::ceil(high)) + (row == 0 ? 1 : 0);
            if (first >= end) {
                first = std::min(last, static_cast<std::size_t>(std::lround((low + high) / 2)));
                end = first + 1;
            }
            const double power =
                double{*std::max_element(power_.begin() + static_cast<std::ptrdiff_t>(first),
                                         power_.begin() + static_cast<std::ptrdiff_t>(end))} /
                static_cast<double>(perColumn_);
            const double level = power > 0 ? 10 * std::log10(power) : silentDb; // silent also for NaN
            levels[row] = static_cast<float>(std::max(silentDb, level));
        }
        spectra_.push_back(std::move(levels));
        std::fill(power_.begin(), power_.end(), 0.0f);
    }

    struct Free {
        void operator()(kiss_fftr_state* plan) const { std::free(plan); }
    };

    std::size_t channels_, length_, rows_, columns_;
    std::unique_ptr<kiss_fftr_state, Free> plan_;
    std::vector<float> window_, input_;
    std::vector<kiss_fft_cpx> spectrum_;
    std::vector<float> power_,
        strongest_;              // sum over the spectra of a column; one spectrum, over the channels
    std::size_t perColumn_ = 1;  // spectra of a column
    double distance_ = 0;        // frames between two spectra
    std::size_t next_ = 0;       // number of the next spectrum
    std::vector<float> samples_; // interleaved frames that the next windows need
    std::int64_t start_ = 0;     // position of the first of these frames in the file
    std::vector<std::vector<float>> spectra_;
};

} // namespace

int windowFrames(int sampleRate)
{
    int frames = 64;
    while (frames < sampleRate / 25) frames *= 2;
    return frames;
}

std::optional<SoundAnalysis>
analyseSound(const std::string& path, const AnalysisSize& size,
             const std::function<bool(const SoundFormat&, std::int64_t)>& isContinued)
{
    constexpr std::size_t blockFrames = 16384;
    SoundFile file(path, size.channels);
    SoundAnalysis analysis;
    analysis.format = file.format();
    WaveMeter waves(analysis.format.channels, size.columns, analysis.format.frames);
    SpectrumMeter spectra(analysis.format, size.columns, size.rows);
    std::vector<float> block(blockFrames * static_cast<std::size_t>(analysis.format.channels));
    std::int64_t frames = 0;
    for (std::size_t got = blockFrames; got == blockFrames;) {
        got = file.read(block.data(), blockFrames);
        waves.add(block.data(), static_cast<std::int64_t>(got));
        spectra.add(block.data(), got);
        frames += static_cast<std::int64_t>(got);
        if (!isContinued(analysis.format, frames)) return std::nullopt;
    }
    analysis.isDamaged = file.isDamaged();
    analysis.waves = waves.takeWaves();
    analysis.spectra = spectra.finish();
    return analysis;
}

} // namespace kvx
