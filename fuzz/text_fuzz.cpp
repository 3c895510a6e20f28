// Converts arbitrary bytes in any encoding to a host string, and the string to UTF-8 and Mac Roman, with
// functions of the plug-in in a host of an arbitrary version.
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

// The plug-in library may register only once per process. For each further host in the process, only the
// variable rbversion_rbversion changes, from which the functions of the library read the host version.
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
    require(text.lengthUTF8() >= 0, "the UTF-8 view of a text has a length");
    require(utf8[text.lengthUTF8()] == 0, "a zero byte follows the UTF-8 view of a text");
    require(utf8 == text.GetUTF8(), "a second request returns the same UTF-8 view");
    const char* roman = text.ConvertMacRoman();
    require(roman[text.lengthMacRoman()] == 0, "a zero byte follows the Mac Roman view of a text");
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
        // `built` is a string that the plug-in makes.
        const auto built = host::String::adopt(
            REALBuildUnicodeString(text.data(), static_cast<long long>(text.size()), encoding));
        readViews(static_cast<REALstringStruct*>(built.get()));
        // `labelled` is a string that the host makes; its bytes may be invalid in its encoding.
        const host::String labelled = host::String::ofBytes(text, std::uint32_t(encoding));
        readViews(labelled.get());
    }
    (void)host.takeException();
    require(host.leaks().isClean(), "every host value is released");
    require(host.misuses().empty(), "the plug-in makes no misuse of the host");
    return 0;
}
