// The fixture of tests that run `kvx play`.
#pragma once

#include "tests/endtoend/command/kvx_runner.h"

#include <string>

namespace endtoend {

struct Play : KvxTest {
    std::string write(const support::Sound& sound, const std::string& name = "in.wav")
    {
        support::writeSound(sound, folder / name);
        return folder / name;
    }
    /// Write a file of two minutes of noise, which no test plays to its end.
    std::string writeLong() { return write(support::makeNoise(44100, 2, 44100 * 120)); }

    support::ChildResult play(const Arguments& more) { return run(joined({"play"}, more)); }
};

} // namespace endtoend
