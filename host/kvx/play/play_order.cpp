#include "host/kvx/play/play_order.h"

#include <algorithm>

namespace kvx {

bool PlayOrder::isEmpty() const
{
    return std::all_of(isLeftOut_.begin(), isLeftOut_.end(), [](bool isLeftOut) { return isLeftOut; });
}

/// `step` is 1 for forward, -1 for back.
std::optional<std::size_t> PlayOrder::neighbour(std::size_t file, int step) const
{
    const std::size_t count = isLeftOut_.size();
    const std::size_t last = step > 0 ? count - 1 : 0; // the last file in this direction
    for (std::size_t visited = 0; visited < count; ++visited) {
        if (file == last && !isEndless_) break;
        file = (file + (step > 0 ? 1 : count - 1)) % count;
        if (!isLeftOut_[file]) return file;
    }
    return std::nullopt;
}

} // namespace kvx
