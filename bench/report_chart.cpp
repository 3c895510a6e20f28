// Prints docs/performance.svg. Bars are our speed relative to other libraries (peers), lines are goals.
#include "bench/report.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace report {
namespace {

constexpr double width = 860, left = 380, right = 70, top = 66, barHeight = 18, lineHeight = 26;
constexpr double least = 0.1, most = 30; // smallest and largest speed ratio on the logarithmic axis

double xOf(double ratio)
{
    const double share = std::log(std::clamp(ratio, least, most) / least) / std::log(most / least);
    return left + share * (width - left - right);
}

/// Our speed divided by the speed of the peer, from the ratio of a row. A ratio of durations is inverted.
double speed(const Row& row, double ratio) { return row.kind == Ratio::duration ? 1 / ratio : ratio; }

std::string escaped(const std::string& text)
{
    std::string result;
    for (const char each : text)
        if (each == '&')
            result += "&amp;";
        else if (each == '<')
            result += "&lt;";
        else
            result += each;
    return result;
}

std::string barOf(const Row& row, const Figures& figures, double y)
{
    const Outcome outcome = outcomeOf(row, figures);
    const double ours = speed(row, outcome.ratio), goal = speed(row, row.goal);
    const double from = xOf(std::min(1.0, ours)), to = xOf(std::max(1.0, ours));
    const double middle = y + barHeight / 2, label = std::max(to, xOf(goal)) + 8;
    std::string text = fmt::format(
        "<text x=\"{:.1f}\" y=\"{:.1f}\" text-anchor=\"end\" dominant-baseline=\"central\">{}</text>\n",
        left - 10, middle, escaped(row.chart));
    text += fmt::format("<rect x=\"{:.1f}\" y=\"{:.1f}\" width=\"{:.1f}\" height=\"{:g}\" fill=\"{}\"/>\n",
                        from, y, std::max(to - from, 1.0), barHeight, outcome.isMet ? "#2f6f9f" : "#c0603a");
    text += fmt::format("<line x1=\"{0:.1f}\" x2=\"{0:.1f}\" y1=\"{1:.1f}\" y2=\"{2:.1f}\" stroke=\"#111\" "
                        "stroke-width=\"2\"/>\n",
                        xOf(goal), y - 3, y + barHeight + 3);
    text += fmt::format("<text x=\"{:.1f}\" y=\"{:.1f}\" dominant-baseline=\"central\">{:.2f}</text>\n",
                        label, middle, ours);
    return text;
}

} // namespace

std::string chartOf(const Figures& figures)
{
    std::string bars;
    double y = top;
    for (const Subject& subject : subjects(figures))
        for (const Row& row : subject.rows)
            if (row.chart) {
                bars += barOf(row, figures, y);
                y += lineHeight;
            }

    std::string axis;
    for (const double each : {0.1, 0.2, 0.5, 1.0, 2.0, 5.0, 10.0, 20.0}) {
        axis +=
            fmt::format("<line x1=\"{0:.1f}\" x2=\"{0:.1f}\" y1=\"{1:g}\" y2=\"{2:.1f}\" stroke=\"{3}\"/>\n",
                        xOf(each), top - 8, y, each == 1 ? "#555" : "#ddd");
        axis += fmt::format("<text x=\"{:.1f}\" y=\"{:.1f}\" text-anchor=\"middle\">{:g}</text>\n", xOf(each),
                            y + 16, each);
    }
    return fmt::format(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"{0:g}\" height=\"{1:.0f}\" viewBox=\"0 0 {0:g} "
        "{1:.0f}\" "
        "font-family=\"sans-serif\" font-size=\"13\" fill=\"#222\">\n"
        "<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n"
        "<text x=\"20\" y=\"26\" font-size=\"16\" font-weight=\"bold\">Speed relative to the peers</text>\n"
        "<text x=\"20\" y=\"46\">Bars: our speed divided by the peer's, on a logarithmic axis. "
        "Black lines: goals. Orange: missed.</text>\n"
        "{2}{3}</svg>\n",
        width, y + 34, axis, bars);
}

} // namespace report
