// An object comes and goes: what it is as new, what its end gives back and in which order.
#include "tests/auplayer/player_test.h"

#include <algorithm>
#include <cstring>

namespace {

using namespace auplayer_test;

class Lifetime : public PlayerTest {};

TEST_F(Lifetime, BeginsEmptyButForItsBuffers)
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
    EXPECT_EQ(std::memcmp(&made, &rest, sizeof rest), 0) << "all other fields are as the host gave them";
    EXPECT_EQ(graph_spy::calls(), Notes());
    EXPECT_EQ(host().notes(), Notes()) << "nothing is asked of the host";
}

TEST_F(Lifetime, EndsInThisOrder)
{
    EXPECT_TRUE(load());
    data().tag = host().newObject("Variant");
    const std::string tag = host().nameOf(data().tag);
    REALstringStruct* const texts[] = {data().clientFormatString, data().outputFormatString};
    graph_spy::forgetCalls();
    host().forget();

    Notes whenTheGraphGoes, whenTheTagGoes;
    const auto state = [this] {
        Notes there;
        const auto note = [&there](bool isThere, const char* what) {
            if (isThere) there.push_back(what);
        };
        note(data().graph, "graph");
        note(data().loadedAudio, "audio");
        note(data().loadedAudio && data().loadedAudio->samples, "samples");
        note(data().clientFormat, "client format");
        note(data().outputFormat, "output format");
        note(data().tag, "tag");
        note(data().file, "file");
        return there;
    };
    Notes whenTheFileGoes;
    graph_spy::answer("DisposeAUGraph").during = [&] { whenTheGraphGoes = state(); };
    host().inNext("REALUnlockObject", [&] {
        whenTheTagGoes = state();
        host().inNext("REALUnlockObject", [&] { whenTheFileGoes = state(); });
    });
    watched::begin();
    destruct();
    EXPECT_EQ(watched::end(), (Notes{"free", "free"})) << "the samples, then their record";

    EXPECT_EQ(whenTheGraphGoes, (Notes{"audio", "samples", "client format", "output format", "tag", "file"}));
    EXPECT_EQ(whenTheTagGoes, Notes{"file"}) << "each is cleared as it goes";
    EXPECT_EQ(whenTheFileGoes, Notes());
    EXPECT_EQ(graph_spy::calls(), Notes{"DisposeAUGraph(graph1)"}) << "it is not stopped before";
    EXPECT_EQ(host().calls(), (Notes{"REALUnlockObject(" + tag + ")", "REALUnlockObject(f1)"}));

    for (REALstringStruct* text : texts) EXPECT_EQ(host().references(text), 1) << "the host's to release";
    EXPECT_EQ(data().clientFormatString, texts[0]);
    EXPECT_EQ(data().outputFormatString, texts[1]);
}

TEST_F(Lifetime, EndsWithoutALoad)
{
    destruct();
    EXPECT_EQ(graph_spy::calls(), Notes());
    EXPECT_EQ(host().calls(), Notes());
    EXPECT_EQ(data().loadedAudio, nullptr);
    EXPECT_EQ(data().clientFormat, nullptr);
    EXPECT_EQ(data().outputFormat, nullptr);
}

TEST_F(Lifetime, EndsWithoutWhatTheConstructorCouldNotHave)
{
    destruct();
    watched::refuseCalloc(1);
    watched::refuseNothrowNew(1);
    construct();
    EXPECT_EQ(data().loadedAudio, nullptr);
    EXPECT_EQ(data().outputFormat, nullptr);
    EXPECT_NE(data().clientFormat, nullptr);
    EXPECT_EQ(call<REALmemoryBlockStruct*>("Data", object()), nullptr);
    destruct();
    EXPECT_EQ(data().clientFormat, nullptr);
}

TEST_F(Lifetime, EndsWithATagAlone)
{
    data().tag = host().newObject("Variant");
    destruct();
    EXPECT_EQ(data().tag, nullptr);
    EXPECT_EQ(host().calls(), Notes{"REALUnlockObject(o1)"});
}

TEST_F(Lifetime, GivesUpTheRestWhenThePlatformThrows)
{
    EXPECT_TRUE(load());
    graph_spy::answer("DisposeAUGraph").during = [] { throw Thrown(); };
    EXPECT_NO_THROW(destruct());
    EXPECT_EQ(data().graph, nullptr);
    EXPECT_EQ(data().file, nullptr);
}

TEST_F(Lifetime, GivesUpTheRestWhenTheHostThrows)
{
    EXPECT_TRUE(load());
    REALobjectStruct* const tag = host().newObject("Variant");
    data().tag = tag;
    host().inNext("REALUnlockObject", [] { throw Thrown(); });
    EXPECT_NO_THROW(destruct());
    EXPECT_EQ(data().tag, nullptr);
    EXPECT_EQ(data().file, nullptr);
    EXPECT_EQ(host().references(tag), 1) << "it kept that one";
    host().drop(tag);
}

TEST_F(Lifetime, EndsWithAHostThatHasNoReferencesToDrop)
{
    EXPECT_TRUE(load());
    withhold("REALUnlockObject");
    EXPECT_NO_THROW(destruct());
    EXPECT_EQ(host().references(item()), 2);
    host().drop(item());
}

} // namespace
