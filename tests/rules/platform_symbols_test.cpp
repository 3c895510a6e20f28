// Checks the exports of the platform library: a public header declares each export, and each export has a
// caller in the tree or a row in the table below.
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

const char* const platformPath = KVX_BINARY_DIR "/libkvxplatform.so";

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
    const std::set<std::string> declared = wordsOfPublicHeaders(), exported = rules::exportsOf(platformPath);
    for (const std::string& name : exported)
        EXPECT_TRUE(declared.count(name)) << name << " is exported, but no public header declares it";
    EXPECT_GT(exported.size(), 20u);
}

TEST(PlatformSymbols, IncludeEveryControlFunction)
{
    const std::set<std::string> exported = rules::exportsOf(platformPath);
    const std::string text = withoutComments(rules::read("platform/include/KVXPlatform/KVXPlatform.h"));
    static const std::regex function("\\b(KVXPlatform[A-Za-z]+)\\(");
    int declared = 0;
    for (std::sregex_iterator each(text.begin(), text.end(), function), end; each != end; ++each) {
        ++declared;
        EXPECT_TRUE(exported.count((*each)[1])) << (*each)[1];
    }
    EXPECT_GT(declared, 15);
}

/// Return the names of all dynamic symbols of the plug-in, the command and the examples, defined there or
/// not.
std::set<std::string> symbolsOfCallers()
{
    std::vector<std::string> callers = {KVX_BINARY_DIR "/KVXAudio.so", KVX_BINARY_DIR "/kvx"};
    for (const auto& file : std::filesystem::directory_iterator(KVX_BINARY_DIR "/examples"))
        if (file.is_regular_file()) callers.push_back(file.path().string());
    std::set<std::string> names;
    for (const std::string& caller : callers)
        for (const auto& symbol : rules::readElf(caller).symbols) names.insert(symbol.name);
    return names;
}

// The exports without a caller in the tree, each with the reason why the library has the export. Remove an
// export that has no such reason.
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
    {"AudioDeviceCreateIOProcID",           "registers the same I/O procedure several times"},
    {"AudioDeviceDestroyIOProcID",          "reverses AudioDeviceCreateIOProcID"},
    {"AudioFileGetPropertyInfo",            "a property function of every object"},
    {"AudioFileOpenURL",                    "the counterpart of AudioFileClose"},
    {"AudioObjectHasProperty",              "a property function of every object"},
    {"AudioObjectIsPropertySettable",       "a property function of every object"},
    {"AudioObjectShow",                     "prints an object for a developer"},
    {"AudioUnitRender",                     "renders a unit for a client; units render each other without it"},
    {"CFGetRetainCount",                    "reports a reference count, to find leaks"},
    {"CFRetain",                            "the counterpart of CFRelease"},
    {"CFStringGetMaximumSizeForEncoding",   "gives the buffer size for CFStringGetCString"},
    {"CFURLGetFSRef",                       "the counterpart of CFURLCreateFromFSRef"},
    {"CFURLGetFileSystemRepresentation",    "the counterpart of CFURLCreateFromFileSystemRepresentation"},
    {"CopyPascalStringToC",                 "the counterpart of CopyCStringToPascal"},
    {"ExtAudioFileGetPropertyInfo",         "a property function of every object"},
    {"ExtAudioFileTell",                    "reports the position of a file"},
    {"FSCreateStringFromHFSUniStr",         "turns a file name record into a string"},
    {"GetComponentInstanceStorage",         "the counterpart of SetComponentInstanceStorage"},
    {"GetHandleSize",                       "reports the size of a handle from NewHandle"},
    {"HLock",                               "older code locks a handle before it uses it"},
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
    const std::set<std::string> exported = rules::exportsOf(platformPath), called = symbolsOfCallers();
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
    EXPECT_GT(exported.size(), uncalled.size() + 50) << "the callers were not read";
}

// On an older system these two functions are missing, and the plug-in works without them.
TEST(PlatformSymbols, OfTheOlderPlatformLackTwoFunctions)
{
    std::set<std::string> names = rules::exportsOf(platformPath);
    for (const char* name : {"CGPathCreateCopyByTransformingPath", "dispatch_async"})
        EXPECT_EQ(names.erase(name), 1u) << name;
    EXPECT_EQ(rules::exportsOf(KVX_BINARY_DIR "/older/libkvxplatform.so"), names);
}

TEST(PlatformSymbols, AreSearchedForOutsideComments)
{
    EXPECT_EQ(withoutComments("a /* b */ c // d\ne"), "a  c \ne");
    EXPECT_EQ(withoutComments("/* unfinished"), "");
}

} // namespace
