// The memory that the sound bridge allocates: its three kinds of records, and nothing else.
#include "tests/soundstream/pulled_list.h"
#include "tests/soundstream/stream_fixture.h"
#include "tests/support/c_library_spy.h"

#include <algorithm>
#include <memory>

namespace {

using namespace soundstream_test;

class SoundStreamAllocations : public StreamTest {
protected:
    /// The allocations and frees that `action` makes, in order.
    template <class Action>
    static Notes allocationsOf(Action action)
    {
        c_library_spy::begin();
        action();
        Notes notes = c_library_spy::end();
        const auto isLock = [](const std::string& note) { return note == "lock" || note == "unlock"; };
        notes.erase(std::remove_if(notes.begin(), notes.end(), isLock), notes.end());
        return notes;
    }

    template <class Record>
    static Notes one()
    {
        return {"calloc " + std::to_string(sizeof(Record))};
    }
};

TEST_F(SoundStreamAllocations, OrdinaryUseAllocatesOneOfEachRecord)
{
    const Notes none, oneFree = {"free"};
    PulledList pulled(2);
    for (int round = 0; round < 3; ++round) {
        SCOPED_TRACE(round);
        const auto render = [&] {
            sound_spy::callback().inputProc(object().state(), nullptr, nullptr, 0, 8, pulled.list());
        };
        EXPECT_EQ(allocationsOf([&] { object().initComponent(); }), one<soundstream::StreamState>());
        EXPECT_EQ(allocationsOf([&] { object().openComponent(); }), one<soundstream::RefconRecord>());
        const ComponentInstance instance = sound_spy::newInstance();
        const long word = reinterpret_cast<long>(instance);
        EXPECT_EQ(allocationsOf([&] { send(instance, -1, {word}); }),
                  one<soundstream::QTSoundStreamGlobals>());
        EXPECT_EQ(c_library_spy::liveBlocks(), 3);
        EXPECT_EQ(allocationsOf([&] { send(instance, 1, {0}); }), none);
        EXPECT_EQ(allocationsOf([&] { object().attach(unit()); }), none);
        EXPECT_EQ(allocationsOf(render), none);
        EXPECT_EQ(allocationsOf([&] { send(instance, -2, {word}); }), oneFree);
        EXPECT_EQ(allocationsOf([&] { object().closeComponent(); }), oneFree);
        EXPECT_EQ(allocationsOf([&] { object().destroy(); }), oneFree);
        EXPECT_EQ(c_library_spy::liveBlocks(), 0);
        object().construct();
    }
}

// The number of live blocks counts all allocations and frees since the start of the program.
TEST_F(SoundStreamAllocations, NothingStaysAllocatedAfterTheLastObjectAndInstance)
{
    constexpr int count = 20;
    for (const bool isObjectFirst : {false, true}) {
        SCOPED_TRACE(isObjectFirst);
        std::vector<std::unique_ptr<StreamObject>> objects;
        std::vector<ComponentInstance> instances;
        for (int i = 0; i < count; ++i) {
            objects.push_back(std::make_unique<StreamObject>());
            objects.back()->initComponent();
            objects.back()->openComponent();
            instances.push_back(openInstanceWithMixer());
        }
        EXPECT_EQ(c_library_spy::liveBlocks(), 3 * count);
        if (isObjectFirst) objects.clear();
        for (const ComponentInstance instance : instances) closeInstance(instance);
        objects.clear();
        EXPECT_EQ(c_library_spy::liveBlocks(), 0);
    }
}

} // namespace
