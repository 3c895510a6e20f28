// Property values as JSON.
#include "host/kvx/properties/property_json.h"

#include <gtest/gtest.h>

namespace {

using namespace kvx;

TEST(PropertyJson, HasATypeForEachForm)
{
    const StreamFormat format = {48000, 'lpcm', 9, 8, 1, 8, 2, 32, 0};
    const char* const formatText = R"("rate":48000.0,"format":"lpcm","flags":9,"bytesPerPacket":8,)"
                                   R"("framesPerPacket":1,"bytesPerFrame":8,"channels":2,"bits":32)";
    const struct {
        Form form;
        Extent extent;
        std::string bytes, json;
    } facts[] = {
        {Form::text, Extent::one, std::string("one\0two", 7), R"("one")"},
        {Form::reference, Extent::one,
         "K\xC3\xBC"
         "che",
         "\"K\xC3\xBC"
         "che\""},
        {Form::flag, Extent::one, bytesOf(1u), "true"},
        {Form::flag, Extent::one, bytesOf(0u), "false"},
        {Form::flag, Extent::one, bytesOf(2u), "2"},
        {Form::number, Extent::one, bytesOf(4294967295u), "4294967295"},
        {Form::number, Extent::many, bytesOf(1u) + bytesOf(2u), "[1,2]"},
        {Form::number, Extent::many, "", "[]"},
        {Form::integer, Extent::one, bytesOf(-1), "-1"},
        {Form::code, Extent::one, bytesOf(Code{'spkr'}), R"("spkr")"},
        {Form::code, Extent::one, bytesOf(Code{7}), "7"},
        {Form::object, Extent::many, bytesOf(2u) + bytesOf(4u), "[2,4]"},
        {Form::single, Extent::one, bytesOf(0.5f), "0.5"},
        {Form::real, Extent::one, bytesOf(44100.0), "44100.0"},
        {Form::range, Extent::one, bytesOf(ValueRange{1, 2.5}), R"({"minimum":1.0,"maximum":2.5})"},
        {Form::format, Extent::one, bytesOf(format), std::string("{") + formatText + "}"},
        {Form::rangedFormat, Extent::many, bytesOf(RangedFormat{format, {1, 2}}),
         std::string("[{") + formatText + R"(,"rates":{"minimum":1.0,"maximum":2.0}}])"},
        {Form::channelLayout, Extent::one, bytesOf(ChannelLayout{0x650002, 0, 3}),
         R"({"tag":6619138,"bitmap":0,"descriptions":3})"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.json);
        EXPECT_EQ(valueJson(fact.form, fact.extent, fact.bytes).dump(), fact.json);
    }
    BufferList list = {1, {{2, 4096, nullptr}}};
    EXPECT_EQ(valueJson(Form::bufferList, Extent::one, bytesOf(list)).dump(),
              R"([{"channels":2,"bytes":4096}])");
    EXPECT_EQ(valueJson(Form::bufferList, Extent::one, bytesOf(0u)).dump(), "[]");
}

TEST(PropertyJson, IsTheBytesIfTheSizeDoesNotFit)
{
    for (const auto& [form, extent] :
         {std::pair(Form::real, Extent::one), std::pair(Form::number, Extent::many),
          std::pair(Form::bufferList, Extent::one), std::pair(Form::channelLayout, Extent::one)})
        EXPECT_EQ(valueJson(form, extent, "\x01\xAB\x02").dump(), R"("01ab02")");
    EXPECT_EQ(bytesJson("").dump(), R"("")");
}

} // namespace
