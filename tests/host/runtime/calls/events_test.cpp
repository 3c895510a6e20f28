// Tests of events that the test plug-in raises and a program handles.
#include "tests/host/runtime/plugin_host.h"

#include <gtest/gtest.h>

namespace {

using namespace host;
using test::misuses;
using test::thrownBy;

class Events : public test::WithPlugin {};

TEST_F(Events, CallTheHandlerOfTheirObject)
{
    EXPECT_FALSE(probe.call("Fire").boolean()) << "no handler is attached";
    int count = 0;
    const void* sender = nullptr;
    probe.on("Fired", [&](Object& object, const std::vector<Value>& arguments) {
        ++count;
        sender = object.get();
        EXPECT_TRUE(arguments.empty());
        return Value();
    });
    EXPECT_TRUE(probe.call("Fire").boolean());
    EXPECT_EQ(count, 1);
    EXPECT_EQ(sender, probe.get());
    EXPECT_FALSE(host.create("Probe").call("Fire").boolean()) << "another object has no handler";
    EXPECT_EQ(count, 1);
    probe.on("fired", {});
    EXPECT_FALSE(probe.call("Fire").boolean());
    EXPECT_EQ(count, 1);
}

TEST_F(Events, PassArgumentsAndResults)
{
    probe.on("Asked", [](Object&, const std::vector<Value>& given) -> Value {
        return given.at(0).print() + "/" + given.at(1).print() + "/" + given.at(2).print() + "/" +
               given.at(3).print();
    });
    EXPECT_EQ(probe.call("Ask", -3, 0.5, "t", true).text(), "-3/0.5/t/true");
    EXPECT_EQ(probe.call("Ask", 1, 1e9, nullptr, false).text(), "1/1000000000/nil/false");

    probe.on("Judged",
             [](Object&, const std::vector<Value>& given) -> Value { return given.at(0).integer() < 0; });
    EXPECT_TRUE(probe.call("Judge", -128).boolean());
    EXPECT_FALSE(probe.call("Judge", 127).boolean());
    probe.on("Halved",
             [](Object&, const std::vector<Value>& given) -> Value { return given.at(0).number() / 2; });
    EXPECT_EQ(probe.call("Halve", 0.3).number(), 0.15);
    probe.on("Narrowed",
             [](Object&, const std::vector<Value>& given) -> Value { return given.at(0).single() * 2; });
    EXPECT_EQ(probe.call("Narrow", 0.1f).single(), 0.2f);
    probe.on("Widened",
             [](Object&, const std::vector<Value>& given) -> Value { return ~given.at(0).unsigned64(); });
    EXPECT_EQ(probe.call("Widen", 0x0123456789ABCDEFu).unsigned64(), 0xFEDCBA9876543210u);
    probe.on("Negated",
             [](Object&, const std::vector<Value>& given) -> Value { return -given.at(0).integer(); });
    EXPECT_EQ(probe.call("Negate", 1234).integer(), -1234);
}

TEST_F(Events, TurnANilResultIntoZeroOrNil)
{
    const auto nothing = [](Object&, const std::vector<Value>&) { return Value(); };
    probe.on("Judged", nothing);
    probe.on("Halved", nothing);
    probe.on("Asked", nothing);
    EXPECT_FALSE(probe.call("Judge", 1).boolean());
    EXPECT_EQ(probe.call("Halve", 5.0).number(), 0.0);
    EXPECT_TRUE(probe.call("Ask", 1, 1.0, "", false).isNil());
}

TEST_F(Events, AllowHandlersToCallDetachAndDestroy)
{
    probe.on("Fired", [](Object& sender, const std::vector<Value>&) {
        EXPECT_EQ(sender.call("EchoInteger", 3).integer(), 3);
        sender.on("Fired", {});
        return Value();
    });
    EXPECT_TRUE(probe.call("Fire").boolean());
    EXPECT_FALSE(probe.call("Fire").boolean());

    probe.on("Fired", [this](Object&, const std::vector<Value>&) {
        probe = Object(); // drops one of two references of the program
        return Value();
    });
    const auto kept = probe;
    EXPECT_TRUE(kept.call("Fire").boolean());
    EXPECT_FALSE(probe);
}

TEST_F(Events, KeepTheirObjectUntilTheMethodReturns)
{
    probe.on("Fired", [this](Object&, const std::vector<Value>&) {
        probe = Object(); // drops the last reference of the program
        return Value();
    });
    host.callShared("Probe", "LifeLog");
    EXPECT_TRUE(probe.call("Fire").boolean());
    EXPECT_FALSE(probe);
    EXPECT_EQ(host.callShared("Probe", "LifeLog").text(), "fired -Probe ");
}

TEST_F(Events, PassExceptionsOfAHandlerToTheProgram)
{
    probe.on("Fired", [](Object&, const std::vector<Value>&) -> Value { throw std::runtime_error("mine"); });
    EXPECT_EQ(thrownBy<std::runtime_error>([&] { probe.call("Fire"); }), "mine");
    probe.on("Halved", [](Object& sender, const std::vector<Value>&) {
        return sender.call("Fail", "NilObjectException", "from inside", 1);
    });
    EXPECT_NE(thrownBy<HostException>([&] { probe.call("Halve", 1.0); }).find("from inside"),
              std::string::npos);
    probe.on("Judged", [](Object&, const std::vector<Value>&) -> Value { return "no boolean"; });
    EXPECT_NE(thrownBy<ProgramError>([&] {
                  probe.call("Judge", 1);
              }).find("the result of event Judged is a Boolean"),
              std::string::npos);
    EXPECT_EQ(probe.call("EchoInteger", 1).integer(), 1) << "the next call succeeds";
}

TEST_F(Events, CallTheHandlerOfASubclassObject)
{
    const auto child = host.create("ProbeChild");
    int count = 0;
    child.on("Fired", [&](Object&, const std::vector<Value>&) {
        ++count;
        return Value();
    });
    EXPECT_TRUE(child.call("Fire").boolean());
    EXPECT_EQ(count, 1);
}

TEST_F(Events, NoteAWrongKeyAsMisuse)
{
    expectMisuse = true;
    EXPECT_EQ(probe.call("AskWithGarbage").unsigned64(), 0u);
    EXPECT_EQ(misuses(), "GetEventInstance was given 0x3039, which is not the key of an event\n");
    host.clearMisuses();
    const auto use = probe.classInfo().event("Fired")->systemUse;
    const auto find = test::service<AnyFunction(REALobjectStruct*, Word)>("GetEventInstance");
    EXPECT_EQ(find(host.create("Dictionary").get(), use), nullptr);
    EXPECT_EQ(
        misuses(),
        "GetEventInstance was given the key of event Fired of Probe with an object of class Dictionary\n");
    EXPECT_EQ(find(nullptr, use), nullptr);
}

} // namespace
