#include "tests/rules/dependency_rules.h"

#include "tests/rules/source_tree.h"

#include <algorithm>
#include <regex>
#include <string_view>

namespace rules {
namespace {

using Names = std::vector<std::string_view>;

/// The headers that the files of a folder may include. If several rules match a file, the rule with the
/// longest folder applies.
struct FolderRule {
    std::string_view folder; ///< a prefix of the file's path
    Names folders;           ///< allowed prefixes of quoted includes
    const Names* standard;   ///< allowed headers of the standard library; null allows all
    Names platform;          ///< allowed prefixes of the platform's public headers; {""} allows all
    const Names* libraries;  ///< allowed prefixes of library headers; null allows all
};

// Standard headers that need no more of the C++ run-time library than the oldest supported Mac system has.
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

const Names none = {};
const Names platformLibraries = {"Block", "alsa/",       "ffi.h",        "fmt/",      "jack/",  "portaudio.h",
                                 "pa_",   "rubberband/", "samplerate.h", "sndfile.h", "soxr.h", "utf8proc.h"};
const Names hostLibraries = {"CLI/",      "ffi.h",     "fmt/", "kiss_fftr.h",
                             "nlohmann/", "sndfile.h", "stb/", "utf8proc.h"};

const Names control = {"KVXPlatform/"};
const Names frameworks = {
    "AudioToolbox/",        "AudioUnit/",    "Carbon/",   "CoreAudio/", "CoreFoundation/", "CoreServices/",
    "ApplicationServices/", "CoreGraphics/", "dispatch/", "libkern/",   "pthread.h",       "Block.h"};
const Names allPlatform = {""};

const Names runtimeSupport = {"abi/", "host/runtime/support/"};
const Names runtimeValues = {"abi/", "host/runtime/support/", "host/runtime/values/"};
const Names runtimeClasses = {"abi/", "host/runtime/support/", "host/runtime/values/",
                              "host/runtime/classes/"};
const Names runtimeCalls = {"abi/", "host/runtime/support/", "host/runtime/values/", "host/runtime/classes/",
                            "host/runtime/calls/"};
const Names runtimeServices = {"abi/",
                               "host/runtime/support/",
                               "host/runtime/values/",
                               "host/runtime/classes/",
                               "host/runtime/calls/",
                               "host/runtime/services/"};

const std::vector<FolderRule>& folderRules()
{
    // clang-format off
    static const std::vector<FolderRule> table = {
        // folder                       folders                                           standard
        // platform     libraries
        {"abi/",                        {"abi/"},                                         &fixedWidth,  {},          &none},
        {"plugin/",                     {"abi/", "plugin/"},                              &headerOnly,  frameworks,  &none},
        {"coreaudio/",                  {"abi/", "plugin/", "coreaudio/"},                &headerOnly,  frameworks,  &none},
        {"player/",                     {"abi/", "plugin/", "player/"},                   &headerOnly,  frameworks,  &none},
        {"auplayer/",                   {"abi/", "plugin/", "auplayer/"},                 &headerOnly,  frameworks,  &none},
        {"soundstream/",                {"abi/", "plugin/", "soundstream/"},              &headerOnly,  frameworks,  &none},
        {"listener/",                   {"abi/", "plugin/", "listener/"},                 &headerOnly,  frameworks,  &none},
        {"platform/include/",           {},                                               &plainC,      allPlatform, &none},
        {"platform/",                   {"platform/"},                                    nullptr,      allPlatform, &platformLibraries},
        {"host/",                       {"abi/", "host/"},                                nullptr,      control,     &hostLibraries},
        // Each layer of the host runtime includes the layers below it.
        {"host/runtime/support/",       runtimeSupport,                                   nullptr,      {},          &hostLibraries},
        {"host/runtime/values/",        runtimeValues,                                    nullptr,      {},          &hostLibraries},
        {"host/runtime/values/folder_item.", runtimeValues,                               nullptr,      allPlatform, &hostLibraries},
        {"host/runtime/values/text_encoding.", runtimeValues,                             nullptr,      allPlatform, &hostLibraries},
        {"host/runtime/classes/",       runtimeClasses,                                   nullptr,      {},          &hostLibraries},
        {"host/runtime/calls/",         runtimeCalls,                                     nullptr,      {},          &hostLibraries},
        {"host/runtime/services/",      runtimeServices,                                  nullptr,      {},          &hostLibraries},
        {"host/runtime/",               {"abi/", "host/runtime/"},                        nullptr,      {},          &hostLibraries},
        {"host/soundclient/",           {"abi/", "host/"},                                nullptr,      allPlatform, &hostLibraries},
        {"host/kvx/files/",             {"abi/", "host/"},                                nullptr,      allPlatform, &hostLibraries},
        // Tests of a plug-in folder replace the host, and include the folder's internal headers.
        {"tests/abi/",                  {"abi/", "tests/"},                               nullptr,      {},          nullptr},
        {"tests/plugin/",               {"abi/", "plugin/", "tests/"},                    nullptr,      allPlatform, nullptr},
        {"tests/coreaudio/",            {"abi/", "plugin/", "coreaudio/", "tests/"},      nullptr,      allPlatform, nullptr},
        {"tests/player/",               {"abi/", "plugin/", "player/", "tests/"},         nullptr,      allPlatform, nullptr},
        {"tests/auplayer/",             {"abi/", "plugin/", "auplayer/", "tests/"},       nullptr,      allPlatform, nullptr},
        {"tests/soundstream/",          {"abi/", "plugin/", "soundstream/", "tests/"},    nullptr,      allPlatform, nullptr},
        {"tests/listener/",             {"abi/", "plugin/", "listener/", "tests/"},       nullptr,      allPlatform, nullptr},
        {"tests/platform/",             {"platform/", "tests/"},                          nullptr,      allPlatform, nullptr},
        {"tests/host/",                 {"abi/", "host/", "tests/"},                      nullptr,      allPlatform, nullptr},
        // End-to-end tests use the built library only through the host and the platform's public headers.
        {"tests/endtoend/",             {"abi/", "host/", "tests/endtoend/", "tests/support/"}, nullptr, allPlatform, nullptr},
        {"tests/support/",              {"abi/", "tests/support/", "plugin/"},            nullptr,      allPlatform, nullptr},
        {"tests/rules/",                {"abi/", "tests/rules/", "tests/support/"},       nullptr,      {},          nullptr},
        {"bench/",                      {""},                                             nullptr,      allPlatform, nullptr},
        {"examples/",                   {"abi/", "host/"},                                nullptr,      control,     &hostLibraries},
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

const FolderRule* ruleFor(const std::string& file)
{
    const FolderRule* found = nullptr;
    for (const FolderRule& rule : folderRules())
        if (startsWith(file, rule.folder) && (!found || rule.folder.size() > found->folder.size()))
            found = &rule;
    return found;
}

// Headers of the C++ library have no extension, so the list names only C and system headers.
bool isStandard(const std::string& target)
{
    static const Names system = {
        "arpa/",    "assert.h",    "cpuid.h",     "ctype.h",     "cxxabi.h",    "dirent.h",  "dlfcn.h",
        "elf.h",    "emmintrin.h", "errno.h",     "execinfo.h",  "fcntl.h",     "fenv.h",    "float.h",
        "fuzzer/",  "grp.h",       "immintrin.h", "inttypes.h",  "limits.h",    "link.h",    "linux/",
        "locale.h", "malloc.h",    "math.h",      "pmmintrin.h", "poll.h",      "pthread.h", "pwd.h",
        "sched.h",  "semaphore.h", "signal.h",    "spawn.h",     "stdarg.h",    "stdbool.h", "stddef.h",
        "stdint.h", "stdio.h",     "stdlib.h",    "string.h",    "strings.h",   "sys/",      "termios.h",
        "time.h",   "tmmintrin.h", "unistd.h",    "wchar.h",     "xmmintrin.h",
    };
    static const std::regex bare("[a-z_]+(/[a-z_]+)?");
    return std::regex_match(target, bare) || hasPrefixIn(system, target);
}

bool isPlatform(const std::string& target)
{
    return std::filesystem::exists(root() / "platform/include" / target) || hasPrefixIn(frameworks, target) ||
           hasPrefixIn(control, target);
}

std::string quotedViolation(const FolderRule& rule, const Include& include)
{
    if (!hasPrefixIn(rule.folders, include.target))
        return std::string(rule.folder) + " must not include " + include.target;
    if (!std::filesystem::exists(root() / include.target))
        return "quoted includes are paths from the root folder, and there is no file " + include.target;
    return {};
}

std::string angledViolation(const FolderRule& rule, const Include& include)
{
    const std::string& target = include.target;
    if (isStandard(target)) {
        const bool allowed = !rule.standard || std::find(rule.standard->begin(), rule.standard->end(),
                                                         target) != rule.standard->end();
        if (allowed || (isPlatform(target) && hasPrefixIn(rule.platform, target))) return {};
        return std::string(rule.folder) + " must not include <" + target +
               ">, which needs a compiled library or is not C";
    }
    if (isPlatform(target)) {
        if (hasPrefixIn(rule.platform, target)) return {};
        return std::string(rule.folder) + " must not include the platform header <" + target + ">";
    }
    if (!rule.libraries || hasPrefixIn(*rule.libraries, target)) return {};
    return std::string(rule.folder) + " must not include the library header <" + target + ">";
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

std::string violationOf(const Include& include)
{
    const FolderRule* rule = ruleFor(include.file);
    if (!rule) return "no rule for this folder; add a row to tests/rules/dependency_rules.cpp";
    return include.isQuoted ? quotedViolation(*rule, include) : angledViolation(*rule, include);
}

} // namespace rules
