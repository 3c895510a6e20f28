// Checks that the plug-in spells the name of each host service in one place. No other test finds a typing
// error in a second spelling, because the plug-in reports no error for an unknown service.
#include "tests/rules/source_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <regex>

namespace {

const char* const folders[] = {"plugin/", "coreaudio/", "player/", "auplayer/", "soundstream/", "listener/"};

bool isInThePlugin(const std::string& path)
{
    return rules::isSource(path) &&
           std::any_of(std::begin(folders), std::end(folders),
                       [&](const char* folder) { return path.rfind(folder, 0) == 0; });
}

/// Return all string literals in a source text, without the names of included files.
std::vector<std::string> literalsIn(const std::string& text)
{
    static const std::regex quoted("\"((?:[^\"\\\\\n]|\\\\.)*)\"");
    static const std::regex include("^\\s*#\\s*include\\b.*");
    std::vector<std::string> found;
    for (const std::string& line : rules::lines(text)) {
        if (std::regex_match(line, include)) continue;
        for (std::sregex_iterator each(line.begin(), line.end(), quoted), end; each != end; ++each)
            found.push_back((*each)[1]);
    }
    return found;
}

/// For each service name, the only file that may spell it.
using Owners = std::map<std::string, std::string>;

Owners ownersOfServices()
{
    Owners owners = {{"REALGetRBVersion", "plugin/entry_point.cpp"},
                     {"RegisterPluginVersion", "plugin/entry_point.cpp"}};
    for (const std::string& name : literalsIn(rules::read("plugin/services.h")))
        owners.emplace(name, "plugin/services.h");
    return owners;
}

/// Return the service names that a file spells although only another file may spell them.
std::vector<std::string> secondSpellingsIn(const std::string& path, const std::string& text,
                                           const Owners& owners)
{
    std::vector<std::string> found;
    for (const std::string& literal : literalsIn(text)) {
        const auto owner = owners.find(literal);
        if (owner != owners.end() && owner->second != path) found.push_back(literal);
    }
    return found;
}

TEST(ServiceNames, AreSpelledInOneFileOnly)
{
    const Owners owners = ownersOfServices();
    int read = 0;
    for (const std::string& file : rules::files()) {
        if (!isInThePlugin(file)) continue;
        ++read;
        for (const std::string& name : secondSpellingsIn(file, rules::read(file), owners))
            ADD_FAILURE() << file << " spells \"" << name << "\"; use the row in " << owners.at(name);
    }
    EXPECT_GT(read, 50);
}

TEST(ServiceNames, AreCollectedFromTheServiceTable)
{
    const Owners owners = ownersOfServices();
    EXPECT_EQ(owners.size(), 41u) << "40 services, and one method of the host's string class";
    for (const char* name : {"REALinRuntime", "REALSetPropValueInteger", "REALSetPropValueInt",
                             "RuntimeArrayDirectGetGetProc", "LenB( s as string ) as integer"})
        EXPECT_TRUE(owners.count(name)) << name;
}

TEST(ServiceNames, AreFoundIfSpelledTwice)
{
    const Owners owners = ownersOfServices();
    const struct {
        const char* path;
        const char* text;
        std::vector<std::string> spellings;
        const char* why;
    } facts[] = {
        {"player/a.cpp", "auto f = gResolver(\"REALLockObject\");", {"REALLockObject"}, "a second spelling"},
        {"player/a.cpp",
         "a(\"x\", \"REALYieldToRB\");",
         {"REALYieldToRB"},
         "not the first literal of the line"},
        {"player/a.cpp",
         "f(\"\\\"\", \"REALYieldToRB\");",
         {"REALYieldToRB"},
         "after an escaped quotation mark"},
        {"player/a.cpp", "f(\"Int32ToVariant\");", {"Int32ToVariant"}, "a literal with digits"},
        {"plugin/services.h", "{\"REALYieldToRB\"};", {}, "the file owns the name"},
        {"plugin/services.h",
         "{\"REALGetRBVersion\"};",
         {"REALGetRBVersion"},
         "the entry point owns the name"},
        {"plugin/entry_point.cpp", "resolve(\"REALGetRBVersion\");", {}, "the file owns the name"},
        {"plugin/entry_point.cpp",
         "resolve(\"REALinRuntime\");",
         {"REALinRuntime"},
         "the table owns the name"},
        {"player/a.cpp",
         "REALLockObject(object); // REALLockObject",
         {},
         "a call of the wrapper is not a literal"},
        {"player/a.cpp", "#include \"plugin/services.h\"", {}, "an include is not a service name"},
        {"player/a.cpp",
         "RaiseException(\"NilObjectException\", \"REALLockObject is missing\");",
         {},
         "part of a longer literal"},
    };
    for (const auto& fact : facts)
        EXPECT_EQ(secondSpellingsIn(fact.path, fact.text, owners), fact.spellings) << fact.why;
}

} // namespace
