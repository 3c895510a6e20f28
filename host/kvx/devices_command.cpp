#include "host/kvx/commands.h"
#include "host/kvx/output_device.h"

#include <fmt/format.h>

namespace kvx {
namespace {

int printDevices()
{
    fmt::print("{:>3}  {:<40} {:>9} {:>4} {:>4}  {}\n", "no.", "name", "rate", "out", "in", "");
    std::size_t number = 0;
    for (const KVXDeviceInfo& device : listDevices())
        fmt::print("{:>3}  {:<40} {:>9} {:>4} {:>4}  {}\n", number++, device.name, device.sampleRate,
                   device.outputChannels, device.inputChannels,
                   !device.isAlive          ? "gone"
                   : device.isDefaultOutput ? "default"
                                            : "");
    return 0;
}

} // namespace

void addDevicesCommand(CLI::App& app, Action& action)
{
    CLI::App* command =
        app.add_subcommand("devices", "List the devices; number or name go with `kvx play --device`");
    command->callback([&action] { action = printDevices; });
}

} // namespace kvx
