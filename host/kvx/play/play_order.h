// The order in which the files of a playlist play.
// All functions: [main].
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

namespace kvx {

/// Finds the files before and after a file. Files are numbered from 0.
class PlayOrder {
public:
    /// `isEndless`: the first file follows the last one.
    PlayOrder(std::size_t fileCount, bool isEndless) : isLeftOut_(fileCount), isEndless_(isEndless) {}

    /// The next file, or the file before; nullopt if there is none.
    std::optional<std::size_t> after(std::size_t file) const { return neighbour(file, 1); }
    std::optional<std::size_t> before(std::size_t file) const { return neighbour(file, -1); }

    /// Leave a file out from now on, because it cannot be played.
    void leaveOut(std::size_t file) { isLeftOut_[file] = true; }

    /// Whether all files are left out.
    bool isEmpty() const;

private:
    std::optional<std::size_t> neighbour(std::size_t file, int step) const;

    std::vector<bool> isLeftOut_;
    bool isEndless_;
};

} // namespace kvx
