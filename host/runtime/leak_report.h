// The live values, by kind and class.
#pragma once

#include "host/runtime/values/counted.h"

#include <cstddef>
#include <string>
#include <vector>

namespace host {

struct LeakRow {
    Kind kind;
    std::string className; ///< class of the objects; empty for other kinds
    std::size_t count;
};

struct LeakReport {
    std::vector<LeakRow> rows; ///< rows in the order of Kind, then of the class names; no count is 0

    bool isClean() const { return rows.empty(); }
    std::size_t total() const;
    std::size_t count(Kind kind) const;
    std::size_t countOfClass(const std::string& className) const;

    /// One line for each row, such as "3 objects of class CoreAudioPlayerKVX"; empty for a clean report.
    std::string text() const;
};

/// Count the live values of the current host.
/// [main]
LeakReport leakReport();

} // namespace host
