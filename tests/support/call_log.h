// A log of function calls as text, in the order of the calls. The log has fixed memory and a spin lock,
// because tests count the allocations and mutex locks of the code under test, and the log must add none.
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace spy {

using Calls = std::vector<std::string>;

class SpinLock {
public:
    void lock()
    {
        while (flag_.test_and_set(std::memory_order_acquire)) {
        }
    }
    void unlock() { flag_.clear(std::memory_order_release); }

private:
    std::atomic_flag flag_ = ATOMIC_FLAG_INIT;
};

/// The text of one call, in fixed memory. Text past the capacity is dropped.
class Line {
public:
    std::string_view text() const { return {text_, size_}; }

    /// Append text in the format of printf.
    template <class... Values>
    Line& print(const char* format, Values... values)
    {
        const int size = std::snprintf(text_ + size_, sizeof text_ - size_, format, values...);
        size_ = std::min(size_ + static_cast<std::size_t>(size), sizeof text_ - 1);
        return *this;
    }

private:
    char text_[1024];
    std::size_t size_ = 0;
};

inline Line& operator<<(Line& line, std::string_view text)
{
    return line.print("%.*s", static_cast<int>(text.size()), text.data());
}
inline Line& operator<<(Line& line, const char* text) { return line << std::string_view(text); }
inline Line& operator<<(Line& line, const std::string& text) { return line << std::string_view(text); }

template <class Integer, std::enable_if_t<std::is_integral_v<Integer>, int> = 0>
Line& operator<<(Line& line, Integer number)
{
    return std::is_signed_v<Integer> ? line.print("%lld", static_cast<long long>(number))
                                     : line.print("%llu", static_cast<unsigned long long>(number));
}

/// The texts of calls. A full log counts further calls without their texts; then calls() fails the test.
/// [any]
class CallLog {
public:
    void add(std::string_view call);
    void forget();

    Calls calls() const;
    /// Return the number of calls since the last forget().
    std::size_t count() const;

private:
    mutable SpinLock lock_;
    std::array<char, 1 << 22> text_; // texts of the calls, each with a terminator
    std::size_t size_ = 0, count_ = 0;
    bool isFull_ = false; // whether a call did not fit the memory
};

/// Return the number of calls of a function.
int countOf(const Calls& calls, std::string_view function);

} // namespace spy
