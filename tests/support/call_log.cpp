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
    Calls calls;
    bool isComplete;
    {
        const Guard guard(lock_);
        isComplete = !isFull_;
        for (std::size_t start = 0; start < size_; start += calls.back().size() + 1)
            calls.emplace_back(text_.data() + start);
    }
    if (!isComplete) ADD_FAILURE() << "the log is full: it has only the first " << calls.size() << " calls";
    return calls;
}

std::size_t CallLog::count() const
{
    const Guard guard(lock_);
    return count_;
}

int countOf(const Calls& calls, std::string_view function)
{
    return static_cast<int>(std::count_if(calls.begin(), calls.end(), [&](const std::string& call) {
        return call.substr(0, call.find('(')) == function;
    }));
}

} // namespace spy
