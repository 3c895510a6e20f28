// Rounds float samples to integers, with dither.
// All functions: [main].
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>

namespace kvx {

/// Rounds samples to 16, 24 or 32 bits. Samples above full scale are clipped, and NaN becomes 0.
///
/// Dither starts at the first sample that is no multiple of the step, so sound that the integers can hold
/// does not change. Equal samples make equal results.
/// Source  Lipshitz, Wannamaker, Vanderkooy: "Quantization and Dither", 1992: triangular
///         dither of one step to each side.
class Quantizer {
public:
    Quantizer(int bits, bool isDithered);

    /// Round `count` samples of full scale 1, in the order of the sound.
    /// Shape  the highest bits of each number of `out` are the rounded sample, the others are 0.
    void round(const float* samples, std::size_t count, std::int32_t* out);

private:
    double fullScale_; // in steps of the rounded samples
    double unused_;    // the size of a step in the result
    bool isDithered_;
    bool hasStarted_ = false;
    std::mt19937 random_;
};

} // namespace kvx
