// What is connected with what, and when the units hear of it.
#include "tests/platform/augraph/marks.h"

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

TEST(Connections, AnInputHearsOneThing)
{
    constexpr OSStatus taken = kAUGraphErr_InvalidConnection;
    enum Act { connect, setCallback, removeCallback, disconnect };
    // clang-format off
    const struct { Act first; OSStatus firstStatus; Act second; OSStatus secondStatus; const char* why; } facts[] = {
        {connect,        noErr, connect,        taken, "a second connection"},
        {connect,        noErr, setCallback,    taken, "a callback where there is a connection"},
        {connect,        noErr, removeCallback, taken, "it is not a callback that is there"},
        {connect,        noErr, disconnect,     noErr, "taken back"},
        {setCallback,    noErr, connect,        taken, "a connection where there is a callback"},
        {setCallback,    noErr, setCallback,    noErr, "the new callback counts"},
        {setCallback,    noErr, removeCallback, noErr, "taken back"},
        {setCallback,    noErr, disconnect,     noErr, "taken back, too"},
        {removeCallback, noErr, connect,        noErr, "nothing was there"},
        {disconnect,     taken, connect,        noErr, "nothing was there, and that is an error"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const Marks marks(2);
        const Float32 number = 100;
        const auto act = [&](Act what) {
            switch (what) {
            case connect:
                return marks.graph.connect(marks.nodes[0], marks.nodes[1]);
            case setCallback:
                return marks.graph.setCallback(marks.nodes[1], constant, const_cast<Float32*>(&number));
            case removeCallback:
                return marks.graph.setCallback(marks.nodes[1], nullptr, nullptr);
            case disconnect:
                return AUGraphDisconnectNodeInput(marks.graph, marks.nodes[1], 0);
            }
            return OSStatus{1};
        };
        EXPECT_EQ(act(fact.first), fact.firstStatus);
        EXPECT_EQ(act(fact.second), fact.secondStatus);
        EXPECT_EQ(marks.graph.connect(marks.nodes[0], marks.nodes[1], 1), noErr) << "another input is free";
    }
}

TEST(Connections, ComponentsThatAreNoUnitsArePassedOver)
{
    const Graph graph;
    AUNode node = 0;
    AudioComponentDescription looking = {'aufx', 0, 0, 0, 0};
    ASSERT_EQ(AUGraphAddNode(graph, &looking, &node), noErr);
    ASSERT_EQ(AUGraphNodeInfo(graph, node, &looking, nullptr), noErr);
    EXPECT_EQ(looking.componentSubType, 'mark');
    OSStatus status = noErr;
    EXPECT_EQ(graph.add('aufx', 'odd ', &status), 0);
    EXPECT_EQ(status, kAUGraphErr_InvalidAudioUnit);
}

// The output is the first node and the source the last: whatever the order of nodes and of connections, and
// whether they were there before it was opened, formats pass from the source to the output.
TEST(Connections, FormatsTravelFromTheSourcesToTheHead)
{
    for (const bool opensFirst : {false, true}) {
        int order[] = {0, 1, 2};
        do {
            SCOPED_TRACE(std::to_string(order[0]) + std::to_string(order[1]) + std::to_string(order[2]));
            const Graph graph;
            if (opensFirst) {
                ASSERT_EQ(AUGraphOpen(graph), noErr);
            }
            const AUNode output = graph.add('auou', 'genr'), last = graph.add('aufx', 'mark'),
                         middle = graph.add('aufx', 'mark'), first = graph.add('aufx', 'mark');
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
            ASSERT_EQ(AUGraphInitialize(graph), noErr) << "and once more";
            EXPECT_TRUE(formatOf(graph.unit(output), 1) == canonical(48000, 4));
        } while (std::next_permutation(std::begin(order), std::end(order)));
    }
}

// a to d, and a to b to c to d: what is heard by a detour comes first all the same.
TEST(Connections, AUnitIsInitialisedBehindAllThatItHears)
{
    int order[] = {0, 1, 2, 3};
    do {
        const Marks marks(4);
        const AUNode a = marks.nodes[static_cast<std::size_t>(order[0])],
                     b = marks.nodes[static_cast<std::size_t>(order[1])],
                     c = marks.nodes[static_cast<std::size_t>(order[2])],
                     d = marks.nodes[static_cast<std::size_t>(order[3])];
        const UInt32 inputs = 2;
        ASSERT_EQ(
            AudioUnitSetProperty(marks.graph.unit(d), kAudioUnitProperty_ElementCount, 1, 0, &inputs, 4),
            noErr);
        ASSERT_EQ(marks.graph.connect(a, d, 0), noErr);
        ASSERT_EQ(marks.graph.connect(a, b), noErr);
        ASSERT_EQ(marks.graph.connect(b, c), noErr);
        ASSERT_EQ(marks.graph.connect(c, d, 1), noErr);
        ASSERT_EQ(marks.graph.connect(d, marks.output), noErr);
        initializedInOrder().clear();
        ASSERT_EQ(AUGraphInitialize(marks.graph), noErr);
        const std::vector<AudioUnit> wanted = {marks.graph.unit(a), marks.graph.unit(b), marks.graph.unit(c),
                                               marks.graph.unit(d)};
        EXPECT_EQ(initializedInOrder(), wanted);
    } while (std::next_permutation(std::begin(order), std::end(order)));
}

TEST(Connections, AreRefusedWhenTheyAreMade)
{
    // clang-format off
    const struct { UInt32 output, input; OSType source; bool isInteger; OSStatus status; const char* why; } facts[] = {
        {0,          0, 'mark', false, noErr,                          "the first output to the first input"},
        {1,          3, 'mark', false, noErr,                          "the last ones"},
        {2,          0, 'mark', false, kAudioUnitErr_InvalidElement,   "no such output"},
        {0xFFFFFFFF, 0, 'mark', false, kAudioUnitErr_InvalidElement,   "nor that"},
        {0,          4, 'mark', false, kAudioUnitErr_InvalidElement,   "no such input"},
        {0, 0xFFFFFFFF, 'mark', false, kAudioUnitErr_InvalidElement,   "nor that"},
        {0,          0, 'free', true,  kAudioUnitErr_FormatNotSupported, "a format that it does not take"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        Marks marks(1);
        const AUNode source = marks.add(fact.source);
        const UInt32 inputs = 4;
        ASSERT_EQ(AudioUnitSetProperty(marks.unit(0), kAudioUnitProperty_ElementCount, 1, 0, &inputs, 4),
                  noErr);
        if (fact.isInteger) {
            ASSERT_EQ(setFormat(marks.unit(1), 2, pcm(44100, 2, 16, isSigned | isPacked)), noErr);
        }
        ASSERT_EQ(marks.graph.connect(marks.nodes[0], marks.output), noErr);
        EXPECT_EQ(AUGraphConnectNodeInput(marks.graph, source, fact.output, marks.nodes[0], fact.input),
                  noErr)
            << "no error yet";
        EXPECT_EQ(AUGraphInitialize(marks.graph), fact.status);
        EXPECT_EQ(marks.graph.isInitialized(), !fact.status);
        for (const AudioUnit unit : {marks.unit(0), marks.unit(1), marks.graph.unit(marks.output)})
            EXPECT_EQ(isInitialized(unit), !fact.status) << "all of them or none";
        if (!fact.status) continue;
        ASSERT_EQ(AUGraphDisconnectNodeInput(marks.graph, marks.nodes[0], fact.input), noErr);
        EXPECT_EQ(AUGraphInitialize(marks.graph), noErr) << "it can be put right";
        EXPECT_EQ(marks.hear(), 1);
    }
}

TEST(Connections, InACircleAreRefusedWhenTheyAreMade)
{
    for (const std::size_t size : {1, 2, 5}) {
        SCOPED_TRACE(size);
        const Marks marks(static_cast<int>(size));
        for (std::size_t i = 0; i < size; ++i)
            ASSERT_EQ(marks.graph.connect(marks.nodes[i], marks.nodes[(i + 1) % size]), noErr);
        ASSERT_EQ(marks.graph.connect(marks.nodes[size - 1], marks.output), noErr);
        EXPECT_EQ(AUGraphInitialize(marks.graph), kAUGraphErr_InvalidConnection);
        EXPECT_FALSE(isInitialized(marks.unit(0)));
        ASSERT_EQ(AUGraphDisconnectNodeInput(marks.graph, marks.nodes[0], 0), noErr);
        EXPECT_EQ(AUGraphInitialize(marks.graph), noErr);
        EXPECT_EQ(marks.hear(), static_cast<Float32>((1 << size) - 1));
    }
}

TEST(Connections, OnlyWhoTakesPartIsInitialised)
{
    const Marks marks(5);
    Float32 number = 100;
    ASSERT_EQ(marks.graph.setCallback(marks.nodes[1], constant, &number), noErr);
    ASSERT_EQ(marks.graph.connect(marks.nodes[2], marks.nodes[3]), noErr);
    ASSERT_EQ(AUGraphInitialize(marks.graph), noErr);
    const bool takesPart[] = {false, true, true, true, false};
    for (std::size_t i = 0; i < 5; ++i) EXPECT_EQ(isInitialized(marks.unit(i)), takesPart[i]) << i;
    EXPECT_FALSE(isInitialized(marks.graph.unit(marks.output)));
    ASSERT_EQ(AUGraphUninitialize(marks.graph), noErr);
    for (std::size_t i = 0; i < 5; ++i) EXPECT_FALSE(isInitialized(marks.unit(i))) << i;
}

TEST(Connections, ACallbackMayComeAtAnyTimeBefore)
{
    Float32 number = 100;
    for (const int when : {0, 1, 2}) {
        SCOPED_TRACE(when);
        const Graph graph;
        const AUNode output = graph.add('auou', 'genr'), node = graph.add('aufx', 'mark');
        ASSERT_EQ(graph.connect(node, output), noErr);
        if (when == 0) {
            ASSERT_EQ(graph.setCallback(node, constant, &number), noErr);
        }
        ASSERT_EQ(AUGraphOpen(graph), noErr);
        if (when == 1) {
            ASSERT_EQ(graph.setCallback(node, constant, &number), noErr);
        }
        ASSERT_EQ(setFormat(graph.unit(node), 1, canonical(44100, 2)), noErr);
        if (when == 2) {
            ASSERT_EQ(graph.setCallback(node, constant, &number), noErr);
        }
        ASSERT_EQ(AUGraphInitialize(graph), noErr);
        List list(canonical(44100, 2), 4);
        const AudioTimeStamp time = sampleTime(0);
        ASSERT_EQ(AudioUnitRender(graph.unit(output), nullptr, &time, 0, 4, list.get()), noErr);
        EXPECT_EQ(static_cast<const Float32*>(list[1].mData)[3], 100);
    }
}

TEST(Connections, OutlastClosing)
{
    Marks marks(2);
    Float32 number = 100;
    ASSERT_EQ(marks.graph.setCallback(marks.nodes[0], constant, &number), noErr);
    ASSERT_EQ(marks.graph.connect(marks.nodes[0], marks.nodes[1]), noErr);
    ASSERT_EQ(marks.graph.connect(marks.nodes[1], marks.output), noErr);
    for (int turn = 0; turn < 3; ++turn) {
        ASSERT_EQ(AUGraphOpen(marks.graph), noErr);
        ASSERT_EQ(AUGraphInitialize(marks.graph), noErr);
        EXPECT_EQ(marks.hear(), turn ? 100 : 103) << "the marks went with the units";
        ASSERT_EQ(AUGraphClose(marks.graph), noErr);
    }
}

TEST(Connections, AnOutputMayFeedSeveralInputs)
{
    const Marks marks(2);
    ASSERT_EQ(marks.graph.connect(marks.nodes[0], marks.output), noErr);
    ASSERT_EQ(marks.graph.connect(marks.nodes[0], marks.nodes[1]), noErr);
    ASSERT_EQ(AUGraphInitialize(marks.graph), noErr);
    EXPECT_EQ(marks.hear(), 1);
}

} // namespace
