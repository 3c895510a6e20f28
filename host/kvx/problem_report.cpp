#include "host/kvx/problem_report.h"

#include "host/kvx/devices/output_device.h"
#include "host/kvx/files/sound_list.h"
#include "host/kvx/text/shell_text.h"
#include "host/kvx/text/terminal_text.h"

#include <fmt/format.h>

#include <sys/utsname.h>

namespace kvx {
namespace {

std::string line(const std::string& name, const std::string& text)
{
    return fmt::format("  {:<14} {}\n", name, plainText(text));
}

std::string formatSystem()
{
    utsname system = {};
    uname(&system);
    return fmt::format("{} {} {}, program of {} bits", system.sysname, system.release, system.machine,
                       8 * sizeof(void*));
}

std::string formatOutput()
{
    for (const KVXDeviceInfo& device : listDevices())
        if (device.isDefaultOutput)
            return fmt::format("{} ({}), {} Hz, {} channels, slices of {} frames", device.name, device.system,
                               device.sampleRate, device.outputChannels, device.sliceFrames);
    return "none";
}

} // namespace

std::string problemReport(const std::string& version, int argumentCount, const char* const* arguments,
                          const LibraryOptions& options)
{
    std::string command = "kvx";
    for (int i = 1; i < argumentCount; ++i) command += " " + quotedForShell(arguments[i]);
    std::string text = fmt::format("kvx {}\n", version);
    text += line("command", command);
    text += line("system", formatSystem());
    text += line("host version", fmt::format("{}", options.hostVersion));
    text += line("library", pathOfLibrary(options));
    text += line("output device", formatOutput());
    for (const KVXLibraryInfo& library : loadedLibraries())
        text +=
            line(library.name, fmt::format("{} {}", *library.version ? library.version : "-", library.path));
    return text + line("file formats", fmt::format("{}", fmt::join(soundFileExtensions(), ", ")));
}

} // namespace kvx
