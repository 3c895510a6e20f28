// The audio-object members: any property by its address, with qualifiers, as memory blocks.
#include "tests/coreaudio/subject.h"

#include <climits>
#include <cstring>

namespace {

using namespace subject;
using property_spy::Notes;

constexpr OSStatus unknown = 0x77686F3F;   // 'who?'
constexpr OSStatus badObject = 0x216F626A; // '!obj'

// Arguments that differ from position to position, as the host hands them over and as the platform sees them.
const HostInteger objectID = static_cast<std::int32_t>(0x80000021);
constexpr std::uint32_t selector = 0xF0000001, scope = 0xE0000002, element = 0xFFFFFFFF;
const std::string where = "0x80000021, {0xF0000001, 0xE0000002, 0xFFFFFFFF}, ";

class AudioObject : public Subject {
protected:
    std::uint32_t askSize(Block qualifier)
    {
        return call<std::uint32_t>("AudioObjectGetPropertyDataSize", object(), objectID, selector, scope,
                                   element, qualifier);
    }
    Block read(Block qualifier, Block input)
    {
        return call<Block>("AudioObjectGetPropertyData", object(), objectID, selector, scope, element,
                           qualifier, input);
    }
    void write(Block data, Block qualifier)
    {
        call<void>("AudioObjectSetPropertyData", object(), objectID, selector, scope, element, data,
                   qualifier);
    }

    Block block(const std::string& bytes, const std::string& shown)
    {
        const Block made = host().newMemoryBlock(bytes);
        property_spy::name(addressOf(made), shown);
        host().forget();
        return made;
    }

    property_spy::Answer& size() { return property_spy::answer("AudioObjectGetPropertyDataSize"); }
    property_spy::Answer& get() { return property_spy::answer("AudioObjectGetPropertyData"); }
    property_spy::Answer& set() { return property_spy::answer("AudioObjectSetPropertyData"); }

    std::string sizeCall(const std::string& qualifier = "0x0, null")
    {
        return "AudioObjectGetPropertyDataSize(" + where + qualifier + ", size 0)";
    }
    std::string getCall(UInt32 bytes, const std::string& buffer, const std::string& qualifier = "0x0, null")
    {
        return "AudioObjectGetPropertyData(" + where + qualifier + ", size " + std::to_string(bytes) + ", " +
               buffer + ")";
    }
    std::string setCall(const std::string& data, const std::string& qualifier = "0x0, null")
    {
        return "AudioObjectSetPropertyData(" + where + qualifier + ", " + data + ")";
    }

    /// How often each block was locked and unlocked, "m1 +" and "m1 -", in order.
    Notes locks()
    {
        Notes found;
        for (const std::string& note : host().calls()) {
            if (note.rfind("REALLockObject(", 0) == 0)
                found.push_back(note.substr(15, note.size() - 16) + " +");
            if (note.rfind("REALUnlockObject(", 0) == 0)
                found.push_back(note.substr(17, note.size() - 18) + " -");
        }
        return found;
    }
};

// ---- a block as an argument ----

// What a block amounts to is the same for all three members and for each of their blocks.
TEST_F(AudioObject, BlocksAreSeenAsSizeAndAddress)
{
    const struct {
        const char* why;
        const char* bytes; ///< null: no block
        std::optional<HostInteger> claimed;
        bool hasMemory;
        const char* shown;
    } rows[] = {
        {"a block", "qual", {}, true, "0x4, q"},
        {"no block", nullptr, {}, true, "0x0, null"},
        {"a block without memory", "qual", {}, false, "0x0, null"},
        {"without memory, whatever it claims", "qual", HostInteger{77}, false, "0x0, null"},
        {"a negative size is none, the address stays", "qual", HostInteger{-1}, true, "0x0, q"},
        {"the most negative one", "qual", HostInteger{INT_MIN}, true, "0x0, q"},
        {"an empty block", "qual", HostInteger{0}, true, "0x0, q"},
        {"the greatest size", "qual", HostInteger{INT_MAX}, true, "0x7FFFFFFF, q"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        startHost(2016.0);
        property_spy::reset();
        property_spy::readValues(false);
        const Block q = row.bytes ? block(row.bytes, "q") : nullptr;
        if (row.claimed) claimSize(q, *row.claimed);
        if (!row.hasMemory) takeMemory(q);
        const Notes once = q ? Notes{"m1 +", "m1 -"} : Notes{};

        askSize(q);
        EXPECT_EQ(property_spy::calls(), Notes{sizeCall(row.shown)});
        EXPECT_EQ(locks(), once);

        host().forget(), property_spy::forgetCalls();
        size().size = 3;
        EXPECT_EQ(read(q, nullptr) != nullptr, true);
        EXPECT_EQ(property_spy::calls(), (Notes{sizeCall(row.shown), getCall(3, "3 zeros", row.shown)}));

        host().forget(), property_spy::forgetCalls();
        write(nullptr, q);
        EXPECT_EQ(property_spy::calls(), Notes{setCall("0x0, null", row.shown)});
        EXPECT_EQ(locks(), once);

        host().forget(), property_spy::forgetCalls();
        write(q, nullptr);
        EXPECT_EQ(property_spy::calls(), Notes{setCall(row.shown)});
        EXPECT_EQ(locks(), once);
        host().dropAll();
    }
}

TEST_F(AudioObject, QualifiersReachThePlatformByteForByte)
{
    const Block q = block(std::string("q\0\xFF", 3), "q");
    const Block data = block(std::string("d\0\x80\x01", 4), "data");
    askSize(q);
    EXPECT_EQ(property_spy::lastQualifier(), std::string("q\0\xFF", 3));
    write(data, q);
    EXPECT_EQ(property_spy::lastQualifier(), std::string("q\0\xFF", 3));
    EXPECT_EQ(property_spy::lastValue(), std::string("d\0\x80\x01", 4));
    EXPECT_EQ(property_spy::calls().back(), setCall("0x4, data", "0x3, q"));
    read(q, data);
    EXPECT_EQ(property_spy::lastQualifier(), std::string("q\0\xFF", 3));
}

TEST_F(AudioObject, BlocksAreHeldWhileThePlatformReads)
{
    const Block q = block("qual", "q"), data = block("data", "data");
    const auto expectHeld = [&](int dataReferences) {
        return [=] {
            EXPECT_EQ(host().references(q), 2);
            EXPECT_EQ(host().references(data), dataReferences);
        };
    };
    size().during = expectHeld(1);
    askSize(q);
    get().during = expectHeld(2);
    read(q, data);
    host().drop(data); // the result's reference
    set().during = expectHeld(2);
    write(data, q);
    EXPECT_EQ(property_spy::calls().size(), 3u);
    expectBalance({"m1: 1", "m2: 1"});
}

// ---- asking for the size ----

TEST_F(AudioObject, SizeIsWhatThePlatformTells)
{
    const struct {
        const char* why;
        OSStatus status;
        std::optional<UInt32> told;
        std::uint32_t size;
    } rows[] = {
        {"a size", 0, 24, 24},
        {"none", 0, 0, 0},
        {"all 32 bits", 0, 0xFFFFFFFF, 0xFFFFFFFF},
        {"an object that does not exist", badObject, {}, 0},
        {"an error that tells a size", unknown, 8, 8},
        {"success without a word", 0, {}, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        property_spy::reset();
        size().status = row.status;
        size().size = row.told;
        lasterror() = 4711;
        EXPECT_EQ(askSize(nullptr), row.size);
        EXPECT_EQ(lasterror(), row.status);
        EXPECT_EQ(property_spy::calls(), Notes{sizeCall()});
    }
}

// ---- reading into a new block ----

const std::string value("AB\0\xE9Z", 5);

TEST_F(AudioObject, ANewBlockHoldsACopyOfTheValue)
{
    const struct {
        const char* why;
        OSStatus sizeStatus;
        std::optional<UInt32> announced;
        OSStatus getStatus;
        std::optional<UInt32> written;
        bool asksValue;
        HostInteger lasterror;
        std::optional<std::size_t> result; ///< none: nil
    } rows[] = {
        {"the whole value", 0, 5, 0, 5, true, 0, 5},
        {"the size is not written back", 0, 5, 0, {}, true, 0, 5},
        {"a size of 1", 0, 1, 0, 1, true, 0, 1},
        {"less is written", 0, 5, 0, 2, true, 0, 2},
        {"nothing is written", 0, 5, 0, 0, true, 0, {}},
        {"more is claimed than there is room for", 0, 5, 0, 6, true, 0, 5},
        {"far more", 0, 5, 0, 0xFFFFFFFF, true, 0, 5},
        {"an empty property is nil without an error", 0, 0, 0, {}, false, 0, {}},
        {"so is one of which no size is told", 0, {}, 0, {}, false, 0, {}},
        {"asking for the size fails", badObject, {}, 0, {}, false, badObject, {}},
        {"it fails with a size", unknown, 5, 0, {}, false, unknown, {}},
        {"reading fails", 0, 5, unknown, 5, true, unknown, {}},
        {"it fails with 1", 0, 5, 1, 3, true, 1, {}},
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

        watched::begin();
        const Block result = read(q, nullptr);
        const Notes memory = watched::end();

        Notes expected = {sizeCall("0x4, q")}, expectedMemory;
        if (row.asksValue) {
            const std::string announced = std::to_string(*row.announced);
            expected.push_back(getCall(*row.announced, announced + " zeros", "0x4, q"));
            expectedMemory = {"calloc " + announced, "free"};
        }
        EXPECT_EQ(property_spy::calls(), expected);
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

TEST_F(AudioObject, NoMemoryForTheValueIsRaised)
{
    const struct {
        UInt32 announced;
        bool isAskedFor;
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
        if (row.isAskedFor) watched::refuseCalloc(1);
        watched::begin();
        EXPECT_EQ(read(q, nullptr), nullptr);
        EXPECT_EQ(watched::end(),
                  row.isAskedFor ? Notes{"calloc " + std::to_string(row.announced)} : Notes{});
        EXPECT_EQ(property_spy::calls(), Notes{sizeCall("0x4, q")});
        EXPECT_EQ(lasterror(), -1);
        ASSERT_EQ(host().raised().size(), 1u);
        EXPECT_EQ(host().raised()[0].className, "OutOfMemoryException");
        EXPECT_EQ(host().raised()[0].message, row.message);
        EXPECT_EQ(host().raised()[0].number, 0);
        host().drop(q);
        expectBalance();
    }
}

TEST_F(AudioObject, LasterrorIsMinusOneAgainWhileTheValueIsRead)
{
    std::vector<HostInteger> seen;
    size().size = 5;
    size().during = get().during = [&] { seen.push_back(lasterror()); };
    host().drop(read(nullptr, nullptr));
    EXPECT_EQ(seen, (std::vector<HostInteger>{-1, -1}));
    EXPECT_EQ(lasterror(), 0);
}

TEST_F(AudioObject, TheNewBlockIsNilWhereTheHostMakesNone)
{
    size().size = 5;
    const Block q = block("qual", "q");
    host().failNext("newMemoryBlock");
    EXPECT_EQ(read(q, nullptr), nullptr);
    EXPECT_EQ(lasterror(), 0) << "the platform's status stands";
    host().blocksHaveBytes = false;
    EXPECT_EQ(read(q, nullptr), nullptr);
    host().drop(q);
    expectBalance();
}

TEST_F(AudioObject, TheNewBlockDoesNotChangeTheProperty)
{
    size().size = 5;
    get().value = value;
    const Block first = read(nullptr, nullptr);
    std::memset(const_cast<void*>(addressOf(first)), 'x', 5);
    const Block second = read(nullptr, nullptr);
    EXPECT_EQ(host().bytesOf(second), value);
    host().drop(first);
    host().drop(second);
}

// ---- reading into the caller's block ----

TEST_F(AudioObject, TheCallersBlockIsReturnedItself)
{
    const struct {
        const char* why;
        std::optional<UInt32> written;
        OSStatus status;
        bool isReturned;
    } rows[] = {
        {"the whole value", 5, 0, true},
        {"less than there is room for", 2, 0, true},
        {"more than there is room for", 500, 0, true},
        {"nothing", 0, 0, true},
        {"without a word", {}, 0, true},
        {"not at all: the block is too small for this platform", 500, 0x2173697A, false},
        {"not at all, with 1", {}, 1, false},
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
        watched::begin();
        const Block result = read(q, input);
        EXPECT_EQ(watched::end(), Notes()) << "the block is the buffer";
        EXPECT_EQ(property_spy::calls(), Notes{getCall(5, "input", "0x4, q")});
        EXPECT_EQ(lasterror(), row.status);
        EXPECT_EQ(result, row.isReturned ? input : nullptr);
        EXPECT_EQ(host().references(input), row.isReturned ? 2 : 1);
        EXPECT_EQ(host().bytesOf(input), "abc45") << "unresized, filled in place";
        expectBalance({"m1: 1", row.isReturned ? "m2: 2" : "m2: 1"});
        host().dropAll();
    }
}

TEST_F(AudioObject, TheCallersBlockMayBeEmptyOrWithoutMemory)
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
        claimSize(input, row.claimed);
        if (!row.hasMemory) takeMemory(input);
        EXPECT_EQ(read(nullptr, input), input);
        EXPECT_EQ(property_spy::calls(), Notes{getCall(row.size, row.shown)});
        EXPECT_EQ(locks(), (Notes{"m1 +", "m1 +", "m1 -"}));
        EXPECT_EQ(host().references(input), 2);
        host().dropAll();
    }
}

TEST_F(AudioObject, OneBlockMayBeBothQualifierAndBuffer)
{
    const Block both = block("12345", "both");
    EXPECT_EQ(read(both, both), both);
    EXPECT_EQ(property_spy::calls(), Notes{getCall(5, "both", "0x5, both")});
    expectBalance({"m1: 2"});
}

// ---- writing ----

TEST_F(AudioObject, TheWholeBlockIsWritten)
{
    const Block data = block("12345678", "data"), q = block("qual", "q");
    for (const OSStatus status : {OSStatus{0}, OSStatus{1}, OSStatus{-1}, unknown, OSStatus{INT_MIN}}) {
        set().status = status;
        lasterror() = 4711;
        host().forget(), property_spy::forgetCalls();
        write(data, q);
        EXPECT_EQ(property_spy::calls(), Notes{setCall("0x8, data", "0x4, q")});
        EXPECT_EQ(property_spy::lastValue(), "12345678");
        EXPECT_EQ(lasterror(), status);
        const Notes seen = locks();
        ASSERT_EQ(seen.size(), 4u);
        EXPECT_EQ(Notes(seen.begin(), seen.begin() + 2), (Notes{"m1 +", "m2 +"})) << "data comes first";
    }
    expectBalance({"m1: 1", "m2: 1"});
}

// ---- what all have in common ----

TEST_F(AudioObject, LasterrorIsSetBeforeAnyOtherWork)
{
    const Block q = block("qual", "q"), data = block("data", "data");
    const std::function<void()> members[] = {
        [&] { askSize(q); },
        [&] { read(q, nullptr); },
        [&] { read(q, data); },
        [&] { write(data, q); },
    };
    for (const auto& member : members) {
        lasterror() = 4711;
        watchFirstCall();
        member();
        EXPECT_EQ(lasterrorInFirstCall(), std::vector<HostInteger>{-1});
    }
}

TEST_F(AudioObject, LocksAreBalancedWhateverThrows)
{
    enum Member { asking, reading, readingInto, writing };
    const struct {
        const char* place;
        Member member;
        const char* platformFunction; ///< or "": the host's service of that name
        const char* service;
        int calls; ///< of that service before the one that throws
        HostInteger lasterror;
    } rows[] = {
        {"asking for the size", asking, "AudioObjectGetPropertyDataSize", "", 0, -1},
        {"asking for the size first", reading, "AudioObjectGetPropertyDataSize", "", 0, -1},
        {"reading", reading, "AudioObjectGetPropertyData", "", 0, -1},
        {"building the block", reading, "", "newMemoryBlock", 0, 0},
        {"finding the block's memory", reading, "", "memoryBlockGetPtr", 1, 0},
        {"reading into a block", readingInto, "AudioObjectGetPropertyData", "", 0, -1},
        {"writing", writing, "AudioObjectSetPropertyData", "", 0, -1},
        {"locking the qualifier", asking, "", "REALLockObject", 0, -1},
        {"its size", asking, "", "memoryBlockGetSize", 0, -1},
        {"its address", asking, "", "memoryBlockGetPtr", 0, -1},
        {"locking the second block", readingInto, "", "REALLockObject", 1, -1},
        {"the second size", readingInto, "", "memoryBlockGetSize", 1, -1},
        {"the second address", readingInto, "", "memoryBlockGetPtr", 1, -1},
        {"the lock of the result", readingInto, "", "REALLockObject", 2, 0},
        {"the first size of a write", writing, "", "memoryBlockGetSize", 0, -1},
        {"the second size of a write", writing, "", "memoryBlockGetSize", 1, -1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.place);
        startHost(2016.0);
        property_spy::reset();
        const Block q = block("qual", "q"), data = block("data", "data");
        size().size = 5;
        get().value = value;
        if (*row.platformFunction) throwInPlatform(row.platformFunction);
        std::function<void(int)> throwAfter = [&](int left) {
            host().inNext(row.service, [&, left] {
                if (left == 0) throw Thrown();
                throwAfter(left - 1);
            });
        };
        if (*row.service) throwAfter(row.calls);
        lasterror() = 4711;

        EXPECT_NO_THROW({
            switch (row.member) {
            case asking:
                EXPECT_EQ(askSize(q), 0u);
                break;
            case reading:
                EXPECT_EQ(read(q, nullptr), nullptr);
                break;
            case readingInto:
                EXPECT_EQ(read(q, data), nullptr);
                break;
            case writing:
                write(data, q);
                break;
            }
        });
        EXPECT_EQ(lasterror(), row.lasterror);
        EXPECT_TRUE(host().raised().empty());
        expectBalance({"m1: 1", "m2: 1"});
        host().dropAll();
    }
}

TEST_F(AudioObject, GoesOnWithoutAServiceThatTheHostLacks)
{
    const struct {
        const char* service;
        const char* qualifier; ///< as the platform sees it
    } rows[] = {
        {"REALLockObject", "0x4, q"},
        {"REALUnlockObject", "0x4, q"},
        {"memoryBlockGetSize", "0x0, q"},
        {"memoryBlockGetPtr", "0x0, null"},
    };
    for (const auto& row : rows)
        for (const bool isWrite : {false, true}) {
            SCOPED_TRACE(row.service);
            startHost(2016.0);
            property_spy::reset();
            const Block q = block("qual", "q");
            host().withhold(row.service);
            size().size = 8;
            if (isWrite)
                write(nullptr, q);
            else
                EXPECT_EQ(askSize(q), 8u);
            EXPECT_EQ(property_spy::calls(),
                      Notes{isWrite ? setCall("0x0, null", row.qualifier) : sizeCall(row.qualifier)});
            EXPECT_EQ(lasterror(), 0);
            host().dropAll();
        }
}

TEST_F(AudioObject, WithoutTheMeansToRaiseNoMemoryIsStillNil)
{
    for (const char* service : {"PluginNewInstance", "RuntimeRaiseException", "REALBuildString"}) {
        SCOPED_TRACE(service);
        startHost(2016.0);
        property_spy::reset();
        host().withhold(service);
        size().size = 0x80000000;
        lasterror() = 4711;
        EXPECT_EQ(read(nullptr, nullptr), nullptr);
        EXPECT_EQ(lasterror(), -1);
        expectBalance();
    }
}

} // namespace
