// Tests of the table of property types.
#include "host/kvx/properties/property_types.h"

#include <CoreAudio/CoreAudio.h>

#include <gtest/gtest.h>

#include <set>

namespace {

using kvx::Asks;
using kvx::Extent;
using kvx::Form;

TEST(PropertyTypes, HaveEachSelectorOnce)
{
    std::set<kvx::Code> seen;
    const kvx::PropertyTypes types = kvx::propertyTypes();
    for (std::size_t i = 0; i < types.count; ++i) {
        const kvx::PropertyType& type = types.first[i];
        EXPECT_TRUE(seen.insert(type.selector).second) << kvx::printCode(type.selector);
        EXPECT_EQ(kvx::findPropertyType(type.selector), &type);
        if (type.asks != Asks::nothing)
            EXPECT_EQ(type.extent, Extent::one) << "a question has a single value";
    }
    EXPECT_EQ(kvx::findPropertyType('****'), nullptr) << "a wildcard is no selector of a property";
    EXPECT_EQ(kvx::findPropertyType(0), nullptr);
}

TEST(PropertyTypes, AgreeWithThePlatformsDocumentation)
{
    const struct {
        kvx::Code selector;
        Form form;
        Extent extent;
        Asks asks;
    } facts[] = {
        {kAudioObjectPropertyClass, Form::code, Extent::one, Asks::nothing},
        {kAudioObjectPropertyOwner, Form::object, Extent::one, Asks::nothing},
        {kAudioObjectPropertyOwnedObjects, Form::object, Extent::many, Asks::nothing},
        {kAudioHardwarePropertyDevices, Form::object, Extent::many, Asks::nothing},
        {kAudioHardwarePropertyDefaultInputDevice, Form::object, Extent::one, Asks::nothing},
        {kAudioHardwarePropertyDeviceForUID, Form::text, Extent::one, Asks::byReference},
        {kAudioHardwarePropertyRunLoop, Form::text, Extent::one, Asks::byReference},
        {kAudioDevicePropertyDeviceName, Form::text, Extent::one, Asks::nothing},
        {kAudioDevicePropertyDeviceNameCFString, Form::reference, Extent::one, Asks::nothing},
        {kAudioDevicePropertyDeviceUID, Form::reference, Extent::one, Asks::nothing},
        {kAudioDevicePropertyPlugIn, Form::integer, Extent::one, Asks::nothing},
        {kAudioDevicePropertyTransportType, Form::code, Extent::one, Asks::nothing},
        {kAudioDevicePropertyDeviceIsAlive, Form::flag, Extent::one, Asks::nothing},
        {kAudioDevicePropertyHogMode, Form::integer, Extent::one, Asks::nothing},
        {kAudioDevicePropertyLatency, Form::number, Extent::one, Asks::nothing},
        {kAudioDevicePropertyBufferFrameSize, Form::number, Extent::one, Asks::nothing},
        {kAudioDevicePropertyBufferFrameSizeRange, Form::range, Extent::one, Asks::nothing},
        {kAudioDevicePropertyNominalSampleRate, Form::real, Extent::one, Asks::nothing},
        {kAudioDevicePropertyAvailableNominalSampleRates, Form::range, Extent::many, Asks::nothing},
        {kAudioDevicePropertyIOCycleUsage, Form::single, Extent::one, Asks::nothing},
        {kAudioDevicePropertyStreams, Form::object, Extent::many, Asks::nothing},
        {kAudioDevicePropertyStreamConfiguration, Form::bufferList, Extent::one, Asks::nothing},
        {kAudioDevicePropertyStreamFormat, Form::format, Extent::one, Asks::nothing},
        {kAudioDevicePropertyStreamFormats, Form::format, Extent::many, Asks::nothing},
        {kAudioDevicePropertyStreamFormatSupported, Form::format, Extent::one, Asks::whether},
        {kAudioDevicePropertyStreamFormatMatch, Form::format, Extent::one, Asks::inPlace},
        {kAudioDevicePropertyPreferredChannelsForStereo, Form::number, Extent::many, Asks::nothing},
        {kAudioDevicePropertyPreferredChannelLayout, Form::channelLayout, Extent::one, Asks::nothing},
        {kAudioDevicePropertyIOProcStreamUsage, Form::text, Extent::one, Asks::byReference},
        {kAudioDevicePropertyVolumeScalar, Form::single, Extent::one, Asks::nothing},
        {kAudioDevicePropertyVolumeRangeDecibels, Form::range, Extent::one, Asks::nothing},
        {kAudioDevicePropertyVolumeScalarToDecibels, Form::single, Extent::one, Asks::inPlace},
        {kAudioDevicePropertyMute, Form::flag, Extent::one, Asks::nothing},
        {kAudioDevicePropertyDataSource, Form::code, Extent::one, Asks::nothing},
        {kAudioDevicePropertyDataSources, Form::code, Extent::many, Asks::nothing},
        {kAudioDevicePropertyDataSourceNameForID, Form::text, Extent::one, Asks::byCode},
        {kAudioDevicePropertyDataSourceNameForIDCFString, Form::text, Extent::one, Asks::byReference},
        {kAudioStreamPropertyDirection, Form::number, Extent::one, Asks::nothing},
        {kAudioStreamPropertyTerminalType, Form::code, Extent::one, Asks::nothing},
        {kAudioStreamPropertyPhysicalFormat, Form::format, Extent::one, Asks::nothing},
        {kAudioStreamPropertyAvailablePhysicalFormats, Form::rangedFormat, Extent::many, Asks::nothing},
        {kAudioStreamPropertyPhysicalFormatSupported, Form::format, Extent::one, Asks::whether},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(kvx::printCode(fact.selector));
        const kvx::PropertyType* type = kvx::findPropertyType(fact.selector);
        ASSERT_NE(type, nullptr);
        EXPECT_EQ(type->form, fact.form);
        EXPECT_EQ(type->extent, fact.extent);
        EXPECT_EQ(type->asks, fact.asks);
    }
}

} // namespace
