// The methods that read the output unit's channel map into a host array and write a host array into the map.
#include "plugin/host_array.h"
#include "tests/auplayer/watched_player_fixture.h"

#include <cstdint>
#include <cstring>

namespace {

using namespace auplayer_test;
using Array = REALarrayStruct*;
using Words = std::vector<std::int32_t>;

std::string bytesOf(const Words& words)
{
    return std::string(reinterpret_cast<const char*>(words.data()), 4 * words.size());
}

const char* const askSize = "AudioUnitGetPropertyInfo(output, 2002, output, 0, size 0, null)";

std::string readMap(std::size_t size)
{
    return "AudioUnitGetProperty(output, 2002, output, 0, size " + std::to_string(size) + ")";
}

const Notes outOfMemory = {"OutOfMemoryException: Failed to allocate buffer for channel map."};

class ChannelMap : public WatchedPlayerTest {
protected:
    /// Load a file and script `bytes` as the channel map of the output unit.
    void beginMap(const std::string& bytes)
    {
        begin();
        setMap(bytes);
        blocks_ = c_library_spy::liveBlocks();
    }

    static void setMap(const std::string& bytes)
    {
        spy::answer("AudioUnitGetPropertyInfo").size = static_cast<UInt32>(bytes.size());
        spy::answer("AudioUnitGetProperty").value = bytes;
    }

    Array map() { return members.call<ArrayOf<HostInteger>*>("ChannelMap", object()); }
    void setChannelMap(Array values)
    {
        members.call<void>("setChannelMap", object(), static_cast<ArrayOf<HostInteger>*>(values));
    }

    void expectNothingHeld()
    {
        EXPECT_EQ(host().live().size(), 3u) << "the folder item, and the texts of two formats";
        EXPECT_EQ(host().faults(), Notes());
        EXPECT_EQ(c_library_spy::liveBlocks(), blocks_) << "the buffer is freed";
    }

private:
    long blocks_ = 0;
};

// ---- reading ----

TEST_F(ChannelMap, ReadsIntoANewArray)
{
    beginMap(bytesOf({1, -1, 0}));
    const Array array = map();
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(spy::calls(), (Notes{askSize, readMap(12)}));
    EXPECT_EQ(seen(), (Lasterrors{-1, -1})) << "`Lasterror` is reset before each call";
    EXPECT_EQ(data().lasterror, 0);
    EXPECT_EQ(host().calls(), (Notes{"RuntimeArrayCreateSingleDimBoundedArray(0, -1) = a1",
                                     "PluginIntegerArrayInsertProc(a1)", "RuntimeUBound(a1) = -1",
                                     "insert(a1, 0, 1)", "RuntimeUBound(a1) = 0", "insert(a1, 1, -1)",
                                     "RuntimeUBound(a1) = 1", "insert(a1, 2, 0)"}));
    EXPECT_EQ(host().references(array), 1);
    host().drop(array);
    expectNothingHeld();
}

TEST_F(ChannelMap, ReadsWholeEntries)
{
    const struct {
        std::string bytes;
        Words entries;
        const char* why;
    } rows[] = {
        {bytesOf({0}), {0}, "one"},
        {bytesOf({INT32_MAX, INT32_MIN, -1}), {INT32_MAX, INT32_MIN, -1}, "the extreme values"},
        {bytesOf({7, 8}) + "xyz", {7, 8}, "incomplete entries are ignored"},
        {"xyz", {}, "less than one entry"},
        {bytesOf(Words(64, 3)), Words(64, 3), "many"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        beginMap(row.bytes);
        const Array array = map();
        ASSERT_NE(array, nullptr);
        EXPECT_EQ(spy::calls().back(), readMap(row.bytes.size()));
        Words inserted;
        for (const std::string& note : host().calls())
            if (note.rfind("insert(", 0) == 0)
                inserted.push_back(std::stoi(note.substr(note.rfind(',') + 2)));
        EXPECT_EQ(inserted, row.entries);
        host().drop(array);
        expectNothingHeld();
    }
}

TEST_F(ChannelMap, ReadsZerosAfterAShortAnswer)
{
    beginMap(bytesOf({5}));
    spy::answer("AudioUnitGetPropertyInfo").size = 8;
    const Array array = map();
    EXPECT_EQ(host().calls().back(), "insert(a1, 1, 0)");
    host().drop(array);
    expectNothingHeld();
}

TEST_F(ChannelMap, UsesTheOlderInsertService)
{
    beginMap(bytesOf({4}));
    withhold("PluginIntegerArrayInsertProc");
    const Array array = map();
    EXPECT_EQ(host().calls(),
              (Notes{"RuntimeArrayCreateSingleDimBoundedArray(0, -1) = a1",
                     "RuntimeArrayDirectGetInsertProc(a1)", "RuntimeUBound(a1) = -1", "insert(a1, 0, 4)"}));
    host().drop(array);
}

TEST_F(ChannelMap, ReadsAnEmptyArrayWithoutAnInsertService)
{
    beginMap(bytesOf({4}));
    withhold("PluginIntegerArrayInsertProc");
    withhold("RuntimeArrayDirectGetInsertProc");
    const Array array = map();
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(host().calls(), Notes{"RuntimeArrayCreateSingleDimBoundedArray(0, -1) = a1"});
    host().drop(array);
    expectNothingHeld();
}

TEST_F(ChannelMap, ReadsNilIfTheHostMakesNoArray)
{
    beginMap(bytesOf({4}));
    host().failNext("RuntimeArrayCreateSingleDimBoundedArray");
    EXPECT_EQ(map(), nullptr);
    EXPECT_EQ(data().lasterror, 0);
    withhold("RuntimeArrayCreateSingleDimBoundedArray");
    EXPECT_EQ(map(), nullptr);
    EXPECT_EQ(raised(), Notes());
    expectNothingHeld();
}

// ---- refusals while reading and writing ----

TEST_F(ChannelMap, StopsIfTheSizeIsRefusedOrZero)
{
    const struct {
        OSStatus status;
        UInt32 size;
        HostInteger lasterror;
    } rows[] = {{-10879, 8, -10879}, {1, 8, 1}, {0, 0, 0}, {-50, 0, -50}};
    for (const auto& row : rows)
        for (const bool isSet : {false, true}) {
            beginMap(bytesOf({0, 1}));
            spy::answer("AudioUnitGetPropertyInfo").status = row.status;
            spy::answer("AudioUnitGetPropertyInfo").size = row.size;
            if (isSet) {
                const Array values = host().newIntegers({1, 0});
                setChannelMap(values);
                host().drop(values);
            } else {
                EXPECT_EQ(map(), nullptr);
            }
            EXPECT_EQ(spy::calls(), Notes{askSize});
            EXPECT_EQ(host().calls(), Notes()) << "the values are not read";
            EXPECT_EQ(seen(), Lasterrors{-1});
            EXPECT_EQ(data().lasterror, row.lasterror);
            expectNothingHeld();
        }
}

TEST_F(ChannelMap, RaisesForATooLargeSize)
{
    for (const UInt32 size : {0x80000000u, 0x80000001u, 0xFFFFFFFFu})
        for (const bool isSet : {false, true}) {
            beginMap("");
            spy::answer("AudioUnitGetPropertyInfo").size = size;
            if (isSet)
                setChannelMap(nullptr);
            else
                EXPECT_EQ(map(), nullptr);
            EXPECT_EQ(spy::calls(), Notes{askSize});
            EXPECT_EQ(raised(), outOfMemory);
            EXPECT_EQ(data().lasterror, -1);
            expectNothingHeld();
        }
}

TEST_F(ChannelMap, RaisesWithoutMemory)
{
    for (const UInt32 size : {1u, 8u, 0x7FFFFFFFu})
        for (const bool isSet : {false, true}) {
            beginMap("");
            spy::answer("AudioUnitGetPropertyInfo").size = size;
            c_library_spy::begin();
            c_library_spy::refuseCalloc(1);
            if (isSet)
                setChannelMap(nullptr);
            else
                EXPECT_EQ(map(), nullptr);
            EXPECT_EQ(c_library_spy::end().front(), "calloc " + std::to_string(size));
            EXPECT_EQ(spy::calls(), Notes{askSize});
            EXPECT_EQ(raised(), outOfMemory);
            EXPECT_EQ(data().lasterror, -1);
            expectNothingHeld();
        }
}

TEST_F(ChannelMap, StopsIfTheMapCannotBeRead)
{
    for (const bool isSet : {false, true}) {
        beginMap(bytesOf({0, 1}));
        spy::answer("AudioUnitGetProperty").status = -10851;
        if (isSet)
            setChannelMap(nullptr);
        else
            EXPECT_EQ(map(), nullptr);
        EXPECT_EQ(spy::calls(), (Notes{askSize, readMap(8)}));
        EXPECT_EQ(host().calls(), Notes());
        EXPECT_EQ(seen(), (Lasterrors{-1, -1}));
        EXPECT_EQ(data().lasterror, -10851);
        expectNothingHeld();
    }
}

TEST_F(ChannelMap, CallsThePlatformEvenBeforeALoad)
{
    beginEmpty();
    spy::answer("AudioUnitGetPropertyInfo").status = -50;
    EXPECT_EQ(map(), nullptr);
    EXPECT_EQ(data().lasterror, -50);
    setChannelMap(nullptr);
    EXPECT_EQ(data().lasterror, -50);
    const std::string sizeCall = "AudioUnitGetPropertyInfo(null, 2002, output, 0, size 0, null)";
    EXPECT_EQ(spy::calls(), (Notes{sizeCall, sizeCall}));
}

// ---- writing ----

TEST_F(ChannelMap, WritesTheWholeMap)
{
    const struct {
        std::string before;
        std::optional<std::vector<HostInteger>> values; ///< array argument; none for nil
        std::string after;
        const char* why;
    } rows[] = {
        {bytesOf({0, 1, 2}), {{2, 1, 0}}, bytesOf({2, 1, 0}), "as many as entries"},
        {bytesOf({0, 1, 2}), {{5, 6}}, bytesOf({5, 6, -1}), "fewer: the other entries become unmapped"},
        {bytesOf({0, 1, 2}), {{5}}, bytesOf({5, -1, -1}), "one"},
        {bytesOf({0, 1, 2}), {std::vector<HostInteger>{}}, bytesOf({-1, -1, -1}), "an empty array"},
        {bytesOf({0, 1, 2}), {}, bytesOf({-1, -1, -1}), "nil"},
        {bytesOf({0, 1, 2}), {{9, 8, 7, 6}}, bytesOf({9, 8, 7}), "one more: it is dropped"},
        {bytesOf({0, 1, 2}), std::vector<HostInteger>(1000, 4), bytesOf({4, 4, 4}), "many more"},
        {bytesOf({0}), {{-1}}, bytesOf({-1}), "an unmapped value"},
        {bytesOf({0, 1, 2, 3}),
         {{INT32_MAX, INT32_MIN, 1000, -2}},
         bytesOf({INT32_MAX, INT32_MIN, 1000, -2}),
         "values are not checked"},
        {bytesOf({0, 1}) + "xyz",
         {{5}},
         bytesOf({5, -1}) + "xyz",
         "incomplete entries are written back unchanged"},
        {bytesOf({0, 1}) + "xyz",
         {{5, 6, 7}},
         bytesOf({5, 6}) + "xyz",
         "incomplete entries are not overwritten"},
        {"xyz", {{5}}, "xyz", "less than one entry"},
        {"x", {}, "x", "one byte"},
    };
    for (const auto& row : rows)
        for (const OSStatus status : {0, -10851}) {
            SCOPED_TRACE(row.why);
            beginMap(row.before);
            spy::answer("AudioUnitSetProperty").status = status;
            const Array values = row.values ? host().newIntegers(*row.values) : nullptr;
            setChannelMap(values);
            const std::string size = std::to_string(row.before.size());
            ASSERT_EQ(spy::calls().size(), 3u);
            EXPECT_EQ(spy::calls()[0], askSize);
            EXPECT_EQ(spy::calls()[1], readMap(row.before.size()));
            const std::string written = spy::calls()[2];
            EXPECT_EQ(written.rfind("AudioUnitSetProperty(output, 2002, output, 0, ", 0), 0u) << written;
            EXPECT_EQ(written.substr(written.rfind(',')), ", " + size + " bytes)");
            EXPECT_EQ(spy::lastValue(), row.after);
            EXPECT_EQ(seen(), (Lasterrors{-1, -1, 0})) << "the last call leaves its own status";
            EXPECT_EQ(data().lasterror, status);
            EXPECT_EQ(raised(), Notes());
            if (values) host().drop(values);
            expectNothingHeld();
        }
}

TEST_F(ChannelMap, WritesTheQueriedSizeEvenAfterAShortRead)
{
    beginMap(bytesOf({0, 1, 2}));
    spy::answer("AudioUnitGetProperty").size = 4;
    setChannelMap(nullptr);
    EXPECT_EQ(spy::lastValue(), bytesOf({-1, -1, -1}));
    expectNothingHeld();
}

TEST_F(ChannelMap, WritesZerosForElementsThatVanish)
{
    beginMap(bytesOf({0, 1, 2, 3}));
    const Array values = host().newIntegers({9, 8, 7});
    // The host program shrinks the array to one element while the plug-in reads the first element.
    host().inNext("get", [&] { host().setUpperBound(values, 0); });
    setChannelMap(values);
    EXPECT_EQ(spy::lastValue(), bytesOf({9, 0, 0, -1}));
    const std::string text =
        "OutOfBoundsException: Parameter index  is too big. Range is 0 to 0, but value is ";
    EXPECT_EQ(raised(), (Notes{text + "1.", text + "2."}));
    EXPECT_EQ(data().lasterror, 0);
    host().drop(values);
    expectNothingHeld();
}

TEST_F(ChannelMap, WritesZerosWithoutTheElementServices)
{
    beginMap(bytesOf({5, 6}));
    withhold("PluginIntegerArrayGetProc");
    withhold("RuntimeArrayDirectGetGetProc");
    const Array values = host().newIntegers({9});
    setChannelMap(values);
    EXPECT_EQ(spy::lastValue(), bytesOf({0, -1}));
    EXPECT_EQ(raised(), Notes());
    host().drop(values);
}

TEST_F(ChannelMap, ReadsTheArrayRecordsOfAnOlderHost)
{
    for (const double version : {2015.9, 2016.0}) {
        clearScripts();
        startOver(version);
        ASSERT_TRUE(load());
        watch();
        setMap(bytesOf({5, 6, 7}));
        const Array values = host().newIntegers({9, 8});
        setChannelMap(values);
        EXPECT_EQ(spy::lastValue(), bytesOf({9, 8, -1}));
        const Notes notes = host().calls();
        EXPECT_EQ(std::find(notes.begin(), notes.end(), "get(a1, 0)") != notes.end(), version >= 2016.0);
        host().drop(values);
    }
}

TEST_F(ChannelMap, TreatsANegativeBoundAsAnEmptyArray)
{
    for (const HostInteger bound : {HostInteger{-2}, HostInteger{INT32_MIN}}) {
        beginMap(bytesOf({5, 6}));
        const Array values = host().newIntegers({9});
        host().setUpperBound(values, bound);
        setChannelMap(values);
        EXPECT_EQ(spy::lastValue(), bytesOf({-1, -1}));
        EXPECT_EQ(raised(), Notes());
        host().drop(values);
    }
}

// ---- exceptions ----

TEST_F(ChannelMap, CatchesExceptionsAndFreesItsBuffer)
{
    for (std::size_t throwing = 0; throwing < 3; ++throwing)
        for (const bool isSet : {false, true}) {
            beginMap(bytesOf({0, 1}));
            spy::script().inEachCall = [=](std::size_t number) {
                if (number == throwing) throw Thrown();
            };
            if (isSet) {
                EXPECT_NO_THROW(setChannelMap(nullptr));
                EXPECT_EQ(spy::calls().size(), throwing + 1);
                expectNothingHeld();
            } else if (throwing < 2) {
                EXPECT_NO_THROW(EXPECT_EQ(map(), nullptr));
                expectNothingHeld();
            }
        }
    for (const char* service : {"RuntimeUBound", "PluginIntegerArrayGetProc", "get"}) {
        SCOPED_TRACE(service);
        beginMap(bytesOf({0, 1}));
        const Array values = host().newIntegers({9});
        host().inNext(service, [] { throw Thrown(); });
        EXPECT_NO_THROW(setChannelMap(values));
        EXPECT_EQ(spy::calls(), (Notes{askSize, readMap(8)})) << "an incomplete map is not written";
        host().drop(values);
        expectNothingHeld();
    }
    beginMap(bytesOf({0, 1}));
    host().inNext("RuntimeArrayCreateSingleDimBoundedArray", [] { throw Thrown(); });
    EXPECT_NO_THROW(EXPECT_EQ(map(), nullptr));
    expectNothingHeld();
}

TEST_F(ChannelMap, ReturnsTheIncompleteArrayAfterAnException)
{
    for (const char* service : {"PluginIntegerArrayInsertProc", "RuntimeUBound", "insert"}) {
        SCOPED_TRACE(service);
        beginMap(bytesOf({7, 8}));
        host().inNext(service, [] { throw Thrown(); });
        Array array = nullptr;
        EXPECT_NO_THROW(array = map());
        ASSERT_NE(array, nullptr) << "no service releases an array";
        EXPECT_EQ(host().references(array), 1);
        host().drop(array);
        expectNothingHeld();
    }
}

} // namespace
