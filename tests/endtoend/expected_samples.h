// Expectations about rendered or captured samples. Samples are compared exactly; -0 equals +0.
#pragma once

#include "tests/support/sound_samples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace endtoend {

inline void expectSamples(const std::vector<float>& actual, const std::vector<float>& expected)
{
    ASSERT_EQ(actual.size(), expected.size());
    const auto [at, wanted] = std::mismatch(actual.begin(), actual.end(), expected.begin());
    if (at != actual.end())
        FAIL() << "sample " << at - actual.begin() << " of " << actual.size() << " is " << *at << ", not "
               << *wanted;
}

/// Expect that the rendered samples are `expected`, then silence.
inline void expectThenSilence(const std::vector<float>& actual, std::vector<float> expected)
{
    ASSERT_GE(actual.size(), expected.size());
    expected.resize(actual.size());
    expectSamples(actual, expected);
}

/// Expect that a stereo sound is silence, then `expected`, then silence. The first frame of `expected` is not
/// silent.
inline void expectAfterSilence(const support::Sound& actual, const std::vector<float>& expected)
{
    ASSERT_EQ(actual.channels, 2);
    const auto silent = std::ptrdiff_t(support::leadingSilence(actual) * 2);
    expectThenSilence({actual.samples.begin() + silent, actual.samples.end()}, expected);
}

} // namespace endtoend
