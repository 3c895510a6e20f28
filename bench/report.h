// What scripts/bench makes of the figures: a page and a chart.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace report {

/// Medians by benchmark; times in nanoseconds, and the counters of each.
struct Figures {
    std::map<std::string, double> times;
    std::map<std::string, double> bytes;
    std::string date, compiler, machine, identity;
    int repetitions = 0;

    /// Throws std::runtime_error for a name that was not measured.
    double time(const std::string& name) const;
    double bytesOf(const std::string& name) const;
};

enum class Goal {
    fasterBy,  ///< at least so many times as fast as the other
    withinOf,  ///< at most so many times as long as the other takes
    below,     ///< nanoseconds, by itself
    bytesUpTo, ///< bytes, by themselves
    none,      ///< reported: how many times as fast as the other
    share,     ///< reported: how many times as long as the other takes
    time,      ///< reported by itself
    bytes,     ///< likewise
};

/// One line of a table.
struct Row {
    const char* what;
    const char* ours;  ///< benchmark
    const char* other; ///< benchmark, or null
    const char* otherName;
    Goal goal;
    double limit = 0;
    double share = 1;            ///< of the other that counts: its time is multiplied by it
    const char* id = "";         ///< by which bench/remarks.txt knows it
    const char* chart = nullptr; ///< its name in the chart, if it is shown there
};

struct Subject {
    const char* title;
    const char* text;
    std::vector<Row> rows;
};

const std::vector<Subject>& subjects();

/// How a row came out: the ratio in its goal's sense, and whether the goal is met.
struct Outcome {
    double ratio = 0;
    bool isMet = true;
    bool hasGoal = false;
};
Outcome outcomeOf(const Row& row, const Figures& figures);

/// Remarks by row.
using Remarks = std::map<std::string, std::string>;

std::string pageOf(const Figures& figures, const Remarks& remarks);
std::string chartOf(const Figures& figures);

} // namespace report
