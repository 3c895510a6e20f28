// A ratio on its way to another, in even musical steps: a jump would be heard as a click.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace kvxplatform::audiounit {

class Glide {
public:
    static constexpr std::uint32_t stepFrames = 16, steps = 32;

    void jump(double value) { current = goal = value, left = 0; }
    void aim(double value)
    {
        if (value == goal) return;
        goal = value;
        factor = std::pow(goal / current, 1.0 / steps);
        left = steps;
    }
    bool isThere() const { return left == 0; }
    double value() const { return current; }

    /// How many frames to play at the next value, at most `frames`; the value changes where the last ones
    /// ended.
    std::uint32_t next(std::uint32_t frames)
    {
        if (left == 0) return frames;
        if (played == stepFrames) played = 0;
        if (played == 0) current = --left ? current * factor : goal;
        const std::uint32_t now = std::min(frames, stepFrames - played);
        played += now;
        return now;
    }

private:
    double current = 1, goal = 1, factor = 1;
    std::uint32_t left = 0;   // steps
    std::uint32_t played = 0; // frames of this step
};

} // namespace kvxplatform::audiounit
