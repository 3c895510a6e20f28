// kvx_report FIGURES.json REMARKS EXACTNESS MACHINE FOLDER: writes the page of the benchmark results and its
// pictures into a folder, and prints whether each goal is met.
#include "bench/report.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace report {
namespace {

std::string read(const std::string& path)
{
    std::ifstream file(path);
    if (!file) throw std::runtime_error(path + " cannot be read");
    return {std::istreambuf_iterator<char>(file), {}};
}

void write(const std::string& path, const std::string& text)
{
    std::ofstream file(path);
    file << text;
    file.close();
    if (!file) throw std::runtime_error(path + " cannot be written");
}

double nanosecondsIn(const std::string& unit)
{
    return unit == "ns" ? 1 : unit == "us" ? 1e3 : unit == "ms" ? 1e6 : 1e9;
}

/// Remove the suffixes that Google Benchmark adds to a name for options such as UseManualTime().
std::string registeredName(std::string name)
{
    for (const char* suffix : {"/manual_time", "/iterations:1"})
        if (const auto at = name.find(suffix); at != name.npos) name.resize(at);
    return name;
}

Figures figuresOf(const std::string& path)
{
    const auto json = nlohmann::json::parse(read(path));
    Figures figures;
    figures.date = json["context"]["date"].get<std::string>().substr(0, 10);
    figures.compiler = json["context"]["compiler"];
    for (const auto& each : json["benchmarks"]) {
        const std::string name = each["run_name"];
        if (each.value("error_occurred", false))
            throw std::runtime_error(name + ": " + each.value("error_message", ""));
        if (each["run_type"] == "iteration")
            figures.repetitions = std::max(figures.repetitions, each.value("repetitions", 1));
        if (each.value("aggregate_name", "") != "median") continue;
        const bool isManual = name.find("/manual_time") != name.npos;
        figures.times[registeredName(name)] =
            each[isManual ? "real_time" : "cpu_time"].get<double>() * nanosecondsIn(each["time_unit"]);
        for (const auto& [key, value] : each.items())
            if (value.is_number()) figures.counters[registeredName(name) + ":" + key] = value;
    }
    return figures;
}

/// Parse bench/remarks.txt. The id of a row, or the title of a subject, stands in brackets before its remark.
Remarks remarksOf(const std::string& text)
{
    Remarks remarks;
    std::string* current = nullptr;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line[0] == '[') {
            current = &remarks[line.substr(1, line.find(']') - 1)];
        } else if (!line.empty() && current) {
            *current += (current->empty() ? "" : "\n") + line;
        }
    }
    return remarks;
}

void printSummary(const Figures& figures)
{
    for (const Subject& subject : subjects(figures)) {
        const char* what = "";
        for (const Row& row : subject.rows) {
            if (*row.what) what = row.what;
            const Outcome outcome = outcomeOf(row, figures);
            if (!outcome.hasGoal) continue;
            fmt::print("{:<8} {:<24} {:<42} {:<26} {:>8.2f}   goal {:g}\n", outcome.isMet ? "met" : "MISSED",
                       subject.title, what, row.peerName ? row.peerName : "", outcome.ratio,
                       row.kind == Ratio::time || row.kind == Ratio::bytes ? 1 : row.goal);
        }
    }
    fmt::print("{}", resamplingSummary(figures));
}

} // namespace
} // namespace report

int main(int count, char** arguments)
{
    if (count != 6) {
        std::fputs("usage: kvx_report FIGURES.json REMARKS EXACTNESS MACHINE FOLDER\n", stderr);
        return 2;
    }
    try {
        report::Figures figures = report::figuresOf(arguments[1]);
        const report::Remarks remarks = report::remarksOf(report::read(arguments[2]));
        figures.exactness = report::read(arguments[3]);
        figures.machine = arguments[4];
        const std::string folder = arguments[5];
        report::write(folder + "/performance.md", report::pageOf(figures, remarks));
        report::write(folder + "/performance.svg", report::chartOf(figures));
        report::write(folder + "/resampling.svg", report::resamplingChart(figures));
        report::printSummary(figures);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kvx_report: %s\n", error.what());
        return 1;
    }
}
