// Converts arbitrary bytes in any encoding to a host string and back, with the plug-in's functions in a host
// of several versions.
#include "abi/entry_point.h"
#include "fuzz/require.h"
#include "host/runtime/host.h"
#include "plugin/four_character_code.h"
#include "plugin/host_string.h"
#include "plugin/process_state.h"
#include "plugin/rb_text.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cstring>

extern "C" void REALPluginMain(REALResolver resolver);

namespace {

constexpr double versions[] = {2011.5, 2012.5, 2013.5, 2015.03, 2016.0};
constexpr unsigned long encodings[] = {encodingMacRoman, encodingUTF16, encodingWindowsLatin1, encodingASCII,
                                       encodingUTF8,     encodingUTF32, encodingUnknown,       0x12345678};

// The library registers once per process. Its functions read the host version from rbversion_rbversion.
void registerOnce(double version)
{
    static bool isRegistered = false;
    if (!isRegistered) host::Host::current().enter(REALPluginMain);
    isRegistered = true;
    rbversion_rbversion = version;
}

void readViews(REALstringStruct* string)
{
    rbText text(string);
    const char* utf8 = text.GetUTF8();
    require(text.lengthUTF8() >= 0, "a view that was requested has a length");
    require(utf8[text.lengthUTF8()] == 0, "a view is terminated");
    require(utf8 == text.GetUTF8(), "a second request returns the same view");
    const char* roman = text.ConvertMacRoman();
    require(roman[text.lengthMacRoman()] == 0, "a view is terminated");
    (void)REALstringToOSType(string);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    FuzzedDataProvider input(bytes, size);
    host::Options options;
    options.version = input.PickValueInArray(versions);
    options.isStringDataTerminated = input.ConsumeBool();
    const unsigned long encoding = input.PickValueInArray(encodings);
    const std::string text = input.ConsumeRemainingBytesAsString();

    host::Host host(options);
    registerOnce(options.version);
    {
        // A string that the plug-in builds.
        const auto built = host::String::adopt(
            REALBuildUnicodeString(text.data(), static_cast<long long>(text.size()), encoding));
        readViews(static_cast<REALstringStruct*>(built.get()));
        // A string of the host whose bytes may be invalid in its encoding.
        const host::String labelled = host::String::ofBytes(text, std::uint32_t(encoding));
        readViews(labelled.get());
    }
    (void)host.takeException();
    require(host.leaks().isClean(), "every reference is released");
    require(host.misuses().empty(), "the host found no misuse");
    return 0;
}
