// The audio-object members of CoreAudioKVX: block arguments, sizes, writes, and the rules for all members.
#include "tests/coreaudio/audio_object.h"

#include <climits>

namespace {

using namespace subject;
using spy::Calls;

// ---- a block as an argument ----

// The three audio-object members pass each block argument to the platform in the same way.
TEST_F(AudioObjectMembers, BlocksArePassedAsSizeAndAddress)
{
    const struct {
        const char* why;
        const char* bytes; ///< bytes of the block; null if there is no block
        std::optional<HostInteger> claimed;
        bool hasMemory;
        const char* shown;
    } rows[] = {
        {"a block", "qual", {}, true, "0x4, q"},
        {"no block", nullptr, {}, true, "0x0, null"},
        {"a block without memory", "qual", {}, false, "0x0, null"},
        {"a block without memory that reports a size", "qual", HostInteger{77}, false, "0x0, null"},
        {"a negative size counts as 0", "qual", HostInteger{-1}, true, "0x0, q"},
        {"the most negative size", "qual", HostInteger{INT_MIN}, true, "0x0, q"},
        {"an empty block", "qual", HostInteger{0}, true, "0x0, q"},
        {"the largest size", "qual", HostInteger{INT_MAX}, true, "0x7FFFFFFF, q"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        startHost(2016.0);
        property_spy::reset();
        property_spy::readValues(false);
        const Block q = row.bytes ? block(row.bytes, "q") : nullptr;
        if (row.claimed) host().claimSize(q, *row.claimed);
        if (!row.hasMemory) host().takeMemory(q);
        const Calls once = q ? Calls{"m1 +", "m1 -"} : Calls{};

        getSize(q);
        EXPECT_EQ(spy::calls(), Calls{sizeCall(row.shown)});
        EXPECT_EQ(locks(), once);

        host().forget(), spy::forgetCalls();
        size().size = 3;
        EXPECT_EQ(read(q, nullptr) != nullptr, true);
        EXPECT_EQ(spy::calls(), (Calls{sizeCall(row.shown), getCall(3, "3 zeros", row.shown)}));

        host().forget(), spy::forgetCalls();
        write(nullptr, q);
        EXPECT_EQ(spy::calls(), Calls{setCall("0x0, null", row.shown)});
        EXPECT_EQ(locks(), once);

        host().forget(), spy::forgetCalls();
        write(q, nullptr);
        EXPECT_EQ(spy::calls(), Calls{setCall(row.shown)});
        EXPECT_EQ(locks(), once);
        host().dropAll();
    }
}

TEST_F(AudioObjectMembers, QualifiersArePassedUnchanged)
{
    const Block q = block(std::string("q\0\xFF", 3), "q");
    const Block data = block(std::string("d\0\x80\x01", 4), "data");
    getSize(q);
    EXPECT_EQ(property_spy::lastQualifier(), std::string("q\0\xFF", 3));
    write(data, q);
    EXPECT_EQ(property_spy::lastQualifier(), std::string("q\0\xFF", 3));
    EXPECT_EQ(spy::lastValue(), std::string("d\0\x80\x01", 4));
    EXPECT_EQ(spy::calls().back(), setCall("0x4, data", "0x3, q"));
    read(q, data);
    EXPECT_EQ(property_spy::lastQualifier(), std::string("q\0\xFF", 3));
}

TEST_F(AudioObjectMembers, BlocksHaveAReferenceDuringThePlatformCall)
{
    const Block q = block("qual", "q"), data = block("data", "data");
    const auto expectHeld = [&](int dataReferences) {
        return [=] {
            EXPECT_EQ(host().references(q), 2);
            EXPECT_EQ(host().references(data), dataReferences);
        };
    };
    size().during = expectHeld(1);
    getSize(q);
    get().during = expectHeld(2);
    read(q, data);
    host().drop(data); // reference that the caller received
    set().during = expectHeld(2);
    write(data, q);
    EXPECT_EQ(spy::calls().size(), 3u);
    expectBalance({"m1: 1", "m2: 1"});
}

// ---- the size ----

TEST_F(AudioObjectMembers, TheSizeIsThatOfThePlatform)
{
    const struct {
        const char* why;
        OSStatus status;
        std::optional<UInt32> reported;
        std::uint32_t size;
    } rows[] = {
        {"a size", 0, 24, 24},
        {"size 0", 0, 0, 0},
        {"all 32 bits", 0, 0xFFFFFFFF, 0xFFFFFFFF},
        {"an object that does not exist", badObject, {}, 0},
        {"an error with a size", unknownProperty, 8, 8},
        {"success without a size", 0, {}, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        property_spy::reset();
        size().status = row.status;
        size().size = row.reported;
        lasterror() = 4711;
        EXPECT_EQ(getSize(nullptr), row.size);
        EXPECT_EQ(lasterror(), row.status);
        EXPECT_EQ(spy::calls(), Calls{sizeCall()});
    }
}

// ---- writing ----

TEST_F(AudioObjectMembers, TheWholeBlockIsWritten)
{
    const Block data = block("12345678", "data"), q = block("qual", "q");
    for (const OSStatus status :
         {OSStatus{0}, OSStatus{1}, OSStatus{-1}, unknownProperty, OSStatus{INT_MIN}}) {
        set().status = status;
        lasterror() = 4711;
        host().forget(), spy::forgetCalls();
        write(data, q);
        EXPECT_EQ(spy::calls(), Calls{setCall("0x8, data", "0x4, q")});
        EXPECT_EQ(spy::lastValue(), "12345678");
        EXPECT_EQ(lasterror(), status);
        const Calls seen = locks();
        ASSERT_EQ(seen.size(), 4u);
        EXPECT_EQ(Calls(seen.begin(), seen.begin() + 2), (Calls{"m1 +", "m2 +"})) << "data is locked first";
    }
    expectBalance({"m1: 1", "m2: 1"});
}

// ---- rules for all members ----

TEST_F(AudioObjectMembers, LasterrorIsSetBeforeAnyOtherCall)
{
    const Block q = block("qual", "q"), data = block("data", "data");
    const std::function<void()> calls[] = {
        [&] { getSize(q); },
        [&] { read(q, nullptr); },
        [&] { read(q, data); },
        [&] { write(data, q); },
    };
    for (const auto& member : calls) {
        lasterror() = 4711;
        watchFirstCall();
        member();
        EXPECT_EQ(lasterrorInFirstCall(), std::vector<HostInteger>{-1});
    }
}

TEST_F(AudioObjectMembers, LocksAreBalancedAfterAnyException)
{
    enum Member { getting, reading, readingInto, writing };
    const struct {
        const char* step;
        Member member;
        /// Platform function that throws; "" if the host service below throws.
        const char* platformFunction;
        const char* service;
        int calls; ///< number of calls of the host service before the call that throws
        HostInteger lasterror;
    } rows[] = {
        {"getting the size", getting, "AudioObjectGetPropertyDataSize", "", 0, -1},
        {"getting the size before the value", reading, "AudioObjectGetPropertyDataSize", "", 0, -1},
        {"reading", reading, "AudioObjectGetPropertyData", "", 0, -1},
        {"building the block", reading, "", "newMemoryBlock", 0, 0},
        {"getting the new block's address", reading, "", "memoryBlockGetPtr", 1, 0},
        {"reading into a block", readingInto, "AudioObjectGetPropertyData", "", 0, -1},
        {"writing", writing, "AudioObjectSetPropertyData", "", 0, -1},
        {"locking the qualifier", getting, "", "REALLockObject", 0, -1},
        {"getting the qualifier's size", getting, "", "memoryBlockGetSize", 0, -1},
        {"getting the qualifier's address", getting, "", "memoryBlockGetPtr", 0, -1},
        {"locking the second block", readingInto, "", "REALLockObject", 1, -1},
        {"getting the second block's size", readingInto, "", "memoryBlockGetSize", 1, -1},
        {"getting the second block's address", readingInto, "", "memoryBlockGetPtr", 1, -1},
        {"locking the result", readingInto, "", "REALLockObject", 2, 0},
        {"getting the first size of a write", writing, "", "memoryBlockGetSize", 0, -1},
        {"getting the second size of a write", writing, "", "memoryBlockGetSize", 1, -1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.step);
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
            case getting:
                EXPECT_EQ(getSize(q), 0u);
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

TEST_F(AudioObjectMembers, ContinuesWithoutAMissingService)
{
    const struct {
        const char* service;
        const char* qualifier; ///< expected qualifier arguments of the platform call
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
                EXPECT_EQ(getSize(q), 8u);
            EXPECT_EQ(spy::calls(),
                      Calls{isWrite ? setCall("0x0, null", row.qualifier) : sizeCall(row.qualifier)});
            EXPECT_EQ(lasterror(), 0);
            host().dropAll();
        }
}

TEST_F(AudioObjectMembers, OutOfMemoryIsNilAlsoWhenNoExceptionCanBeRaised)
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
