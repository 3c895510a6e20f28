#include "host/kvx/library/library.h"

#include "host/kvx/text/message.h"

#include <fmt/core.h>

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

std::uint32_t countOf(const std::vector<KVXLiveCount>& counts, std::string_view kind)
{
    for (const KVXLiveCount& each : counts)
        if (each.kind == kind) return each.count;
    return 0;
}

} // namespace

std::string pathOfLibrary(const LibraryOptions& options)
{
    return options.path.empty() ? pathBesideThisProgram("KVXAudio.so") : options.path;
}

std::vector<KVXLibraryInfo> loadedLibraries()
{
    std::vector<KVXLibraryInfo> rows(KVXPlatformGetLibraries(nullptr, 0));
    KVXPlatformGetLibraries(rows.data(), static_cast<std::uint32_t>(rows.size()));
    return rows;
}

Library::Library(const LibraryOptions& options) : host_(hostOptions(options))
{
    host_.load(pathOfLibrary(options));
}

std::string Library::leaks(const std::vector<KVXLiveCount>& expected) const
{
    std::string text = host_.leaks().text();
    for (const std::string& misuse : host_.misuses()) text += misuse + "\n";

    std::array<KVXLiveCount, 32> counts{};
    const std::uint32_t kinds =
        KVXPlatformGetLiveCounts(counts.data(), static_cast<std::uint32_t>(counts.size()));
    for (std::size_t i = 0; i < std::min<std::size_t>(kinds, counts.size()); ++i)
        if (counts[i].count > countOf(expected, counts[i].kind))
            text += fmt::format("{} of the platform: {} not released\n", counts[i].kind, counts[i].count);
    return text;
}

int reportLeaks(const Library& library, int exitCode, const std::vector<KVXLiveCount>& expected)
{
    const std::string text = library.leaks(expected);
    if (text.empty()) return exitCode;
    printMessage("the library left objects or called the host wrongly; report this list to its developers:");
    std::fputs(text.c_str(), stderr);
    return exitCode == 0 ? 1 : exitCode;
}

} // namespace kvx
