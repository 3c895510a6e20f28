// Statuses in words: each that the platform's devices know has its own.
#include "host/kvx/text/status_text.h"

#include <AudioToolbox/AudioToolbox.h>
#include <AudioUnit/AudioUnit.h>
#include <Carbon/Carbon.h>
#include <CoreAudio/CoreAudio.h>

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

TEST(StatusText, NamesCodeNumberAndMeaning)
{
    const struct {
        kvx::Status status;
        const char* text;
    } facts[] = {
        {kAudioHardwareUnknownPropertyError,
         "'who?' (2003332927): the object has no such property in this scope and element"},
        {kAudioHardwareBadObjectError, "'!obj' (560947818): there is no such object"},
        {-1, "-1: the library gave up before it asked the platform"},
        {paramErr, "-50: an argument is not one that the platform takes"},
        {-10863, "-10863: the unit cannot do that now"},
        {-10999, "-10999: a status of which nothing is known here"},
        {kAudioFileInvalidFileError, "'dta?' (1685348671): the file is damaged, or no sound file at all"},
        {0x41424344, "'ABCD' (1094861636): a status of which nothing is known here"},
        {0, "0: all is well"},
    };
    for (const auto& fact : facts) EXPECT_EQ(kvx::printStatus(fact.status), fact.text);
}

TEST(StatusText, KnowsEveryStatusThatUsersMayMeetOnce)
{
    std::set<kvx::Status> known;
    const kvx::StatusFacts facts = kvx::statusFacts();
    for (std::size_t i = 0; i < facts.count; ++i) {
        EXPECT_TRUE(known.insert(facts.first[i].status).second) << facts.first[i].status;
        EXPECT_NE(std::string(facts.first[i].meaning), "");
    }
    // clang-format off
    constexpr kvx::Status met[] = {
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
    for (kvx::Status status : met) EXPECT_EQ(known.count(status), 1u) << kvx::printStatus(status);
}

} // namespace
