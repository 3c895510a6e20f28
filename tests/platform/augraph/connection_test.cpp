// Tests of connections and callbacks: which sources an input accepts, and when the units receive the sources.
#include "tests/platform/augraph/adding_graph.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace test;

AudioStreamBasicDescription formatOf(AudioUnit unit, AudioUnitScope scope)
{
    AudioStreamBasicDescription format{};
    UInt32 size = sizeof format;
    EXPECT_EQ(AudioUnitGetProperty(unit, kAudioUnitProperty_StreamFormat, scope, 0, &format, &size), noErr);
    return format;
}

OSStatus setFormat(AudioUnit unit, AudioUnitScope scope, const AudioStreamBasicDescription& format)
{
    return AudioUnitSetProperty(unit, kAudioUnitProperty_StreamFormat, scope, 0, &format, sizeof format);
}

TEST(Connections, AnInputHasOneSource)
{
    constexpr OSStatus taken = kAUGraphErr_InvalidConnection;
    enum Act { connect, setCallback, removeCallback };
    // clang-format off
    const struct { Act first; Act second; OSStatus secondStatus; const char* why; } facts[] = {
        {connect,        connect,        taken, "a second connection"},
        {connect,        setCallback,    taken, "a callback for a connected input"},
        {connect,        removeCallback, taken, "the source is not a callback"},
        {setCallback,    connect,        taken, "a connection for an input with a callback"},
        {setCallback,    setCallback,    noErr, "the new callback replaces the former one"},
        {setCallback,    removeCallback, noErr, "removed"},
        {removeCallback, connect,        noErr, "the input had no source"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const AddingGraph adding(2);
        Float32 number = 100;
        const auto act = [&](Act what) {
            switch (what) {
            case connect:
                return adding.graph.connect(adding.nodes[0], adding.nodes[1]);
            case setCallback:
                return adding.graph.setCallback(adding.nodes[1], constantSource, &number);
            case removeCallback:
                return adding.graph.setCallback(adding.nodes[1], nullptr, nullptr);
            }
            return OSStatus{1};
        };
        EXPECT_EQ(act(fact.first), noErr);
        EXPECT_EQ(act(fact.second), fact.secondStatus);
        EXPECT_EQ(adding.graph.connect(adding.nodes[0], adding.nodes[1], 1), noErr)
            << "another input is free";
    }
}

TEST(Connections, AnInputIsFreeAfterItsCallbackIsRemoved)
{
    for (const bool isInitialized : {false, true}) {
        const AddingGraph adding(2);
        Float32 number = 100;
        ASSERT_EQ(adding.graph.setCallback(adding.nodes[1], constantSource, &number), noErr);
        ASSERT_EQ(adding.graph.connect(adding.nodes[1], adding.output), noErr);
        if (isInitialized) {
            ASSERT_EQ(AUGraphInitialize(adding.graph), noErr);
            ASSERT_EQ(AUGraphUninitialize(adding.graph), noErr);
        }
        ASSERT_EQ(adding.graph.setCallback(adding.nodes[1], nullptr, nullptr), noErr);
        ASSERT_EQ(adding.graph.connect(adding.nodes[0], adding.nodes[1]), noErr);
        ASSERT_EQ(AUGraphInitialize(adding.graph), noErr);
        EXPECT_EQ(adding.render(), 3);
    }
}

TEST(Connections, ASearchForANodesUnitSkipsOtherComponents)
{
    const Graph graph;
    AUNode node = 0;
    AudioComponentDescription description = {'aufx', 0, 0, 0, 0};
    ASSERT_EQ(AUGraphAddNode(graph, &description, &node), noErr);
    ASSERT_EQ(AUGraphNodeInfo(graph, node, &description, nullptr), noErr);
    EXPECT_EQ(description.componentSubType, 'add ');
    OSStatus status = noErr;
    EXPECT_EQ(graph.add('aufx', 'odd ', &status), 0);
    EXPECT_EQ(status, kAUGraphErr_InvalidAudioUnit);
}

// The output unit is the first node and the source is the last. The test makes the connections in every
// order, before and after the graph is opened.
TEST(Connections, FormatsPassFromTheSourcesToTheHead)
{
    for (const bool opensFirst : {false, true}) {
        int order[] = {0, 1, 2};
        do {
            SCOPED_TRACE(std::to_string(order[0]) + std::to_string(order[1]) + std::to_string(order[2]));
            const Graph graph;
            if (opensFirst) {
                ASSERT_EQ(AUGraphOpen(graph), noErr);
            }
            const AUNode output = graph.add('auou', 'genr'), last = graph.add('aufx', 'add '),
                         middle = graph.add('aufx', 'add '), first = graph.add('aufx', 'add ');
            const AUNode sources[] = {first, middle, last}, destinations[] = {middle, last, output};
            for (const int each : order) ASSERT_EQ(graph.connect(sources[each], destinations[each]), noErr);
            ASSERT_EQ(AUGraphOpen(graph), noErr);
            ASSERT_EQ(setFormat(graph.unit(first), 2, canonical(8000, 1)), noErr);
            ASSERT_EQ(setFormat(graph.unit(middle), 2, canonical(22050, 5)), noErr);
            ASSERT_EQ(setFormat(graph.unit(last), 2, canonical(96000, 3)), noErr);
            EXPECT_TRUE(formatOf(graph.unit(output), 1) == canonical(44100, 2)) << "not yet";

            initializedInOrder().clear();
            ASSERT_EQ(AUGraphInitialize(graph), noErr);
            EXPECT_TRUE(formatOf(graph.unit(middle), 1) == canonical(8000, 1));
            EXPECT_TRUE(formatOf(graph.unit(last), 1) == canonical(22050, 5));
            EXPECT_TRUE(formatOf(graph.unit(output), 1) == canonical(96000, 3));
            const std::vector<AudioUnit> fromSources = {graph.unit(first), graph.unit(middle),
                                                        graph.unit(last)};
            EXPECT_EQ(initializedInOrder(), fromSources);

            ASSERT_EQ(AUGraphUninitialize(graph), noErr);
            ASSERT_EQ(setFormat(graph.unit(last), 2, canonical(48000, 4)), noErr);
            ASSERT_EQ(AUGraphInitialize(graph), noErr) << "again";
            EXPECT_TRUE(formatOf(graph.unit(output), 1) == canonical(48000, 4));
        } while (std::next_permutation(std::begin(order), std::end(order)));
    }
}

// Unit d has two sources: unit a directly, and unit a through the units b and c.
TEST(Connections, AUnitIsInitialisedAfterAllItsSources)
{
    int order[] = {0, 1, 2, 3};
    do {
        const AddingGraph adding(4);
        const AUNode a = adding.nodes[static_cast<std::size_t>(order[0])],
                     b = adding.nodes[static_cast<std::size_t>(order[1])],
                     c = adding.nodes[static_cast<std::size_t>(order[2])],
                     d = adding.nodes[static_cast<std::size_t>(order[3])];
        const UInt32 inputs = 2;
        ASSERT_EQ(
            AudioUnitSetProperty(adding.graph.unit(d), kAudioUnitProperty_ElementCount, 1, 0, &inputs, 4),
            noErr);
        ASSERT_EQ(adding.graph.connect(a, d, 0), noErr);
        ASSERT_EQ(adding.graph.connect(a, b), noErr);
        ASSERT_EQ(adding.graph.connect(b, c), noErr);
        ASSERT_EQ(adding.graph.connect(c, d, 1), noErr);
        ASSERT_EQ(adding.graph.connect(d, adding.output), noErr);
        initializedInOrder().clear();
        ASSERT_EQ(AUGraphInitialize(adding.graph), noErr);
        const std::vector<AudioUnit> expected = {adding.graph.unit(a), adding.graph.unit(b),
                                                 adding.graph.unit(c), adding.graph.unit(d)};
        EXPECT_EQ(initializedInOrder(), expected);
    } while (std::next_permutation(std::begin(order), std::end(order)));
}

TEST(Connections, TheUnitsRefuseThemAtInitialisation)
{
    // clang-format off
    const struct { UInt32 output, input; OSType source; bool isInteger; OSStatus status; const char* why; } facts[] = {
        {0,          0, 'add ', false, noErr,                            "the first output to the first input"},
        {1,          3, 'add ', false, noErr,                            "the last output to the last input"},
        {2,          0, 'add ', false, kAudioUnitErr_InvalidElement,     "an output past the end"},
        {0xFFFFFFFF, 0, 'add ', false, kAudioUnitErr_InvalidElement,     "the largest output number"},
        {0,          4, 'add ', false, kAudioUnitErr_InvalidElement,     "an input past the end"},
        {0, 0xFFFFFFFF, 'add ', false, kAudioUnitErr_InvalidElement,     "the largest input number"},
        {0,          0, 'addf', true,  kAudioUnitErr_FormatNotSupported, "a format that the input does not take"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        AddingGraph adding(1);
        const AUNode source = adding.add(fact.source);
        const UInt32 inputs = 4;
        ASSERT_EQ(AudioUnitSetProperty(adding.unit(0), kAudioUnitProperty_ElementCount, 1, 0, &inputs, 4),
                  noErr);
        if (fact.isInteger) {
            ASSERT_EQ(setFormat(adding.unit(1), 2, pcm(44100, 2, 16, isSigned | isPacked)), noErr);
        }
        ASSERT_EQ(adding.graph.connect(adding.nodes[0], adding.output), noErr);
        EXPECT_EQ(AUGraphConnectNodeInput(adding.graph, source, fact.output, adding.nodes[0], fact.input),
                  noErr)
            << "no error yet";
        EXPECT_EQ(AUGraphInitialize(adding.graph), fact.status);
        EXPECT_EQ(adding.graph.isInitialized(), !fact.status);
        for (const AudioUnit unit : {adding.unit(0), adding.unit(1), adding.graph.unit(adding.output)})
            EXPECT_EQ(isInitialized(unit), !fact.status) << "all of them or none";
    }
}

TEST(Connections, ACycleOfNodesIsRefusedAtInitialisation)
{
    for (const std::size_t size : {1, 2, 5}) {
        SCOPED_TRACE(size);
        const AddingGraph adding(static_cast<int>(size));
        for (std::size_t i = 0; i < size; ++i)
            ASSERT_EQ(adding.graph.connect(adding.nodes[i], adding.nodes[(i + 1) % size]), noErr);
        ASSERT_EQ(adding.graph.connect(adding.nodes[size - 1], adding.output), noErr);
        EXPECT_EQ(AUGraphInitialize(adding.graph), kAUGraphErr_InvalidConnection);
        EXPECT_FALSE(adding.graph.isInitialized());
        EXPECT_FALSE(isInitialized(adding.unit(0)));
    }
}

TEST(Connections, OnlyUnitsWithAConnectionOrCallbackAreInitialised)
{
    const AddingGraph adding(5);
    Float32 number = 100;
    ASSERT_EQ(adding.graph.setCallback(adding.nodes[1], constantSource, &number), noErr);
    ASSERT_EQ(adding.graph.connect(adding.nodes[2], adding.nodes[3]), noErr);
    ASSERT_EQ(AUGraphInitialize(adding.graph), noErr);
    const bool takesPart[] = {false, true, true, true, false};
    for (std::size_t i = 0; i < 5; ++i) EXPECT_EQ(isInitialized(adding.unit(i)), takesPart[i]) << i;
    EXPECT_FALSE(isInitialized(adding.graph.unit(adding.output)));
    ASSERT_EQ(AUGraphUninitialize(adding.graph), noErr);
    for (std::size_t i = 0; i < 5; ++i) EXPECT_FALSE(isInitialized(adding.unit(i))) << i;
}

TEST(Connections, ACallbackMayBeSetAtAnyTimeBeforeInitialisation)
{
    Float32 number = 100;
    for (const int when : {0, 1, 2}) {
        SCOPED_TRACE(when);
        const Graph graph;
        const AUNode output = graph.add('auou', 'genr'), node = graph.add('aufx', 'add ');
        ASSERT_EQ(graph.connect(node, output), noErr);
        if (when == 0) {
            ASSERT_EQ(graph.setCallback(node, constantSource, &number), noErr);
        }
        ASSERT_EQ(AUGraphOpen(graph), noErr);
        if (when == 1) {
            ASSERT_EQ(graph.setCallback(node, constantSource, &number), noErr);
        }
        ASSERT_EQ(setFormat(graph.unit(node), 1, canonical(44100, 2)), noErr);
        if (when == 2) {
            ASSERT_EQ(graph.setCallback(node, constantSource, &number), noErr);
        }
        ASSERT_EQ(AUGraphInitialize(graph), noErr);
        List list(canonical(44100, 2), 4);
        const AudioTimeStamp time = sampleTime(0);
        ASSERT_EQ(AudioUnitRender(graph.unit(output), nullptr, &time, 0, 4, list.get()), noErr);
        EXPECT_EQ(static_cast<const Float32*>(list[1].mData)[3], 100);
    }
}

class InitializedGraph : public testing::Test {
protected:
    void initialize()
    {
        ASSERT_EQ(AUGraphInitialize(graph), noErr);
        ASSERT_EQ(AUGraphStart(graph), noErr);
    }
    /// Expect that a change of a source takes effect only when the graph is initialised again.
    void expectChange(Float32 before, Float32 after)
    {
        EXPECT_EQ(AUGraphInitialize(graph), noErr);
        EXPECT_EQ(adding.render(), before) << "still initialised";
        EXPECT_TRUE(graph.isRunning());
        ASSERT_EQ(AUGraphUninitialize(graph), noErr);
        initialize();
        EXPECT_EQ(adding.render(), after);
    }
    AddingGraph adding{3};
    Graph& graph = adding.graph;
    const AUNode output = adding.output, a = adding.nodes[0], b = adding.nodes[1];
    Float32 hundred = 100, thousand = 1000;
};

TEST_F(InitializedGraph, ReplacesACallbackAtTheNextInitialisation)
{
    ASSERT_EQ(graph.connect(a, output), noErr);
    ASSERT_EQ(graph.setCallback(a, constantSource, &hundred), noErr);
    initialize();
    ASSERT_EQ(graph.setCallback(a, constantSource, &thousand), noErr);
    expectChange(101, 1001);
}

TEST_F(InitializedGraph, RemovesACallbackAtTheNextInitialisation)
{
    ASSERT_EQ(graph.connect(a, output), noErr);
    ASSERT_EQ(graph.setCallback(a, constantSource, &hundred), noErr);
    initialize();
    ASSERT_EQ(graph.setCallback(a, nullptr, nullptr), noErr);
    expectChange(101, 1);
}

TEST_F(InitializedGraph, RemovesTheOnlyCallbackOfAUnitAtTheNextInitialisation)
{
    ASSERT_EQ(graph.setCallback(output, constantSource, &hundred), noErr);
    initialize();
    ASSERT_EQ(graph.setCallback(output, nullptr, nullptr), noErr);
    EXPECT_EQ(adding.render(), 100) << "still initialised";
    ASSERT_EQ(AUGraphUninitialize(graph), noErr);
    ASSERT_EQ(AUGraphInitialize(graph), noErr);
    EXPECT_FALSE(isInitialized(graph.unit(output)));
    ASSERT_EQ(AudioUnitInitialize(graph.unit(output)), noErr);
    EXPECT_EQ(adding.render(), kAudioUnitErr_NoConnection);
}

TEST_F(InitializedGraph, ConnectsAnAddedNodeAtTheNextInitialisation)
{
    ASSERT_EQ(graph.connect(a, output), noErr);
    initialize();
    const AUNode added = adding.add();
    ASSERT_NE(graph.unit(added), nullptr);
    ASSERT_EQ(graph.connect(added, a), noErr);
    EXPECT_FALSE(isInitialized(graph.unit(added)));
    expectChange(1, 9);
}

TEST_F(InitializedGraph, TakesANewFormatAtTheNextInitialisation)
{
    ASSERT_EQ(graph.connect(b, output), noErr);
    initialize();
    ASSERT_EQ(AUGraphUninitialize(graph), noErr);
    ASSERT_EQ(setFormat(adding.unit(1), 2, canonical(44100, 1)), noErr);
    initialize();
    EXPECT_TRUE(formatOf(graph.unit(output), 1) == canonical(44100, 1));
    EXPECT_EQ(adding.render(), 2);
}

TEST(Connections, SurviveACloseOfTheGraph)
{
    AddingGraph adding(2);
    Float32 number = 100;
    ASSERT_EQ(adding.graph.setCallback(adding.nodes[0], constantSource, &number), noErr);
    ASSERT_EQ(adding.graph.connect(adding.nodes[0], adding.nodes[1]), noErr);
    ASSERT_EQ(adding.graph.connect(adding.nodes[1], adding.output), noErr);
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(AUGraphOpen(adding.graph), noErr);
        ASSERT_EQ(AUGraphInitialize(adding.graph), noErr);
        EXPECT_EQ(adding.render(), round ? 100 : 103) << "new units have no constants";
        ASSERT_EQ(AUGraphClose(adding.graph), noErr);
    }
}

TEST(Connections, AnOutputMayFeedSeveralInputs)
{
    const AddingGraph adding(2);
    ASSERT_EQ(adding.graph.connect(adding.nodes[0], adding.output), noErr);
    ASSERT_EQ(adding.graph.connect(adding.nodes[0], adding.nodes[1]), noErr);
    ASSERT_EQ(AUGraphInitialize(adding.graph), noErr);
    EXPECT_EQ(adding.render(), 1);
}

} // namespace
