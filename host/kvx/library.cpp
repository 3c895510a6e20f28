#include "host/kvx/library.h"

#include "host/kvx/commands.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>

namespace kvx {
namespace {

std::string pathBesideThisProgram(const char* name)
{
    return (std::filesystem::read_symlink("/proc/self/exe").parent_path() / name).string();
}

host::Options hostOptions(const LibraryOptions& options)
{
    host::Options result;
    result.version = options.hostVersion;
    result.isBuiltProgram = !options.isDevelopment;
    return result;
}

std::uint32_t countOf(const std::vector<KVXLiveCount>& accounts, std::string_view kind)
{
    for (const KVXLiveCount& each : accounts)
        if (each.kind == kind) return each.count;
    return 0;
}

} // namespace

void addLibraryOptions(CLI::App& command, LibraryOptions& options)
{
    command.add_option("--library", options.path, "The library to load [KVXAudio.so beside this program]")
        ->type_name("PATH");
    command
        .add_option("--host-version", options.hostVersion, "The host version that the library sees [2016.0]")
        ->type_name("V")
        ->check(inRange(2000.0, 2100.0));
}

Library::Library(const LibraryOptions& options) : host_(hostOptions(options))
{
    host_.load(options.path.empty() ? pathBesideThisProgram("KVXAudio.so") : options.path);
}

std::string Library::leftOver(const std::vector<KVXLiveCount>& kept) const
{
    std::string text = host_.leaks().text();
    for (const std::string& misuse : host_.misuses()) text += misuse + "\n";

    std::array<KVXLiveCount, 32> accounts{};
    const std::uint32_t kinds = KVXPlatformGetLiveCounts(accounts.data(), std::uint32_t(accounts.size()));
    for (std::size_t i = 0; i < std::min<std::size_t>(kinds, accounts.size()); ++i)
        if (accounts[i].count > countOf(kept, accounts[i].kind))
            text += fmt::format("{} of the platform: {} left\n", accounts[i].kind, accounts[i].count);
    return text;
}

int closeLibrary(const Library& library, int exitCode, const std::vector<KVXLiveCount>& kept)
{
    const std::string text = library.leftOver(kept);
    if (text.empty()) return exitCode;
    std::fprintf(stderr, "kvx: left over at the end:\n%s", text.c_str());
    return exitCode == 0 ? 1 : exitCode;
}

} // namespace kvx
