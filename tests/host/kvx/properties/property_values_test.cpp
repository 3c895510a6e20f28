// Tests of the types of property values, and of the functions that format values as text and read them.
#include "host/kvx/properties/property_values.h"

#include "host/kvx/text/failure.h"

#include <CoreAudio/CoreAudio.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>

namespace {

using kvx::bytesOf;
using kvx::Extent;
using kvx::Form;
using kvx::Question;

// ---- types ----

TEST(PropertyTypes, HaveEachSelectorOnce)
{
    std::set<kvx::Code> seen;
    for (const kvx::PropertyType& type : kvx::propertyTypes()) {
        EXPECT_TRUE(seen.insert(type.selector).second) << kvx::formatCode(type.selector);
        EXPECT_EQ(kvx::findPropertyType(type.selector), &type);
        if (type.question != Question::none)
            EXPECT_EQ(type.extent, Extent::one) << "a question has a single value";
    }
    EXPECT_EQ(kvx::findPropertyType('****'), nullptr) << "a wildcard is not a selector of a property";
    EXPECT_EQ(kvx::findPropertyType(0), nullptr);
}

TEST(PropertyTypes, AgreeWithThePlatformsDocumentation)
{
    const struct {
        kvx::Code selector;
        Form form;
        Extent extent;
        Question question;
    } facts[] = {
        {kAudioObjectPropertyClass, Form::code, Extent::one, Question::none},
        {kAudioObjectPropertyOwner, Form::object, Extent::one, Question::none},
        {kAudioObjectPropertyOwnedObjects, Form::object, Extent::many, Question::none},
        {kAudioHardwarePropertyDevices, Form::object, Extent::many, Question::none},
        {kAudioHardwarePropertyDefaultInputDevice, Form::object, Extent::one, Question::none},
        {kAudioHardwarePropertyDeviceForUID, Form::text, Extent::one, Question::withReference},
        {kAudioHardwarePropertyRunLoop, Form::text, Extent::one, Question::withReference},
        {kAudioDevicePropertyDeviceName, Form::text, Extent::one, Question::none},
        {kAudioDevicePropertyDeviceNameCFString, Form::reference, Extent::one, Question::none},
        {kAudioDevicePropertyDeviceUID, Form::reference, Extent::one, Question::none},
        {kAudioDevicePropertyPlugIn, Form::integer, Extent::one, Question::none},
        {kAudioDevicePropertyTransportType, Form::code, Extent::one, Question::none},
        {kAudioDevicePropertyDeviceIsAlive, Form::flag, Extent::one, Question::none},
        {kAudioDevicePropertyHogMode, Form::integer, Extent::one, Question::none},
        {kAudioDevicePropertyLatency, Form::number, Extent::one, Question::none},
        {kAudioDevicePropertyBufferFrameSize, Form::number, Extent::one, Question::none},
        {kAudioDevicePropertyBufferFrameSizeRange, Form::range, Extent::one, Question::none},
        {kAudioDevicePropertyNominalSampleRate, Form::real, Extent::one, Question::none},
        {kAudioDevicePropertyAvailableNominalSampleRates, Form::range, Extent::many, Question::none},
        {kAudioDevicePropertyIOCycleUsage, Form::single, Extent::one, Question::none},
        {kAudioDevicePropertyStreams, Form::object, Extent::many, Question::none},
        {kAudioDevicePropertyStreamConfiguration, Form::bufferList, Extent::one, Question::none},
        {kAudioDevicePropertyStreamFormat, Form::format, Extent::one, Question::none},
        {kAudioDevicePropertyStreamFormats, Form::format, Extent::many, Question::none},
        {kAudioDevicePropertyStreamFormatSupported, Form::format, Extent::one, Question::check},
        {kAudioDevicePropertyStreamFormatMatch, Form::format, Extent::one, Question::convert},
        {kAudioDevicePropertyPreferredChannelsForStereo, Form::number, Extent::many, Question::none},
        {kAudioDevicePropertyPreferredChannelLayout, Form::channelLayout, Extent::one, Question::none},
        {kAudioDevicePropertyIOProcStreamUsage, Form::text, Extent::one, Question::withReference},
        {kAudioDevicePropertyVolumeScalar, Form::single, Extent::one, Question::none},
        {kAudioDevicePropertyVolumeRangeDecibels, Form::range, Extent::one, Question::none},
        {kAudioDevicePropertyVolumeScalarToDecibels, Form::single, Extent::one, Question::convert},
        {kAudioDevicePropertyMute, Form::flag, Extent::one, Question::none},
        {kAudioDevicePropertyDataSource, Form::code, Extent::one, Question::none},
        {kAudioDevicePropertyDataSources, Form::code, Extent::many, Question::none},
        {kAudioDevicePropertyDataSourceNameForID, Form::text, Extent::one, Question::translate},
        {kAudioDevicePropertyDataSourceNameForIDCFString, Form::text, Extent::one, Question::withReference},
        {kAudioStreamPropertyDirection, Form::number, Extent::one, Question::none},
        {kAudioStreamPropertyTerminalType, Form::code, Extent::one, Question::none},
        {kAudioStreamPropertyPhysicalFormat, Form::format, Extent::one, Question::none},
        {kAudioStreamPropertyAvailablePhysicalFormats, Form::rangedFormat, Extent::many, Question::none},
        {kAudioStreamPropertyPhysicalFormatSupported, Form::format, Extent::one, Question::check},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(kvx::formatCode(fact.selector));
        const kvx::PropertyType* type = kvx::findPropertyType(fact.selector);
        ASSERT_NE(type, nullptr);
        EXPECT_EQ(type->form, fact.form);
        EXPECT_EQ(type->extent, fact.extent);
        EXPECT_EQ(type->question, fact.question);
    }
}

// ---- text ----

constexpr std::uint32_t u32(std::uint32_t value) { return value; }

kvx::ObjectID findObject(const std::string& text)
{
    if (text == "7") return 7;
    if (text == "Desk Speakers") return 42;
    throw kvx::Failure("no device is called " + text);
}

std::string parse(Form form, const std::string& text, Extent extent = Extent::one)
{
    return kvx::parseValue(form, extent, text, findObject);
}

const kvx::StreamFormat stereo = {44100, 'lpcm', 9, 8, 1, 8, 2, 32, 0};
const std::string stereoText =
    "rate=44100,format='lpcm',flags=0x9,bytes/packet=8,frames/packet=1,bytes/frame=8,channels=2,bits=32";

TEST(PropertyText, PrintsEachFormAndReadsItBack)
{
    const struct {
        Form form;
        std::string bytes;
        std::string text;
    } facts[] = {
        {Form::flag, bytesOf(u32(0)), "no"},
        {Form::flag, bytesOf(u32(1)), "yes"},
        {Form::flag, bytesOf(u32(2)), "2"},
        {Form::flag, bytesOf(u32(0xFFFFFFFF)), "4294967295"},
        {Form::number, bytesOf(u32(0)), "0"},
        {Form::number, bytesOf(u32(0xFFFFFFFF)), "4294967295"},
        {Form::integer, bytesOf(std::int32_t(-1)), "-1"},
        {Form::integer, bytesOf(std::numeric_limits<std::int32_t>::min()), "-2147483648"},
        {Form::code, bytesOf(u32('bltn')), "'bltn'"},
        {Form::code, bytesOf(u32('pci ')), "'pci '"},
        {Form::code, bytesOf(u32(0)), "0x00000000"},
        {Form::object, bytesOf(u32(7)), "7"},
        {Form::single, bytesOf(0.5f), "0.5"},
        {Form::single, bytesOf(0.1f), "0.1"},
        {Form::single, bytesOf(1e-45f), "1e-45"},
        {Form::single, bytesOf(-0.0f), "-0"},
        {Form::real, bytesOf(44100.0), "44100"},
        {Form::real, bytesOf(0.1), "0.1"},
        {Form::real, bytesOf(44099.999999999), "44099.999999999"},
        {Form::range, bytesOf(kvx::ValueRange{8000, 96000.5}), "8000..96000.5"},
        {Form::range, bytesOf(kvx::ValueRange{-64, 0}), "-64..0"},
        {Form::format, bytesOf(stereo), stereoText},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.text);
        EXPECT_EQ(kvx::formatValue(fact.form, Extent::one, fact.bytes), fact.text);
        EXPECT_EQ(parse(fact.form, fact.text), fact.bytes);
    }
    EXPECT_EQ(kvx::formatValue(Form::single, Extent::one, bytesOf(std::nanf(""))), "nan");
    EXPECT_EQ(kvx::formatValue(Form::single, Extent::one, bytesOf(-std::numeric_limits<float>::infinity())),
              "-inf");
    EXPECT_EQ(
        kvx::formatValue(Form::rangedFormat, Extent::one, bytesOf(kvx::RangedFormat{stereo, {8000, 48000}})),
        stereoText + ",rates=8000..48000");
}

TEST(PropertyText, RefusesNumbersThatAreNotFinite)
{
    for (const char* text : {"nan", "-nan", "inf", "-inf", "infinity", "1e999"}) {
        SCOPED_TRACE(text);
        EXPECT_THROW(parse(Form::single, text), kvx::WrongUsage);
        EXPECT_THROW(parse(Form::real, text), kvx::WrongUsage);
        EXPECT_THROW(parse(Form::range, std::string(text) + "..1"), kvx::WrongUsage);
        EXPECT_THROW(parse(Form::range, std::string("1..") + text), kvx::WrongUsage);
        EXPECT_THROW(parse(Form::format, std::string("rate=") + text), kvx::WrongUsage);
    }
}

TEST(PropertyText, RecognisesAWrittenValueInTheValueReadBack)
{
    const kvx::StreamFormat rateAlone = {44100, 0, 0, 0, 0, 0, 0, 0, 0},
                            otherRate = {48000, 0, 0, 0, 0, 0, 0, 0, 0};
    kvx::StreamFormat fiveBits = {};
    fiveBits.bits = 5;
    const struct {
        Form form;
        std::string written, read;
        bool isKept;
    } facts[] = {
        {Form::number, bytesOf(u32(5)), bytesOf(u32(5)), true},
        {Form::number, bytesOf(u32(5)), bytesOf(u32(4)), false},
        {Form::number, bytesOf(u32(5)), "", false},
        {Form::real, bytesOf(48000.0), bytesOf(48000.5), false},
        {Form::single, bytesOf(-0.1f), bytesOf(-0.099998474f), true},
        {Form::single, bytesOf(0.0f), bytesOf(-0.0f), true},
        {Form::single, bytesOf(0.5f), bytesOf(0.498f), false},
        {Form::single, bytesOf(0.5f), bytesOf(std::nanf("")), false},
        {Form::single, bytesOf(0.5f), bytesOf(0.5), false},
        {Form::format, bytesOf(rateAlone), bytesOf(stereo), true},
        {Form::format, bytesOf(otherRate), bytesOf(stereo), false},
        {Form::format, bytesOf(fiveBits), bytesOf(stereo), false},
        {Form::format, bytesOf(rateAlone), "", false},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(kvx::formatValue(fact.form, Extent::one, fact.written));
        EXPECT_EQ(kvx::isKept(fact.form, fact.written, fact.read), fact.isKept);
    }
}

TEST(PropertyText, PrintsListsOneItemPerLineAndReadsThemBack)
{
    const std::string two = bytesOf(u32(3)) + bytesOf(u32(5));
    EXPECT_EQ(kvx::formatValue(Form::object, Extent::many, two), "3\n5");
    EXPECT_EQ(kvx::formatValue(Form::object, Extent::many, ""), "");
    EXPECT_EQ(parse(Form::number, "3\n5", Extent::many), two);
    EXPECT_EQ(parse(Form::number, "  3 5\t", Extent::many), two);
    EXPECT_EQ(parse(Form::number, "", Extent::many), "");
    const std::string codes = bytesOf(u32('pci ')) + bytesOf(u32('line'));
    EXPECT_EQ(kvx::formatValue(Form::code, Extent::many, codes), "'pci '\n'line'");
    EXPECT_EQ(parse(Form::code, "'pci ' line", Extent::many), codes)
        << "a blank between quotes does not separate items";
}

TEST(PropertyText, DumpsValuesOfAWrongSize)
{
    EXPECT_EQ(kvx::formatValue(Form::number, Extent::one, std::string("\1\0\0", 3)),
              "0000  01 00 00                                         |...|");
    EXPECT_EQ(kvx::formatValue(Form::number, Extent::one, std::string(8, 'A')),
              "0000  41 41 41 41 41 41 41 41                          |AAAAAAAA|")
        << "two items are no single value";
    EXPECT_EQ(kvx::formatValue(Form::real, Extent::many, std::string(9, 'A')).substr(0, 9), "0000  41 ");
    EXPECT_EQ(kvx::formatValue(Form::number, Extent::one, ""), "");
}

TEST(PropertyText, ReadsOtherSpellingsOfValues)
{
    const struct {
        Form form;
        const char* text;
        std::string bytes;
    } facts[] = {
        {Form::flag, "on", bytesOf(u32(1))},
        {Form::flag, "off", bytesOf(u32(0))},
        {Form::flag, "true", bytesOf(u32(1))},
        {Form::flag, "false", bytesOf(u32(0))},
        {Form::flag, "1", bytesOf(u32(1))},
        {Form::number, "0x200", bytesOf(u32(512))},
        {Form::code, "spkr", bytesOf(u32('spkr'))},
        {Form::code, "usb", bytesOf(u32('usb '))},
        {Form::object, "Desk Speakers", bytesOf(u32(42))},
        {Form::real, "4.41e4", bytesOf(44100.0)},
        {Form::range, "1..2", bytesOf(kvx::ValueRange{1, 2})},
        {Form::text, "Desk", std::string("Desk\0", 5)},
        {Form::text, "", std::string(1, '\0')},
        {Form::format, "", bytesOf(kvx::StreamFormat{})},
        {Form::format, "rate=48000", bytesOf(kvx::StreamFormat{48000, 0, 0, 0, 0, 0, 0, 0, 0})},
        {Form::format, "channels=2,format=lpcm", bytesOf(kvx::StreamFormat{0, 'lpcm', 0, 0, 0, 0, 2, 0, 0})},
    };
    for (const auto& fact : facts) EXPECT_EQ(parse(fact.form, fact.text), fact.bytes) << fact.text;
}

TEST(PropertyText, RefusesInvalidTextsWithAnExample)
{
    const struct {
        Form form;
        const char* text;
        const char* advice;
    } facts[] = {
        {Form::flag, "maybe", "yes or no"},
        {Form::number, "-1", "such as 512"},
        {Form::number, "1.5", "such as 512"},
        {Form::number, "4294967296", "such as 512"},
        {Form::integer, "2147483648", "such as -1"},
        {Form::code, "abcde", "four characters"},
        {Form::code, "", "four characters"},
        {Form::single, "half", "such as 0.5"},
        {Form::single, "0.5x", "such as 0.5"},
        {Form::single, "", "such as 0.5"},
        {Form::real, "1,5", "such as 48000"},
        {Form::range, "1", "8000..96000"},
        {Form::range, "1..", "8000..96000"},
        {Form::range, "..2", "8000..96000"},
        {Form::format, "48000", "rate=48000"},
        {Form::format, "rate=", "rate=48000"},
        {Form::format, "speed=48000", "rate=48000"},
        {Form::format, "channels=two", "rate=48000"},
        {Form::bufferList, "2", "--hex"},
        {Form::rangedFormat, "rate=1", "--hex"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.text);
        try {
            parse(fact.form, fact.text);
            ADD_FAILURE() << "accepted";
        } catch (const kvx::WrongUsage& error) {
            EXPECT_NE(std::string(error.what()).find(fact.advice), std::string::npos) << error.what();
        }
    }
    EXPECT_THROW(parse(Form::object, "Missing"), kvx::Failure);
    EXPECT_THROW(parse(Form::number, "1 x", Extent::many), kvx::WrongUsage);
}

TEST(PropertyText, PrintsRecordsOfVariableSize)
{
    kvx::BufferList list = {1, {{2, 4096, nullptr}}};
    EXPECT_EQ(kvx::formatValue(Form::bufferList, Extent::one, bytesOf(list)), "channels=2,bytes=4096");
    const std::string two =
        bytesOf(kvx::BufferList{2, {{2, 4096, nullptr}}}) + bytesOf(kvx::Buffer{1, 64, nullptr});
    EXPECT_EQ(kvx::formatValue(Form::bufferList, Extent::one, two),
              "channels=2,bytes=4096\nchannels=1,bytes=64");
    EXPECT_EQ(kvx::formatValue(Form::bufferList, Extent::one, std::string(4, '\0')), "") << "no buffers";
    list.count = 2;
    EXPECT_EQ(kvx::formatValue(Form::bufferList, Extent::one, bytesOf(list)).substr(0, 6), "0000  ")
        << "the count is larger than the number of buffers";
    list.count = 0x40000000;
    EXPECT_EQ(kvx::formatValue(Form::bufferList, Extent::one, bytesOf(list)).substr(0, 6), "0000  ");
    EXPECT_EQ(kvx::formatValue(Form::bufferList, Extent::one, std::string("\1\0\0\0", 4)).substr(0, 6),
              "0000  ");
    EXPECT_EQ(kvx::formatValue(Form::bufferList, Extent::one, std::string(2, '\0')).substr(0, 6), "0000  ");

    EXPECT_EQ(kvx::formatValue(Form::channelLayout, Extent::one,
                               bytesOf(kvx::ChannelLayout{0x650002, 0, 0}) + std::string(20, '\0')),
              "tag=0x650002,bitmap=0x0,descriptions=0");
    EXPECT_EQ(kvx::formatValue(Form::channelLayout, Extent::one, std::string(11, 'A')).substr(0, 6),
              "0000  ");

    EXPECT_EQ(kvx::formatValue(Form::text, Extent::one, std::string("abc\0def", 7)), "abc");
    EXPECT_EQ(kvx::formatValue(Form::text, Extent::one, "abc"), "abc") << "without a terminating zero";
    EXPECT_EQ(kvx::formatValue(Form::reference, Extent::one, "caf\xC3\xA9"), "caf\xC3\xA9");
}

} // namespace
