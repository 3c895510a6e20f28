// Memory: the sizes of allocations, their release, and the results of failed allocations.
#include "plugin/host_exceptions.h"
#include "plugin/host_string.h"
#include "plugin/rb_text.h"
#include "plugin/register_class.h"
#include "plugin/zeroed.h"
#include "tests/plugin/class_states.h"
#include "tests/plugin/host_fixture.h"
#include "tests/support/c_library_spy.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

namespace {

class AllocationTest : public HostTest {
protected:
    AllocationTest() : blocksBefore(c_library_spy::liveBlocks()) {}
    void TearDown() override
    {
        c_library_spy::refuseCalloc(0);
        EXPECT_EQ(c_library_spy::liveBlocks(), blocksBefore);
        HostTest::TearDown();
    }
    const long blocksBefore;
};

/// The allocations and frees during `work`.
template <class Work>
Notes memoryOf(Work work)
{
    c_library_spy::begin();
    work();
    return c_library_spy::end();
}

Notes calloced(std::size_t bytes) { return {"calloc " + std::to_string(bytes)}; }
Notes callocedAndFreed(std::size_t bytes) { return {"calloc " + std::to_string(bytes), "free"}; }

// ---- zeroed memory ----

TEST_F(AllocationTest, ZeroedMemoryHasOneTo2147483647Bytes)
{
    // clang-format off
    const struct { std::int64_t count; bool allocates; const char* why; } facts[] = {
        {0,                      false, "zero"},
        {-1,                     false, "negative"},
        {1,                      true,  "the smallest"},
        {0x7FFFFFFF,             true,  "the largest"},
        {0x80000000LL,           false, "one byte more"},
        {0x100000001LL,          false, "the low 32 bits are 1"},
        {0x7FFFFFFFFFFFFFFFLL,   false, "the largest number"},
        {-0x7FFFFFFFFFFFFFFFLL,  false, "the most negative number"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        c_library_spy::refuseCalloc(1);
        const Notes calls = memoryOf([&] { EXPECT_EQ(allocateZeroed<char>(fact.count), nullptr); });
        EXPECT_EQ(calls, fact.allocates ? calloced(static_cast<std::size_t>(fact.count)) : Notes{})
            << fact.why;
    }
    c_library_spy::refuseCalloc(0);
}

TEST_F(AllocationTest, ZeroedRecordsAreLimitedByTheirBytes)
{
    struct Record {
        char bytes[12];
    };
    // clang-format off
    const struct { std::int64_t count; bool allocates; } facts[] = {
        {178956970, true},  // 2147483640 bytes
        {178956971, false}, // 2147483652 bytes
        {0x7FFFFFFF, false},
        {0x15555556LL * 4, false}, // size in bytes that overflows 32 bits
    };
    // clang-format on
    for (const auto& fact : facts) {
        c_library_spy::refuseCalloc(1);
        const Notes calls = memoryOf([&] { EXPECT_EQ(allocateZeroed<Record>(fact.count), nullptr); });
        EXPECT_EQ(!calls.empty(), fact.allocates) << fact.count;
    }
    c_library_spy::refuseCalloc(0);
}

TEST_F(AllocationTest, ZeroedMemoryIsZeroAndFreed)
{
    const Notes notes = memoryOf([] {
        const Zeroed<std::uint32_t> memory = allocateZeroed<std::uint32_t>(1000);
        ASSERT_NE(memory, nullptr);
        EXPECT_TRUE(
            std::all_of(memory.get(), memory.get() + 1000, [](std::uint32_t word) { return word == 0; }));
    });
    EXPECT_EQ(notes, callocedAndFreed(4000));
}

// ---- registration in class-definition layout 9 ----

/// A class definition with two elements in each of its six arrays.
struct FullClass {
    REALclassDefinition definition = {};
    REALproperty properties[2] = {}, sharedProperties[2] = {};
    REALmethod methods[2] = {}, sharedMethods[2] = {};
    REALevent events[2] = {{"One", 11, {0, 0}}, {"Two", 22, {0, 0}}};
    REALconstant constants[2] = {};

    FullClass()
    {
        definition.name = "Full";
        definition.properties = properties;
        definition.methods = methods;
        definition.events = events;
        definition.constants = constants;
        definition.sharedProperties = sharedProperties;
        definition.sharedMethods = sharedMethods;
        definition.propertyCount = definition.methodCount = definition.eventCount = 2;
        definition.constantCount = definition.sharedPropertyCount = definition.sharedMethodCount = 2;
    }
};

TEST_F(AllocationTest, OlderRecordsAreAllocatedOncePerArrayAndKept)
{
    FullClass full;
    CurrentREALControlVersion = 9;
    Notes sizes = memoryOf([&] { MyREALRegisterClass(&full.definition); });
    Notes expected;
    for (const ArrayFact& array : arrayFacts)
        expected.push_back(calloced(2 * array.olderWords * sizeof(Word))[0]);
    std::sort(sizes.begin(), sizes.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(sizes, expected) << "no other allocation";
    for (const ArrayFact& array : arrayFacts)
        std::free(reinterpret_cast<void*>(wordsOf(full.definition)[array.address]));
}

TEST_F(AllocationTest, RegistrationContinuesWithoutMemoryForAnArray)
{
    for (int refused = 1; refused <= 6; ++refused) {
        SCOPED_TRACE(refused);
        FullClass full;
        const std::vector<Word> before = wordsOf(full.definition);
        CurrentREALControlVersion = 9;
        host.startOver();
        c_library_spy::refuseCalloc(refused);
        MyREALRegisterClass(&full.definition);
        c_library_spy::refuseCalloc(0);
        EXPECT_EQ(host.calls(), Notes{"PluginRegisterClass(Full)"}) << "registered with the remaining arrays";

        const std::vector<Word> after = wordsOf(full.definition);
        int missing = 0;
        for (const ArrayFact& array : arrayFacts) {
            SCOPED_TRACE(array.name);
            EXPECT_EQ(after[array.count], before[array.count]) << "the count is unchanged";
            EXPECT_NE(after[array.address], before[array.address]);
            missing += after[array.address] == 0;
        }
        EXPECT_EQ(missing, refused);
        const auto* copies = static_cast<REALevent9*>(full.definition.events);
        for (int event : {0, 1})
            EXPECT_EQ(full.events[event].systemUse,
                      copies ? reinterpret_cast<Word>(&copies[event]) : Word(event == 0 ? 11 : 22))
                << "the address of the copy, or unchanged without one";
        for (const ArrayFact& array : arrayFacts) std::free(reinterpret_cast<void*>(after[array.address]));
    }
}

TEST_F(AllocationTest, OlderPropertiesAreLimitedByTheirBytes)
{
    const Word most = 0x7FFFFFFF / sizeof(REALproperty9);
    // clang-format off
    const struct { Word count; bool allocates; } facts[] = {{most, true}, {most + 1, false}, {Word(-1), false}};
    // clang-format on
    REALproperty record = {};
    for (const auto& fact : facts) {
        c_library_spy::refuseCalloc(1);
        const Notes calls = memoryOf([&] { EXPECT_EQ(FixProperties(&record, fact.count), nullptr); });
        EXPECT_EQ(calls, fact.allocates ? calloced(fact.count * sizeof(REALproperty9)) : Notes{})
            << fact.count;
    }
    c_library_spy::refuseCalloc(0);
}

// ---- exceptions ----

TEST_F(AllocationTest, AnOutOfBoundsMessageHas205BytesAndIsFreed)
{
    EXPECT_EQ(memoryOf([] { RaiseOutOfBoundsException(4, 0, 4, "index", ""); }), callocedAndFreed(205));
    EXPECT_EQ(host.raised().at(0).message, "Parameter index  is too big. Range is 0 to 3, but value is 4.");
}

TEST_F(AllocationTest, AnOutOfBoundsMessageIsShorterWithoutMemory)
{
    for (long long value : {-1, 4}) {
        enter(2016.0);
        c_library_spy::refuseCalloc(1);
        EXPECT_EQ(memoryOf([&] { RaiseOutOfBoundsException(value, 0, 4, "index", ""); }), calloced(205));
        ASSERT_EQ(host.raised().size(), 1u);
        EXPECT_EQ(host.raised()[0].className, "OutOfBoundsException");
        EXPECT_EQ(host.raised()[0].message, "Out of Bounds");
        EXPECT_EQ(host.raised()[0].number, 0);
    }
}

TEST_F(AllocationTest, AnExceptionAllocatesNothing)
{
    EXPECT_EQ(memoryOf([] { RaiseException("RuntimeException", "message"); }), Notes{});
}

// ---- UTF-32 on an old host ----

TEST_F(AllocationTest, UTF32AllocatesFrom800BytesOn)
{
    // clang-format off
    const struct { long long length; std::size_t heapBytes; const char* why; } facts[] = {
        {4,    0,    "on the stack"},
        {796,  0,    "199 points"},
        {799,  0,    "the last on the stack"},
        {800,  802,  "200 points: two units each and a terminator"},
        {803,  802,  "200 points"},
        {804,  806,  "201 points"},
        {4000, 4002, "1000 points"},
    };
    // clang-format on
    // Each code point becomes a surrogate pair, so the text fills the whole buffer.
    const std::vector<std::uint32_t> faces(1001, 0x1F600);
    for (double version : {2011.5, 2012.99})
        for (const auto& fact : facts) {
            SCOPED_TRACE(testing::Message() << fact.length << ": " << fact.why);
            enter(version);
            REALstringStruct* text = nullptr;
            const Notes notes =
                memoryOf([&] { text = REALBuildUnicodeString(faces.data(), fact.length, 0x0C000100); });
            EXPECT_EQ(notes, fact.heapBytes ? callocedAndFreed(fact.heapBytes) : Notes{});
            ASSERT_NE(text, nullptr);
            EXPECT_EQ(host.bytesOf(text).size(), static_cast<std::size_t>(fact.length / 4 * 4));
            host.drop(text);
        }
}

TEST_F(AllocationTest, UTF32AllocatesNothingOnHostsFrom2013)
{
    const std::vector<std::uint32_t> letters(1000, 0x61);
    enter(2013.0);
    REALstringStruct* text = nullptr;
    EXPECT_EQ(memoryOf([&] { text = REALBuildUnicodeString(letters.data(), 4000, 0x0C000100); }), Notes{});
    host.drop(text);
}

TEST_F(AllocationTest, UTF32IsNullWithoutMemory)
{
    const std::vector<std::uint32_t> letters(200, 0x61);
    // clang-format off
    const struct { long long length; std::size_t bytes; } facts[] = {{800, 802}, {0x7FFFFFFF, 2147483646}};
    // clang-format on
    for (const auto& fact : facts) {
        enter(2012.0);
        c_library_spy::refuseCalloc(1);
        const Notes notes = memoryOf(
            [&] { EXPECT_EQ(REALBuildUnicodeString(letters.data(), fact.length, 0x0C000100), nullptr); });
        EXPECT_EQ(notes, calloced(fact.bytes));
        EXPECT_EQ(host.notes(), Notes{}) << "the host is not called, no exception";
    }
}

TEST_F(AllocationTest, UTF32IsFreedWhenTheHostThrows)
{
    const std::vector<std::uint32_t> letters(200, 0x61);
    enter(2012.0);
    host.inNext("REALConvertString", [] { throw std::bad_alloc(); });
    EXPECT_EQ(memoryOf([&] { REALBuildUnicodeString(letters.data(), 800, 0x0C000100); }),
              callocedAndFreed(802));
    EXPECT_EQ(host.raised().at(0).message, "Failed to allocate memory.");
}

TEST_F(AllocationTest, OtherTextAllocatesNothing)
{
    const std::string letters(5000, 'a');
    for (unsigned long encoding : {0x0000ul, 0x0100ul, 0x0600ul, 0x08000100ul}) {
        REALstringStruct* text = nullptr;
        EXPECT_EQ(memoryOf([&] { text = REALBuildUnicodeString(letters.data(), 5000, encoding); }), Notes{});
        host.drop(text);
    }
}

// ---- the private copy of a text in rbText ----

TEST_F(AllocationTest, APrivateCopyIsFourBytesLongerAndFreedWithTheText)
{
    host.afterText = "#";
    for (double version : {2011.5, 2012.0, 2016.0}) {
        enter(version);
        REALstringStruct* string = host.newString("abc", encodingMacRoman);
        EXPECT_EQ(memoryOf([&] {
                      rbText text(string);
                      text.GetUTF8();
                      text.GetUTF8();
                      text.ConvertMacRoman();
                  }),
                  (Notes{"calloc 7", "calloc 7", "free", "free"}));
        host.drop(string);
    }
}

TEST_F(AllocationTest, ATerminatedOrRawTextIsNotCopied)
{
    for (std::uint32_t encoding : {encodingUTF8, encodingMacRoman, encodingUnknown})
        for (double version : {2011.5, 2012.0, 2016.0}) {
            enter(version);
            if (encoding == encodingUnknown) host.afterText = "#";
            REALstringStruct* string = host.newString("abc", encoding);
            EXPECT_EQ(memoryOf([&] {
                          rbText text(string);
                          text.GetUTF8();
                          text.ConvertMacRoman();
                      }),
                      Notes{});
            host.drop(string);
        }
}

TEST_F(AllocationTest, AViewIsEmptyWithoutMemoryForItsCopy)
{
    host.afterText = "#";
    for (double version : {2011.5, 2012.0, 2016.0}) {
        SCOPED_TRACE(version);
        enter(version);
        REALstringStruct* string = host.newString("abc", encodingMacRoman);
        {
            rbText text(string);
            c_library_spy::refuseCalloc(1);
            const char* view = text.GetUTF8();
            EXPECT_EQ(std::string(view, 4), std::string(4, '\0')) << "the empty view";
            EXPECT_EQ(text.lengthUTF8(), 0);
            EXPECT_FALSE(text.isEmptyText()) << "the conversion did not fail";
            EXPECT_EQ(text.GetUTF8(), view) << "computed once";
            EXPECT_STREQ(text.ConvertMacRoman(), "abc") << "the other view has memory";
        }
        EXPECT_EQ(host.live(), Notes{"s1: 1"});
        host.drop(string);
    }
}

} // namespace
