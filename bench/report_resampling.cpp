// Prints the quality of the rate conversion: a chapter of docs/performance.md, and docs/resampling.svg.
#include "bench/report.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace report {
namespace {

// Limits in decibels.
constexpr double mostResidue = -110, mostDeviation = 0.1, mostAlias = -100;

/// A tone, in Hz, that is converted between two rates.
struct Tone {
    const char *from, *to, *hertz;
    bool isAlias =
        false; ///< whether the tone is above half of the output rate, so that the output must be silent
};
constexpr Tone tones[] = {
    {"44100", "48000", "997"},   {"44100", "48000", "19845"},       {"48000", "44100", "997"},
    {"48000", "44100", "19845"}, {"48000", "44100", "23000", true}, {"96000", "44100", "997"},
    {"96000", "44100", "19845"}, {"22050", "48000", "997"},         {"22050", "48000", "9922.5"},
};

struct Quality {
    double level, residue;
};

std::string counterOf(const Tone& tone, const char* command, const char* what)
{
    return fmt::format("resampling/{} to {}/{}:{} {}", tone.from, tone.to, command, what, tone.hertz);
}

Quality qualityOf(const Figures& figures, const Tone& tone)
{
    return {figures.counter(counterOf(tone, "kvx render", "level")),
            figures.counter(counterOf(tone, "kvx render", "residue"))};
}

bool isMet(const Tone& tone, const Quality& quality)
{
    return tone.isAlias ? quality.level < mostAlias && quality.residue < mostAlias
                        : quality.residue < mostResidue && std::fabs(quality.level) <= mostDeviation;
}

std::string goalOf(const Tone& tone)
{
    return tone.isAlias ? fmt::format("alias and residue below {} dB", mostAlias)
                        : fmt::format("level within ±{} dB, residue below {} dB", mostDeviation, mostResidue);
}

std::string decibels(double value)
{
    // The sum turns -0 into 0.
    const double thousandths = std::round(1000 * value) / 1000 + 0.0;
    return fmt::format("{:.{}f} dB", thousandths, value > -1 ? 3 : 0);
}

std::string shown(const Figures& figures, const Tone& tone, const char* command, const char* what)
{
    const std::string name = counterOf(tone, command, what);
    return figures.counters.count(name) ? decibels(figures.counter(name)) : "not measured";
}

// ---- the picture ----

constexpr double width = 860, height = 470, left = 70, right = 240, top = 60, bottom = 50;
constexpr double mostShare = 0.6, least = -170, most = 10; // tone / lower rate; decibels

/// A conversion in the picture: its rates and the colour of its curves.
struct Curve {
    const char *from, *to, *colour;
};
constexpr Curve curves[] = {{"44100", "48000", "#2f6f9f"},
                            {"48000", "44100", "#c0603a"},
                            {"96000", "44100", "#3c8a4e"},
                            {"22050", "48000", "#7a56a3"}};

double xOf(double share) { return left + share / mostShare * (width - left - right); }
double yOf(double decibels)
{
    return top + (most - std::clamp(decibels, least, most)) / (most - least) * (height - top - bottom);
}

/// The counters `what` of a conversion, by the frequency of the tone.
std::map<double, double> pointsOf(const Figures& figures, const Curve& curve, const std::string& what)
{
    std::map<double, double> points;
    const std::string prefix = fmt::format("resampling/{} to {}/kvx render:{} ", curve.from, curve.to, what);
    for (auto each = figures.counters.lower_bound(prefix);
         each != figures.counters.end() && each->first.compare(0, prefix.size(), prefix) == 0; ++each)
        points[std::stod(each->first.substr(prefix.size()))] = each->second;
    return points;
}

std::string lineOf(const Figures& figures, const Curve& curve, const char* what, const char* dashes)
{
    const double lower = std::min(std::stod(curve.from), std::stod(curve.to));
    std::string points;
    for (const auto& [hertz, value] : pointsOf(figures, curve, what))
        points += fmt::format("{:.1f},{:.1f} ", xOf(hertz / lower), yOf(value));
    return fmt::format("<polyline points=\"{}\" fill=\"none\" stroke=\"{}\" stroke-width=\"2\" "
                       "stroke-dasharray=\"{}\"/>\n",
                       points, curve.colour, dashes);
}

std::string textAt(double x, double y, const char* anchor, const std::string& text)
{
    return fmt::format(
        "<text x=\"{:.1f}\" y=\"{:.1f}\" text-anchor=\"{}\" dominant-baseline=\"central\">{}</text>\n", x, y,
        anchor, text);
}

std::string gridLine(double x1, double y1, double x2, double y2, const char* colour)
{
    return fmt::format("<line x1=\"{:.1f}\" y1=\"{:.1f}\" x2=\"{:.1f}\" y2=\"{:.1f}\" stroke=\"{}\"/>\n", x1,
                       y1, x2, y2, colour);
}

} // namespace

Goals resamplingGoals(const Figures& figures)
{
    const auto met = std::count_if(std::begin(tones), std::end(tones),
                                   [&](const Tone& tone) { return isMet(tone, qualityOf(figures, tone)); });
    return {static_cast<int>(std::size(tones)), static_cast<int>(met)};
}

std::string resamplingChapter(const Figures& figures)
{
    std::string text = "\n## Resampling\n\n"
                       "A tone in a file of 32-bit floats, converted by `kvx render` and by "
                       "`sox … rate`. The level "
                       "and the residue, which is the sound without the tone, are relative to the tone "
                       "before the conversion. A "
                       "tone above half of the output rate must vanish.\n\n"
                       "| conversion | tone | level | residue | sox: level | sox: residue | goal | met |\n"
                       "|---|---|---|---|---|---|---|---|\n";
    for (const Tone& tone : tones) {
        const auto cell = [&](const char* command, const char* what) {
            return shown(figures, tone, command, what);
        };
        text += fmt::format("| {} to {} Hz | {} Hz | {} | {} | {} | {} | {} | {} |\n", tone.from, tone.to,
                            tone.hertz, cell("kvx render", "level"), cell("kvx render", "residue"),
                            cell("sox", "level"), cell("sox", "residue"), goalOf(tone),
                            isMet(tone, qualityOf(figures, tone)) ? "yes" : "no");
    }
    return text + "\n![Level and residue of converted tones](resampling.svg)\n";
}

std::string resamplingSummary(const Figures& figures)
{
    std::string text;
    for (const Tone& tone : tones) {
        const Quality quality = qualityOf(figures, tone);
        text += fmt::format("{:<8} {:<24} {:<42} {}, residue {}   goal {}\n",
                            isMet(tone, quality) ? "met" : "MISSED", "Resampling",
                            fmt::format("{} to {}, {} Hz", tone.from, tone.to, tone.hertz),
                            decibels(quality.level), decibels(quality.residue), goalOf(tone));
    }
    return text;
}

std::string resamplingChart(const Figures& figures)
{
    std::string body;
    for (int value = -160; value <= 0; value += 20) {
        body += gridLine(left, yOf(value), width - right, yOf(value), "#ddd");
        body += textAt(left - 8, yOf(value), "end", fmt::format("{} dB", value));
    }
    for (int percent = 0; percent <= 60; percent += 10) {
        body += gridLine(xOf(percent / 100.0), top, xOf(percent / 100.0), height - bottom,
                         percent == 50 ? "#555" : "#ddd");
        body += textAt(xOf(percent / 100.0), height - bottom + 16, "middle",
                       fmt::format("{:g}", percent / 100.0));
    }
    body += gridLine(left, yOf(mostResidue), width - right, yOf(mostResidue), "#111");
    double y = top + 10;
    for (const Curve& curve : curves) {
        body += lineOf(figures, curve, "level", "none") + lineOf(figures, curve, "residue", "2 4");
        body += gridLine(width - right + 20, y, width - right + 50, y, curve.colour);
        body += textAt(width - right + 58, y, "start", fmt::format("{} to {} Hz", curve.from, curve.to));
        y += 22;
    }
    return fmt::format(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"{0:g}\" height=\"{1:g}\" viewBox=\"0 0 {0:g} "
        "{1:g}\" "
        "font-family=\"sans-serif\" font-size=\"13\" fill=\"#222\">\n"
        "<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n"
        "<text x=\"20\" y=\"24\" font-size=\"16\" font-weight=\"bold\">Tones after rate conversion</text>\n"
        "<text x=\"20\" y=\"44\">Solid: level of the tone. Dotted: residue; its goal is the black line. "
        "Axis: frequency of the tone / lower rate.</text>\n{2}</svg>\n",
        width, height, body);
}

} // namespace report
