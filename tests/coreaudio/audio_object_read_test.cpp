// Reading a property of an audio object: into a new block, or into the caller's block.
#include "tests/coreaudio/audio_object.h"

#include <cstring>

namespace {

using namespace subject;
using spy::Calls;

// ---- reading into a new block ----

TEST_F(AudioObjectMembers, ANewBlockHasACopyOfTheValue)
{
    const struct {
        const char* why;
        OSStatus sizeStatus;
        std::optional<UInt32> announced;
        OSStatus getStatus;
        std::optional<UInt32> written;
        bool readsValue;
        HostInteger lasterror;
        std::optional<std::size_t> result; ///< size of the returned block; none if the result is nil
    } rows[] = {
        {"the whole value", 0, 5, 0, 5, true, 0, 5},
        {"the platform does not return a size", 0, 5, 0, {}, true, 0, 5},
        {"a size of 1", 0, 1, 0, 1, true, 0, 1},
        {"less is written", 0, 5, 0, 2, true, 0, 2},
        {"0 bytes are written", 0, 5, 0, 0, true, 0, {}},
        {"the platform returns more than the capacity", 0, 5, 0, 6, true, 0, 5},
        {"the platform returns the largest size of a block", 0, 5, 0, 0x7FFFFFFE, true, 0, 5},
        {"an empty property is nil without an error", 0, 0, 0, {}, false, 0, {}},
        {"a property without a size is nil without an error", 0, {}, 0, {}, false, 0, {}},
        {"getting the size fails", badObject, {}, 0, {}, false, badObject, {}},
        {"getting the size fails with a size", unknownProperty, 5, 0, {}, false, unknownProperty, {}},
        {"reading fails", 0, 5, unknownProperty, 5, true, unknownProperty, {}},
        {"reading fails with status 1", 0, 5, 1, 3, true, 1, {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        startHost(2016.0);
        property_spy::reset();
        const Block q = block("qual", "q");
        size().status = row.sizeStatus;
        size().size = row.announced;
        get().status = row.getStatus;
        get().size = row.written;
        get().value = value;
        lasterror() = 4711;

        c_library_spy::begin();
        const Block result = read(q, nullptr);
        const Calls memory = c_library_spy::end();

        Calls expected = {sizeCall("0x4, q")}, expectedMemory;
        if (row.readsValue) {
            const std::string announced = std::to_string(*row.announced);
            expected.push_back(getCall(*row.announced, announced + " zeros", "0x4, q"));
            expectedMemory = {"calloc " + announced, "free"};
        }
        EXPECT_EQ(spy::calls(), expected);
        EXPECT_EQ(memory, expectedMemory);
        EXPECT_EQ(lasterror(), row.lasterror);
        EXPECT_EQ(result != nullptr, row.result.has_value());
        if (result) {
            EXPECT_EQ(host().bytesOf(result), value.substr(0, *row.result));
            EXPECT_EQ(host().references(result), 1);
            host().drop(result);
        }
        EXPECT_TRUE(host().raised().empty());
        host().drop(q);
        expectBalance();
    }
}

TEST_F(AudioObjectMembers, OutOfMemoryForTheValueIsRaised)
{
    const struct {
        UInt32 announced;
        bool isAllocated;
        const char* message;
    } rows[] = {
        {1, true, "Failed to allocate 1 bytes memory for data."},
        {5, true, "Failed to allocate 5 bytes memory for data."},
        {0x7FFFFFFF, true, "Failed to allocate 2147483647 bytes memory for data."},
        {0x80000000, false, "Failed to allocate 2147483648 bytes memory for data."},
        {0xFFFFFFFF, false, "Failed to allocate 4294967295 bytes memory for data."},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.announced);
        startHost(2016.0);
        property_spy::reset();
        const Block q = block("qual", "q");
        size().size = row.announced;
        lasterror() = 4711;
        if (row.isAllocated) c_library_spy::refuseCalloc(1);
        c_library_spy::begin();
        EXPECT_EQ(read(q, nullptr), nullptr);
        EXPECT_EQ(c_library_spy::end(),
                  row.isAllocated ? Calls{"calloc " + std::to_string(row.announced)} : Calls{});
        EXPECT_EQ(spy::calls(), Calls{sizeCall("0x4, q")});
        EXPECT_EQ(lasterror(), -1);
        ASSERT_EQ(host().raised().size(), 1u);
        EXPECT_EQ(host().raised()[0].className, "OutOfMemoryException");
        EXPECT_EQ(host().raised()[0].message, row.message);
        EXPECT_EQ(host().raised()[0].number, 0);
        host().drop(q);
        expectBalance();
    }
}

TEST_F(AudioObjectMembers, AReturnedSizeThatNoBlockCanHaveIsRaised)
{
    const struct {
        UInt32 written;
        const char* message;
    } rows[] = {
        {0x7FFFFFFF, "Failed to allocate a memoryblock with 2147483647 bytes in size."},
        {0x80000000, "Failed to allocate a memoryblock with 2147483648 bytes in size."},
        {0xFFFFFFFF, "Failed to allocate a memoryblock with 4294967295 bytes in size."},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.message);
        startHost(2016.0);
        property_spy::reset();
        size().size = 5;
        get().size = row.written;
        get().value = value;
        EXPECT_EQ(read(nullptr, nullptr), nullptr);
        EXPECT_EQ(lasterror(), 0) << "the platform's status";
        ASSERT_EQ(host().raised().size(), 1u);
        EXPECT_EQ(host().raised()[0].className, "OutOfMemoryException");
        EXPECT_EQ(host().raised()[0].message, row.message);
        for (const std::string& call : host().calls())
            EXPECT_NE(call.substr(0, call.find('(')), "newMemoryBlock");
        expectBalance();
    }
}

TEST_F(AudioObjectMembers, LasterrorIsMinusOneDuringBothPlatformCalls)
{
    std::vector<HostInteger> seen;
    size().size = 5;
    size().during = get().during = [&] { seen.push_back(lasterror()); };
    host().drop(read(nullptr, nullptr));
    EXPECT_EQ(seen, (std::vector<HostInteger>{-1, -1}));
    EXPECT_EQ(lasterror(), 0);
}

TEST_F(AudioObjectMembers, TheNewBlockIsNilIfTheHostBuildsNone)
{
    size().size = 5;
    const Block q = block("qual", "q");
    host().failNext("newMemoryBlock");
    EXPECT_EQ(read(q, nullptr), nullptr);
    EXPECT_EQ(lasterror(), 0) << "the platform's status";
    host().blocksHaveBytes = false;
    EXPECT_EQ(read(q, nullptr), nullptr);
    host().drop(q);
    expectBalance();
}

TEST_F(AudioObjectMembers, TheNewBlockIsIndependentOfTheProperty)
{
    size().size = 5;
    get().value = value;
    const Block first = read(nullptr, nullptr);
    std::memset(const_cast<char*>(host().storageOf(first)), 'x', 5);
    const Block second = read(nullptr, nullptr);
    EXPECT_EQ(host().bytesOf(second), value);
    host().drop(first);
    host().drop(second);
}

// ---- reading into the caller's block ----

TEST_F(AudioObjectMembers, TheCallersBlockIsReturned)
{
    const struct {
        const char* why;
        std::optional<UInt32> written;
        OSStatus status;
        bool isReturned;
    } rows[] = {
        {"the whole value", 5, 0, true},
        {"less than the capacity", 2, 0, true},
        {"more than the capacity", 500, 0, true},
        {"0 bytes", 0, 0, true},
        {"no returned size", {}, 0, true},
        {"refused: the block is too small for the platform", 500, 0x2173697A, false},
        {"refused with status 1", {}, 1, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        startHost(2016.0);
        property_spy::reset();
        const Block q = block("qual", "q"), input = block("12345", "input");
        get().status = row.status;
        get().size = row.written;
        get().value = "abc";
        lasterror() = 4711;
        c_library_spy::begin();
        const Block result = read(q, input);
        EXPECT_EQ(c_library_spy::end(), Calls()) << "the block is the buffer";
        EXPECT_EQ(spy::calls(), Calls{getCall(5, "input", "0x4, q")});
        EXPECT_EQ(lasterror(), row.status);
        EXPECT_EQ(result, row.isReturned ? input : nullptr);
        EXPECT_EQ(host().references(input), row.isReturned ? 2 : 1);
        EXPECT_EQ(host().bytesOf(input), "abc45") << "the same size, with the value";
        expectBalance({"m1: 1", row.isReturned ? "m2: 2" : "m2: 1"});
        host().dropAll();
    }
}

TEST_F(AudioObjectMembers, TheCallersBlockMayBeEmptyOrWithoutMemory)
{
    const struct {
        const char* why;
        HostInteger claimed;
        bool hasMemory;
        UInt32 size;
        const char* shown;
    } rows[] = {
        {"empty", 0, true, 0, "input"},
        {"of negative size", -5, true, 0, "input"},
        {"without memory", 5, false, 0, "null"},
        {"empty and without memory", 0, false, 0, "null"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        startHost(2016.0);
        property_spy::reset();
        const Block input = block("12345", "input");
        host().claimSize(input, row.claimed);
        if (!row.hasMemory) host().takeMemory(input);
        EXPECT_EQ(read(nullptr, input), input);
        EXPECT_EQ(spy::calls(), Calls{getCall(row.size, row.shown)});
        EXPECT_EQ(locks(), (Calls{"m1 +", "m1 +", "m1 -"}));
        EXPECT_EQ(host().references(input), 2);
        host().dropAll();
    }
}

TEST_F(AudioObjectMembers, OneBlockMayBeBothQualifierAndBuffer)
{
    const Block both = block("12345", "both");
    EXPECT_EQ(read(both, both), both);
    EXPECT_EQ(spy::calls(), Calls{getCall(5, "both", "0x5, both")});
    expectBalance({"m1: 2"});
}

} // namespace
