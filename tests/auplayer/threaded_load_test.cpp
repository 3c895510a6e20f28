// LoadFileMT: the load on another thread, while the host's main thread yields.
#include "tests/auplayer/good_load.h"

#include <KVXPlatform/KVXPlatform.h>

#include <algorithm>
#include <atomic>
#include <thread>

namespace {

using namespace auplayer_test;

class ThreadedLoad : public PlayerTest {
protected:
    std::ptrdiff_t yields()
    {
        const Notes calls = host().calls();
        return std::count(calls.begin(), calls.end(), "REALYieldToRB()");
    }
};

TEST_F(ThreadedLoad, AsksThePlatformForTheSameAsOneOnTheMainThread)
{
    EXPECT_TRUE(load(2, 2, "LoadFileMT"));
    EXPECT_EQ(graph_spy::calls(), goodLoad());
    EXPECT_EQ(data().lasterror, 0);
    EXPECT_EQ(data().endFrame, 1000u);
    EXPECT_EQ(data().loadedAudio->samples[1999], 1999.0f);
    EXPECT_GE(yields(), 2);
}

TEST_F(ThreadedLoad, LoadsOnAnotherThreadAndBuildsTextsOnThisOne)
{
    std::thread::id loader;
    Notes duringTheLoad;
    graph_spy::answer("ExtAudioFileRead").during = [&] { loader = std::this_thread::get_id(); };
    EXPECT_TRUE(load(2, 2, "LoadFileMT"));
    EXPECT_NE(loader, std::this_thread::get_id());

    // The host in memory notes its calls without a lock: the thread sanitizer would tell of one from there.
    const Notes calls = host().calls();
    const auto lastYield = std::find(calls.rbegin(), calls.rend(), "REALYieldToRB()");
    const Notes behind(lastYield.base(), calls.end());
    EXPECT_EQ(std::count_if(behind.begin(), behind.end(),
                            [](const std::string& call) { return call.find("REALBuildString(") == 0; }),
              2)
        << "after the work, one text each";
    EXPECT_EQ(std::count_if(calls.begin(), lastYield.base(),
                            [](const std::string& call) { return call.find("REALBuildString(") == 0; }),
              0);
    EXPECT_EQ(host().bytesOf(data().clientFormatString),
              " 2 ch,  48000 Hz, 'lpcm' (0x00000009) 32-bit little-endian float");
    EXPECT_EQ(host().bytesOf(data().outputFormatString),
              " 2 ch,  48000 Hz, 'lpcm' (0x00000029) 32-bit little-endian float, deinterleaved");
}

TEST_F(ThreadedLoad, YieldsUntilTheFileHasBeenRead)
{
    // The read ends when the host has been yielded to a hundred times.
    constexpr int wanted = 100;
    std::atomic<int> count{0};
    std::function<void()> yield;
    yield = [&] {
        ++count;
        EXPECT_EQ(call<REALmemoryBlockStruct*>("Data", object()), nullptr) << "nothing has been read";
        if (count < wanted) host().inNext("REALYieldToRB", yield);
    };
    host().inNext("REALYieldToRB", yield);
    graph_spy::answer("ExtAudioFileRead").during = [&] {
        while (count < wanted) std::this_thread::yield();
    };
    EXPECT_TRUE(load(2, 2, "LoadFileMT"));
    EXPECT_EQ(count, wanted);
    EXPECT_GE(yields(), wanted);
}

TEST_F(ThreadedLoad, RefusesAnotherLoadThatItsHostBeginsMeanwhile)
{
    FolderItem const another = host().newFolderItem();
    HostBoolean inner = 1;
    host().inNext("REALYieldToRB", [&] {
        inner = call<HostBoolean>("LoadFileMT(", object(), another, HostInteger{2}, HostInteger{2});
    });
    EXPECT_TRUE(load(2, 2, "LoadFileMT"));
    EXPECT_EQ(inner, 0);
    EXPECT_EQ(raised(), Notes{"UnsupportedOperationException: This class can only load one file."});
    EXPECT_EQ(graph_spy::calls(), goodLoad());
    EXPECT_EQ(data().file, another);
    EXPECT_EQ(host().references(another), 2);
    EXPECT_EQ(host().references(item()), 2);
    host().drop(item());
    destruct();
    host().drop(another);
}

TEST_F(ThreadedLoad, WorksInAHostThatCannotYield)
{
    withhold("REALYieldToRB");
    EXPECT_TRUE(load(2, 2, "LoadFileMT"));
    EXPECT_EQ(graph_spy::calls(), goodLoad());
    EXPECT_EQ(yields(), 0);
}

TEST_F(ThreadedLoad, FinishesForAHostThatThrowsWhileItIsYieldedTo)
{
    std::atomic<bool> hasThrown{false};
    host().inNext("REALYieldToRB", [&] {
        hasThrown = true;
        throw Thrown();
    });
    graph_spy::answer("ExtAudioFileRead").during = [&] {
        while (!hasThrown) std::this_thread::yield();
    };
    bool result = false;
    EXPECT_NO_THROW(result = load(2, 2, "LoadFileMT"));
    EXPECT_TRUE(result);
    EXPECT_EQ(graph_spy::calls(), goodLoad());
}

} // namespace
