// A player whose `Lasterror` is looked at in every call that it makes of the platform.
#pragma once

#include "tests/auplayer/player_test.h"

#include <string>
#include <vector>

namespace auplayer_test {

using Lasterrors = std::vector<HostInteger>;

// How the spy notes the calls that read and write a number of a unit; `place` is parameter, scope, element.
inline std::string getCall(const std::string& unit, const std::string& place)
{
    return "AudioUnitGetParameter(" + unit + ", " + place + ")";
}
inline std::string setCall(const std::string& unit, const std::string& place, const std::string& value)
{
    return "AudioUnitSetParameter(" + unit + ", " + place + ", " + value + ", 0)"; // at the slice's start
}

class WatchedPlayerTest : public PlayerTest {
protected:
    ~WatchedPlayerTest() override { letBe(); }

    /// Begin anew with a player without a file, and with one that has loaded the platform's.
    void beginEmpty()
    {
        letBe();
        startOver();
        watch();
    }
    void begin()
    {
        letBe();
        startOver();
        ASSERT_TRUE(load());
        watch();
    }

    /// Forget the calls, and note what `Lasterror` is in each from now on; it is 4711 before the first.
    void watch()
    {
        graph_spy::forgetCalls();
        host().startOver();
        data().lasterror = 4711;
        seen_.clear();
        graph_spy::platform().inEachCall = [this](std::size_t) { seen_.push_back(data().lasterror); };
    }
    const Lasterrors& seen() const { return seen_; }

    /// Throw in the call of that number from now on.
    static void throwInCall(std::size_t throwing)
    {
        graph_spy::platform().inEachCall = [=](std::size_t number) {
            if (number == throwing) throw Thrown();
        };
    }

    /// The platform does what it does by itself again: what the test made must still be given back.
    static void letBe()
    {
        graph_spy::platform().inEachCall = nullptr;
        graph_spy::platform().refusals.clear();
        graph_spy::platform().answers.clear();
    }

private:
    Lasterrors seen_;
};

} // namespace auplayer_test
