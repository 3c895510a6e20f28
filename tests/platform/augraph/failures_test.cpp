// Every unit that cannot be made or initialised, every piece of memory that is not to be had: a clear status,
// nothing lost, and a graph that works when there is no more trouble.
#include "tests/platform/augraph/marks.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

namespace {

__thread int allocationsLeft = 0; // the one that fails; 0: none does

void* allocate(std::size_t size)
{
    if (allocationsLeft && !--allocationsLeft) throw std::bad_alloc();
    if (void* memory = std::malloc(size ? size : 1)) return memory;
    throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

namespace {

using namespace test;

constexpr int chainLength = 4;

/// A chain of marking units in a graph that is not open yet; made before trouble begins.
struct Chain {
    Graph graph;
    AUNode output = graph.add('auou', 'genr');
    std::vector<AUNode> nodes;
    Chain()
    {
        for (int i = 0; i < chainLength; ++i) {
            nodes.push_back(graph.add('aufx', 'mark'));
            if (i) EXPECT_EQ(graph.connect(nodes[static_cast<std::size_t>(i) - 1], nodes.back()), noErr);
        }
        EXPECT_EQ(graph.connect(nodes.back(), output), noErr);
    }
    void expectItWorks() const
    {
        EXPECT_EQ(AUGraphOpen(graph), noErr);
        EXPECT_EQ(AUGraphInitialize(graph), noErr);
        EXPECT_EQ(AUGraphStart(graph), noErr);
        EXPECT_TRUE(graph.isRunning());
        for (const AUNode node : nodes) EXPECT_TRUE(isInitialized(graph.unit(node)));
    }
};

TEST(Failures, AnyUnitThatCannotBeMadeLeavesTheGraphClosed)
{
    for (int which = 1; which <= chainLength; ++which) {
        SCOPED_TRACE(which);
        const Chain chain;
        failOpening(which);
        EXPECT_EQ(AUGraphOpen(chain.graph), failure);
        EXPECT_FALSE(chain.graph.isOpen());
        EXPECT_EQ(alive("ComponentInstance"), 0u);
        EXPECT_EQ(chain.graph.unit(chain.output), nullptr);
        chain.expectItWorks();
    }
}

TEST(Failures, AUnitThatCannotBeMadeIsNotAdded)
{
    const Graph graph;
    ASSERT_EQ(AUGraphOpen(graph), noErr);
    failOpening(1);
    OSStatus status = noErr;
    EXPECT_EQ(graph.add('aufx', 'mark', &status), 0);
    EXPECT_EQ(status, failure);
    UInt32 count = 7;
    ASSERT_EQ(AUGraphGetNodeCount(graph, &count), noErr);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(graph.add('aufx', 'mark'), 1) << "no number was used up";
}

TEST(Failures, AnyUnitThatCannotBeInitialisedLeavesAllUninitialised)
{
    for (int which = 1; which <= chainLength; ++which) {
        SCOPED_TRACE(which);
        const Chain chain;
        ASSERT_EQ(AUGraphOpen(chain.graph), noErr);
        failInitialization(which);
        EXPECT_EQ(AUGraphInitialize(chain.graph), failure);
        EXPECT_FALSE(chain.graph.isInitialized());
        EXPECT_TRUE(chain.graph.isOpen());
        for (const AUNode node : chain.nodes) EXPECT_FALSE(isInitialized(chain.graph.unit(node)));
        EXPECT_EQ(AUGraphStart(chain.graph), kAudioUnitErr_Uninitialized);
        chain.expectItWorks();
    }
}

/// `make` with the first, second, third… piece of memory missing, until there is enough for it.
template <class Make>
void sweep(const char* what, Make make)
{
    SCOPED_TRACE(what);
    OSStatus status = memFullErr;
    int which = 0;
    while (status) {
        SCOPED_TRACE(++which);
        ASSERT_LT(which, 1000);
        allocationsLeft = which;
        status = make();
        const bool wasShort = allocationsLeft == 0;
        allocationsLeft = 0;
        ASSERT_EQ(status, wasShort ? memFullErr : noErr);
    }
}

OSStatus ignored(void*, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32, UInt32, AudioBufferList*)
{
    return noErr;
}

TEST(Failures, MemoryThatIsMissingIsSaidAndNothingIsLost)
{
    {
        AUGraph made = nullptr;
        sweep("NewAUGraph", [&] { return NewAUGraph(&made); });
        ASSERT_EQ(DisposeAUGraph(made), noErr);

        const Chain chain;
        const AUGraph graph = chain.graph;
        const AudioComponentDescription mark = {'aufx', 'mark', 'appl', 0, 0};
        AUNode node = 0;
        sweep("AddNode", [&] { return AUGraphAddNode(graph, &mark, &node); });
        EXPECT_EQ(node, chainLength + 2) << "the refused ones used up no number";
        sweep("AddRenderNotify", [&] { return AUGraphAddRenderNotify(graph, ignored, nullptr); });
        sweep("Open", [&] { return AUGraphOpen(graph); });
        sweep("AddNode, open", [&] { return AUGraphAddNode(graph, &mark, &node); });
        const AURenderCallbackStruct callback = {constant, nullptr};
        sweep("SetNodeInputCallback", [&] { return AUGraphSetNodeInputCallback(graph, node, 0, &callback); });
        sweep("Initialize", [&] { return AUGraphInitialize(graph); });
        chain.expectItWorks();
        ASSERT_EQ(AUGraphAddNode(graph, &mark, &node), noErr);
        sweep("ConnectNodeInput",
              [&] { return AUGraphConnectNodeInput(graph, node, 0, chain.nodes.front(), 0); });
        ASSERT_EQ(AUGraphRemoveNode(graph, node - 1), noErr);
        sweep("Update", [&] { return AUGraphUpdate(graph, nullptr); });
        sweep("AddRenderNotify, open", [&] { return AUGraphAddRenderNotify(graph, ignored, nullptr); });
        sweep("RemoveNode", [&] { return AUGraphRemoveNode(graph, node); });
        sweep("Update, disconnecting", [&] { return AUGraphUpdate(graph, nullptr); });
        sweep("Stop", [&] { return AUGraphStop(graph); });
        sweep("Uninitialize", [&] { return AUGraphUninitialize(graph); });
        sweep("Close", [&] { return AUGraphClose(graph); });
    }
    EXPECT_EQ(alive("AUGraph"), 0u);
    EXPECT_EQ(alive("ComponentInstance"), 0u);
}

} // namespace
