#include "platform/hal/proc_list.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace kvxplatform::hal {

IOProc* ProcList::find(const Row& row, AudioDeviceIOProcID id, Pick pick)
{
    const auto isMeant = [id](const IOProc* each) { return each->id() == id && !each->isRemoved; };
    if (pick == Pick::newestAtRest) {
        const auto atRest = std::find_if(
            row.rbegin(), row.rend(), [&](const IOProc* each) { return isMeant(each) && !each->isStarted; });
        if (atRest != row.rend()) return *atRest;
    }
    const auto found = std::find_if(row.begin(), row.end(), isMeant);
    return found == row.end() ? nullptr : *found;
}

IOProc* ProcList::findInCycle(AudioDeviceIOProcID id, const IOProc* called, Pick pick) const
{
    const auto own = std::find_if(row().begin(), row().end(), [=](const IOProc* each) {
        return each == called && each->id() == id && !each->isRemoved;
    });
    return own == row().end() ? find(row(), id, pick) : *own;
}

/// There is room in `retired_` for one more: this must not fail half-way.
void ProcList::publish(std::unique_ptr<const Row> row, std::vector<std::unique_ptr<IOProc>> gone)
{
    row_ = row.get();
    retired_.push_back({cycles_.now(), std::exchange(current_, std::move(row)), std::move(gone)});
}

void ProcList::freePassed()
{
    retired_.erase(std::remove_if(retired_.begin(), retired_.end(),
                                  [this](const Retired& each) { return cycles_.hasPassed(each.stamp); }),
                   retired_.end());
}

bool ProcList::add(std::unique_ptr<IOProc> proc)
{
    const std::lock_guard<std::mutex> lock(lock_);
    const bool isThere = std::any_of(current_->begin(), current_->end(), [&](const IOProc* each) {
        return !each->isRemoved && !each->hasOwnID && each->proc == proc->proc &&
               each->client == proc->client;
    });
    if (!proc->hasOwnID && isThere) return false;
    auto row = std::make_unique<Row>(*current_);
    row->push_back(proc.get());
    owned_.reserve(owned_.size() + 1);
    retired_.reserve(retired_.size() + 1);
    owned_.push_back(std::move(proc));
    publish(std::move(row), {});
    freePassed();
    return true;
}

bool ProcList::sweep()
{
    const std::lock_guard<std::mutex> lock(lock_);
    const auto isStaying = [](const std::unique_ptr<IOProc>& each) { return !each->isRemoved; };
    const auto firstGone = std::stable_partition(owned_.begin(), owned_.end(), isStaying);
    if (firstGone != owned_.end()) {
        auto row = std::make_unique<Row>();
        for (auto each = owned_.begin(); each != firstGone; ++each) row->push_back(each->get());
        retired_.reserve(retired_.size() + 1);
        std::vector<std::unique_ptr<IOProc>> gone(std::make_move_iterator(firstGone),
                                                  std::make_move_iterator(owned_.end()));
        owned_.erase(firstGone, owned_.end());
        publish(std::move(row), std::move(gone));
    }
    freePassed();
    return retired_.empty();
}

bool ProcList::isEmpty() const
{
    const std::lock_guard<std::mutex> lock(lock_);
    return std::all_of(owned_.begin(), owned_.end(), [](const auto& each) { return each->isRemoved.load(); });
}

} // namespace kvxplatform::hal
