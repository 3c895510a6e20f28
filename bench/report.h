// The benchmark report: tables of comparisons, and their output as a page and a chart.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace report {

/// The results of one run of the benchmarks.
struct Figures {
    std::map<std::string, double> times; ///< median time in nanoseconds by benchmark name
    std::map<std::string, double> bytes; ///< median of the counter "bytes" by benchmark name
    std::string date, compiler, machine;
    std::string exactness; ///< output of kvx_bit_exactness
    int repetitions = 0;

    /// These two functions throw std::runtime_error if the benchmark `name` was not measured.
    double time(const std::string& name) const;
    double bytesOf(const std::string& name) const;
};

/// The ratio that a row shows and its goal limits.
enum class Ratio {
    speed,    ///< the peer's time divided by our time; the goal is a minimum
    duration, ///< our time divided by the peer's time; the goal is a maximum
    time,     ///< our time divided by the goal in nanoseconds
    bytes,    ///< our number of bytes divided by the goal
};

/// A comparison with a peer: one row of a table in the report.
struct Row {
    const char* what;     ///< label; an empty label repeats the label of the row above
    const char* ours;     ///< name of our benchmark
    const char* peer;     ///< name of the peer's benchmark; null if there is no peer
    const char* peerName; ///< name of the peer in the report
    Ratio kind;
    double goal = 0;             ///< 0 if the report only shows the result
    double factor = 1;           ///< factor that multiplies the peer's time
    const char* id = "";         ///< name of the row in bench/remarks.txt
    const char* chart = nullptr; ///< label of the row's bar in the chart; null for no bar
};

/// A chapter of the report.
struct Subject {
    const char* title;
    const char* text;
    std::vector<Row> rows;
};

const std::vector<Subject>& subjects();

/// The result of a comparison.
struct Outcome {
    double ratio = 0; ///< 0 if the row has neither a peer nor a goal
    double miss = 0;  ///< distance to a missed goal, as a share of the goal
    bool isMet = true;
    bool hasGoal = false;
};
Outcome outcomeOf(const Row& row, const Figures& figures);

/// Remarks by the id of a row or the title of a subject.
using Remarks = std::map<std::string, std::string>;

/// docs/performance.md.
std::string pageOf(const Figures& figures, const Remarks& remarks);
/// docs/performance.svg.
std::string chartOf(const Figures& figures);

} // namespace report
