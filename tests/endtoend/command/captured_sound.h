// Comparison of captured or rendered sound with expected samples. Expected samples must match exactly.
#pragma once

#include "tests/support/sound_samples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace endtoend {

/// Expect `expected`, followed by silence only.
inline void expectStartsWith(const std::vector<float>& captured, const std::vector<float>& expected)
{
    ASSERT_GE(captured.size(), expected.size());
    const auto [at, other] = std::mismatch(expected.begin(), expected.end(), captured.begin());
    ASSERT_TRUE(at == expected.end()) << "sample " << at - expected.begin() << " of " << expected.size()
                                      << " is " << *other << ", not " << *at;
    EXPECT_TRUE(std::all_of(other, captured.end(), [](float sample) { return sample == 0.0f; }))
        << "sound after the end";
}

/// Expect two channels: silence, then `expected`, then silence. The first expected frame is not silent.
inline void expectAfterSilence(const support::Sound& captured, const std::vector<float>& expected)
{
    ASSERT_EQ(captured.channels, 2);
    const auto silent = std::ptrdiff_t(support::leadingSilence(captured) * 2);
    expectStartsWith({captured.samples.begin() + silent, captured.samples.end()}, expected);
}

} // namespace endtoend
