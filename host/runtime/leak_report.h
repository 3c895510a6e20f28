// The leak report: how many host values of each kind, and objects of each class, still live.
#pragma once

#include "host/runtime/values/counted.h"

#include <cstddef>
#include <string>
#include <vector>

namespace host {

struct LeakRow {
    Kind kind;
    std::string className; ///< name of the objects' class; empty if the values are not objects
    std::size_t count;
};

struct LeakReport {
    std::vector<LeakRow> rows; ///< one row for each kind with live values, for objects one for each class

    bool isClean() const { return rows.empty(); }
    std::size_t total() const;
    std::size_t count(Kind kind) const;
    std::size_t countOfClass(const std::string& className) const;

    /// Print one line for each row, such as "3 objects of class CoreAudioPlayerKVX"; "" for a clean report.
    std::string text() const;
};

/// Count the live values of the current host.
/// [main]
LeakReport leakReport();

} // namespace host
