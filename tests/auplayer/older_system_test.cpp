// A system without the two newer platform functions. In this test program the weak references to them are
// null.
#include "tests/auplayer/good_load.h"
#include "tests/support/detach_spy.h"

#include <algorithm>
#include <thread>

namespace {

using namespace auplayer_test;

class OlderSystem : public PlayerTest {
protected:
    static Choices choices()
    {
        Choices older;
        older.timePitch = "'tmpt'";
        return older;
    }
};

TEST_F(OlderSystem, UsesTheClassicTimePitchUnit)
{
    EXPECT_TRUE(load());
    EXPECT_EQ(spy::calls(), goodLoad(choices()));
}

TEST_F(OlderSystem, LoadsOnAPosixThread)
{
    std::thread::id loader;
    spy::answer("ExtAudioFileRead").during = [&] { loader = std::this_thread::get_id(); };
    EXPECT_TRUE(load(2, 2, "LoadFileMT"));
    EXPECT_EQ(support::detaches(), 1);
    EXPECT_NE(loader, std::thread::id());
    EXPECT_NE(loader, std::this_thread::get_id());
    EXPECT_EQ(spy::calls(), goodLoad(choices()));
    const Notes calls = host().calls();
    EXPECT_GE(std::count(calls.begin(), calls.end(), "REALYieldToRB()"), 2);
    EXPECT_EQ(host().bytesOf(data().clientFormatString),
              " 2 ch,  48000 Hz, 'lpcm' (0x00000009) 32-bit little-endian float");
}

TEST_F(OlderSystem, ReportsAFailureOnTheThread)
{
    spy::answer("AUGraphInitialize").status = -10875;
    EXPECT_FALSE(load(2, 2, "LoadFileMT"));
    EXPECT_EQ(data().lasterror, -10875);
}

} // namespace
