// What is still alive, by kind.
#pragma once

#include "host/runtime/values/reference.h"

#include <cstddef>
#include <string>
#include <vector>

namespace host {

struct LeakRow {
    Kind kind;
    std::string className; ///< of objects
    std::size_t count;
};

struct LeakReport {
    std::vector<LeakRow> rows; ///< kinds in their order, classes by name; no row of 0

    bool isClean() const { return rows.empty(); }
    std::size_t total() const;
    std::size_t count(Kind kind) const;
    std::size_t countOfClass(const std::string& className) const;

    /// One line a row, such as "3 objects of class CoreAudioPlayerKVX"; empty when clean.
    std::string text() const;
};

} // namespace host
