// The text and memory-block getters of the property family: their platform calls and their results.
#include "tests/coreaudio/targets.h"

#include <new>
#include <stdexcept>

namespace {

using namespace subject;
using spy::Calls;

/// Result of a text getter or of a memory-block getter, for tables that test both getters.
struct Result {
    bool isNil;
    std::string bytes;
};

struct Getter {
    const char* name;
    Result (*run)(fake::Host&, const Target&, Object);
    const char* builder; ///< host service that builds the getter's result
};

Result takeText(fake::Host& host, const Target& target, Object object)
{
    const Text text = target.getString(object);
    if (!text) return {true, ""};
    const Result result = {false, host.bytesOf(text)};
    EXPECT_EQ(host.references(text), 1);
    host.drop(text);
    return result;
}

Result takeBlock(fake::Host& host, const Target& target, Object object)
{
    const Block block = target.getMemory(object);
    if (!block) return {true, ""};
    const Result result = {false, host.bytesOf(block)};
    EXPECT_EQ(host.references(block), 1);
    host.drop(block);
    return result;
}

const Getter getters[] = {
    {"GetPropertyString", takeText, "REALBuildString"},
    {"GetPropertyMemory", takeBlock, "newMemoryBlock"},
};

class PropertyGetters : public Subject {
protected:
    /// Run `test` for each combination of a target and one of the two getters.
    template <class Test>
    void forAll(Test test)
    {
        for (const Getter& getter : getters)
            for (std::size_t i = 0; i < 4; ++i) {
                property_spy::reset();
                const Text selector = host().newString(selectorText, encodingASCII);
                const Target target = targets(selector)[i];
                SCOPED_TRACE(target.name + getter.name);
                lasterror() = 4711;
                test(target, getter);
                host().drop(selector);
                expectBalance();
            }
    }
};

constexpr OSStatus unknown = 0x77686F3F; // platform status 'who?'
constexpr OSStatus failed = -10863;
const std::optional<UInt32> nothing;
const std::string value("AB\0\xE9Z", 5);

const struct {
    const char* why;
    OSStatus infoStatus;
    std::optional<UInt32> announced;
    bool callocFails;
    OSStatus getStatus;
    std::optional<UInt32> written;
    // expected results
    std::optional<UInt32> allocated;
    bool readsValue;
    HostInteger lasterror;
    const char* result; ///< null for nil; otherwise the result is the first `resultSize` bytes of `value`
    std::size_t resultSize;
} rows[] = {
    // clang-format off
    //                                          info      announced   calloc get      written      allocated  reads  lasterror result
    {"the whole value",                         0,        5,          false, 0,       5,           5,         true,  0,        "", 5},
    {"the platform does not write the size",    0,        5,          false, 0,       nothing,     5,         true,  0,        "", 5},
    {"a size of 1",                             0,        1,          false, 0,       1,           1,         true,  0,        "", 1},
    {"less is written than announced",          0,        5,          false, 0,       3,           5,         true,  0,        "", 3},
    {"one byte is written",                     0,        5,          false, 0,       1,           5,         true,  0,        "", 1},
    {"0 bytes are written",                     0,        5,          false, 0,       0,           5,         true,  0,        nullptr, 0},
    {"more is reported than the capacity",      0,        5,          false, 0,       9,           5,         true,  0,        "", 5},
    {"the largest size is reported",            0,        5,          false, 0,       0xFFFFFFFF,  5,         true,  0,        "", 5},
    {"the info call fails",                     unknown,  nothing,    false, 0,       nothing,     nothing,   false, unknown,  nullptr, 0},
    {"the info call fails with a size",         unknown,  5,          false, 0,       nothing,     nothing,   false, unknown,  nullptr, 0},
    {"the info call fails with status 1",       1,        5,          false, 0,       nothing,     nothing,   false, 1,        nullptr, 0},
    {"a size of 0",                             0,        0,          false, 0,       nothing,     nothing,   false, -1,       nullptr, 0},
    {"no size is reported",                     0,        nothing,    false, 0,       nothing,     nothing,   false, -1,       nullptr, 0},
    {"the largest size, no memory",             0,        0x7FFFFFFF, true,  0,       nothing,     0x7FFFFFFF,false, -1,      nullptr, 0},
    {"one byte more is not allocated",          0,        0x80000000, false, 0,       nothing,     nothing,   false, -1,       nullptr, 0},
    {"-1 is not allocated",                     0,        0xFFFFFFFF, false, 0,       nothing,     nothing,   false, -1,       nullptr, 0},
    {"no memory",                               0,        5,          true,  0,       nothing,     5,         false, -1,       nullptr, 0},
    {"the get call fails",                      0,        5,          false, failed,  5,           5,         true,  failed,   nullptr, 0},
    {"the get call fails with status 1",        0,        5,          false, 1,       3,           5,         true,  1,        nullptr, 0},
    {"the get call fails with status -1",       0,        5,          false, -1,      5,           5,         true,  -1,       nullptr, 0},
    // clang-format on
};

TEST_F(PropertyGetters, ReadTheSizeThenTheValue)
{
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        forAll([&](const Target& target, const Getter& getter) {
            spy::answer(target.infoFunction()).status = row.infoStatus;
            spy::answer(target.infoFunction()).size = row.announced;
            spy::answer(target.getFunction()).status = row.getStatus;
            spy::answer(target.getFunction()).size = row.written;
            spy::answer(target.getFunction()).value = value;

            if (row.callocFails) c_library_spy::refuseCalloc(1);
            c_library_spy::begin();
            const Result result = getter.run(host(), target, object());
            const Calls memory = c_library_spy::end();

            Calls expectedCalls = {target.infoCall("null")};
            if (row.readsValue)
                expectedCalls.push_back(
                    target.getCall(*row.announced, std::to_string(*row.announced) + " zeros"));
            EXPECT_EQ(spy::calls(), expectedCalls);

            Calls expectedMemory;
            if (row.allocated) expectedMemory.push_back("calloc " + std::to_string(*row.allocated));
            if (row.allocated && !row.callocFails) expectedMemory.push_back("free");
            EXPECT_EQ(memory, expectedMemory);

            EXPECT_EQ(lasterror(), row.lasterror);
            EXPECT_EQ(result.isNil, row.result == nullptr);
            EXPECT_EQ(result.bytes, value.substr(0, row.resultSize));
            EXPECT_TRUE(host().raised().empty());
        });
    }
}

TEST_F(PropertyGetters, LabelTextByItsBytes)
{
    const struct {
        std::string bytes;
        std::uint32_t encoding;
        const char* why;
    } texts[] = {
        {"Built-in", 0x0600, "bytes below 0x80 are ASCII"},
        {std::string("name\0", 5), 0x0600, "a terminator in the size is part of the text"},
        {"\x7F", 0x0600, "the last ASCII byte"},
        {"\x80", 0xFFFF, "other bytes have an unknown encoding"},
        {"caf\xC3\xA9", 0xFFFF, "also if they are valid UTF-8"},
    };
    for (const auto& each : texts) {
        SCOPED_TRACE(each.why);
        const Text selector = host().newString(selectorText, encodingASCII);
        for (const Target& target : targets(selector)) {
            SCOPED_TRACE(target.name);
            const auto size = static_cast<UInt32>(each.bytes.size());
            spy::answer(target.infoFunction()).size = size;
            spy::answer(target.getFunction()).value = each.bytes;
            const Text text = target.getString(object());
            ASSERT_NE(text, nullptr);
            EXPECT_EQ(host().bytesOf(text), each.bytes);
            EXPECT_EQ(host().encodingOf(text), each.encoding);
            host().drop(text);
        }
        host().drop(selector);
        expectBalance();
    }
}

// For a CFString reference, the text getter returns the bytes of the reference, not of the string.
TEST_F(PropertyGetters, ReadACFStringReferenceAsBytes)
{
    const property_spy::PlatformString text("ignored");
    const Text selector = host().newString(selectorText, encodingASCII);
    for (const Target& target : targets(selector)) {
        spy::answer(target.infoFunction()).size = sizeof(CFStringRef);
        spy::answer(target.getFunction()).value = text.asValue();
        const Text result = target.getString(object());
        ASSERT_NE(result, nullptr);
        EXPECT_EQ(host().bytesOf(result), text.asValue());
        host().drop(result);
    }
    EXPECT_EQ(text.releases, 0);
}

TEST_F(PropertyGetters, ReturnANewBlockPerCall)
{
    const Text selector = host().newString(selectorText, encodingASCII);
    for (const Target& target : targets(selector)) {
        spy::answer(target.infoFunction()).size = 5;
        spy::answer(target.getFunction()).value = value;
        const Block first = target.getMemory(object());
        const Block second = target.getMemory(object());
        ASSERT_TRUE(first && second);
        EXPECT_NE(first, second);
        EXPECT_EQ(host().bytesOf(first), value);
        host().drop(first);
        EXPECT_EQ(host().bytesOf(second), value);
        host().drop(second);
    }
}

TEST_F(PropertyGetters, SetLasterrorBeforeAnyOtherCall)
{
    forAll([&](const Target& target, const Getter& getter) {
        watchFirstCall();
        getter.run(host(), target, object());
        EXPECT_EQ(lasterrorInFirstCall(), std::vector<HostInteger>{-1});
    });
}

TEST_F(PropertyGetters, HaveLasterrorMinusOneDuringThePlatformCalls)
{
    forAll([&](const Target& target, const Getter& getter) {
        std::vector<HostInteger> seen;
        const auto look = [&] { seen.push_back(lasterror()); };
        spy::answer(target.infoFunction()).size = 5;
        spy::answer(target.infoFunction()).during = look;
        spy::answer(target.getFunction()).during = look;
        spy::answer(target.getFunction()).value = value;
        getter.run(host(), target, object());
        EXPECT_EQ(seen, (std::vector<HostInteger>{-1, -1}));
        EXPECT_EQ(lasterror(), 0);
    });
}

TEST_F(PropertyGetters, PassNoExceptionToTheHost)
{
    const struct {
        const char* where;
        bool inInfo, inGet;
        HostInteger lasterror;
        std::size_t platformCalls;
    } steps[] = {
        {"the info call", true, false, -1, 1},
        {"the get call", false, true, -1, 2},
        {"the host's builder", false, false, 0, 2},
    };
    for (const auto& step : steps) {
        SCOPED_TRACE(step.where);
        forAll([&](const Target& target, const Getter& getter) {
            spy::answer(target.infoFunction()).size = 5;
            spy::answer(target.getFunction()).value = value;
            if (step.inInfo) throwInPlatform(target.infoFunction());
            if (step.inGet) throwInPlatform(target.getFunction());
            if (!step.inInfo && !step.inGet) throwInHost(getter.builder);
            c_library_spy::begin();
            EXPECT_NO_THROW(EXPECT_TRUE(getter.run(host(), target, object()).isNil));
            const Calls memory = c_library_spy::end();
            EXPECT_EQ(spy::calls().size(), step.platformCalls);
            EXPECT_EQ(lasterror(), step.lasterror);
            EXPECT_EQ(memory, step.inInfo ? Calls{} : (Calls{"calloc 5", "free"}));
        });
    }
}

TEST_F(PropertyGetters, PassNoStandardExceptionToTheHost)
{
    const std::function<void()> exceptions[] = {
        [] { throw std::bad_alloc(); },
        [] { throw std::runtime_error("from the platform"); },
        [] { throw 42; },
    };
    for (const auto& thrown : exceptions)
        forAll([&](const Target& target, const Getter& getter) {
            spy::answer(target.infoFunction()).size = 5;
            spy::answer(target.getFunction()).during = thrown;
            EXPECT_NO_THROW(EXPECT_TRUE(getter.run(host(), target, object()).isNil));
            EXPECT_EQ(lasterror(), -1);
            EXPECT_TRUE(host().raised().empty()) << "no host exception for one of the platform";
        });
}

// If the host cannot build the result, the getter returns nil, and `Lasterror` is the platform's status.
TEST_F(PropertyGetters, AreNilIfTheHostBuildsNothing)
{
    forAll([&](const Target& target, const Getter& getter) {
        spy::answer(target.infoFunction()).size = 5;
        spy::answer(target.getFunction()).value = value;
        host().failNext(getter.builder);
        EXPECT_TRUE(getter.run(host(), target, object()).isNil);
        EXPECT_EQ(lasterror(), 0);
    });
}

TEST_F(PropertyGetters, ReleaseABlockWithoutMemory)
{
    const Text selector = host().newString(selectorText, encodingASCII);
    for (const Target& target : targets(selector)) {
        spy::answer(target.infoFunction()).size = 5;
        spy::answer(target.getFunction()).value = value;
        host().blocksHaveBytes = false;
        EXPECT_EQ(target.getMemory(object()), nullptr);
        EXPECT_EQ(lasterror(), 0);
    }
    ASSERT_EQ(host().raised().size(), targets(selector).size()) << "one per target";
    for (const auto& exception : host().raised()) {
        EXPECT_EQ(exception.className, "OutOfMemoryException");
        EXPECT_EQ(exception.message, "Failed to allocate a memoryblock with 5 bytes in size.");
    }
    host().drop(selector);
    expectBalance();
}

TEST_F(PropertyGetters, AreNilWithoutTheBuilderService)
{
    for (const Getter& getter : getters) {
        startHost(2016.0);
        host().withhold(getter.builder);
        forAll([&](const Target& target, const Getter& each) {
            if (each.name != getter.name) return;
            spy::answer(target.infoFunction()).size = 5;
            spy::answer(target.getFunction()).value = value;
            EXPECT_TRUE(each.run(host(), target, object()).isNil);
            EXPECT_EQ(lasterror(), 0);
            EXPECT_EQ(spy::calls().size(), 2u);
        });
    }
}

} // namespace
