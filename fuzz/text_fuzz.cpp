// Bytes in any encoding, into a host string by the plug-in's conversions, and back out by its views. The
// plug-in is linked as objects, for its functions; the host around it is the real one, of an old, a middle or
// a new version.
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

// The library is entered once, like any library; what depends on the version it reads from its own variable.
void enterOnce(double version)
{
    static bool isEntered = false;
    if (!isEntered) host::Host::current().enter(REALPluginMain);
    isEntered = true;
    rbversion_rbversion = version;
}

void look(REALstringStruct* string)
{
    rbText text(string);
    const char* utf8 = text.GetUTF8();
    require(text.lengthUTF8() >= 0, "a view has a length once it was asked for");
    require(utf8[text.lengthUTF8()] == 0, "a view is terminated");
    require(utf8 == text.GetUTF8(), "asked again, the view is the same");
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
    enterOnce(options.version);
    {
        // The plug-in's own way, from bytes of a known length.
        const auto built = host::String::adopt(
            REALBuildUnicodeString(text.data(), static_cast<long long>(text.size()), encoding));
        look(static_cast<REALstringStruct*>(built.get()));
        // The host's way: bytes that are marked as this or that, and may not be it at all.
        const host::String marked = host::String::ofBytes(text, std::uint32_t(encoding));
        look(marked.get());
    }
    (void)host.takeException();
    require(host.leaks().isClean(), "every reference is given back");
    require(host.misuses().empty(), "the host was used as it wants to be");
    return 0;
}
