// docs/performance.md: a table a subject.
#include "bench/report.h"

#include <fmt/format.h>

namespace report {
namespace {

std::string timeText(double nanoseconds)
{
    if (nanoseconds < 1e3) return fmt::format("{:.3g} ns", nanoseconds);
    if (nanoseconds < 1e6) return fmt::format("{:.3g} µs", nanoseconds / 1e3);
    return fmt::format("{:.4g} ms", nanoseconds / 1e6);
}

std::string bytesText(double bytes)
{
    return bytes < 1 << 20 ? fmt::format("{:.0f} KiB", bytes / 1024)
                           : fmt::format("{:.2f} MiB", bytes / (1 << 20));
}

std::string ratioText(double ratio)
{
    return fmt::format("{:.{}f}", ratio, ratio < 0.1 ? 3 : ratio < 10 ? 2 : 1);
}

std::string goalText(const Row& row)
{
    switch (row.goal) {
    case Goal::fasterBy:
        return fmt::format("at least {:g} × as fast", row.limit);
    case Goal::withinOf:
        return fmt::format("at most {:g} × its time", row.limit);
    case Goal::below:
        return "below " + timeText(row.limit);
    case Goal::bytesUpTo:
        return "at most " + bytesText(row.limit);
    default:
        return "reported";
    }
}

std::string oursText(const Row& row, const Figures& figures)
{
    return row.goal == Goal::bytes || row.goal == Goal::bytesUpTo ? bytesText(figures.bytesOf(row.ours))
                                                                  : timeText(figures.time(row.ours));
}

std::string otherText(const Row& row, const Figures& figures)
{
    if (!row.other) return "";
    const double time = figures.time(row.other);
    return fmt::format("{} {}", row.otherName, timeText(time * row.share));
}

std::string boldRatio(const Row& row, const Outcome& outcome)
{
    if (outcome.ratio == 0) return "";
    return fmt::format("**{}**{}", ratioText(outcome.ratio),
                       row.goal == Goal::fasterBy || row.goal == Goal::none    ? " × as fast"
                       : row.goal == Goal::withinOf || row.goal == Goal::share ? " × its time"
                                                                               : " of the goal");
}

/// How far a missed goal is away, in hundredths of it.
std::string missText(const Row& row, const Outcome& outcome)
{
    const double share = row.goal == Goal::fasterBy   ? 1 - outcome.ratio / row.limit
                         : row.goal == Goal::withinOf ? outcome.ratio / row.limit - 1
                                                      : outcome.ratio - 1;
    return fmt::format("{:.1f} %", 100 * share);
}

std::string metText(const Row& row, const Outcome& outcome)
{
    if (!outcome.hasGoal) return "";
    return outcome.isMet ? "yes" : "no, by " + missText(row, outcome);
}

std::string tableOf(const Subject& subject, const Figures& figures)
{
    std::string text = "| what | ours | beside it | ratio | goal | met |\n|---|---|---|---|---|---|\n";
    for (const Row& row : subject.rows) {
        const Outcome outcome = outcomeOf(row, figures);
        text += fmt::format("| {} | {} | {} | {} | {} | {} |\n", row.what, oursText(row, figures),
                            otherText(row, figures), boldRatio(row, outcome), goalText(row),
                            metText(row, outcome));
    }
    return text;
}

std::string remarksOf(const Subject& subject, const Figures& figures, const Remarks& remarks)
{
    std::string text;
    const auto always = remarks.find(subject.title);
    if (always != remarks.end()) text += "\n" + always->second + "\n";
    std::map<std::string, std::string> misses; // by id: rows of one id share what is said of them
    for (const Row& row : subject.rows) {
        const Outcome outcome = outcomeOf(row, figures);
        if (outcome.isMet || !*row.id) continue;
        std::string& all = misses[row.id];
        all += (all.empty() ? "" : ", ") + missText(row, outcome);
    }
    for (const auto& [id, all] : misses) {
        const auto found = remarks.find(id);
        text +=
            fmt::format("\n*{}*, missed by {}: {}\n", id, all,
                        found == remarks.end() ? "nothing has been said about it in `bench/remarks.txt` yet."
                                               : found->second);
    }
    return text;
}

/// How much of a cycle the queue's lock would take, where a player takes it: reckoned, since players that are
/// rendered one after another take no lock from each other.
std::string lockText(const Figures& figures)
{
    const double lock = figures.time("take front/the lock, taken and given");
    const double player = figures.time("scale/1000 players") / 1000;
    const double perSecond = 48000.0 / 512; // slices
    return fmt::format(
        "\nA player takes the queue's lock where a buffer ends, and nowhere else. A lock of the bench's "
        "own, which nobody else wants, costs {} to take and give, and a player's slice {} (of 1,000). The "
        "share "
        "reckoned from these two, not measured in the run of the players: **{:.4f} %** with buffers of a "
        "second, "
        "{:.1f} % with a buffer that ends in every slice.\n",
        timeText(lock), timeText(player), 100 * lock / (player * perSecond), 100 * lock / (player + lock));
}

} // namespace

std::string pageOf(const Figures& figures, const Remarks& remarks)
{
    int goals = 0, met = 0;
    std::string body;
    for (const Subject& subject : subjects()) {
        for (const Row& row : subject.rows) {
            const Outcome outcome = outcomeOf(row, figures);
            goals += outcome.hasGoal;
            met += outcome.hasGoal && outcome.isMet;
        }
        body += fmt::format("\n## {}\n\n{}\n\n{}{}", subject.title, subject.text, tableOf(subject, figures),
                            remarksOf(subject, figures, remarks));
        if (subject.title == std::string("Scale")) body += lockText(figures);
    }
    return fmt::format(
        "# Performance\n\n"
        "Made by `scripts/bench`; what it says of missed goals comes from `bench/remarks.txt`. Everything "
        "here was\n"
        "measured in one run: ours and the others in the same process, on the same input.\n\n"
        "| | |\n|---|---|\n| date | {} |\n| machine | {} |\n| compiler | {} |\n"
        "| figures | medians of {} repetitions of each benchmark, in random order; time of the processor |\n"
        "| goals | **{} of {}** met |\n\n"
        "Ratios are what counts: times change with the machine and its other work, and then on both "
        "sides.\n\n"
        "![How many times as fast as others](performance.svg)\n\n"
        "The buffered player against a player written a second time: {}\n{}",
        figures.date, figures.machine, figures.compiler, figures.repetitions, met, goals, figures.identity,
        body);
}

} // namespace report
