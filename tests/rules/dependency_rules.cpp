#include "tests/rules/dependency_rules.h"

#include "tests/rules/source_tree.h"

#include <algorithm>
#include <regex>
#include <string_view>

namespace rules {
namespace {

using Names = std::vector<std::string_view>;

/// What the files of one folder may include. The longest matching folder applies.
struct Wall {
    std::string_view folder; // a prefix of the file's path
    Names ours;              // prefixes of quoted includes
    const Names* standard;   // headers of the standard library; null: all
    Names platform;          // prefixes of the platform's public headers; {""}: all
    const Names* outside;    // prefixes of system and library headers; null: all
};

// The standard library's parts that need nothing but the oldest system's C++ run-time library.
const Names headerOnly = {
    "algorithm",        "array",       "atomic",   "cassert",     "cfloat",   "climits", "cmath",
    "cstdarg",          "cstddef",     "cstdint",  "cstdio",      "cstdlib",  "cstring", "exception",
    "initializer_list", "iterator",    "limits",   "memory",      "new",      "numeric", "optional",
    "stdexcept",        "string_view", "tuple",    "type_traits", "typeinfo", "utility", "pthread.h",
    "stdarg.h",         "stddef.h",    "stdint.h", "stdlib.h",    "string.h", "cpuid.h", "immintrin.h",
    "tmmintrin.h",      "sched.h",     "time.h",
};
const Names plainC = {"stdarg.h", "stdbool.h", "stddef.h", "stdint.h", "string.h", "sys/types.h"};
const Names fixedWidth = {"cstddef", "cstdint", "type_traits"};

const Names nothing = {};
const Names belowPlatform = {"Block", "alsa/",       "ffi.h",        "fmt/",      "jack/",     "portaudio.h",
                             "pa_",   "rubberband/", "samplerate.h", "sndfile.h", "utf8proc.h"};
const Names besideHost = {"CLI/", "ffi.h", "fmt/", "nlohmann/", "sndfile.h", "stb/", "utf8proc.h"};

const Names control = {"KVXPlatform/"};
const Names frameworks = {
    "AudioToolbox/",        "AudioUnit/",    "Carbon/",   "CoreAudio/", "CoreFoundation/", "CoreServices/",
    "ApplicationServices/", "CoreGraphics/", "dispatch/", "libkern/",   "pthread.h",       "Block.h"};
const Names allPlatform = {""};

const std::vector<Wall>& walls()
{
    // clang-format off
    static const std::vector<Wall> table = {
        // folder                       ours                                              standard      platform     outside
        {"abi/",                        {"abi/"},                                         &fixedWidth,  {},          &nothing},
        {"plugin/",                     {"abi/", "plugin/"},                              &headerOnly,  frameworks,  &nothing},
        {"coreaudio/",                  {"abi/", "plugin/", "coreaudio/"},                &headerOnly,  frameworks,  &nothing},
        {"player/",                     {"abi/", "plugin/", "player/"},                   &headerOnly,  frameworks,  &nothing},
        {"auplayer/",                   {"abi/", "plugin/", "auplayer/"},                 &headerOnly,  frameworks,  &nothing},
        {"soundstream/",                {"abi/", "plugin/", "soundstream/"},              &headerOnly,  frameworks,  &nothing},
        {"listener/",                   {"abi/", "plugin/", "listener/"},                 &headerOnly,  frameworks,  &nothing},
        {"platform/include/",           {},                                               &plainC,      allPlatform, &nothing},
        {"platform/",                   {"platform/"},                                    nullptr,      allPlatform, &belowPlatform},
        {"host/",                       {"abi/", "host/"},                                nullptr,      control,     &besideHost},
        {"host/runtime/values/folder_item.", {"abi/", "host/"},                                nullptr,      allPlatform, &besideHost},
        {"host/soundclient/",           {"abi/", "host/"},                                nullptr,      allPlatform, &besideHost},
        {"host/kvx/files/",             {"abi/", "host/"},                                nullptr,      allPlatform, &besideHost},
        // Tests of a plug-in folder stand where the host stands, and see the folder from inside.
        {"tests/abi/",                  {"abi/", "tests/"},                               nullptr,      {},          nullptr},
        {"tests/plugin/",               {"abi/", "plugin/", "tests/"},                    nullptr,      allPlatform, nullptr},
        {"tests/coreaudio/",            {"abi/", "plugin/", "coreaudio/", "tests/"},      nullptr,      allPlatform, nullptr},
        {"tests/player/",               {"abi/", "plugin/", "player/", "tests/"},         nullptr,      allPlatform, nullptr},
        {"tests/auplayer/",             {"abi/", "plugin/", "auplayer/", "tests/"},       nullptr,      allPlatform, nullptr},
        {"tests/soundstream/",          {"abi/", "plugin/", "soundstream/", "tests/"},    nullptr,      allPlatform, nullptr},
        {"tests/listener/",             {"abi/", "plugin/", "listener/", "tests/"},       nullptr,      allPlatform, nullptr},
        {"tests/platform/",             {"platform/", "tests/"},                          nullptr,      allPlatform, nullptr},
        {"tests/host/",                 {"abi/", "host/", "tests/"},                      nullptr,      allPlatform, nullptr},
        // End to end means through the doors: the loaded library, the host, the platform's public headers.
        {"tests/endtoend/",             {"abi/", "host/", "tests/endtoend/", "tests/support/"}, nullptr, allPlatform, nullptr},
        {"tests/support/",              {"abi/", "tests/support/", "plugin/"},            nullptr,      allPlatform, nullptr},
        {"tests/rules/",                {"abi/", "tests/rules/", "tests/support/"},       nullptr,      {},          nullptr},
        {"bench/",                      {""},                                             nullptr,      allPlatform, nullptr},
        {"examples/",                   {"abi/", "host/"},                                nullptr,      control,     &besideHost},
        {"fuzz/",                       {""},                                             nullptr,      allPlatform, nullptr},
    };
    // clang-format on
    return table;
}

bool startsWith(std::string_view text, std::string_view prefix)
{
    return text.substr(0, prefix.size()) == prefix;
}

bool hasPrefixIn(const Names& prefixes, std::string_view text)
{
    return std::any_of(prefixes.begin(), prefixes.end(),
                       [&](auto prefix) { return startsWith(text, prefix); });
}

const Wall* wallAround(const std::string& file)
{
    const Wall* found = nullptr;
    for (const Wall& wall : walls())
        if (startsWith(file, wall.folder) && (!found || wall.folder.size() > found->folder.size()))
            found = &wall;
    return found;
}

// The C++ library's headers have no extension; what of C and the system stands beside them is named here.
bool isStandard(const std::string& target)
{
    static const Names system = {
        "arpa/",    "assert.h",    "cpuid.h",     "ctype.h",    "cxxabi.h",  "dirent.h", "dlfcn.h",
        "elf.h",    "emmintrin.h", "errno.h",     "execinfo.h", "fcntl.h",   "fenv.h",   "float.h",
        "fuzzer/",  "immintrin.h", "inttypes.h",  "limits.h",   "link.h",    "linux/",   "locale.h",
        "malloc.h", "math.h",      "pmmintrin.h", "poll.h",     "pthread.h", "sched.h",  "semaphore.h",
        "signal.h", "spawn.h",     "stdarg.h",    "stdbool.h",  "stddef.h",  "stdint.h", "stdio.h",
        "stdlib.h", "string.h",    "strings.h",   "sys/",       "termios.h", "time.h",   "tmmintrin.h",
        "unistd.h", "wchar.h",     "xmmintrin.h",
    };
    static const std::regex bare("[a-z_]+(/[a-z_]+)?");
    return std::regex_match(target, bare) || hasPrefixIn(system, target);
}

bool isPlatform(const std::string& target)
{
    return std::filesystem::exists(top() / "platform/include" / target) || hasPrefixIn(frameworks, target) ||
           hasPrefixIn(control, target);
}

std::string quotedBreach(const Wall& wall, const Include& include)
{
    if (!hasPrefixIn(wall.ours, include.target))
        return std::string(wall.folder) + " must not reach " + include.target;
    if (!std::filesystem::exists(top() / include.target))
        return "quoted includes are paths from the top of the tree, and no file stands at " + include.target;
    return {};
}

std::string angledBreach(const Wall& wall, const Include& include)
{
    const std::string& target = include.target;
    if (isStandard(target)) {
        const bool allowed = !wall.standard || std::find(wall.standard->begin(), wall.standard->end(),
                                                         target) != wall.standard->end();
        if (allowed || (isPlatform(target) && hasPrefixIn(wall.platform, target))) return {};
        return std::string(wall.folder) + " must do without <" + target +
               ">, which is not header-only or not C";
    }
    if (isPlatform(target)) {
        if (hasPrefixIn(wall.platform, target)) return {};
        return std::string(wall.folder) + " must not see the platform's <" + target + ">";
    }
    if (!wall.outside || hasPrefixIn(*wall.outside, target)) return {};
    return std::string(wall.folder) + " must not stand on <" + target + ">";
}

} // namespace

std::vector<Include> includesOf(const std::string& file, const std::string& text)
{
    static const std::regex directive("^\\s*#\\s*include\\s*([<\"])([^>\"]+)[>\"].*");
    std::vector<Include> found;
    int number = 0;
    for (const std::string& line : lines(text)) {
        ++number;
        std::smatch match;
        if (line.find("include") != line.npos && std::regex_match(line, match, directive))
            found.push_back({file, number, match[2], match[1] == "\""});
    }
    return found;
}

std::string breach(const Include& include)
{
    const Wall* wall = wallAround(include.file);
    if (!wall) return "no wall is drawn around this folder; draw one in tests/rules/dependency_rules.cpp";
    return include.isQuoted ? quotedBreach(*wall, include) : angledBreach(*wall, include);
}

} // namespace rules
