#include "tests/support/call_log.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>

namespace spy {

using Guard = std::lock_guard<SpinLock>;

void CallLog::add(std::string_view call)
{
    const Guard guard(lock_);
    ++count_;
    isFull_ = isFull_ || size_ + call.size() + 1 > text_.size();
    if (isFull_) return;
    *std::copy(call.begin(), call.end(), text_.data() + size_) = '\0';
    size_ += call.size() + 1;
}

void CallLog::forget()
{
    const Guard guard(lock_);
    size_ = count_ = 0;
    isFull_ = false;
}

Calls CallLog::calls() const
{
    const Guard guard(lock_);
    if (isFull_) ADD_FAILURE() << "the log is full: it lacks the last of " << count_ << " calls";
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
