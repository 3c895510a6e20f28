// Owned references are released on every path. If a release function of the host throws, the plug-in throws
// no exception, and all other references are released.
#include "plugin/host_exceptions.h"
#include "plugin/host_string.h"
#include "plugin/memory_block.h"
#include "plugin/owned.h"
#include "plugin/rb_text.h"
#include "plugin/string_contents.h"
#include "tests/plugin/host_fixture.h"

#include <algorithm>
#include <functional>
#include <stdexcept>

namespace {

class OwnedTest : public HostTest {
protected:
    /// Make the host throw in every call of `service`.
    void throwAlways(const std::string& service)
    {
        host.inNext(service, [=] {
            ++thrown;
            throwAlways(service);
            throw std::runtime_error("the host throws");
        });
    }
    void stopThrowing(const std::string& service)
    {
        host.inNext(service, [] {});
    }
    /// Names of the live host values, sorted.
    Notes liveValues() const
    {
        Notes names = host.live();
        std::sort(names.begin(), names.end());
        return names;
    }
    int thrown = 0;
};

// Only values whose release threw stay alive in the host.
TEST_F(OwnedTest, AThrowingUnlockServiceCausesNoException)
{
    const auto asString = [&](const char* bytes, std::uint32_t encoding, auto use) {
        return [=] {
            REALstringStruct* text = host.newString(bytes, encoding);
            use(text);
        };
    };
    const auto both = [](REALstringStruct* text) {
        rbText reader(text);
        reader.GetUTF8();
        reader.ConvertMacRoman();
    };
    const auto contents = [](REALstringStruct* text) { REALGetStringContents(text); };

    const struct {
        double version;
        const char* service;
        std::function<void()> use;
        int thrown;
        Notes live;
        const char* why;
    } facts[] = {
        // clang-format off
        {2016.0, "REALUnlockString", [] { RaiseException("NilObjectException", "m"); }, 1, {"s1: 1"}, "an exception's message"},
        {2016.0, "REALUnlockObject", [] { RaiseException("NilObjectException", "m"); }, 1, {"o1: 1", "s1: 1"}, "an exception with its message"},
        {2016.0, "REALUnlockString", [] { REALBuildUnicodeString("a\0", 2, encodingUTF16); }, 1, {"s1: 1", "s2: 1"}, "the source of a conversion; the caller owns the result"},
        {2011.5, "REALUnlockString", [] { REALBuildUnicodeString("a\0", 2, encodingUTF16); }, 1, {"s1: 1", "s2: 1"}, "the same on an older host"},
        {2016.0, "REALUnlockString", asString("abc", encodingUTF8, both), 1, {"s1: 2"}, "a text's string; its data is released"},
        {2016.0, "PluginDisposeStringData", asString("abc", encodingUTF8, both), 2, {"data of s1", "data of s1", "s1: 1"}, "a text's data; its string is released"},
        {2011.5, "REALUnlockString", asString("abc", encodingMacRoman, both), 3, {"s1: 2", "s2: 1", "s3: 1"}, "the three strings of a text"},
        {2016.0, "REALUnlockString", asString("abc", encodingUTF8, contents), 1, {"s1: 2"}, "contents"},
        {2011.5, "REALUnlockString", asString("abc", encodingUTF8, contents), 1, {"s1: 2"}, "contents, from a record"},
        // clang-format on
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::Message() << fact.service << " of host " << fact.version << ": " << fact.why);
        enter(fact.version);
        thrown = 0;
        throwAlways(fact.service);
        EXPECT_NO_THROW(fact.use());
        EXPECT_EQ(thrown, fact.thrown);
        EXPECT_EQ(liveValues(), fact.live);
        stopThrowing(fact.service);
        host.dropAll();
    }
}

TEST_F(OwnedTest, AThrowingUnlockOfAnUnusableBlockStillRaises)
{
    host.blocksHaveBytes = false;
    host.inNext("REALUnlockObject", [&] {
        ++thrown;
        throw std::runtime_error("the host throws");
    });
    EXPECT_EQ(REALBuildMemoryblock("abc", 3), nullptr);
    EXPECT_EQ(thrown, 1);
    ASSERT_EQ(host.raised().size(), 1u);
    EXPECT_EQ(host.raised()[0].className, "OutOfMemoryException");
    EXPECT_EQ(host.raised()[0].message, "Failed to allocate a memoryblock with 3 bytes in size.");
    EXPECT_EQ(host.live(), Notes{"m1: 1"});
    host.dropAll();
}

// If a release throws while another exception propagates, the caller receives the exception that propagated
// first.
TEST_F(OwnedTest, AThrowingUnlockKeepsThePropagatingException)
{
    for (double version : {2011.5, 2016.0}) {
        SCOPED_TRACE(version);
        enter(version);
        thrown = 0;
        REALstringStruct* string = host.newString("abc", encodingMacRoman);
        throwAlways("REALUnlockString");
        host.inNext(version < 2012 ? "REALConvertString" : "PluginGetStringData",
                    [] { throw std::out_of_range("the first"); });
        EXPECT_THROW(
            {
                rbText text(string);
                text.GetUTF8();
            },
            std::out_of_range);
        EXPECT_EQ(thrown, 1);
        stopThrowing("REALUnlockString");
        EXPECT_EQ(host.live(), Notes{"s1: 2"});
        host.dropAll();
    }
}

} // namespace
