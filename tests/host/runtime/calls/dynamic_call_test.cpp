// Tests of calls into the test plug-in: arguments, results, properties, exceptions.
#include "tests/host/runtime/plugin_host.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace {

using namespace host;
using test::misuses;
using test::thrownBy;

class DynamicCall : public test::WithPlugin {};

template <class T>
T fromBits(std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t> bits)
{
    T value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

TEST_F(DynamicCall, PassesIntegersOfEveryWidth)
{
    const struct {
        const char* method;
        Value given;
        std::int64_t result; // expected result; the bits of the result if it is a UInt64
    } facts[] = {
        {"EchoInt8", -128, -128},
        {"EchoInt8", 127, 127},
        {"EchoInt8", 255, -1},
        {"EchoUInt8", 255, 255},
        {"EchoUInt8", -1, 255},
        {"EchoUInt8", -128, 128},
        {"EchoInt16", -32768, -32768},
        {"EchoInt16", 65535, -1},
        {"EchoUInt16", 65535, 65535},
        {"EchoUInt16", -1, 65535},
        {"EchoInt32", std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::min()},
        {"EchoInt32", 0xFFFFFFFFu, -1},
        {"EchoUInt32", 0xFFFFFFFFu, 0xFFFFFFFF},
        {"EchoUInt32", 0x64657623, 0x64657623},
        {"EchoUInt32", -1, 0xFFFFFFFF},
        {"EchoInt64", std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::min()},
        {"EchoInt64", 0x0123456789ABCDEF, 0x0123456789ABCDEF},
        {"EchoUInt64", 0xFEDCBA9876543210u, static_cast<std::int64_t>(0xFEDCBA9876543210u)},
        {"EchoUInt64", -1, -1},
        {"EchoInteger", -5, -5},
        {"EchoInteger", 2.9, 2},
        {"EchoInteger", -2.9f, -2},
        {"EchoUInteger", 5, 5},
        {"EchoInt64", std::nan(""), std::numeric_limits<std::int64_t>::min()},
        {"EchoInt32", std::nan(""), 0},
        {"EchoInt32", 1e300, 0},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::Message() << fact.method << " of " << fact.given.print());
        EXPECT_EQ(probe.call(fact.method, fact.given).integer(), fact.result);
    }
    EXPECT_EQ(probe.call("EchoUInt64", 0xFEDCBA9876543210u).unsigned64(), 0xFEDCBA9876543210u);
    EXPECT_EQ(probe.call("EchoUInt32", -1).print(), "4294967295");
}

TEST_F(DynamicCall, RefusesIntegersThatDoNotFit)
{
    const struct {
        const char* method;
        Value given;
    } facts[] = {
        {"EchoInt8", 256},
        {"EchoInt8", -129},
        {"EchoUInt8", 256},
        {"EchoInt16", 65536},
        {"EchoUInt16", -32769},
        {"EchoInt32", 0x100000000},
        {"EchoUInt32", -0x80000001LL},
        {"EchoUInt32", 0xFFFFFFFFFFFFFFFFu},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::Message() << fact.method << " of " << fact.given.print());
        const auto message = thrownBy<ProgramError>([&] { probe.call(fact.method, fact.given); });
        EXPECT_NE(message.find(fact.given.print() + " does not fit a"), std::string::npos) << message;
    }
}

TEST_F(DynamicCall, PassesBooleansAsEightBits)
{
    EXPECT_TRUE(probe.call("EchoBoolean", true).boolean());
    EXPECT_FALSE(probe.call("EchoBoolean", false).boolean());
    EXPECT_THROW(probe.call("EchoBoolean", 1), ProgramError);
}

TEST_F(DynamicCall, KeepsTheBitsOfSinglesAndDoubles)
{
    for (std::uint32_t bits : {0x00000000u, 0x80000000u, 0x3F800000u, 0x00000001u, 0x7F7FFFFFu, 0x7F800000u,
                               0xFF800000u, 0x7FC00001u, 0xC2F6E979u}) {
        SCOPED_TRACE(testing::Message() << std::hex << bits);
        EXPECT_EQ(probe.call("BitsOfSingle", fromBits<float>(bits)).unsigned64(), bits);
        const float back = probe.call("EchoSingle", fromBits<float>(bits)).single();
        EXPECT_EQ(std::memcmp(&back, &bits, sizeof back), 0);
    }
    for (std::uint64_t bits :
         {0x0000000000000000ull, 0x8000000000000000ull, 0x3FF0000000000000ull, 0x0000000000000001ull,
          0x7FEFFFFFFFFFFFFFull, 0x7FF0000000000000ull, 0x7FF8000000000001ull, 0x405EDD2F1A9FBE77ull}) {
        SCOPED_TRACE(testing::Message() << std::hex << bits);
        EXPECT_EQ(probe.call("BitsOfDouble", fromBits<double>(bits)).unsigned64(), bits);
        const double back = probe.call("EchoDouble", fromBits<double>(bits)).number();
        EXPECT_EQ(std::memcmp(&back, &bits, sizeof back), 0);
    }
    EXPECT_EQ(probe.call("EchoSingle", 0.1).single(), 0.1f) << "the double becomes a single";
    EXPECT_EQ(probe.call("EchoDouble", 0.1f).number(), static_cast<double>(0.1f))
        << "the single becomes a double";
    EXPECT_EQ(probe.call("EchoDouble", 3).number(), 3.0);
}

TEST_F(DynamicCall, KeepsASignallingNaNInAnArgument)
{
    // The test checks no result, because a result may lose the signalling bit in a floating-point register.
    const float single = fromBits<float>(0x7FA00001u);
    Value value;
    static_assert(sizeof single == 4);
    value = single;
    const auto bits = probe.call("BitsOfSingle", value).unsigned64();
    EXPECT_TRUE(bits == 0x7FA00001u || bits == 0x7FE00001u) << std::hex << bits;
}

TEST_F(DynamicCall, PassesReferencesOfEveryKind)
{
    const Value all[] = {"caf\xC3\xA9", host.create("Dictionary"), MemoryBlock::ofSize(3),
                         FolderItem::at("/a"), Array::of(std::vector<std::string>{"x"})};
    const char* methods[] = {"EchoString", "EchoDictionary", "EchoBlock", "EchoFolder", "EchoArray"};
    for (std::size_t i = 0; i < std::size(all); ++i) {
        SCOPED_TRACE(methods[i]);
        const void* address = all[i].reference().get();
        {
            const auto result = probe.call(methods[i], all[i]);
            EXPECT_EQ(result.reference().get(), address);
            EXPECT_EQ(referenceCount(address), 2u) << "the result has one reference, the argument none";
        }
        EXPECT_EQ(referenceCount(address), 1u);
        EXPECT_TRUE(probe.call(methods[i], nullptr).isNil());
        for (std::size_t other = 0; other < std::size(all); ++other) {
            if (other != i) {
                EXPECT_THROW(probe.call(methods[other], all[i]), ProgramError);
            }
        }
    }
    EXPECT_TRUE(probe.call("EchoBlock").isNil()) << "the default is nil";
    EXPECT_EQ(probe.call("EchoString", "").text(), "");
}

TEST_F(DynamicCall, ChecksTheClassOfAnObject)
{
    const auto dictionary = host.create("Dictionary");
    EXPECT_EQ(probe.call("EchoObject", dictionary).object().get(), dictionary.get());
    EXPECT_EQ(probe.call("EchoObject", host.create("ProbeChild")).object().classInfo().name, "ProbeChild");
    EXPECT_EQ(probe.call("EchoObject", MemoryBlock::ofSize(2)).memoryBlock().size(), 2u)
        << "a memory block is an object, too";
    EXPECT_NE(thrownBy<ProgramError>([&] { probe.call("EchoDictionary", probe); })
                  .find("parameter v of Probe.EchoDictionary is a Dictionary, but was given an object of "
                        "class Probe"),
              std::string::npos);
    EXPECT_THROW(probe.call("EchoObject", "text"), ProgramError);
}

TEST_F(DynamicCall, PassesAnyValueInAVariant)
{
    const auto block = MemoryBlock::ofSize(1);
    EXPECT_EQ(probe.call("EchoVariant", 5).integer(), 5);
    EXPECT_EQ(probe.call("EchoVariant", 0.1).number(), 0.1);
    EXPECT_TRUE(probe.call("EchoVariant", true).boolean());
    EXPECT_EQ(probe.call("EchoVariant", "x").text(), "x");
    EXPECT_EQ(probe.call("EchoVariant", block).memoryBlock().get(), block.get());
    EXPECT_TRUE(probe.call("EchoVariant", nullptr).isNil());
    EXPECT_EQ(host.leaks().count(Kind::variant), 0u);
}

TEST_F(DynamicCall, PassesPointersAndAddressesOfBlocks)
{
    const auto block = MemoryBlock::ofSize(16);
    EXPECT_EQ(probe.call("EchoPtr", block).unsigned64(), reinterpret_cast<std::uintptr_t>(block.data()));
    EXPECT_EQ(probe.call("EchoPtr", 0x1234).unsigned64(), 0x1234u);
    EXPECT_EQ(probe.call("EchoPtr", nullptr).unsigned64(), 0u);
    EXPECT_THROW(probe.call("EchoPtr", "text"), ProgramError);
}

TEST_F(DynamicCall, PassesManyTypesInOneCall)
{
    EXPECT_EQ(probe.call("Mixed", true, 0.1, -0x123456789AB, 0.5f, -7, "text", 65535, -1).text(),
              "1 0.10000000000000001 -1250999896491 0.5 -7 text 65535 -1");
}

TEST_F(DynamicCall, ReplacesMissingArgumentsByDefaults)
{
    EXPECT_EQ(probe.call("Defaults").text(), "-3 1 1.5 d nil ffffffffff");
    EXPECT_EQ(probe.call("Defaults", 1).text(), "1 1 1.5 d nil ffffffffff");
    EXPECT_EQ(probe.call("Defaults", 1, false, 2).text(), "1 0 2 d nil ffffffffff");
    EXPECT_EQ(probe.call("Defaults", 1, false, 2, nullptr, MemoryBlock::ofSize(1), 16).text(),
              "1 0 2 (nil) block 10");
}

TEST_F(DynamicCall, PassesVariablesByReference)
{
    const struct {
        const char* method;
        Value before, after;
    } facts[] = {
        {"AddOneInt8", 127, -128},      {"AddOneUInt16", 65535, 0},
        {"AddOneInt32", -1, 0},         {"AddOneUInt64", 0xFFFFFFFFFFFFFFFEu, 0xFFFFFFFFFFFFFFFFu},
        {"AddOneInteger", 41, 42},      {"AddOneSingle", 0.5f, 1.5f},
        {"AddOneDouble", 0.25, 1.25},   {"AddOneDouble", 1, 2.0},
        {"Flip", true, false},          {"Exclaim", "hey", "hey!"},
        {"Exclaim", nullptr, "(nil)!"}, {"AddOneInteger", nullptr, 1},
        {"Flip", nullptr, true},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::Message() << fact.method << " of " << fact.before.print());
        Value variable = fact.before;
        probe.call(fact.method, byref(variable));
        EXPECT_TRUE(sameValue(variable, fact.after)) << variable.print();
    }
    const auto kept = MemoryBlock::ofSize(4);
    Value block = kept;
    probe.call("Forget", byref(block));
    EXPECT_TRUE(block.isNil());
    EXPECT_EQ(referenceCount(kept.get()), 1u) << "the method dropped the variable's reference";

    Value size, writeable;
    probe.call("GetInfo", 7, byref(size), byref(writeable));
    EXPECT_EQ(size.integer(), 70);
    EXPECT_TRUE(writeable.boolean());
    EXPECT_THROW(probe.call("GetInfo", -1, byref(size), byref(writeable)), HostException);
    EXPECT_EQ(size.integer(), -10) << "the variable keeps the new value";
    EXPECT_FALSE(writeable.boolean());
}

TEST_F(DynamicCall, RefusesAValueForAVariableAndAVariableForAValue)
{
    Value variable = 1;
    EXPECT_NE(thrownBy<ProgramError>([&] {
                  probe.call("AddOneInteger", 1);
              }).find("parameter v of Probe.AddOneInteger changes its variable: pass it with byref"),
              std::string::npos);
    EXPECT_NE(thrownBy<ProgramError>([&] {
                  probe.call("EchoInteger", byref(variable));
              }).find("takes a value, not a variable by reference"),
              std::string::npos);
    variable = "text";
    EXPECT_THROW(probe.call("AddOneInteger", byref(variable)), ProgramError);
    EXPECT_EQ(variable.text(), "text") << "a refused call changes nothing";
}

TEST_F(DynamicCall, PassesAndReturnsArrays)
{
    EXPECT_EQ(probe.call("Sum", Array::of(std::vector<HostInteger>{1, 2, -10})).number(), -7);
    EXPECT_EQ(probe.call("Sum", Array::of(std::vector<float>{0.5f, 0.25f})).number(), 1000.75);
    EXPECT_EQ(probe.call("Sum", Array::of(std::vector<double>{})).number(), 2000);
    EXPECT_EQ(probe.call("Sum", nullptr).number(), -1)
        << "of two declarations of equal cost, the first is called";
    EXPECT_THROW(probe.call("Sum", Array::of(std::vector<std::string>{"x"})), ProgramError);
    EXPECT_THROW(probe.call("Sum", 5), ProgramError);

    EXPECT_EQ(probe.call("Countdown", 3).array().numbers(), (std::vector<double>{3, 2, 1}));
    EXPECT_EQ(probe.call("Countdown", 0).array().upperBound(), -1);
    EXPECT_TRUE(probe.call("Countdown", -1).isNil());
}

TEST_F(DynamicCall, ChoosesTheOverloadOfLowestCost)
{
    Value variable = 1;
    EXPECT_EQ(probe.call("Which").integer(), 0);
    EXPECT_EQ(probe.call("Which", 1).integer(), 1);
    EXPECT_EQ(probe.call("Which", 1.5).integer(), 2);
    EXPECT_EQ(probe.call("Which", 1.5f).integer(), 2);
    EXPECT_EQ(probe.call("Which", "x").integer(), 3);
    EXPECT_EQ(probe.call("Which", true).integer(), 4);
    EXPECT_EQ(probe.call("Which", host.create("Dictionary")).integer(), 5);
    EXPECT_EQ(probe.call("Which", probe).integer(), 6);
    EXPECT_EQ(probe.call("Which", 1, 2).integer(), 7);
    EXPECT_EQ(probe.call("Which", byref(variable)).integer(), 8);
    EXPECT_EQ(probe.call("WHICH", 1).integer(), 1) << "names are compared without regard to case";
    const auto message = thrownBy<ProgramError>([&] { probe.call("Which", 1, "x"); });
    EXPECT_NE(message.find("no Which of Probe takes (an integer, a string); there are:"), std::string::npos);
    EXPECT_NE(message.find("\n  Which(a As Integer, b As Integer) As Integer"), std::string::npos) << message;
}

TEST_F(DynamicCall, ErrorsNameTheMemberAndTheProblem)
{
    const auto says = [](const std::string& message, const char* part) {
        EXPECT_NE(message.find(part), std::string::npos) << message;
    };
    says(thrownBy<ProgramError>([&] { probe.call("NoSuch"); }), "Probe has no method NoSuch");
    says(thrownBy<ProgramError>([&] { probe.get("NoSuch"); }), "Probe has no property NoSuch");
    says(thrownBy<ProgramError>([&] { probe.get("Fire"); }),
         "Probe has no property Fire; call the method of this name");
    says(thrownBy<ProgramError>([&] { probe.call("First"); }),
         "Probe has no method First; read the property of this name");
    says(thrownBy<ProgramError>([&] { probe.call("EchoInteger"); }),
         "Probe.EchoInteger takes 1 argument, but was given 0");
    says(thrownBy<ProgramError>([&] { probe.call("EchoInteger", 1, 2); }),
         "takes 1 argument, but was given 2");
    says(thrownBy<ProgramError>([&] { probe.call("Defaults", 1, true, 1, "", nullptr, 1, 1); }),
         "Probe.Defaults takes 0 to 6 arguments, but was given 7");
    says(thrownBy<ProgramError>([&] { probe.call("EchoInteger", "x"); }),
         "parameter v of Probe.EchoInteger is an Integer, but was given a string");
    says(thrownBy<ProgramError>([&] { probe.set("Half", 1.0); }), "Probe.Half is read-only");
    says(thrownBy<ProgramError>([&] { probe.get("WriteOnly"); }), "Probe.WriteOnly cannot be read");
    says(thrownBy<ProgramError>([&] { host.create("NoSuch"); }), "there is no class NoSuch; known are ");
    says(thrownBy<ProgramError>([&] { host.create("Probe", 1); }),
         "Probe has no constructor that takes arguments");
    says(thrownBy<ProgramError>([&] { probe.on("NoSuch", {}); }), "Probe has no event NoSuch");
    says(thrownBy<ProgramError>([&] { host.callShared("Probe", "NoSuch"); }),
         "Probe has no shared method NoSuch");
    says(thrownBy<ProgramError>([&] { host.getShared("Probe", "NoSuch"); }),
         "Probe has no shared property NoSuch");
    says(thrownBy<ProgramError>([&] { host.constant("Probe", "NoSuch"); }), "Probe has no constant NoSuch");
    says(thrownBy<ProgramError>([] { Object().call("x"); }), "the object is nil");
    says(thrownBy<ProgramError>([&] { probe.call("EchoArray", Array::of(std::vector<double>{})); }),
         "is a String(), but was given an array of Double");
}

TEST_F(DynamicCall, ReadsAndWritesPropertiesThroughFunctions)
{
    probe.set("First", 7);
    probe.set("Second", 9);
    EXPECT_EQ(probe.get("First").integer(), 7)
        << "the parameter distinguishes two properties of one function";
    EXPECT_EQ(probe.get("second").integer(), 9);
    EXPECT_EQ(probe.get("Half").number(), 3.5);
    probe.set("Text", "abc");
    EXPECT_EQ(probe.get("Text").text(), "<abc>");
    probe.set("Text", nullptr);
    EXPECT_EQ(probe.get("Text").text(), "<(nil)>");
    EXPECT_TRUE(probe.get("NotFlag").boolean());
    EXPECT_EQ(probe.get("Quarter").single(), -0.75f) << "parameters may be negative";
    EXPECT_EQ(probe.get("Wide").unsigned64(), 0xFEDCBA9876543210u);
    EXPECT_EQ(probe.get("Devices").object().classInfo().name, "Dictionary");
    probe.set("WriteOnly", 3);
    EXPECT_EQ(probe.call("Item", 2).integer(), 3);
    EXPECT_THROW(probe.set("First", "x"), ProgramError);
}

TEST_F(DynamicCall, ReadsAndWritesIndexedProperties)
{
    probe.set("Slot", 2, 0.5);
    probe.set("Slot", 3, 4);
    EXPECT_EQ(probe.get("Slot", 2).number(), 0.5);
    EXPECT_EQ(probe.call("Slot", 3).number(), 4.0) << "a call of the method reads the indexed property";
    EXPECT_FALSE(probe.get("SlotIsSet", 0).boolean());
    probe.set("SlotIsSet", 0, true);
    EXPECT_TRUE(probe.get("SlotIsSet", 0).boolean());
    probe.set("Item", 1, -8);
    EXPECT_EQ(probe.get("Item", 1).integer(), -8);
    EXPECT_THROW(probe.set("Slot", 0, "x"), ProgramError);
    EXPECT_THROW(probe.set("Slot", "x", 0.5), ProgramError);
    EXPECT_THROW(probe.set("EchoInteger", 1, 1), ProgramError) << "the method has no setter";
    EXPECT_THROW(probe.set("NoSuch", 1, 1), ProgramError);
}

TEST_F(DynamicCall, ReachesSharedMembersAndConstants)
{
    EXPECT_EQ(host.callShared("Probe", "Add", 2, 3).integer(), 5);
    EXPECT_EQ(host.callShared("Probe", "Add", 2).integer(), 3);
    EXPECT_EQ(host.callShared("Probe", "Invert", 0x0123456789ABCDEFu).unsigned64(), 0xFEDCBA9876543210u);
    EXPECT_EQ(host.callShared("Probe", "Tenth").number(), 0.1);
    EXPECT_EQ(host.callShared("ProbeChild", "Add", 1, 1).integer(), 2)
        << "a subclass finds the method of its superclass";
    host.setShared("Probe", "Total", 5);
    EXPECT_EQ(host.getShared("Probe", "Total").integer(), 105);
    EXPECT_EQ(host.getShared("Probe", "OnlyTotal").integer(), 12);
    EXPECT_THROW(host.setShared("Probe", "OnlyTotal", 1), ProgramError);
    EXPECT_EQ(host.constant("Probe", "ConstPlain").integer(), 5);
    EXPECT_EQ(host.constant("probe", "constinteger").integer(), -2);
    EXPECT_EQ(host.constant("Probe", "ConstText").text(), "x, y");
    EXPECT_EQ(host.constant("Probe", "ConstDouble").number(), 2.5);
    EXPECT_TRUE(host.constant("ProbeChild", "ConstFlag").boolean());
}

TEST_F(DynamicCall, ThrowsExceptionsOfThePlugin)
{
    for (const char* name : {"RuntimeException", "OutOfMemoryException", "OutOfBoundsException",
                             "NilObjectException", "UnsupportedOperationException", "IllegalCastException"}) {
        try {
            probe.call("Fail", name, "caf\xC3\xA9", 17);
            ADD_FAILURE() << name;
        } catch (const HostException& error) {
            EXPECT_EQ(error.className(), name);
            EXPECT_EQ(error.message(), "caf\xC3\xA9");
            EXPECT_EQ(error.errorNumber(), 17);
        }
    }
    EXPECT_EQ(probe.call("EchoInteger", 3).integer(), 3) << "the next call succeeds";
    EXPECT_THROW(probe.get("Failing"), HostException);
    EXPECT_THROW(probe.set("First", -1), HostException);
    EXPECT_FALSE(host.takeException());
    EXPECT_EQ(host.leaks().total(), 1u) << "the dropped results are destroyed";
}

TEST_F(DynamicCall, KeepsExceptionsOfInnerCallsInside)
{
    host.onYield([&] {
        EXPECT_THROW(probe.call("Fail", "RuntimeException", "inner", 0), HostException);
        EXPECT_EQ(probe.call("EchoInteger", 1).integer(), 1);
    });
    probe.call("CallYield");
    host.onYield([&] { probe.call("Fail", "NilObjectException", "passed on", 0); });
    EXPECT_NE(thrownBy<HostException>([&] { probe.call("CallYield"); }).find("passed on"), std::string::npos);
    host.onYield([] { throw std::runtime_error("the program's own"); });
    EXPECT_EQ(thrownBy<std::runtime_error>([&] { probe.call("CallYield"); }), "the program's own");
    probe.call("EchoInteger", 1);
}

TEST_F(DynamicCall, NotesAnExceptionThatNoCallerReceived)
{
    expectMisuse = true;
    test::service<void(REALobjectStruct*)>("RuntimeRaiseException")(host.create("NilObjectException").get());
    EXPECT_EQ(probe.call("EchoInteger", 1).integer(), 1) << "the exception is older than this call";
    EXPECT_EQ(
        misuses(),
        "an exception of class NilObjectException was raised outside any call, and no caller received it\n");
}

TEST_F(DynamicCall, ReportsLeaksAndErrorsOfThePlugin)
{
    expectMisuse = expectLeaks = true;
    probe.call("LeakString");
    EXPECT_EQ(host.leaks().text(), "1 object of class Probe\n1 string\n");
    {
        const auto block = MemoryBlock::ofSize(1);
        retain(block.get());
        EXPECT_EQ(misuses(), "");
        probe.call("UnlockTwice", block); // drops two references, but got only one from the caller
        EXPECT_FALSE(isLive(block.get()));
    }
    EXPECT_EQ(host.misuses().size(), 1u) << misuses();
    EXPECT_NE(thrownBy<ProgramError>([&] {
                  probe.call("Garbage");
              }).find("this is not the address of such a value"),
              std::string::npos);
}

TEST_F(DynamicCall, ThrowsTheRaisedExceptionIfTheResultIsADeadAddress)
{
    EXPECT_EQ(thrownBy<HostException>([&] { probe.call("Garbage", "NilObjectException"); }),
              "NilObjectException: also raised");
    EXPECT_EQ(probe.call("EchoInteger", 1).integer(), 1) << "the next call succeeds";
}

TEST_F(DynamicCall, KeepsTheObjectUntilTheSetterReturns)
{
    host.callShared("Probe", "LifeLog");
    std::string duringTheSetter;
    host.onYield([&] {
        probe = Object();
        duringTheSetter = host.callShared("Probe", "LifeLog").text();
    });
    probe.set("Text", "abc");
    EXPECT_EQ(duringTheSetter, "") << "the program has dropped its reference, but the object lives";
    EXPECT_EQ(host.callShared("Probe", "LifeLog").text(), "-Probe ");
}

} // namespace
