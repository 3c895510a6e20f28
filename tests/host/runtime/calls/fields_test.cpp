// Tests of properties that are fields of the class data.
#include "tests/host/runtime/plugin_host.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <thread>

namespace {

using namespace host;
using test::thrownBy;

class Fields : public test::WithPlugin {};

TEST_F(Fields, OfEveryTypeKeepTheirValue)
{
    const auto dictionary = host.create("Dictionary");
    const auto block = MemoryBlock::ofSize(3);
    const auto item = FolderItem::at("/a");
    const auto numbers = Array::of(std::vector<double>{1, 2});
    const struct {
        const char* name;
        Value given, result;
    } facts[] = {
        {"FieldBoolean", true, true},
        {"FieldInt8", -128, -128},
        {"FieldInt16", -32768, -32768},
        {"FieldInt32", std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::min()},
        {"FieldInt64", -0x0123456789ABCDEF, -0x0123456789ABCDEF},
        {"FieldUInt8", 255, 255},
        {"FieldUInt16", 65535, 65535},
        {"FieldUInt32", -1, 0xFFFFFFFFu},
        {"FieldUInt64", 0xFEDCBA9876543210u, 0xFEDCBA9876543210u},
        {"FieldInteger", -5, -5},
        {"FieldSingle", 44100.5f, 44100.5f},
        {"FieldDouble", 0.1, 0.1},
        {"FieldCrooked", -1e300, -1e300},
        {"FieldPtr", 0x1234, 0x1234},
        {"FieldString", "text", "text"},
        {"FieldObject", dictionary, dictionary},
        {"FieldVariant", 2.5, 2.5},
        {"FieldBlock", block, block},
        {"FieldFolder", item, item},
        {"FieldNumbers", numbers, numbers},
    };
    for (const auto& fact : facts) probe.set(fact.name, fact.given);
    // The reads follow all writes, so that a write to an overlapping field would change a value.
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.name);
        EXPECT_TRUE(sameValue(probe.get(fact.name), fact.result)) << probe.get(fact.name).print();
    }
    EXPECT_EQ(probe.get("OnlyInteger").integer(), -5);
    EXPECT_EQ(probe.get("OnlyString").text(), "text");
    for (const auto& fact : facts) {
        if (fact.result.reference()) probe.set(fact.name, nullptr);
    }
    EXPECT_TRUE(probe.get("FieldString").isNil());
    EXPECT_TRUE(probe.get("FieldNumbers").isNil());
}

TEST_F(Fields, RefuseValuesOfAnotherType)
{
    EXPECT_NE(thrownBy<ProgramError>([&] { probe.set("OnlyInteger", 1); }).find("read-only"),
              std::string::npos);
    EXPECT_THROW(probe.set("FieldInt8", 300), ProgramError);
    EXPECT_THROW(probe.set("FieldBoolean", 1), ProgramError);
    EXPECT_THROW(probe.set("FieldString", 1), ProgramError);
    EXPECT_THROW(probe.set("FieldNumbers", Array::of(std::vector<float>{1})), ProgramError);
    EXPECT_EQ(probe.get("FieldInt8").integer(), 0);
}

TEST_F(Fields, AreInTheClassData)
{
    auto* data = static_cast<unsigned char*>(probe.classData());
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(data) % 16, 0u);
    const auto& property = *probe.classInfo().property("FieldInt64");
    probe.set("FieldInt64", 0x0102030405060708);
    std::int64_t value;
    std::memcpy(&value, data + property.parameter, sizeof value);
    EXPECT_EQ(value, 0x0102030405060708);
    data[property.parameter] = 0xFF;
    EXPECT_EQ(probe.get("FieldInt64").integer(), 0x01020304050607FF);
    EXPECT_EQ(probe.get("FieldInt32").integer(), 1000) << "the constructor has set this value";
}

TEST_F(Fields, CanBeWrittenByASetter)
{
    // The host reads MixedAccess from a field, and writes MixedAccess with a setter.
    probe.set("MixedAccess", 2);
    EXPECT_EQ(probe.get("MixedAccess").integer(), 2);
    EXPECT_THROW(probe.set("MixedAccess", -1), HostException);
    EXPECT_EQ(probe.get("MixedAccess").integer(), 2);
}

TEST_F(Fields, KeepAndDropReferences)
{
    const auto text = String::of("kept");
    const auto block = MemoryBlock::ofSize(1);
    probe.set("FieldString", text);
    probe.set("FieldBlock", block);
    probe.set("FieldVariant", block);
    EXPECT_EQ(referenceCount(text.get()), 2u);
    EXPECT_EQ(referenceCount(block.get()), 3u);
    probe.set("FieldString", text);
    EXPECT_EQ(referenceCount(text.get()), 2u) << "the same string replaces the string in the field";
    probe.set("FieldVariant", 1);
    EXPECT_EQ(referenceCount(block.get()), 2u);
    probe = Object();
    EXPECT_EQ(referenceCount(text.get()), 1u)
        << "the object drops one reference, although two properties have this field";
    EXPECT_EQ(referenceCount(block.get()), 1u);
}

TEST_F(Fields, CanBeReadWhileAnotherThreadWrites)
{
    std::thread writer([&] {
        for (int i = 1; i <= 2000; ++i) {
            probe.set("FieldDouble", i * (1.0 + 1.0 / 4294967296.0));
            probe.set("FieldBoolean", i % 2 == 0);
        }
    });
    for (int i = 0; i < 2000; ++i) {
        const double seen = probe.get("FieldDouble").number() / (1.0 + 1.0 / 4294967296.0);
        EXPECT_EQ(seen, std::nearbyint(seen)) << "a read returns no mixture of two values";
        probe.get("FieldBoolean").boolean();
    }
    writer.join();
}

TEST_F(Fields, OfASubclassFollowThoseOfTheSuperclass)
{
    const auto child = host.create("ProbeChild");
    EXPECT_EQ(child.get("Own").integer(), 77);
    EXPECT_EQ(child.get("FieldInt32").integer(), 1000);
    child.set("Own", -1);
    child.set("FieldInt32", 5);
    EXPECT_EQ(child.get("Own").integer(), -1);
    EXPECT_EQ(child.get("FieldInt32").integer(), 5);
    EXPECT_EQ(child.call("EchoNegative", 3).integer(), -3);
    EXPECT_EQ(child.call("EchoInteger", 3).integer(), 3);
    const auto& info = child.classInfo();
    EXPECT_EQ(info.super, &probe.classInfo());
    EXPECT_GE(info.dataOffset, info.super->dataOffset + info.super->dataSize);
    EXPECT_EQ(child.classData(*info.super), reinterpret_cast<char*>(child.get()) + info.super->dataOffset);
}

using Objects = Fields;

TEST_F(Objects, RunTheirConstructorsAndDestructorsInOrder)
{
    probe = Object();
    host.callShared("Probe", "LifeLog");
    {
        const auto child = host.create("ProbeChild");
        EXPECT_EQ(host.callShared("Probe", "LifeLog").text(), "+Probe +Child ")
            << "the constructors run from the root class on, with zeroed and aligned data";
    }
    EXPECT_EQ(host.callShared("Probe", "LifeLog").text(), "-Child -Probe ");
    {
        const auto made = host.create("ProbeMade", 5);
        EXPECT_EQ(made.get("A").integer(), 5);
        EXPECT_EQ(made.get("B").integer(), 7);
        EXPECT_EQ(host.create("ProbeMade", "four").get("A").integer(), 4);
        EXPECT_EQ(host.create("ProbeMade", 1, 2).get("B").integer(), 2);
    }
    EXPECT_EQ(host.callShared("Probe", "LifeLog").text(), "+Made +Made -Made +Made -Made -Made ");
    EXPECT_NE(thrownBy<HostException>([&] { host.create("ProbeMade", 0); }).find("zero"), std::string::npos);
    EXPECT_EQ(host.callShared("Probe", "LifeLog").text(), "+Made -Made ")
        << "a partly constructed object is destroyed";
    EXPECT_THROW(host.create("ProbeMade"), ProgramError);
    EXPECT_EQ(host.callShared("Probe", "LifeLog").text(), "");
}

} // namespace
