// kvx_stretch_quality: prints the chapter on time-stretching for docs/performance.md. It compares the engines
// and windows of Rubber Band: what they cost, and how well steady notes and attacks survive.
#include "bench/test_signal.h"

#include <rubberband/RubberBandStretcher.h>

#include <samplerate.h>

#include <soundtouch/SoundTouch.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <random>
#include <set>
#include <vector>

namespace {

using RubberBand::RubberBandStretcher;
using Samples = std::vector<float>;
using Frequencies = std::set<double>;

constexpr double rate = bench::signalRate, pi = 3.14159265358979323846;
constexpr std::size_t blockFrames = 512;

constexpr std::size_t framesOf(double seconds) { return static_cast<std::size_t>(seconds * rate); }

// ---- what is compared ----

struct Stretcher {
    const char* name;
    int options; ///< options of Rubber Band, or `soundTouch`
};

constexpr int soundTouch = -1;
constexpr int common = RubberBandStretcher::OptionProcessRealTime |
                       RubberBandStretcher::OptionThreadingNever |
                       RubberBandStretcher::OptionChannelsTogether;
constexpr int finer = common | RubberBandStretcher::OptionEngineFiner;
constexpr int faster = common | RubberBandStretcher::OptionEngineFaster;

// The stretchers of the time-pitch unit come first.
constexpr std::size_t unitStretchers = 2;
constexpr Stretcher stretchers[] = {
    {"finer engine, all windows", finer},
    {"finer engine, one window", finer | RubberBandStretcher::OptionWindowShort},
    {"faster engine", faster},
    {"faster engine, short window", faster | RubberBandStretcher::OptionWindowShort},
    {"faster engine, long window", faster | RubberBandStretcher::OptionWindowLong},
    {"faster engine, smooth transients", faster | RubberBandStretcher::OptionTransientsSmooth},
    {"faster engine, percussive detector", faster | RubberBandStretcher::OptionDetectorPercussive},
    {"faster engine, soft detector", faster | RubberBandStretcher::OptionDetectorSoft},
    {"faster engine, independent phases", faster | RubberBandStretcher::OptionPhaseIndependent},
    {"SoundTouch", soundTouch},
};

struct Setting {
    const char* name;
    double ratio; ///< frames of output per frame of input
    double pitch; ///< ratio of frequencies
};

const Setting settings[] = {
    {"rate 1.25", 1 / 1.25, 1},
    {"rate 0.8", 1 / 0.8, 1},
    {"rate 0.67", 1.5, 1},
    {"rate 0.5", 2, 1},
    {"+300 cents", 1, std::exp2(300 / 1200.0)},
};

// ---- input ----

constexpr double inputSeconds = 3, attackDistance = 0.5;

Frequencies harmonics(std::initializer_list<double> notes, int count)
{
    Frequencies result;
    for (const double note : notes)
        for (int n = 1; n <= count; ++n) result.insert(note * n);
    return result;
}

const Frequencies closeChord = harmonics({132, 165, 198}, 6);
const Frequencies bassNote = harmonics({55}, 16), note = harmonics({440}, 8);

/// A steady sound with harmonics, and noise at -60 dB as in a recording.
Samples toneOf(const Frequencies& frequencies)
{
    std::mt19937 random(1);
    std::uniform_real_distribution<float> noise(-1e-3f, 1e-3f);
    Samples samples(framesOf(inputSeconds));
    for (float& each : samples) each = noise(random);
    double phase = 0, level = 0;
    for (const double frequency : frequencies) level += 1 / frequency;
    for (const double frequency : frequencies) {
        phase += 1.7; // different phases, because equal ones add up to a pulse
        for (std::size_t i = 0; i < samples.size(); ++i)
            samples[i] +=
                static_cast<float>(0.8 / level / frequency *
                                   std::sin(2 * pi * frequency * static_cast<double>(i) / rate + phase));
    }
    return samples;
}

/// Drum hits: a burst of noise every half second, which begins at full level and decays.
Samples drumHits()
{
    std::mt19937 random(5);
    std::uniform_real_distribution<double> noise(-1, 1);
    Samples samples(framesOf(inputSeconds));
    for (std::size_t i = framesOf(attackDistance); i < samples.size(); ++i)
        samples[i] = static_cast<float>(
            0.8 * noise(random) * std::exp(-std::fmod(static_cast<double>(i) / rate, attackDistance) / 0.02));
    return samples;
}

// ---- stretching ----

struct Output {
    Samples samples; ///< frame i / ratio of the input is at frame i
    std::clock_t time = 0;
};

Output stretchWithRubberBand(const Samples& in, double ratio, int options)
{
    RubberBandStretcher band(framesOf(1), 2, options, ratio);
    band.setMaxProcessSize(blockFrames);
    band.setDetectorOption(options); // the constructor ignores this option
    const std::size_t delay = band.getStartDelay();
    Samples padded(band.getPreferredStartPad());
    padded.insert(padded.end(), in.begin(), in.end());
    padded.resize(padded.size() + framesOf(2)); // pushes the last frames of the input out

    Output output;
    std::vector<Samples> planes(2);
    const std::clock_t begin = std::clock();
    for (std::size_t at = 0; at + blockFrames <= padded.size(); at += blockFrames) {
        const float* const both[] = {padded.data() + at, padded.data() + at};
        band.process(both, blockFrames, false);
        const auto frames = static_cast<std::size_t>(std::max(band.available(), 0));
        for (Samples& plane : planes) plane.resize(frames);
        float* const targets[] = {planes[0].data(), planes[1].data()};
        band.retrieve(targets, frames);
        output.samples.insert(output.samples.end(), planes[0].begin(), planes[0].end());
    }
    output.time = std::clock() - begin;
    output.samples.erase(output.samples.begin(), output.samples.begin() + static_cast<std::ptrdiff_t>(delay));
    return output;
}

Output stretchWithSoundTouch(const Samples& in, double ratio)
{
    soundtouch::SoundTouch touch;
    touch.setSampleRate(static_cast<unsigned>(rate));
    touch.setChannels(2);
    touch.setTempo(1 / ratio);
    Samples pairs, block(2 * blockFrames);
    for (const float each : in) pairs.insert(pairs.end(), 2, each);
    pairs.resize(pairs.size() + 2 * framesOf(2));
    Output output;
    const std::clock_t begin = std::clock();
    for (std::size_t at = 0; at + block.size() <= pairs.size(); at += block.size()) {
        touch.putSamples(pairs.data() + at, blockFrames);
        while (const unsigned got = touch.receiveSamples(block.data(), blockFrames))
            for (unsigned i = 0; i < got; ++i) output.samples.push_back(block[2 * i]);
    }
    output.time = std::clock() - begin;
    return output;
}

/// Change duration and pitch as the time-pitch unit does: stretch by both factors, then convert the rate.
Output render(const Stretcher& stretcher, const Setting& setting, const Samples& in)
{
    const double ratio = setting.ratio * setting.pitch;
    Output output = stretcher.options == soundTouch ? stretchWithSoundTouch(in, ratio)
                                                    : stretchWithRubberBand(in, ratio, stretcher.options);
    if (setting.pitch == 1) return output;
    Samples converted(output.samples.size());
    SRC_DATA data = {};
    data.data_in = output.samples.data();
    data.input_frames = static_cast<long>(output.samples.size());
    data.data_out = converted.data();
    data.output_frames = data.input_frames;
    data.src_ratio = 1 / setting.pitch;
    const std::clock_t begin = std::clock();
    src_simple(&data, SRC_SINC_FASTEST, 1);
    output.time += 2 * (std::clock() - begin); // two channels
    converted.resize(static_cast<std::size_t>(data.output_frames_gen));
    output.samples = converted;
    return output;
}

// ---- quality ----

double decibels(double power) { return 10 * std::log10(std::max(power, 1e-12)); }

struct Steadiness {
    double residue;    ///< energy beside the partials, in decibels of the energy of the sound
    double modulation; ///< standard deviation of a partial's level, mean of all partials, in percent
};

/// Fit sines of the expected frequencies to spans of 0.2 s, each with any level and phase.
Steadiness steadinessOf(const Samples& out, const Frequencies& frequencies, const Setting& setting)
{
    constexpr std::size_t frames = framesOf(0.2), step = framesOf(0.1), margin = framesOf(0.5);
    constexpr int sweeps = 4; // neighbouring sines are not orthogonal, so the fit is repeated
    struct Partial {
        std::vector<double> cosine, sine;
        double c = 0, s = 0, sum = 0, squares = 0;
    };
    std::vector<double> window(frames), rest(frames);
    for (std::size_t i = 0; i < frames; ++i)
        window[i] = (1 - std::cos(2 * pi * static_cast<double>(i) / frames)) / frames;
    std::vector<Partial> partials;
    for (const double frequency : frequencies) {
        Partial& partial = partials.emplace_back();
        for (std::size_t i = 0; i < frames; ++i) {
            const double angle = 2 * pi * frequency * setting.pitch * static_cast<double>(i) / rate;
            partial.cosine.push_back(std::cos(angle));
            partial.sine.push_back(std::sin(angle));
        }
    }

    const auto energy = [&] {
        double sum = 0;
        for (std::size_t i = 0; i < frames; ++i) sum += window[i] * rest[i] * rest[i];
        return sum;
    };
    double all = 0, left = 0, spans = 0;
    const std::size_t end = framesOf(inputSeconds * setting.ratio) - margin;
    for (std::size_t from = margin; from + frames <= end; from += step, ++spans) {
        std::copy_n(out.begin() + static_cast<std::ptrdiff_t>(from), frames, rest.begin());
        all += energy();
        for (Partial& each : partials) each.c = each.s = 0;
        for (int sweep = 0; sweep < sweeps; ++sweep)
            for (Partial& each : partials) {
                double c = 0, s = 0;
                for (std::size_t i = 0; i < frames; ++i) {
                    c += 2 * window[i] * each.cosine[i] * rest[i];
                    s += 2 * window[i] * each.sine[i] * rest[i];
                }
                for (std::size_t i = 0; i < frames; ++i) rest[i] -= c * each.cosine[i] + s * each.sine[i];
                each.c += c;
                each.s += s;
            }
        left += energy();
        for (Partial& each : partials) {
            each.sum += std::hypot(each.c, each.s);
            each.squares += each.c * each.c + each.s * each.s;
        }
    }
    double modulation = 0;
    for (const Partial& each : partials) {
        const double mean = each.sum / spans;
        modulation += std::sqrt(std::max(each.squares / spans / (mean * mean) - 1, 0.0));
    }
    return {decibels(left / all), 100 * modulation / static_cast<double>(partials.size())};
}

double energyOf(const Samples& samples, std::size_t from, std::size_t frames)
{
    double energy = 0;
    for (std::size_t i = from; i < from + frames; ++i) energy += double{samples[i]} * double{samples[i]};
    return energy;
}

/// Returns  the highest energy of spans of `frames` frames that begin in [from, end).
double loudest(const Samples& samples, std::size_t from, std::size_t end, std::size_t frames)
{
    double most = 0;
    for (std::size_t at = from; at < end; at += framesOf(0.00025))
        most = std::max(most, energyOf(samples, at, frames));
    return most;
}

struct Attack {
    double preEcho; ///< energy until 2 ms before the attack, in decibels of the energy of the hit
    double rise;    ///< time from -20 to -3 dB of the peak, in milliseconds
    double loss;    ///< level of the input's loudest 5 ms above that of the output's, in decibels
};

/// Returns  the mean over the drum hits. The attack is where the energy of 1 ms first reaches half its peak.
Attack attackOf(const Samples& out, const Samples& in, const Setting& setting)
{
    constexpr std::size_t span = framesOf(0.001), step = framesOf(0.00025), loud = framesOf(0.005);
    Attack sum = {};
    double early = 0, all = 0, hits = 0;
    for (double time = 2 * attackDistance; time + attackDistance < inputSeconds;
         time += attackDistance, ++hits) {
        const std::size_t expected = framesOf(time * setting.ratio);
        const std::size_t from = expected - framesOf(0.15), end = expected + framesOf(0.15);
        const double peak = loudest(out, from, end, span);
        std::size_t attack = from;
        while (energyOf(out, attack, span) < 0.5 * peak) attack += step;
        std::size_t begin = attack;
        while (begin > from && energyOf(out, begin, span) > 0.01 * peak) begin -= step;
        early += energyOf(out, attack - framesOf(0.12), framesOf(0.118));
        all += energyOf(out, from, end - from);
        sum.rise += 1000 * static_cast<double>(attack - begin) / rate;
        sum.loss +=
            decibels(loudest(in, framesOf(time), framesOf(time) + 1, loud) / loudest(out, from, end, loud));
    }
    return {decibels(early / all), sum.rise / hits, sum.loss / hits};
}

// ---- table ----

constexpr const char* text = R"(
## Time-stretching

`kvx_stretch_quality` measures this chapter: engines and windows of Rubber Band, and SoundTouch, in stereo. The sounds are
a close chord (132, 165 and 198 Hz with 6 harmonics each), a bass note (55 Hz), a note (440 Hz), all with noise at -60 dB,
and drum hits (noise that begins at full level and decays).

- processor: processor time of a second of output
- residue: energy that is left after sines of the expected frequencies are fitted to spans of 0.2 s
- modulation: standard deviation of the levels of these sines
- pre-echo: energy from 120 to 2 ms before the attack, relative to the hit
- rise time: from -20 dB to -3 dB of the peak, in spans of 1 ms
- level lost: level of the loudest 5 ms of the input relative to that of the output

Lower is better everywhere. Each row of the first table is the worst of five settings: rates 1.25, 0.8, 0.67 and 0.5, and
a pitch of +300 cents. The time-pitch unit uses the finer engine: with all windows at its default settings, and with one
window at a smaller overlap or render quality.
)";

// Lower is better in every column.
constexpr struct {
    const char *title, *unit;
} columns[] = {
    {"processor", "%"},      {"chord: residue", "dB"}, {"chord: modulation", "%"}, {"bass: residue", "dB"},
    {"note: residue", "dB"}, {"hit: pre-echo", "dB"},  {"hit: rise time", "ms"},   {"hit: level lost", "dB"},
};
constexpr std::size_t columnCount = std::size(columns);
using Row = std::array<double, columnCount>;

Row rowOf(const Stretcher* stretcher, const Setting& setting)
{
    static const Samples chordIn = toneOf(closeChord), bassIn = toneOf(bassNote), noteIn = toneOf(note),
                         hitsIn = drumHits();
    std::clock_t time = 0;
    const auto rendered = [&](const Samples& in) {
        const Output output = stretcher ? render(*stretcher, setting, in) : Output{in};
        time += output.time;
        return output.samples;
    };
    const Steadiness chord = steadinessOf(rendered(chordIn), closeChord, setting);
    const Steadiness bass = steadinessOf(rendered(bassIn), bassNote, setting);
    const Steadiness high = steadinessOf(rendered(noteIn), note, setting);
    const Attack hit = attackOf(rendered(hitsIn), hitsIn, setting);
    const double seconds = 4 * inputSeconds * setting.ratio;
    return {100.0 * static_cast<double>(time) / CLOCKS_PER_SEC / seconds,
            chord.residue,
            chord.modulation,
            bass.residue,
            high.residue,
            hit.preEcho,
            hit.rise,
            hit.loss};
}

void print(const char* name, const Row& row)
{
    std::printf("| %s |", name);
    for (std::size_t i = 0; i < columnCount; ++i) std::printf(" %.1f %s |", row[i], columns[i].unit);
    std::putchar('\n');
}

void printHeader(const char* first)
{
    std::printf("\n| %s |", first);
    for (const auto& column : columns) std::printf(" %s |", column.title);
    std::printf("\n|---|");
    for (std::size_t i = 0; i < columnCount; ++i) std::printf("---|");
    std::putchar('\n');
}

} // namespace

int main()
{
    std::printf("%s", text);
    printHeader("stretcher");
    print("the input itself", rowOf(nullptr, {"", 1, 1}));
    std::vector<std::array<Row, std::size(settings)>> rows; // of each stretcher, in each setting
    for (const Stretcher& stretcher : stretchers) {
        std::array<Row, std::size(settings)>& each = rows.emplace_back();
        Row worst;
        worst.fill(-1e9);
        for (std::size_t i = 0; i < std::size(settings); ++i) {
            each[i] = rowOf(&stretcher, settings[i]);
            for (std::size_t k = 0; k < columnCount; ++k) worst[k] = std::max(worst[k], each[i][k]);
        }
        print(stretcher.name, worst);
    }
    for (std::size_t i = 0; i < unitStretchers; ++i) {
        printHeader(stretchers[i].name);
        for (std::size_t k = 0; k < std::size(settings); ++k) print(settings[k].name, rows[i][k]);
    }
}
