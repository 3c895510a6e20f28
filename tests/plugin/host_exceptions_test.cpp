// Host exceptions: the calls to the host, in order, and the exception that the host program receives.
#include "plugin/host_exceptions.h"
#include "plugin/host_string.h"
#include "tests/plugin/host_fixture.h"

#include <algorithm>
#include <climits>
#include <functional>
#include <stdexcept>

namespace {

class ExceptionsTest : public HostTest {};

/// Expected calls to the host for one exception with a message.
const Notes wholeCall = {
    "REALBuildString(\"Memoryblock is nil\", 18) = s1",
    "REALSetStringEncoding(s1, 0x600)",
    "PluginNewInstance(NilObjectException) = o1",
    "REALSetPropValueString(o1, Message, s1)",
    "REALSetPropValueInteger(o1, ErrorNumber, 0)",
    "RuntimeRaiseException(o1)",
    "REALUnlockObject(o1)",
    "REALUnlockString(s1)",
};

Notes without(Notes notes, std::initializer_list<std::size_t> indexes)
{
    std::size_t removed = 0;
    for (std::size_t index : indexes)
        notes.erase(notes.begin() + static_cast<std::ptrdiff_t>(index - removed++));
    return notes;
}

void raiseNil() { RaiseException("NilObjectException", "Memoryblock is nil"); }

TEST_F(ExceptionsTest, AnExceptionCallsTheHostInOrderOnAllVersions)
{
    for (double version : {0.0, 2011.5, 2012.0, 2013.0, 2015.03, 2016.0}) {
        SCOPED_TRACE(version);
        enter(version);
        raiseNil();
        EXPECT_EQ(host.calls(), wholeCall);
        ASSERT_EQ(host.raised().size(), 1u);
        const fake::Raised& raised = host.raised()[0];
        EXPECT_EQ(raised.className, "NilObjectException");
        EXPECT_EQ(raised.message, "Memoryblock is nil");
        EXPECT_EQ(raised.encoding, 0x0600u) << "ASCII";
        EXPECT_EQ(raised.number, 0);
        EXPECT_EQ(host.live(), Notes{});
    }
}

TEST_F(ExceptionsTest, TheNumberIsAlwaysZero)
{
    RaiseException("RuntimeException", "x", 77, 88);
    ASSERT_EQ(host.raised().size(), 1u);
    EXPECT_EQ(host.raised()[0].number, 0);
}

TEST_F(ExceptionsTest, AnUnknownClassBecomesRuntimeException)
{
    RaiseException("NoSuchException", "Memoryblock is nil");
    Notes calls = wholeCall;
    calls[2] = "PluginNewInstance(NoSuchException) = null";
    calls.insert(calls.begin() + 3, "PluginNewInstance(RuntimeException) = o1");
    EXPECT_EQ(host.calls(), calls);
    ASSERT_EQ(host.raised().size(), 1u);
    EXPECT_EQ(host.raised()[0].className, "RuntimeException");
    EXPECT_EQ(host.raised()[0].message, "Memoryblock is nil") << "the same message";
}

TEST_F(ExceptionsTest, NoExceptionIsRaisedWithoutAnyClass)
{
    host.classes.clear();
    raiseNil();
    EXPECT_EQ(host.calls(), (Notes{wholeCall[0], wholeCall[1], "PluginNewInstance(NilObjectException) = null",
                                   "PluginNewInstance(RuntimeException) = null", "REALUnlockString(s1)"}));
}

TEST_F(ExceptionsTest, ANullMessageIsSetAsNull)
{
    RaiseException("NilObjectException", nullptr);
    EXPECT_EQ(host.calls(), (Notes{"PluginNewInstance(NilObjectException) = o1",
                                   "REALSetPropValueString(o1, Message, null)",
                                   "REALSetPropValueInteger(o1, ErrorNumber, 0)", "RuntimeRaiseException(o1)",
                                   "REALUnlockObject(o1)"}));
    ASSERT_EQ(host.raised().size(), 1u);
    EXPECT_FALSE(host.raised()[0].message.has_value());
}

TEST_F(ExceptionsTest, AnEmptyMessageIsSetAsNull)
{
    RaiseException("NilObjectException", "");
    EXPECT_EQ(host.calls()[1], "REALSetPropValueString(o1, Message, null)")
        << "no string is built from 0 bytes";
    EXPECT_EQ(host.raised().size(), 1u);
}

TEST_F(ExceptionsTest, AMissingServiceIsSkipped)
{
    const Notes withNull = {wholeCall[2], "REALSetPropValueString(o1, Message, null)", wholeCall[4],
                            wholeCall[5], wholeCall[6]};
    // clang-format off
    const struct { const char* missing; Notes calls; bool raises; Notes left; const char* why; } facts[] = {
        {"REALBuildString",         withNull,                       true,  {},        "an exception without a message"},
        {"REALSetStringEncoding",   without(wholeCall, {1}),        true,  {},        "a message in an unknown encoding"},
        {"PluginNewInstance",       {wholeCall[0], wholeCall[1], wholeCall[7]}, false, {}, "no exception can be raised"},
        {"REALSetPropValueString",  without(wholeCall, {3}),        true,  {},        "no message"},
        {"RuntimeRaiseException",   without(wholeCall, {5}),        false, {},        "created and released, not raised"},
        {"REALUnlockObject",        without(wholeCall, {6}),        true,  {"o1: 1", "s1: 1"}, "object and string leak"},
        {"REALUnlockString",        without(wholeCall, {7}),        true,  {"s1: 1"}, "the string leaks"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::Message() << fact.missing << ": " << fact.why);
        enter(2016.0);
        withhold(fact.missing);
        raiseNil();
        EXPECT_EQ(host.calls(), fact.calls);
        EXPECT_EQ(host.raised().size(), fact.raises ? 1u : 0u);
        Notes left = host.live();
        std::sort(left.begin(), left.end());
        EXPECT_EQ(left, fact.left);
        host.dropAll();
        host.provide(fact.missing);
    }
}

TEST_F(ExceptionsTest, TheNumberIsSetWithTheServicesSecondName)
{
    withhold("REALSetPropValueInteger");
    raiseNil();
    Notes calls = wholeCall;
    calls[4] = "REALSetPropValueInt(o1, ErrorNumber, 0)";
    EXPECT_EQ(host.calls(), calls);
    ASSERT_EQ(host.raised().size(), 1u);
    EXPECT_EQ(host.raised()[0].number, 0);

    enter(2016.0);
    withhold("REALSetPropValueInteger", "REALSetPropValueInt");
    raiseNil();
    EXPECT_EQ(host.calls(), without(wholeCall, {4}));
    ASSERT_EQ(host.raised().size(), 1u);
    EXPECT_FALSE(host.raised()[0].number.has_value());
}

TEST_F(ExceptionsTest, AFailingServiceIsSkipped)
{
    host.failNext("REALBuildString");
    raiseNil();
    EXPECT_EQ(host.raised().at(0).message, std::nullopt);

    enter(2016.0);
    host.failNext("PluginNewInstance");
    raiseNil();
    EXPECT_EQ(host.raised().at(0).className, "RuntimeException") << "the first class cannot be created";

    enter(2016.0);
    host.failNext("PluginNewInstance", 2);
    raiseNil();
    EXPECT_TRUE(host.raised().empty());
}

TEST_F(ExceptionsTest, EachServiceIsLookedUpOnce)
{
    const Notes names = {"REALBuildString",        "REALSetStringEncoding",   "PluginNewInstance",
                         "REALSetPropValueString", "REALSetPropValueInteger", "RuntimeRaiseException",
                         "REALUnlockObject",       "REALUnlockString"};
    raiseNil();
    raiseNil();
    EXPECT_EQ(host.lookUps(), names);
}

TEST_F(ExceptionsTest, NothingHappensWithoutAHost)
{
    gResolver = nullptr;
    forgetServices();
    raiseNil();
    RaiseOutOfBoundsException(4, 0, 4, "index", "");
    EXPECT_EQ(host.notes(), Notes{});
}

// ---- an index out of bounds ----

// A failure to build the message raises a second host exception. The second exception has no message, so the
// recursion ends.
TEST_F(ExceptionsTest, TheMessageIsNullIfTheHostCannotBuildStrings)
{
    int builds = 0;
    std::function<void()> throwAlways = [&] {
        ++builds;
        host.inNext("REALBuildString", throwAlways);
        throw std::runtime_error("no strings");
    };
    for (double version : {2011.5, 2016.0}) {
        SCOPED_TRACE(version);
        enter(version);
        builds = 0;
        host.inNext("REALBuildString", throwAlways);
        RaiseException("NilObjectException", "Memoryblock is nil");
        EXPECT_EQ(builds, 1);
        ASSERT_EQ(host.raised().size(), 2u) << "the failed message, then the exception itself";
        EXPECT_EQ(host.raised()[0].className, "RuntimeException");
        EXPECT_EQ(host.raised()[0].message, std::nullopt);
        EXPECT_EQ(host.raised()[1].className, "NilObjectException");
        EXPECT_EQ(host.raised()[1].message, std::nullopt);
        EXPECT_EQ(host.raised()[1].number, 0);
        EXPECT_EQ(host.live(), Notes{});

        // A failure to build a requested string raises a host exception. Building the message of that
        // exception fails too, which ends the recursion.
        host.startOver();
        EXPECT_EQ(REALBuildUnicodeString("abc", 3, encodingUTF8), nullptr);
        EXPECT_EQ(builds, 3) << "the string itself, and the message about it";
        ASSERT_EQ(host.raised().size(), 2u);
        EXPECT_EQ(host.raised()[1].className, "RuntimeException");
        EXPECT_EQ(host.raised()[1].message, std::nullopt);

        // After the host has recovered, exceptions have messages again.
        host.inNext("REALBuildString", [] {});
        host.startOver();
        RaiseException("NilObjectException", "Memoryblock is nil");
        ASSERT_EQ(host.raised().size(), 1u);
        EXPECT_EQ(host.raised()[0].message, "Memoryblock is nil");
    }
}

// The recursion guard is reset even if an exception leaves RaiseException.
TEST_F(ExceptionsTest, MessagesWorkAgainAfterTheHostThrew)
{
    host.inNext("REALBuildString", [] { throw std::runtime_error("no strings"); });
    host.inNext("PluginNewInstance", [] { throw std::logic_error("no objects either"); });
    EXPECT_THROW(RaiseException("NilObjectException", "Memoryblock is nil"), std::logic_error);
    EXPECT_EQ(host.live(), Notes{});
    host.startOver();
    RaiseException("NilObjectException", "Memoryblock is nil");
    ASSERT_EQ(host.raised().size(), 1u);
    EXPECT_EQ(host.raised()[0].message, "Memoryblock is nil");
}

TEST_F(ExceptionsTest, AnOutOfBoundsMessageHasTheRangeAndTheValue)
{
    // clang-format off
    const struct { long long value, count; const char* message; const char* why; } facts[] = {
        {-1,        4,         "Parameter index  is too small. Range is 0 to 3, but value is -1.", "below"},
        { 4,        4,         "Parameter index  is too big. Range is 0 to 3, but value is 4.", "above"},
        {10,        10,        "Parameter index  is too big. Range is 0 to 9, but value is 10.", "two spaces after the name"},
        { 0,        0,         "Parameter index  is too big. Range is 0 to -1, but value is 0.", "an empty array"},
        {-1,        0,         "Parameter index  is too small. Range is 0 to -1, but value is -1.", "an empty array"},
        { 0,        1,         "Parameter index  is too big. Range is 0 to 0, but value is 0.", "the value is not compared with the range"},
        {LLONG_MAX, LLONG_MAX, "Parameter index  is too big. Range is 0 to 9223372036854775806, but value is 9223372036854775807.", "64 bits"},
        {LLONG_MIN, LLONG_MAX, "Parameter index  is too small. Range is 0 to 9223372036854775806, but value is -9223372036854775808.", "64 bits"},
        {4294967296, 4294967296, "Parameter index  is too big. Range is 0 to 4294967295, but value is 4294967296.", "past 32 bits"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        enter(2016.0);
        RaiseOutOfBoundsException(fact.value, 0, fact.count, "index", "");
        ASSERT_EQ(host.raised().size(), 1u);
        EXPECT_EQ(host.raised()[0].className, "OutOfBoundsException");
        EXPECT_EQ(host.raised()[0].message, fact.message);
        EXPECT_EQ(host.raised()[0].number, 0);
    }
}

TEST_F(ExceptionsTest, AnOutOfBoundsMessageHasTheLowerBound)
{
    RaiseOutOfBoundsException(2, 3, 5, "index", "");
    EXPECT_EQ(host.raised().at(0).message, "Parameter index  is too big. Range is 3 to 4, but value is 2.")
        << "only negative values are too small";
}

TEST_F(ExceptionsTest, AnOutOfBoundsMessageIsCutAt205BytesWithTheTerminator)
{
    const std::string rest = "  is too big. Range is 0 to 3, but value is 4.";
    const auto message = [&](std::size_t nameLength) {
        enter(2016.0);
        RaiseOutOfBoundsException(4, 0, 4, std::string(nameLength, 'n').c_str(), "");
        return host.raised().at(0).message.value();
    };
    const std::size_t fits = 204 - std::string("Parameter ").size() - rest.size();
    // clang-format off
    const struct { std::size_t nameLength; const char* why; } facts[] = {
        {fits - 1, "203 bytes: whole"}, {fits, "204 bytes: whole"}, {fits + 1, "205 bytes: the last is cut"}, {1000, "much longer"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        const std::string whole = "Parameter " + std::string(fact.nameLength, 'n') + rest;
        EXPECT_EQ(message(fact.nameLength), whole.substr(0, 204)) << fact.why;
    }
}

} // namespace
