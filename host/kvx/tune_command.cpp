#include "host/kvx/devices/shared_options.h"
#include "host/kvx/files/tune.h"
#include "host/kvx/text/terminal_text.h"

#include <fmt/format.h>

#include <memory>

namespace kvx {

void addTuneCommand(CLI::App& app, Action& action)
{
    struct Options {
        std::string path;
        bool isQuiet = false;
    };
    auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("tune", "Write a short tune to a WAV file");
    command->add_option("file", options->path, "The file to write")->required()->type_name("OUT.wav");
    command->add_flag("--quiet", options->isQuiet, "Say nothing but errors");
    command->callback([options, &action] {
        action = [options] {
            writeTune(options->path);
            if (!options->isQuiet) fmt::print("{}\n", plainText(options->path));
            return 0;
        };
    });
}

} // namespace kvx
