#include "host/kvx/command_line/shared_options.h"

namespace kvx {

// clang-format off
Option quietOption(bool& isQuiet)
{
    return {"--quiet", "", flag(isQuiet), "Print errors only", "", "", "--quiet"};
}

Option jsonOption(bool& isJson)
{
    return {"--json", "", flag(isJson), "Print JSON", "", "", "--json"};
}

OptionGroup libraryOptions(LibraryOptions& options)
{
    return {"Library", {
        {"--library", "PATH", text(options.path),
         "The library to load", "", "KVXAudio.so beside this program", "--library ./KVXAudio.so"},
        {"--host-version", "V", number(options.hostVersion, 2000, 2100),
         "The host version that the library sees", "year.release", "2016.0", "--host-version 2013.03"},
    }};
}

OptionGroup deviceOptions(DeviceRequest& request)
{
    return {"Device", {
        {"--device", "DEVICE", text(request.choice),
         "The output device: its name, a part of its name, its UID, its row in `kvx devices`, or id:N", "", "", "--device simulated"},
        {"--device-rate", "HZ", number(request.rate, lowestRate, highestRate),
         "Sample rate of the simulated device", "Hz", "", "--device simulated --device-rate 48000"},
        {"--fast", "", flag(request.isStepped),
         "Run the simulated device faster than real time", "", "", "--device simulated --fast"},
    }};
}
// clang-format on

} // namespace kvx
