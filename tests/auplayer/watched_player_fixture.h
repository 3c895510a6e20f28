// A fixture that records the value of `Lasterror` in each platform call of the player.
#pragma once

#include "tests/auplayer/player_fixture.h"

#include <string>
#include <vector>

namespace auplayer_test {

using Lasterrors = std::vector<HostInteger>;

// Return the spy's text of the call that reads or sets a unit's parameter. `address` is the text of
// parameter, scope and element.
inline std::string getCall(const std::string& unit, const std::string& address)
{
    return "AudioUnitGetParameter(" + unit + ", " + address + ")";
}
inline std::string setCall(const std::string& unit, const std::string& address, const std::string& value)
{
    return "AudioUnitSetParameter(" + unit + ", " + address + ", " + value +
           ", 0)"; // 0 is the offset in the slice
}

class WatchedPlayerTest : public PlayerTest {
protected:
    ~WatchedPlayerTest() override { clearScripts(); }

    /// Start over with a player that has no file (beginEmpty), or with a player that has loaded a file
    /// (begin).
    void beginEmpty()
    {
        clearScripts();
        startOver();
        watch();
    }
    void begin()
    {
        clearScripts();
        startOver();
        ASSERT_TRUE(load());
        watch();
    }

    /// Forget the recorded calls, set `Lasterror` to 4711, and record `Lasterror` at each further platform
    /// call.
    void watch()
    {
        spy::forgetCalls();
        host().startOver();
        data().lasterror = 4711;
        seen_.clear();
        spy::script().inEachCall = [this](std::size_t) { seen_.push_back(data().lasterror); };
    }
    const Lasterrors& seen() const { return seen_; }

    /// Throw an exception in the platform call with this number.
    static void throwInCall(std::size_t throwing)
    {
        spy::script().inEachCall = [=](std::size_t number) {
            if (number == throwing) throw Thrown();
        };
    }

    /// Remove all scripted results and exceptions, so that the test's objects can be released.
    static void clearScripts()
    {
        spy::script().inEachCall = nullptr;
        spy::script().refusals.clear();
        spy::script().answers.clear();
    }

private:
    Lasterrors seen_;
};

} // namespace auplayer_test
