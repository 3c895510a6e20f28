#include "host/kvx/picture/sound_picture.h"

#include "host/kvx/text/terminal_text.h"
#include "host/kvx/text/time_text.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace kvx {
namespace {

constexpr Colour pageColour = {255, 255, 255};
constexpr Colour laneColour = {245, 247, 250};
constexpr Colour gridColour = {218, 223, 230};
constexpr Colour peakColour = {120, 170, 218};
constexpr Colour rmsColour = {28, 94, 158};
constexpr Colour titleColour = {24, 28, 34};
constexpr Colour labelColour = {84, 92, 104};

constexpr int titleSize = 20, labelSize = 14; // heights of a line of text
constexpr int margin = 12;
constexpr int left = 54, right = 66, top = 66, bottom = 34; // space around the plots, for title and labels
constexpr int plotGap = 26, laneGap = 6, leastLane = 16, leastLabelledLane = 34;
constexpr int tickLength = 5, labelDistance = 8;
constexpr int barWidth = 12;

// Anchors of a scale of colours whose lightness rises evenly, from black through purple and orange to yellow.
constexpr Colour scale[] = {{0, 0, 4},     {31, 12, 72},   {85, 15, 109},  {136, 34, 106}, {186, 54, 85},
                            {227, 89, 51}, {249, 140, 10}, {249, 201, 50}, {252, 255, 164}};

double roundStep(double least)
{
    const double power = std::pow(10.0, std::floor(std::log10(least)));
    for (const double factor : {1.0, 2.0, 5.0})
        if (factor * power >= least * (1 - 1e-9)) return factor * power;
    return 10 * power;
}

/// The row of a lane that shows a sample: the top row shows +1, the bottom row -1.
int rowOf(double sample, const Area& lane)
{
    const double clipped = std::isfinite(sample) ? std::clamp(sample, -1.0, 1.0) : 0.0;
    return lane.y + static_cast<int>(std::lround((1 - clipped) / 2 * (lane.height - 1)));
}

void drawColumn(Picture& picture, int x, int from, int to, Colour colour)
{
    picture.fill({x, from, 1, to - from + 1}, colour);
}

void drawWave(Picture& picture, const Area& lane, const std::vector<WaveColumn>& wave)
{
    for (std::size_t i = 0; i < wave.size(); ++i) {
        const int x = lane.x + static_cast<int>(i);
        // A column reaches the column before it, so that the wave is a connected line.
        const WaveColumn& former = wave[i == 0 ? 0 : i - 1];
        drawColumn(picture, x, rowOf(std::max(wave[i].high, former.low), lane),
                   rowOf(std::min(wave[i].low, former.high), lane), peakColour);
        const double rms = std::min(wave[i].rms, 1.0f);
        // The RMS of a shifted wave may exceed its peak on one side.
        drawColumn(picture, x, std::max(rowOf(rms, lane), rowOf(wave[i].high, lane)),
                   std::min(rowOf(-rms, lane), rowOf(wave[i].low, lane)), rmsColour);
    }
}

void drawLevelLabels(Picture& picture, const Area& lane)
{
    struct Label {
        double sample;
        const char* text;
        int leastHeight; // smallest height of a lane with this label
    };
    constexpr Label labels[] = {{1, "0", leastLabelledLane},
                                {0.5, "−6", 80},
                                {0, "−∞", leastLabelledLane},
                                {-0.5, "−6", 80},
                                {-1, "0", 60}};
    constexpr int half = labelSize / 2 - 2;
    for (const Label& label : labels) {
        if (lane.height < label.leastHeight) continue;
        const int y = std::clamp(rowOf(label.sample, lane), lane.y + half, lane.bottom() - 1 - half);
        drawText(picture, lane.x - labelDistance, y, label.text, labelSize, labelColour, TextAt::right);
    }
}

std::string nameOfChannel(std::size_t channel, std::size_t channels)
{
    if (channels == 1) return "";
    if (channels == 2) return channel == 0 ? "left" : "right";
    return std::to_string(channel); // counted as --channel-map counts
}

int xOf(double seconds, const Ticks& ticks, const Area& plot)
{
    return plot.x + static_cast<int>(std::lround(seconds / ticks.end * plot.width));
}

template <class Visit>
void forEachTick(const Ticks& ticks, Visit visit)
{
    for (int i = 0; i * ticks.step <= ticks.end * (1 + 1e-9); ++i) visit(i * ticks.step);
}

void drawLanes(Picture& picture, const PictureLayout& layout, const SoundAnalysis& analysis,
               const Ticks& times)
{
    for (std::size_t i = 0; i < layout.lanes.size(); ++i) {
        const Area& lane = layout.lanes[i];
        picture.fill(lane, laneColour);
        forEachTick(times, [&](double time) {
            const int x = xOf(time, times, lane);
            if (x < lane.right()) picture.fill({x, lane.y, 1, lane.height}, gridColour);
        });
        for (const double sample : {0.5, 0.0, -0.5})
            picture.fill({lane.x, rowOf(sample, lane), lane.width, 1}, gridColour);
        drawWave(picture, lane, analysis.waves[i]);
        drawLevelLabels(picture, lane);
        drawText(picture, lane.right() + labelDistance, lane.y + lane.height / 2,
                 nameOfChannel(i, static_cast<std::size_t>(analysis.format.fileChannels)), labelSize,
                 labelColour);
    }
    const Area& first = layout.lanes.front();
    if (first.height < leastLabelledLane) return;
    drawText(picture, first.x - labelDistance, first.y - labelSize / 2 - 3, "dB", labelSize, labelColour,
             TextAt::right);
}

void drawSpectrogram(Picture& picture, const Area& plot, const SoundAnalysis& analysis)
{
    for (int x = 0; x < plot.width; ++x)
        for (int y = 0; y < plot.height; ++y)
            picture.paint(
                plot.x + x, plot.y + y,
                colourOfLevel(analysis.spectra[static_cast<std::size_t>(x)][static_cast<std::size_t>(y)]));
    drawText(picture, plot.x - labelDistance, plot.y - labelSize / 2 - 3, "kHz", labelSize, labelColour,
             TextAt::right);
    const Ticks ticks = frequencyTicks(analysis.format.sampleRate / 2.0, plot.height, 2 * labelSize);
    forEachTick(ticks, [&](double frequency) {
        const int y =
            plot.bottom() - 1 - static_cast<int>(std::lround(frequency / ticks.end * (plot.height - 1)));
        if (y < plot.y + labelSize / 2) return; // the label would reach the unit above
        picture.fill({plot.x - tickLength, y, tickLength, 1}, labelColour);
        drawText(picture, plot.x - labelDistance, y, fmt::format("{:g}", frequency / 1000), labelSize,
                 labelColour, TextAt::right);
    });
}

void drawColourBar(Picture& picture, const Area& plot)
{
    const Area bar = {plot.right() + labelDistance, plot.y, barWidth, plot.height};
    for (int y = 0; y < bar.height; ++y)
        picture.fill({bar.x, bar.y + y, bar.width, 1}, colourOfLevel(silentDb * y / (bar.height - 1)));
    drawText(picture, bar.x, bar.y - labelSize / 2 - 3, "dB", labelSize, labelColour);
    const int step = bar.height >= 6 * 2 * labelSize ? 20 : bar.height >= 3 * 2 * labelSize ? 40 : 60;
    for (int db = 0; db >= static_cast<int>(silentDb); db -= step) {
        const int y = bar.y + static_cast<int>(std::lround(db / silentDb * (bar.height - 1)));
        picture.fill({bar.right(), y, 3, 1}, labelColour);
        drawText(picture, bar.right() + 5, std::clamp(y, bar.y + 4, bar.bottom() - 5),
                 db == 0 ? "0" : fmt::format("−{}", -db), labelSize, labelColour);
    }
}

void drawTimeAxis(Picture& picture, const Area& plot, const Ticks& times)
{
    forEachTick(times, [&](double time) {
        const int x = std::min(xOf(time, times, plot), plot.right() - 1);
        picture.fill({x, plot.bottom(), 1, tickLength}, labelColour);
        drawText(picture, x, plot.bottom() + tickLength + labelSize / 2 + 3, formatTickTime(time, times),
                 labelSize, labelColour, TextAt::centre);
    });
}

void drawTitle(Picture& picture, const SoundAnalysis& analysis, const std::string& title)
{
    const SoundFormat& format = analysis.format;
    std::string facts = fmt::format("{} Hz, {}, {}", format.sampleRate, formatChannels(format.fileChannels),
                                    formatTime(format.duration()));
    if (format.channels < format.fileChannels) facts += fmt::format(" (the first {} shown)", format.channels);
    const int space = picture.width - 2 * margin;
    drawText(picture, margin, 18, cutToPixels(plainText(title), titleSize, space), titleSize, titleColour);
    drawText(picture, margin, 38, cutToPixels(facts, labelSize, space), labelSize, labelColour);
}

} // namespace

PictureLayout layOutPicture(const PictureSize& size, int fileChannels)
{
    const int height = size.height - top - plotGap - bottom, waves = height * 2 / 5;
    const int count = std::clamp(fileChannels, 1, (waves + laneGap) / (leastLane + laneGap));
    const int laneHeight = (waves + laneGap) / count - laneGap;
    const int width = size.width - left - right;
    PictureLayout layout;
    for (int i = 0; i < count; ++i)
        layout.lanes.push_back({left, top + i * (laneHeight + laneGap), width, laneHeight});
    const int y = layout.lanes.back().bottom() + plotGap;
    layout.spectrogram = {left, y, width, size.height - bottom - y};
    return layout;
}

Colour colourOfLevel(double db)
{
    constexpr double intervals = std::size(scale) - 1;
    const double at = std::clamp((db - silentDb) / -silentDb, 0.0, 1.0) * intervals;
    const double below = std::min(std::floor(at), intervals - 1);
    const Colour &low = scale[static_cast<std::size_t>(below)],
                 &high = scale[static_cast<std::size_t>(below) + 1];
    const auto between = [share = at - below](std::uint8_t from, std::uint8_t to) {
        return static_cast<std::uint8_t>(std::lround(from + share * (to - from)));
    };
    return {between(low.red, high.red), between(low.green, high.green), between(low.blue, high.blue)};
}

Picture drawSound(const SoundAnalysis& analysis, const std::string& title, const PictureSize& size)
{
    Picture picture(size.width, size.height, pageColour);
    const PictureLayout layout = layOutPicture(size, analysis.format.fileChannels);
    const Area& spectrogram = layout.spectrogram;
    const double duration = analysis.format.duration();
    const int widest =
        textWidth(formatTickTime(duration, timeTicks(duration, spectrogram.width, 1)), labelSize);
    const Ticks times = timeTicks(duration, spectrogram.width, std::max(widest + 2 * labelDistance, 60));
    drawTitle(picture, analysis, title);
    drawLanes(picture, layout, analysis, times);
    drawSpectrogram(picture, spectrogram, analysis);
    drawColourBar(picture, spectrogram);
    drawTimeAxis(picture, spectrogram, times);
    return picture;
}

Ticks timeTicks(double end, int pixels, int leastPixels)
{
    const double least = end * leastPixels / pixels;
    constexpr double minute = 60, hour = 3600;
    for (const double step :
         {10.0, 15.0, 30.0, minute, 2 * minute, 5 * minute, 10 * minute, 15 * minute, 30 * minute, hour})
        if (least > 5 && step >= least) return {step, end};
    return {least > 5 ? hour * roundStep(least / hour) : roundStep(least), end};
}

Ticks frequencyTicks(double end, int pixels, int leastPixels)
{
    return {roundStep(end * leastPixels / pixels), end};
}

std::string formatTickTime(double seconds, const Ticks& ticks)
{
    if (ticks.end < 60) {
        const int decimals = std::max(0, static_cast<int>(std::ceil(-std::log10(ticks.step) - 1e-9)));
        return fmt::format("{:.{}f} s", seconds, decimals);
    }
    const auto whole = static_cast<long long>(std::llround(seconds));
    return whole < 3600 ? fmt::format("{}:{:02}", whole / 60, whole % 60)
                        : fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
}

} // namespace kvx
