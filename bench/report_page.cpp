// Prints docs/performance.md, with one table per subject.
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
    if (row.goal == 0) return "reported";
    switch (row.kind) {
    case Ratio::speed:
        return fmt::format("at least {:g} × as fast", row.goal);
    case Ratio::duration:
        return fmt::format("at most {:g} × its time", row.goal);
    case Ratio::time:
        return "below " + timeText(row.goal);
    case Ratio::bytes:
        return "at most " + bytesText(row.goal);
    case Ratio::period:
        return fmt::format("at most {:g} % of the period", 100 * row.goal);
    }
    return "";
}

std::string oursText(const Row& row, const Figures& figures)
{
    return row.kind == Ratio::bytes ? bytesText(figures.bytesOf(row.ours)) : timeText(figures.time(row.ours));
}

std::string peerText(const Row& row, const Figures& figures)
{
    if (!row.peer) return "";
    const double time = figures.time(row.peer);
    return fmt::format("{} {}", row.peerName, timeText(time * row.factor));
}

std::string boldRatio(const Row& row, const Outcome& outcome)
{
    if (outcome.ratio == 0) return "";
    if (row.kind == Ratio::period) return fmt::format("**{:.1f} %** of the period", 100 * outcome.ratio);
    return fmt::format("**{}**{}", ratioText(outcome.ratio),
                       row.kind == Ratio::speed      ? " × as fast"
                       : row.kind == Ratio::duration ? " × its time"
                                                     : " of the goal");
}

std::string missText(const Outcome& outcome) { return fmt::format("{:.1f} %", 100 * outcome.miss); }

std::string metText(const Outcome& outcome)
{
    if (!outcome.hasGoal) return "";
    return outcome.isMet ? "yes" : "no, by " + missText(outcome);
}

std::string tableOf(const Subject& subject, const Figures& figures)
{
    std::string text = "| what | ours | peer | ratio | goal | met |\n|---|---|---|---|---|---|\n";
    for (const Row& row : subject.rows) {
        const Outcome outcome = outcomeOf(row, figures);
        text += fmt::format("| {} | {} | {} | {} | {} | {} |\n", row.what, oursText(row, figures),
                            peerText(row, figures), boldRatio(row, outcome), goalText(row), metText(outcome));
    }
    return text;
}

std::string remarksOf(const Subject& subject, const Figures& figures, const Remarks& remarks)
{
    std::string text;
    const auto always = remarks.find(subject.title);
    if (always != remarks.end()) text += "\n" + always->second + "\n";
    // The misses of a row id together, because rows with the same id share one remark.
    std::map<std::string, std::string> misses;
    for (const Row& row : subject.rows) {
        const Outcome outcome = outcomeOf(row, figures);
        if (outcome.isMet || !*row.id) continue;
        std::string& texts = misses[row.id];
        texts += (texts.empty() ? "" : ", ") + missText(outcome);
    }
    for (const auto& [id, texts] : misses) {
        const auto found = remarks.find(id);
        text += fmt::format("\n*{}*, missed by {}: {}\n", id, texts,
                            found == remarks.end() ? "`bench/remarks.txt` has no remark on this goal yet."
                                                   : found->second);
    }
    return text;
}

/// Print the share of the queue's lock in the render time of a player. The share is computed, not measured:
/// the benchmark renders its players one after another, so no player waits for a lock.
std::string lockText(const Figures& figures)
{
    const double lock = figures.time("take front/the lock, taken and given");
    const double player = figures.time("scale/1000 players") / 1000;
    const double slicesPerSecond = 48000.0 / 512;
    return fmt::format(
        "\nA player locks its queue only at the end of a buffer. Locking and unlocking a mutex without "
        "contention "
        "takes {}, a player's slice {} (of 1,000 players). The lock's share, computed from these two times, "
        "is "
        "**{:.4f} %** with buffers of one second, and {:.1f} % with a buffer that ends in every slice.\n",
        timeText(lock), timeText(player), 100 * lock / (player * slicesPerSecond),
        100 * lock / (player + lock));
}

} // namespace

std::string pageOf(const Figures& figures, const Remarks& remarks)
{
    auto [goals, met] = resamplingGoals(figures);
    std::string body;
    for (const Subject& subject : subjects(figures)) {
        for (const Row& row : subject.rows) {
            const Outcome outcome = outcomeOf(row, figures);
            goals += outcome.hasGoal;
            met += outcome.hasGoal && outcome.isMet;
        }
        body += fmt::format("\n## {}\n\n{}\n\n{}{}", subject.title, subject.text, tableOf(subject, figures),
                            remarksOf(subject, figures, remarks));
        if (subject.title == std::string("Scale")) body += lockText(figures);
        if (subject.title == std::string("Whole jobs")) body += resamplingChapter(figures);
    }
    return fmt::format(
        "# Performance\n\n"
        "`scripts/bench` writes this page; the remarks on missed goals come from `bench/remarks.txt`. One "
        "run\n"
        "measured all benchmarks of this page, ours and the peers', with the same input.\n\n"
        "| | |\n|---|---|\n| date | {} |\n| machine | {} |\n| compiler | {} |\n"
        "| figures | medians of {} repetitions of each benchmark, in random order; processor time |\n"
        "| goals | **{} of {}** met |\n\n"
        "Compare ratios, not times: times change with the machine and its other work.\n\n"
        "![Speed relative to the peers](performance.svg)\n\n"
        "The buffered player, compared with the reference player of the tests: {}\n{}",
        figures.date, figures.machine, figures.compiler, figures.repetitions, met, goals, figures.exactness,
        body);
}

} // namespace report
