// The benchmark report: comparisons of our benchmarks with those of other libraries (peers) and with goals,
// and their output as a page and a chart.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace report {

/// The results of one run of kvx_bench and kvx_bit_exactness.
struct Figures {
    std::map<std::string, double> times; ///< median time in nanoseconds of each benchmark, by name
    /// Medians of the counters of each benchmark, by its name, ":" and the name of the counter.
    std::map<std::string, double> counters;
    std::string date, compiler, machine;
    std::string exactness; ///< text that kvx_bit_exactness printed
    int repetitions = 0;

    /// The median time or counter of a benchmark. Throws std::runtime_error if it was not measured.
    double time(const std::string& name) const;
    double counter(const std::string& name) const;
    double bytesOf(const std::string& name) const { return counter(name + ":bytes"); }
};

/// What the ratio of a row compares. The goal of the row is a limit for this ratio, or for our time or bytes.
enum class Ratio {
    speed,    ///< time of the peer divided by our time; the goal is a minimum
    duration, ///< our time divided by the time of the peer; the goal is a maximum
    time,     ///< our time divided by the goal, a maximum in nanoseconds
    bytes,    ///< our number of bytes divided by the goal, a maximum
    period,   ///< our time divided by a period in nanoseconds, the row's factor; the goal is a maximum
};

/// One row of a table in the report: a comparison with a benchmark of another library (peer) or with a goal.
struct Row {
    const char* what;     ///< label of the row; "" if the label of the row above applies
    const char* ours;     ///< name of the benchmark of our code
    const char* peer;     ///< name of the benchmark of the peer; null if there is no peer
    const char* peerName; ///< name of the peer, as the report prints it
    Ratio kind;
    double goal = 0;     ///< goal of the row; 0: the report shows the result and checks nothing
    double factor = 1;   ///< factor by which the report multiplies the time of the peer; or the period
    const char* id = ""; ///< name of the row in bench/remarks.txt; "" for no remark
    const char* chart = nullptr; ///< label of the bar in the chart; null if the chart has no bar
    bool isOptional = false;     ///< whether the report omits the row if the peer was not measured
};

/// One chapter of the report, with one table.
struct Subject {
    const char* title;
    const char* text;
    std::vector<Row> rows;
};

/// Return all subjects, without the optional rows whose peer was not measured.
std::vector<Subject> subjects(const Figures& figures);

/// The result of the comparison in one row.
struct Outcome {
    double ratio = 0; ///< ratio to the peer or to the goal; 0 if the row has no peer and no goal
    double miss = 0;  ///< distance to the goal as a share of the goal; positive if the goal is missed
    bool isMet = true;
    bool hasGoal = false;
};
Outcome outcomeOf(const Row& row, const Figures& figures);

/// The remarks in bench/remarks.txt, by the id of a row or the title of a subject.
using Remarks = std::map<std::string, std::string>;

/// The goals of the rate conversion: how many there are, and how many are met.
struct Goals {
    int all = 0, met = 0;
};
Goals resamplingGoals(const Figures& figures);
/// Print the chapter about the quality of the rate conversion, its picture docs/resampling.svg, and a
/// summary.
std::string resamplingChapter(const Figures& figures);
std::string resamplingChart(const Figures& figures);
std::string resamplingSummary(const Figures& figures);

/// Print the page docs/performance.md.
std::string pageOf(const Figures& figures, const Remarks& remarks);
/// Print the chart docs/performance.svg.
std::string chartOf(const Figures& figures);

} // namespace report
