// The class table of CoreAudioKVX, compared with the tables in this file.
#include "coreaudio/core_audio.h"
#include "tests/coreaudio/subject.h"
#include "tests/support/class_table.h"

namespace {

using namespace subject;

// clang-format off
const struct Selector {
    const char* property;
    const char* text;
    std::uint32_t value;
} selectors[] = {
    //  property                                              text    number
    {"kAudioHardwarePropertyDevices",                         "dev#", 0x64657623},
    {"kAudioHardwarePropertyDefaultInputDevice",              "dIn ", 0x64496E20},
    {"kAudioHardwarePropertyDefaultOutputDevice",             "dOut", 0x644F7574},
    {"kAudioHardwarePropertyDefaultSystemOutputDevice",       "sOut", 0x734F7574},
    {"kAudioHardwarePropertyDeviceForUID",                    "duid", 0x64756964},
    {"kAudioHardwarePropertySleepingIsAllowed",               "slep", 0x736C6570},
    {"kAudioHardwarePropertyUnloadingIsAllowed",              "unld", 0x756E6C64},
    {"kAudioHardwarePropertyRunLoop",                         "rnlp", 0x726E6C70},
    {"kAudioHardwarePropertyBootChimeVolumeScalar",           "bbvs", 0x62627673},
    {"kAudioHardwarePropertyBootChimeVolumeDecibels",         "bbvd", 0x62627664},
    {"kAudioHardwarePropertyBootChimeVolumeRangeDecibels",    "bbd#", 0x62626423},
    {"kAudioHardwarePropertyBootChimeVolumeScalarToDecibels", "bv2d", 0x62763264},
    {"kAudioHardwarePropertyBootChimeVolumeDecibelsToScalar", "bd2v", 0x62643276},
    {"kAudioDevicePropertyDeviceName",                        "name", 0x6E616D65},
    {"kAudioDevicePropertyDeviceNameCFString",                "lnam", 0x6C6E616D},
    {"kAudioDevicePropertyDeviceManufacturer",                "makr", 0x6D616B72},
    {"kAudioDevicePropertyDeviceManufacturerCFString",        "lmak", 0x6C6D616B},
    {"kAudioDevicePropertyPlugIn",                            "plug", 0x706C7567},
    {"kAudioDevicePropertyDeviceUID",                         "uid ", 0x75696420},
    {"kAudioDevicePropertyTransportType",                     "tran", 0x7472616E},
    {"kAudioDevicePropertyDeviceIsAlive",                     "livn", 0x6C69766E},
    {"kAudioDevicePropertyDeviceIsRunning",                   "goin", 0x676F696E},
    {"kAudioDevicePropertyDeviceIsRunningSomewhere",          "gone", 0x676F6E65},
    {"kAudioDevicePropertyDeviceCanBeDefaultDevice",          "dflt", 0x64666C74},
    {"kAudioDevicePropertyDeviceCanBeDefaultSystemDevice",    "sflt", 0x73666C74},
    {"kAudioDevicePropertyJackIsConnected",                   "jack", 0x6A61636B},
    {"kAudioDeviceProcessorOverload",                         "over", 0x6F766572},
    {"kAudioDevicePropertyHogMode",                           "oink", 0x6F696E6B},
    {"kAudioDevicePropertyRegisterBufferList",                "rbuf", 0x72627566},
    {"kAudioDevicePropertyLatency",                           "ltnc", 0x6C746E63},
    {"kAudioDevicePropertyBufferSize",                        "bsiz", 0x6273697A},
    {"kAudioDevicePropertyBufferSizeRange",                   "bsz#", 0x62737A23},
    {"kAudioDevicePropertyBufferFrameSize",                   "fsiz", 0x6673697A},
    {"kAudioDevicePropertyBufferFrameSizeRange",              "fsz#", 0x66737A23},
    {"kAudioDevicePropertyUsesVariableBufferFrameSizes",      "vfsz", 0x7666737A},
    {"kAudioDevicePropertyStreams",                           "stm#", 0x73746D23},
    {"kAudioDevicePropertySafetyOffset",                      "saft", 0x73616674},
    {"kAudioDevicePropertySupportsMixing",                    "mix?", 0x6D69783F},
    {"kAudioDevicePropertyStreamConfiguration",               "slay", 0x736C6179},
    {"kAudioDevicePropertyIOProcStreamUsage",                 "suse", 0x73757365},
    {"kAudioDevicePropertyPreferredChannelsForStereo",        "dch2", 0x64636832},
    {"kAudioDevicePropertyNominalSampleRate",                 "nsrt", 0x6E737274},
    {"kAudioDevicePropertyAvailableNominalSampleRates",       "nsr#", 0x6E737223},
    {"kAudioDevicePropertyActualSampleRate",                  "asrt", 0x61737274},
    {"kAudioDevicePropertyStreamFormat",                      "sfmt", 0x73666D74},
    {"kAudioDevicePropertyStreamFormats",                     "sfm#", 0x73666D23},
    {"kAudioDevicePropertyStreamFormatSupported",             "sfm?", 0x73666D3F},
    {"kAudioDevicePropertyStreamFormatMatch",                 "sfmm", 0x73666D6D},
    {"kAudioDevicePropertyVolumeScalar",                      "volm", 0x766F6C6D},
    {"kAudioDevicePropertyVolumeDecibels",                    "vold", 0x766F6C64},
    {"kAudioDevicePropertyVolumeRangeDecibels",               "vdb#", 0x76646223},
    {"kAudioDevicePropertyVolumeScalarToDecibels",            "v2db", 0x76326462},
    {"kAudioDevicePropertyVolumeDecibelsToScalar",            "db2v", 0x64623276},
    {"kAudioDevicePropertyMute",                              "mute", 0x6D757465},
    {"kAudioDevicePropertyPlayThru",                          "thru", 0x74687275},
    {"kAudioDevicePropertyDataSource",                        "ssrc", 0x73737263},
    {"kAudioDevicePropertyDataSources",                       "ssc#", 0x73736323},
    {"kAudioDevicePropertyDataSourceNameForID",               "sscn", 0x7373636E},
    {"kAudioDevicePropertyDataSourceNameForIDCFString",       "lscn", 0x6C73636E},
    {"kAudioDevicePropertyClockSource",                       "csrc", 0x63737263},
    {"kAudioDevicePropertyClockSources",                      "csc#", 0x63736323},
    {"kAudioDevicePropertyClockSourceNameForID",              "cscn", 0x6373636E},
    {"kAudioDevicePropertyClockSourceNameForIDCFString",      "lcsn", 0x6C63736E},
    {"kAudioDevicePropertyDriverShouldOwniSub",               "isub", 0x69737562},
    {"kAudioDevicePropertySubVolumeScalar",                   "svlm", 0x73766C6D},
    {"kAudioDevicePropertySubVolumeDecibels",                 "svld", 0x73766C64},
    {"kAudioDevicePropertySubVolumeRangeDecibels",            "svd#", 0x73766423},
    {"kAudioDevicePropertySubVolumeScalarToDecibels",         "sv2d", 0x73763264},
    {"kAudioDevicePropertySubVolumeDecibelsToScalar",         "sd2v", 0x73643276},
    {"kAudioDevicePropertySubMute",                           "smut", 0x736D7574},
    {"kAudioStreamPropertyOwningDevice",                      "stdv", 0x73746476},
    {"kAudioStreamPropertyDirection",                         "sdir", 0x73646972},
    {"kAudioStreamPropertyTerminalType",                      "term", 0x7465726D},
    {"kAudioStreamPropertyStartingChannel",                   "schn", 0x7363686E},
    {"kAudioStreamPropertyPhysicalFormat",                    "pft ", 0x70667420},
    {"kAudioStreamPropertyPhysicalFormats",                   "pft#", 0x70667423},
    {"kAudioStreamPropertyPhysicalFormatSupported",           "pft?", 0x7066743F},
    {"kAudioStreamPropertyPhysicalFormatMatch",               "pftm", 0x7066746D},
    {"kAudioPropertyWildcardPropertyID",                      "****", 0x2A2A2A2A},
};

const std::vector<support::MethodFact> methods = {
    {"AudioDeviceSetPropertyString(AudioDeviceID as integer, when as memoryblock, channel as integer, isinput as boolean, propertyID as string, data as string)"},
    {"AudioDeviceSetPropertyMemory(AudioDeviceID as integer, when as memoryblock, channel as integer, isinput as boolean, propertyID as string, data as memoryblock, offset as integer, length as integer)"},
    {"AudioDeviceGetPropertyInfo(AudioDeviceID as integer, channel as integer, isinput as boolean, propertyID as string, byref size as integer, byref writeable as boolean)"},
    {"AudioDeviceGetPropertyString(AudioDeviceID as integer, channel as integer, isinput as boolean, propertyID as string) as string"},
    {"AudioDeviceGetPropertyMemory(AudioDeviceID as integer, channel as integer, isinput as boolean, propertyID as string) as memoryblock"},
    {"AudioDeviceGetPropertyCFString(AudioDeviceID as integer, channel as integer, isinput as boolean, propertyID as string) as string"},
    {"AudioStreamSetPropertyString(AudioStreamID as integer, when as memoryblock, channel as integer, propertyID as string, data as string)"},
    {"AudioStreamSetPropertyMemory(AudioStreamID as integer, when as memoryblock, channel as integer, propertyID as string, data as memoryblock, offset as integer, length as integer)"},
    {"AudioStreamGetPropertyInfo(AudioStreamID as integer, channel as integer, propertyID as string, byref size as integer, byref writeable as boolean)"},
    {"AudioStreamGetPropertyString(AudioStreamID as integer, channel as integer, propertyID as string) as string"},
    {"AudioStreamGetPropertyMemory(AudioStreamID as integer, channel as integer, propertyID as string) as memoryblock"},
    {"AudioStreamGetPropertyCFString(AudioStreamID as integer, channel as integer, propertyID as string) as string"},
    {"AudioHardwareSetPropertyString(propertyID as string, data as string)"},
    {"AudioHardwareSetPropertyMemory(propertyID as string, data as memoryblock, offset as integer, length as integer)"},
    {"AudioHardwareGetPropertyInfo(propertyID as string, byref size as integer, byref writeable as boolean)"},
    {"AudioHardwareGetPropertyString(propertyID as string) as string"},
    {"AudioHardwareGetPropertyMemory(propertyID as string) as memoryblock"},
    {"AudioHardwareGetPropertyCFString(propertyID as string) as string"},
    {"AudioUnitSetPropertyString(AudioUnit as integer, propertyID as integer, AudioUnitScope as integer, AudioUnitElement as integer, data as string)"},
    {"AudioUnitSetPropertyMemory(AudioUnit as integer, propertyID as integer, AudioUnitScope as integer, AudioUnitElement as integer, data as memoryblock, offset as integer, length as integer)"},
    {"AudioUnitGetPropertyInfo(AudioUnit as integer, propertyID as integer, AudioUnitScope as integer, AudioUnitElement as integer, byref size as integer, byref writeable as boolean)"},
    {"AudioUnitGetPropertyString(AudioUnit as integer, propertyID as integer, AudioUnitScope as integer, AudioUnitElement as integer) as string"},
    {"AudioUnitGetPropertyMemory(AudioUnit as integer, propertyID as integer, AudioUnitScope as integer, AudioUnitElement as integer) as memoryblock"},
    {"AudioUnitGetPropertyCFString(AudioUnit as integer, propertyID as integer, AudioUnitScope as integer, AudioUnitElement as integer) as string"},
    {"AudioObjectGetPropertyDataSize(inObjectID as integer, AddressSelector as UInt32, AddressScope as UInt32, AddressElement as UInt32, QualifierData as memoryblock = nil) as UInt32", 0},
    {"AudioObjectGetPropertyData(inObjectID as integer, AddressSelector as UInt32, AddressScope as UInt32, AddressElement as UInt32, QualifierData as memoryblock = nil, InputData as Memoryblock = nil) as memoryblock", 0},
    {"AudioObjectSetPropertyData(inObjectID as integer, AddressSelector as UInt32, AddressScope as UInt32, AddressElement as UInt32, Data as Memoryblock, QualifierData as memoryblock = nil)", 0},
    {"AudioUnitInitialize(componenthandle as integer) as integer", 0},
    {"AudioUnitUninitialize(componenthandle as integer) as integer", 0},
    {"AudioOutputUnitStart(componenthandle as integer) as integer", 0},
    {"AudioOutputUnitStop(componenthandle as integer) as integer", 0},
    {"AudioUnitReset(componenthandle as integer, scope as integer, element as integer) as integer", 0},
    {"OpenDefaultComponent(type as string, subtype as string) as integer"},
    {"CloseComponent(componenthandle as integer)"},
    {"AudioUnitSetParameter(AudioUnit as integer, ParameterID as integer, AudioUnitScope as integer, AudioUnitElement as integer, value as single, BufferOffsetInFrames as integer)"},
    {"AudioUnitGetParameter(AudioUnit as integer, ParameterID as integer, AudioUnitScope as integer, AudioUnitElement as integer) as single"},
}, sharedMethods = {
    {"CoreAudioGetHostClockFrequencyKVX as double"},
    {"GetHostClockMinimumTimeDeltaKVX as integer"},
    {"CoreAudioGetCurrentHostTimeKVX as UInt64"},
    {"CoreAudioConvertHostTimeToNanosKVX(inHostTime as UInt64) as UInt64"},
    {"CoreAudioConvertNanosToHostTimeKVX(inNanos as UInt64) as UInt64"},
};
// clang-format on

const REALproperty* publishedProperties() { return static_cast<REALproperty*>(coreAudioClass.properties); }
using CoreAudioClass = Subject;

static_assert(sizeof(coreaudio::CoreAudioData) == sizeof(HostInteger));
static_assert(std::size(selectors) == 79);

TEST_F(CoreAudioClass, HasItsNameSizeAndCounts)
{
    support::expectClass(coreAudioClass, {"CoreAudioKVX", sizeof(HostInteger), 82, 36, 0, 0, 5});
}

TEST_F(CoreAudioClass, HasEightyTwoPropertiesInOrder)
{
    using support::Access;
    std::vector<support::PropertyFact> facts;
    for (const Selector& selector : selectors)
        facts.push_back({selector.property, "String", Access::getter, 0, "Constants"});
    facts.push_back({"kAudioPropertyWildcardSection", "Integer", Access::getter, 0, "Constants"});
    facts.push_back({"kAudioPropertyWildcardChannel", "Integer", Access::getter, 0, "Constants"});
    facts.push_back({"Lasterror", "Integer", Access::writableField, 0});
    support::expectProperties(coreAudioClass, facts);
}

TEST_F(CoreAudioClass, HasThirtySixMethodsInOrder)
{
    support::expectMethods(coreAudioClass.methods, coreAudioClass.methodCount, methods);
}

TEST_F(CoreAudioClass, HasFiveSharedMethodsInOrder)
{
    support::expectMethods(coreAudioClass.sharedMethods, coreAudioClass.sharedMethodCount, sharedMethods);
}

TEST_F(CoreAudioClass, ConstructorAndDestructorKeepLasterror)
{
    lasterror() = 4711;
    members.construct(object());
    EXPECT_EQ(lasterror(), 4711);
    members.destruct(object());
    EXPECT_EQ(lasterror(), 4711);
    EXPECT_EQ(host().notes(), fake::Notes());
    EXPECT_EQ(spy::calls(), spy::Calls());
}

// ---- constants ----

Text readText(const REALproperty& row, Object object)
{
    return reinterpret_cast<Text (*)(Object, HostInteger)>(row.getter)(object, row.parameter);
}

TEST_F(CoreAudioClass, SelectorsAreFourASCIICharacters)
{
    const REALproperty* rows = publishedProperties();
    for (std::size_t i = 0; i < std::size(selectors); ++i) {
        SCOPED_TRACE(selectors[i].property);
        lasterror() = 4711;
        host().forget();
        const Text text = readText(rows[i], object());
        ASSERT_NE(text, nullptr);
        EXPECT_EQ(host().bytesOf(text), selectors[i].text);
        EXPECT_EQ(host().bytesOf(text).size(), 4u);
        EXPECT_EQ(host().encodingOf(text), 0x0600u);
        EXPECT_EQ(host().references(text), 1);
        EXPECT_EQ(lasterror(), 4711);
        ASSERT_EQ(host().calls().size(), 2u) << "a new string and its encoding";

        for (const HostInteger parameter : support::anyParameter) {
            const Text again = support::callGetter<Text>(rows[i], nullptr, parameter);
            EXPECT_NE(again, text);
            EXPECT_EQ(host().bytesOf(again), selectors[i].text) << "object and parameter are ignored";
            host().drop(again);
        }
        host().drop(text);
    }
    EXPECT_EQ(spy::calls(), spy::Calls());
}

TEST_F(CoreAudioClass, SelectorsReachThePlatformAsNumbers)
{
    const REALproperty* rows = publishedProperties();
    for (std::size_t i = 0; i < std::size(selectors); ++i) {
        SCOPED_TRACE(selectors[i].property);
        spy::forgetCalls();
        const Text text = readText(rows[i], object());
        HostInteger size;
        HostBoolean writeable;
        members.call<void>("AudioHardwareGetPropertyInfo", object(), text, &size, &writeable);
        char expected[80];
        std::snprintf(expected, sizeof expected, "AudioHardwareGetPropertyInfo(0x%X, size 0, writable 0)",
                      selectors[i].value);
        EXPECT_EQ(spy::calls(), spy::Calls{expected});
        host().drop(text);
    }
}

TEST_F(CoreAudioClass, SectionAndChannelWildcardsAreIntegers)
{
    const REALproperty* rows = publishedProperties();
    lasterror() = 4711;
    for (const Object each : {object(), Object{}}) {
        support::expectValue(rows[79], each, "255");
        support::expectValue(rows[80], each, "-1");
    }
    EXPECT_EQ(lasterror(), 4711);
    EXPECT_EQ(host().notes(), fake::Notes());
}

TEST_F(CoreAudioClass, ASelectorIsNilIfTheHostBuildsNoString)
{
    host().failNext("REALBuildString");
    lasterror() = 4711;
    EXPECT_EQ(readText(publishedProperties()[0], object()), nullptr);
    EXPECT_EQ(lasterror(), 4711);
    EXPECT_TRUE(host().raised().empty());
}

TEST_F(CoreAudioClass, ASelectorIsNilIfTheHostThrows)
{
    lasterror() = 4711;
    throwInHost("REALBuildString");
    EXPECT_NO_THROW(EXPECT_EQ(readText(publishedProperties()[0], object()), nullptr));
    throwInHost("REALBuildString");
    throwInHost("PluginNewInstance"); // second failure: the host exception cannot be created
    EXPECT_NO_THROW(EXPECT_EQ(readText(publishedProperties()[0], object()), nullptr));
    EXPECT_EQ(lasterror(), 4711);
    expectBalance();
}

TEST_F(CoreAudioClass, AHostProgramMayWriteLasterrorUntilTheNextCall)
{
    lasterror() = 4711;
    spy::answer("AudioUnitInitialize").during = [&] { EXPECT_EQ(lasterror(), -1); };
    spy::answer("AudioUnitInitialize").status = 42;
    members.call<HostInteger>("AudioUnitInitialize", object(), HostInteger(1));
    EXPECT_EQ(lasterror(), 42);
}

} // namespace
