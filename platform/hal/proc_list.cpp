#include "platform/hal/proc_list.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace kvxplatform::hal {

IOProc* ProcList::find(const List& list, AudioDeviceIOProcID id, Pick pick)
{
    using Row = std::shared_ptr<IOProc>;
    const auto matches = [id](const Row& each) { return each->id() == id && !each->isRemoved; };
    if (pick == Pick::newestAtRest) {
        const auto atRest = std::find_if(list.rbegin(), list.rend(),
                                         [&](const Row& each) { return matches(each) && !each->isStarted; });
        if (atRest != list.rend()) return atRest->get();
    }
    const auto found = std::find_if(list.begin(), list.end(), matches);
    return found == list.end() ? nullptr : found->get();
}

IOProc* ProcList::findInCycle(AudioDeviceIOProcID id, const IOProc* called, Pick pick) const
{
    const List& list = current();
    const auto own = std::find_if(list.begin(), list.end(), [=](const auto& each) {
        return each.get() == called && each->id() == id && !each->isRemoved;
    });
    return own == list.end() ? find(list, id, pick) : own->get();
}

bool ProcList::add(std::shared_ptr<IOProc> proc)
{
    const std::lock_guard<std::mutex> lock(lock_);
    const bool isPresent = std::any_of(current().begin(), current().end(), [&](const auto& each) {
        return !each->isRemoved && !each->hasUniqueID && each->proc == proc->proc &&
               each->client == proc->client;
    });
    if (!proc->hasUniqueID && isPresent) return false;
    auto next = std::make_unique<List>(current());
    next->push_back(std::move(proc));
    list_.publish(std::move(next), scope_);
    return true;
}

bool ProcList::sweep()
{
    const std::lock_guard<std::mutex> lock(lock_);
    const auto isRemoved = [](const auto& each) { return each->isRemoved.load(); };
    if (std::any_of(current().begin(), current().end(), isRemoved)) {
        auto next = std::make_unique<List>();
        std::remove_copy_if(current().begin(), current().end(), std::back_inserter(*next), isRemoved);
        list_.publish(std::move(next), scope_);
    }
    return list_.sweep(scope_);
}

bool ProcList::isEmpty() const
{
    const std::lock_guard<std::mutex> lock(lock_);
    return std::all_of(current().begin(), current().end(),
                       [](const auto& each) { return each->isRemoved.load(); });
}

} // namespace kvxplatform::hal
