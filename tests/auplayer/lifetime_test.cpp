// Construction and destruction: the initial state, and the order in which the destructor releases everything.
#include "tests/auplayer/player_fixture.h"

#include <algorithm>
#include <cstring>

namespace {

using namespace auplayer_test;

class Lifetime : public PlayerTest {};

TEST_F(Lifetime, ANewObjectIsEmpty)
{
    const auplayer::AUPlayerData& made = data();
    EXPECT_EQ(made.loopIn, -1.0);
    EXPECT_EQ(made.loopOut, -1.0);
    ASSERT_NE(made.loadedAudio, nullptr);
    ASSERT_NE(made.clientFormat, nullptr);
    ASSERT_NE(made.outputFormat, nullptr);
    EXPECT_NE(made.clientFormat, made.outputFormat);
    EXPECT_EQ(made.loadedAudio->samples, nullptr);
    EXPECT_EQ(made.loadedAudio->frameCount, 0u);
    EXPECT_EQ(made.loadedAudio->byteSize, 0u);
    const AudioStreamBasicDescription none = {};
    EXPECT_EQ(std::memcmp(made.clientFormat, &none, sizeof none), 0);
    EXPECT_EQ(std::memcmp(made.outputFormat, &none, sizeof none), 0);
    EXPECT_EQ(std::memcmp(&made.loadedAudio->format, &none, sizeof none), 0);

    auplayer::AUPlayerData rest = {};
    rest.loopIn = rest.loopOut = -1.0;
    rest.loadedAudio = made.loadedAudio;
    rest.clientFormat = made.clientFormat;
    rest.outputFormat = made.outputFormat;
    EXPECT_EQ(std::memcmp(&made, &rest, sizeof rest), 0) << "all other fields stay unchanged";
    EXPECT_EQ(spy::calls(), Notes());
    EXPECT_EQ(host().notes(), Notes()) << "no host call";
}

TEST_F(Lifetime, TheDestructorReleasesInThisOrder)
{
    EXPECT_TRUE(load());
    data().tag = host().newObject("Variant");
    const std::string tag = host().nameOf(data().tag);
    REALstringStruct* const texts[] = {data().clientFormatString, data().outputFormatString};
    spy::forgetCalls();
    host().forget();

    Notes atGraphRelease, atTagRelease;
    const auto state = [this] {
        Notes present;
        const auto note = [&present](bool isPresent, const char* what) {
            if (isPresent) present.push_back(what);
        };
        note(data().graph, "graph");
        note(data().loadedAudio, "audio");
        note(data().loadedAudio && data().loadedAudio->samples, "samples");
        note(data().clientFormat, "client format");
        note(data().outputFormat, "output format");
        note(data().tag, "tag");
        note(data().file, "file");
        return present;
    };
    Notes atFileRelease;
    spy::answer("DisposeAUGraph").during = [&] { atGraphRelease = state(); };
    host().inNext("REALUnlockObject", [&] {
        atTagRelease = state();
        host().inNext("REALUnlockObject", [&] { atFileRelease = state(); });
    });
    c_library_spy::begin();
    destruct();
    EXPECT_EQ(c_library_spy::end(), (Notes{"free", "free"})) << "the samples, then their record";

    EXPECT_EQ(atGraphRelease, (Notes{"audio", "samples", "client format", "output format", "tag", "file"}));
    EXPECT_EQ(atTagRelease, Notes{"file"}) << "each pointer is cleared before its release";
    EXPECT_EQ(atFileRelease, Notes());
    EXPECT_EQ(spy::calls(), Notes{"DisposeAUGraph(graph1)"}) << "the graph is not stopped first";
    EXPECT_EQ(host().calls(), (Notes{"REALUnlockObject(" + tag + ")", "REALUnlockObject(f1)"}));

    for (REALstringStruct* text : texts) EXPECT_EQ(host().references(text), 1) << "the host releases it";
    EXPECT_EQ(data().clientFormatString, texts[0]);
    EXPECT_EQ(data().outputFormatString, texts[1]);
}

TEST_F(Lifetime, TheDestructorWorksWithoutALoad)
{
    destruct();
    EXPECT_EQ(spy::calls(), Notes());
    EXPECT_EQ(host().calls(), Notes());
    EXPECT_EQ(data().loadedAudio, nullptr);
    EXPECT_EQ(data().clientFormat, nullptr);
    EXPECT_EQ(data().outputFormat, nullptr);
}

TEST_F(Lifetime, TheDestructorWorksAfterAConstructorWithoutMemory)
{
    destruct();
    c_library_spy::refuseCalloc(1);
    c_library_spy::refuseNothrowNew(1);
    construct();
    EXPECT_EQ(data().loadedAudio, nullptr);
    EXPECT_EQ(data().outputFormat, nullptr);
    EXPECT_NE(data().clientFormat, nullptr);
    EXPECT_EQ(members.call<REALmemoryBlockStruct*>("Data", object()), nullptr);
    destruct();
    EXPECT_EQ(data().clientFormat, nullptr);
}

TEST_F(Lifetime, TheDestructorReleasesATagWithoutALoad)
{
    data().tag = host().newObject("Variant");
    destruct();
    EXPECT_EQ(data().tag, nullptr);
    EXPECT_EQ(host().calls(), Notes{"REALUnlockObject(o1)"});
}

TEST_F(Lifetime, TheDestructorContinuesWhenThePlatformThrows)
{
    EXPECT_TRUE(load());
    spy::answer("DisposeAUGraph").during = [] { throw Thrown(); };
    EXPECT_NO_THROW(destruct());
    EXPECT_EQ(data().graph, nullptr);
    EXPECT_EQ(data().file, nullptr);
}

TEST_F(Lifetime, TheDestructorContinuesWhenTheHostThrows)
{
    EXPECT_TRUE(load());
    REALobjectStruct* const tag = host().newObject("Variant");
    data().tag = tag;
    host().inNext("REALUnlockObject", [] { throw Thrown(); });
    EXPECT_NO_THROW(destruct());
    EXPECT_EQ(data().tag, nullptr);
    EXPECT_EQ(data().file, nullptr);
    EXPECT_EQ(host().references(tag), 1) << "the host kept this reference";
    host().drop(tag);
}

TEST_F(Lifetime, TheDestructorWorksWithoutTheReleaseService)
{
    EXPECT_TRUE(load());
    withhold("REALUnlockObject");
    EXPECT_NO_THROW(destruct());
    EXPECT_EQ(host().references(item()), 2);
    host().drop(item());
}

} // namespace
