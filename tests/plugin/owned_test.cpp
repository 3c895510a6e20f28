// References are given back on every way out, also to a host that throws while it takes them: nothing gets
// past us, and everything else is given back all the same.
#include "plugin/exceptions.h"
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
    /// The host throws in every call of that service.
    void throwAlways(const std::string& service)
    {
        host.inNext(service, [=] {
            ++thrown;
            throwAlways(service);
            throw std::runtime_error("the host throws");
        });
    }
    void throwNoMore(const std::string& service)
    {
        host.inNext(service, [] {});
    }
    /// What is alive, in the order of names.
    Notes alive() const
    {
        Notes names = host.live();
        std::sort(names.begin(), names.end());
        return names;
    }
    int thrown = 0;
};

// What stays with the host is what it threw at; that is its own loss.
TEST_F(OwnedTest, AThrowingUnlockServiceHarmsNothing)
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
        {2016.0, "REALUnlockObject", [] { RaiseException("NilObjectException", "m"); }, 1, {"o1: 1", "s1: 1"}, "an exception, and the message that it holds"},
        {2016.0, "REALUnlockString", [] { REALBuildUnicodeString("a\0", 2, encodingUTF16); }, 1, {"s1: 1", "s2: 1"}, "a converted string's source; the result is the caller's"},
        {2011.5, "REALUnlockString", [] { REALBuildUnicodeString("a\0", 2, encodingUTF16); }, 1, {"s1: 1", "s2: 1"}, "likewise"},
        {2016.0, "REALUnlockString", asString("abc", encodingUTF8, both), 1, {"s1: 2"}, "a text's string; its data goes back"},
        {2016.0, "PluginDisposeStringData", asString("abc", encodingUTF8, both), 2, {"data of s1", "data of s1", "s1: 1"}, "a text's data; its string goes back"},
        {2011.5, "REALUnlockString", asString("abc", encodingMacRoman, both), 3, {"s1: 2", "s2: 1", "s3: 1"}, "each of a text's three"},
        {2016.0, "REALUnlockString", asString("abc", encodingUTF8, contents), 1, {"s1: 2"}, "contents"},
        {2011.5, "REALUnlockString", asString("abc", encodingUTF8, contents), 1, {"s1: 2"}, "contents of a record"},
        // clang-format on
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::Message() << fact.service << " of host " << fact.version << ": " << fact.why);
        enter(fact.version);
        thrown = 0;
        throwAlways(fact.service);
        EXPECT_NO_THROW(fact.use());
        EXPECT_EQ(thrown, fact.thrown);
        EXPECT_EQ(alive(), fact.live);
        throwNoMore(fact.service);
        host.dropAll();
    }
}

TEST_F(OwnedTest, AThrowingUnlockOfARefusedBlockStillRaises)
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

// Thrown while another exception is on its way out: the first one arrives.
TEST_F(OwnedTest, AThrowingUnlockOnTheWayOutOfAnotherExceptionEndsNothing)
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
        throwNoMore("REALUnlockString");
        EXPECT_EQ(host.live(), Notes{"s1: 2"});
        host.dropAll();
    }
}

} // namespace
