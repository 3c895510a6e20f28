#include "tests/support/call_log.h"

#include <algorithm>
#include <mutex>

namespace spy {

using Guard = std::lock_guard<SpinLock>;

void CallLog::add(std::string_view call)
{
    const Guard guard(lock_);
    if (size_ + call.size() + 1 > text_.size()) size_ = count_ = 0;
    *std::copy(call.begin(), call.end(), text_.data() + size_) = '\0';
    size_ += call.size() + 1;
    ++count_;
}

void CallLog::forget()
{
    const Guard guard(lock_);
    size_ = count_ = 0;
}

Calls CallLog::calls() const
{
    const Guard guard(lock_);
    Calls calls;
    for (std::size_t start = 0; start < size_; start += calls.back().size() + 1)
        calls.emplace_back(text_.data() + start);
    return calls;
}

std::size_t CallLog::count() const
{
    const Guard guard(lock_);
    return count_;
}

} // namespace spy
