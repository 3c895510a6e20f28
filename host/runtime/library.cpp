#include "host/runtime/state.h"

#include <dlfcn.h>
#include <elf.h>
#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace host {

namespace {

constexpr int ownBits = sizeof(void*) * 8;

int bitsOf(unsigned char elfClass) { return elfClass == ELFCLASS32 ? 32 : elfClass == ELFCLASS64 ? 64 : 0; }

/// What can be told from the file alone.
void checkFile(const std::string& path)
{
    std::error_code failure;
    const auto status = std::filesystem::status(path, failure);
    if (!std::filesystem::exists(status))
        throw LoadError(fmt::format("{}: there is no such file; build the library, or give its path", path));
    if (std::filesystem::is_directory(status))
        throw LoadError(fmt::format("{}: that is a folder; give the path of the library in it", path));
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw LoadError(
            errno == EMFILE || errno == ENFILE
                ? fmt::format("{}: too many files are open; raise the limit with `ulimit -n`", path)
                : fmt::format("{}: {}; check its permissions", path, std::strerror(errno)));
    unsigned char head[EI_NIDENT] = {};
    file.read(reinterpret_cast<char*>(head), sizeof head);
    if (file.gcount() != sizeof head || std::memcmp(head, ELFMAG, SELFMAG) != 0)
        throw LoadError(
            fmt::format("{}: that is no shared library; give the path of a plug-in library", path));
    const int bits = bitsOf(head[EI_CLASS]);
    if (bits != ownBits)
        throw LoadError(
            fmt::format("{}: the library is {}-bit and this host is {}-bit; give the one that was built "
                        "with this host",
                        path, bits, ownBits));
}

} // namespace

void Host::load(const std::string& path)
{
    if (!state_->libraryPath.empty())
        throw LoadError(
            fmt::format("{}: {} is loaded already; one host runs one library", path, state_->libraryPath));
    checkFile(path);
    const auto absolute = std::filesystem::absolute(path).string();
    // Never closed: the host keeps using the library's tables for the life of the process.
    void* library = dlopen(absolute.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library)
        throw LoadError(
            fmt::format("{}: the system refuses it ({}); check that the libraries it needs stand beside it",
                        path, dlerror()));
    auto* pluginMain = reinterpret_cast<REALPluginMainFunction>(dlsym(library, pluginMainName));
    if (!pluginMain) {
        dlclose(library);
        throw LoadError(
            fmt::format("{}: the library exports no {}, so it is no plug-in of this interface; give "
                        "another one",
                        path, pluginMainName));
    }
    state_->libraryPath = absolute;
    enter(pluginMain);
}

} // namespace host
