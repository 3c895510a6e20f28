// Tests of the functions that format and read four-character codes and statuses.
#include "host/kvx/text/codes.h"

#include <AudioToolbox/AudioToolbox.h>
#include <AudioUnit/AudioUnit.h>
#include <Carbon/Carbon.h>
#include <CoreAudio/CoreAudio.h>

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

TEST(Codes, ArePrintedHighestByteFirst)
{
    const struct {
        kvx::Code code;
        const char* text;
        const char* why;
    } facts[] = {
        {0x64657623, "'dev#'", "the first character is the highest byte"},
        {0x75696420, "'uid '", "a blank is a character"},
        {0x2A2A2A2A, "'****'", "printable punctuation"},
        {0x7E7E7E7E, "'~~~~'", "the last printable character"},
        {0x7F7E7E7E, "0x7F7E7E7E", "the first character that is not printable"},
        {0x20202020, "'    '", "four blanks"},
        {0x20201F20, "0x20201F20", "a control character is not printable"},
        {0x27202020, "0x27202020", "a quote inside the quotes would be ambiguous"},
        {0, "0x00000000", "zero bytes are not printable"},
        {0xFFFFFFFF, "0xFFFFFFFF", "high bytes are not printable"},
    };
    for (const auto& fact : facts) EXPECT_EQ(kvx::formatCode(fact.code), fact.text) << fact.why;
    EXPECT_EQ(kvx::charactersOf(0x00FF41FF), std::string("\0\xFF"
                                                         "A\xFF",
                                                         4));
}

TEST(Codes, AreReadWithOrWithoutQuotesAndPaddedWithBlanks)
{
    const struct {
        const char* text;
        std::optional<kvx::Code> code;
        const char* why;
    } facts[] = {
        {"dev#", 0x64657623, "without quotes"},
        {"'dev#'", 0x64657623, "with quotes"},
        {"uid", 0x75696420, "padded with a blank"},
        {"'uid '", 0x75696420, "the blank is written"},
        {"x", 0x78202020, "one character is enough"},
        {"", std::nullopt, "an empty text is refused"},
        {"''", 0x27272020, "two quotes without text between them are characters"},
        {"'", 0x27202020, "a single quote is a character"},
        {"dev##", std::nullopt, "five characters are too many"},
        {"'dev##'", std::nullopt, "five characters are too many in quotes, too"},
        {"\xC3\xA9"
         "ab",
         0xC3A96162, "a letter of two bytes counts as two characters"},
        {"1394", 0x31333934, "digits are characters"},
    };
    for (const auto& fact : facts)
        EXPECT_EQ(kvx::readCode(fact.text), fact.code) << fact.text << ": " << fact.why;
}

TEST(Codes, AreDistinguishedFromNumbers)
{
    const struct {
        const char* text;
        std::optional<kvx::Code> code;
        const char* why;
    } facts[] = {
        {"0x64657623", 0x64657623, "0x marks a number"},
        {"0x1F", 0x1F, "0x marks a number, even with four characters"},
        {"1684370979", 0x64657623, "more than four digits are a number"},
        {"1394", 0x31333934, "four digits are characters"},
        {"livn", 0x6C69766E, "letters are characters"},
        {"kAudioDevicePropertyDeviceName", std::nullopt, "a name is neither a code nor a number"},
        {"0xyz", std::nullopt, "0x without hexadecimal digits"},
    };
    for (const auto& fact : facts)
        EXPECT_EQ(kvx::readCodeOrNumber(fact.text), fact.code) << fact.text << ": " << fact.why;
    for (kvx::Code code : {0u, 0x64657623u, 0x27202020u, 0xFFFFFFFFu, 0x75696420u})
        EXPECT_EQ(kvx::readCodeOrNumber(kvx::formatCode(code)), code)
            << "formatCode and readCodeOrNumber are inverse";
}

TEST(Statuses, ArePrintedAsCodeNumberAndMeaning)
{
    const struct {
        kvx::Status status;
        const char* text;
    } facts[] = {
        {kAudioHardwareUnknownPropertyError,
         "'who?' (2003332927): the object has no such property in this scope and element"},
        {kAudioHardwareBadObjectError, "'!obj' (560947818): there is no such object"},
        {-1, "-1: the library refused the call before any platform call"},
        {paramErr, "-50: an argument is invalid"},
        {-10863, "-10863: the unit cannot do that now"},
        {-10999, "-10999: unknown status"},
        {kAudioFileInvalidFileError, "'dta?' (1685348671): the file is damaged or is not a sound file"},
        {0x41424344, "'ABCD' (1094861636): unknown status"},
        {0, "0: no error"},
    };
    for (const auto& fact : facts) EXPECT_EQ(kvx::formatStatus(fact.status), fact.text);
}

TEST(Statuses, OfThePlatformHaveOneMeaningEach)
{
    std::set<kvx::Status> known;
    for (const kvx::StatusFact& fact : kvx::statusFacts()) {
        EXPECT_TRUE(known.insert(fact.status).second) << fact.status;
        EXPECT_NE(std::string(fact.meaning), "");
    }
    // clang-format off
    constexpr kvx::Status required[] = {
        kAudioHardwareNoError,
        kAudioHardwareNotRunningError,
        kAudioHardwareUnspecifiedError,
        kAudioHardwareUnknownPropertyError,
        kAudioHardwareBadPropertySizeError,
        kAudioHardwareIllegalOperationError,
        kAudioHardwareBadObjectError,
        kAudioHardwareBadDeviceError,
        kAudioHardwareBadStreamError,
        kAudioHardwareUnsupportedOperationError,
        kAudioDeviceUnsupportedFormatError,
        kAudioDevicePermissionsError,
        kAudioUnitErr_InvalidProperty,
        kAudioUnitErr_InvalidParameter,
        kAudioUnitErr_FailedInitialization,
        kAudioUnitErr_FormatNotSupported,
        kAudioUnitErr_InvalidPropertyValue,
        kAudioFileUnspecifiedError,
        kAudioFileUnsupportedFileTypeError,
        kAudioFileUnsupportedDataFormatError,
        kAudioFilePermissionsError,
        kAudioFileInvalidFileError,
        kAUGraphErr_NodeNotFound,
        kAUGraphErr_InvalidConnection,
        fnfErr,
        memFullErr,
    };
    // clang-format on
    for (kvx::Status status : required) EXPECT_EQ(known.count(status), 1u) << kvx::formatStatus(status);
}

} // namespace
