// The platform's exports: declared in public headers, and called in the tree or listed here with a reason.
#include "tests/rules/elf_file.h"
#include "tests/rules/source_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <map>
#include <regex>
#include <set>

namespace {

std::string withoutComments(const std::string& text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size();) {
        if (text.compare(i, 2, "/*") == 0) {
            const auto end = text.find("*/", i + 2);
            i = end == text.npos ? text.size() : end + 2;
        } else if (text.compare(i, 2, "//") == 0) {
            i = std::min(text.find('\n', i), text.size());
        } else {
            result += text[i++];
        }
    }
    return result;
}

std::set<std::string> wordsOfPublicHeaders()
{
    static const std::regex word("[A-Za-z_][A-Za-z0-9_]*");
    std::set<std::string> words;
    for (const std::string& file : rules::files()) {
        if (file.rfind("platform/include/", 0) != 0) continue;
        const std::string text = withoutComments(rules::read(file));
        for (std::sregex_iterator each(text.begin(), text.end(), word), end; each != end; ++each)
            words.insert(each->str());
    }
    return words;
}

TEST(PlatformSymbols, AreDeclaredInPublicHeaders)
{
    const std::set<std::string> declared = wordsOfPublicHeaders();
    int exported = 0;
    for (const auto& symbol : rules::readElf(KVX_BINARY_DIR "/libkvxplatform.so").symbols) {
        if (!symbol.isDefined) continue;
        ++exported;
        EXPECT_TRUE(declared.count(symbol.name))
            << symbol.name << " is exported, but no public header declares it";
    }
    EXPECT_GT(exported, 20);
}

TEST(PlatformSymbols, IncludeEveryControlFunction)
{
    const rules::ElfFile file = rules::readElf(KVX_BINARY_DIR "/libkvxplatform.so");
    const std::string text = withoutComments(rules::read("platform/include/KVXPlatform/KVXPlatform.h"));
    static const std::regex function("\\b(KVXPlatform[A-Za-z]+)\\(");
    int declared = 0;
    for (std::sregex_iterator each(text.begin(), text.end(), function), end; each != end; ++each) {
        ++declared;
        const std::string name = (*each)[1];
        EXPECT_TRUE(std::any_of(file.symbols.begin(), file.symbols.end(), [&](const auto& symbol) {
            return symbol.isDefined && symbol.name == name;
        })) << name;
    }
    EXPECT_GT(declared, 15);
}

std::set<std::string> exportsOf(const std::string& library)
{
    std::set<std::string> names;
    for (const auto& symbol : rules::readElf(KVX_BINARY_DIR + library).symbols)
        if (symbol.isDefined) names.insert(symbol.name);
    return names;
}

/// The dynamic symbols of the plug-in, the command and the examples, with undefined ones.
std::set<std::string> namesOfCallers()
{
    std::vector<std::string> callers = {KVX_BINARY_DIR "/KVXAudio.so", KVX_BINARY_DIR "/kvx"};
    for (const auto& file : std::filesystem::directory_iterator(KVX_BINARY_DIR "/examples"))
        if (file.is_regular_file()) callers.push_back(file.path().string());
    std::set<std::string> names;
    for (const std::string& caller : callers)
        for (const auto& symbol : rules::readElf(caller).symbols) names.insert(symbol.name);
    return names;
}

// Exports that no caller in the tree uses. Each is one of the basics that a client expects beside the called
// ones, or a control function. Any other export without a caller should be removed instead.
const std::map<std::string, std::string> exportsWithoutCaller = {
    // clang-format off
    {"AUGraphClose",                        "reverses AUGraphOpen"},
    {"AUGraphGetIndNode",                   "with AUGraphGetNodeCount lists the nodes of a graph"},
    {"AUGraphGetNodeCount",                 "with AUGraphGetIndNode lists the nodes of a graph"},
    {"AUGraphIsInitialized",                "reports a state beside AUGraphIsRunning"},
    {"AUGraphIsOpen",                       "reports a state beside AUGraphIsRunning"},
    {"AUGraphUninitialize",                 "reverses AUGraphInitialize"},
    {"AudioConverterDispose",               "releases a converter"},
    {"AudioConverterGetProperty",           "a property function of every object"},
    {"AudioConverterGetPropertyInfo",       "a property function of every object"},
    {"AudioConverterReset",                 "clears a converter's history at a discontinuity"},
    {"AudioConverterSetProperty",           "a property function of every object"},
    {"AudioDeviceCreateIOProcID",           "registers an I/O procedure that is not identified by its address"},
    {"AudioDeviceDestroyIOProcID",          "reverses AudioDeviceCreateIOProcID"},
    {"AudioFileGetPropertyInfo",            "a property function of every object"},
    {"AudioFileOpenURL",                    "opens what AudioFileClose closes"},
    {"AudioObjectHasProperty",              "a property function of every object"},
    {"AudioObjectIsPropertySettable",       "a property function of every object"},
    {"AudioObjectShow",                     "prints an object for a developer"},
    {"AudioUnitRender",                     "renders a unit; the units themselves call past it"},
    {"CFGetRetainCount",                    "reports a reference count, for tests and leak searches"},
    {"CFRetain",                            "the counterpart of CFRelease"},
    {"CFStringCreateWithCString",           "the counterpart of CFStringGetCString"},
    {"CFStringGetMaximumSizeForEncoding",   "gives the buffer size for CFStringGetCString"},
    {"CFURLGetFSRef",                       "the counterpart of CFURLCreateFromFSRef"},
    {"CFURLGetFileSystemRepresentation",    "the counterpart of CFURLCreateFromFileSystemRepresentation"},
    {"CopyPascalStringToC",                 "the counterpart of CopyCStringToPascal"},
    {"ExtAudioFileGetPropertyInfo",         "a property function of every object"},
    {"ExtAudioFileSeek",                    "sets the position of a file"},
    {"ExtAudioFileTell",                    "reports the position of a file"},
    {"FSCreateStringFromHFSUniStr",         "turns a file name record into a string"},
    {"GetComponentInstanceStorage",         "the counterpart of SetComponentInstanceStorage"},
    {"GetHandleSize",                       "reports the size of a handle from NewHandle"},
    {"HLock",                               "locks a handle, as older code does before it uses one"},
    {"HUnlock",                             "reverses HLock"},
    {"KVXPlatformBuiltInSimulatedDevice",   "control function"},
    {"KVXPlatformRefreshDevices",           "control function"},
    {"KVXPlatformRefuseStart",              "control function"},
    {"MemError",                            "reports why a handle function failed"},
    {"NewHandleClear",                      "NewHandle with zeroed memory"},
    {"OpenADefaultComponent",               "OpenDefaultComponent with a status"},
    {"OpenComponent",                       "OpenAComponent without a status"},
    {"SetHandleSize",                       "resizes a handle from NewHandle"},
    {"TickCount",                           "the clock that Delay reports"},
    {"dispatch_async_f",                    "dispatch_async for a function in place of a block"},
    // clang-format on
};

TEST(PlatformSymbols, AreCalledInTheTreeOrListedWithAReason)
{
    const std::set<std::string> exported = exportsOf("/libkvxplatform.so"), called = namesOfCallers();
    std::set<std::string> uncalled, listed;
    std::set_difference(exported.begin(), exported.end(), called.begin(), called.end(),
                        std::inserter(uncalled, uncalled.end()));
    for (const auto& [name, reason] : exportsWithoutCaller) {
        EXPECT_FALSE(reason.empty()) << name;
        listed.insert(name);
    }
    for (const std::string& name : uncalled)
        EXPECT_TRUE(listed.count(name)) << name << " has no caller: remove it, or list it with a reason";
    for (const std::string& name : listed)
        EXPECT_TRUE(uncalled.count(name))
            << name << (exported.count(name) ? " has a caller" : " is not exported") << ": remove its row";
    EXPECT_GT(exported.size(), uncalled.size() + 50) << "the callers were read";
}

// A program detects an older system by the two names.
TEST(PlatformSymbols, AreTheSameInTheOlderPlatformButForTwo)
{
    std::set<std::string> names = exportsOf("/libkvxplatform.so");
    for (const char* name : {"CGPathCreateCopyByTransformingPath", "dispatch_async"})
        EXPECT_EQ(names.erase(name), 1u) << name;
    EXPECT_EQ(exportsOf("/older/libkvxplatform.so"), names);
}

TEST(PlatformSymbols, ArePickedFromDeclarationsNotFromComments)
{
    EXPECT_EQ(withoutComments("a /* b */ c // d\ne"), "a  c \ne");
    EXPECT_EQ(withoutComments("/* unfinished"), "");
}

} // namespace
