#include "host/runtime/load_library.h"

#include "host/runtime/support/errors.h"

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

/// Check the file before the system loads it, because messages of the system do not name the problem.
void checkFile(const std::string& path)
{
    std::error_code failure;
    const std::filesystem::file_status status = std::filesystem::status(path, failure);
    if (!std::filesystem::exists(status))
        throw LoadError(
            fmt::format("{}: this file does not exist; build the library, or give its path", path));
    if (std::filesystem::is_directory(status))
        throw LoadError(
            fmt::format("{}: this is a folder; give the path of the library in the folder", path));
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
            fmt::format("{}: this is not a shared library; give the path of a plug-in library", path));
    const int bits = bitsOf(head[EI_CLASS]);
    if (bits != ownBits)
        throw LoadError(
            fmt::format("{}: the library is {}-bit and this host is {}-bit; give the library that was built "
                        "together with this host",
                        path, bits, ownBits));
}

} // namespace

REALPluginMainFunction loadLibrary(const std::string& path)
{
    checkFile(path);
    const std::string absolute = std::filesystem::absolute(path).string();
    // A plug-in is never closed, because threads of the plug-in may run until the process ends.
    void* library = dlopen(absolute.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library)
        throw LoadError(
            fmt::format("{}: the system cannot load the library ({}); install the libraries that it "
                        "needs in the same folder",
                        path, dlerror()));
    auto* pluginMain = reinterpret_cast<REALPluginMainFunction>(dlsym(library, pluginMainName));
    if (pluginMain) return pluginMain;
    dlclose(library);
    throw LoadError(
        fmt::format("{}: the library exports no {}, so it is not a plug-in of this interface; give "
                    "the path of a plug-in library",
                    path, pluginMainName));
}

} // namespace host
