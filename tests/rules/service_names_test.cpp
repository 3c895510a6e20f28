// A host service has one spelling in the plug-in: its row in the list of services, or, for the two that are
// asked for before anything else, the entry point. A second one would get by with a letter wrong, since a
// service that the host does not know is skipped without a word.
#include "tests/rules/source_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <regex>

namespace {

const char* const folders[] = {"plugin/", "coreaudio/", "player/", "auplayer/", "soundstream/", "listener/"};

bool isOfThePlugin(const std::string& path)
{
    return rules::isSource(path) &&
           std::any_of(std::begin(folders), std::end(folders),
                       [&](const char* folder) { return path.rfind(folder, 0) == 0; });
}

/// Every text in double quotes but the names of included files.
std::vector<std::string> quotedIn(const std::string& text)
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

/// Where each service is spelled, by its name.
using Homes = std::map<std::string, std::string>;

Homes homesOfServices()
{
    Homes homes = {{"REALGetRBVersion", "plugin/entry_point.cpp"},
                   {"RegisterPluginVersion", "plugin/entry_point.cpp"}};
    for (const std::string& name : quotedIn(rules::read("plugin/services.h")))
        homes.emplace(name, "plugin/services.h");
    return homes;
}

/// The services that a file spells, though they are at home elsewhere.
std::vector<std::string> strangersIn(const std::string& path, const std::string& text, const Homes& homes)
{
    std::vector<std::string> found;
    for (const std::string& quoted : quotedIn(text)) {
        const auto home = homes.find(quoted);
        if (home != homes.end() && home->second != path) found.push_back(quoted);
    }
    return found;
}

TEST(ServiceNames, AreSpelledInOnePlace)
{
    const Homes homes = homesOfServices();
    int read = 0;
    for (const std::string& file : rules::files()) {
        if (!isOfThePlugin(file)) continue;
        ++read;
        for (const std::string& name : strangersIn(file, rules::read(file), homes))
            ADD_FAILURE() << file << " spells \"" << name << "\", which is at home in " << homes.at(name);
    }
    EXPECT_GT(read, 50);
}

TEST(ServiceNames, AreAllInTheList)
{
    const Homes homes = homesOfServices();
    EXPECT_EQ(homes.size(), 41u) << "40 services, and a method of the host's own";
    for (const char* name : {"REALinRuntime", "REALSetPropValueInteger", "REALSetPropValueInt",
                             "RuntimeArrayDirectGetGetProc", "LenB( s as string ) as integer"})
        EXPECT_TRUE(homes.count(name)) << name;
}

TEST(ServiceNames, AreFoundWhereTheyDoNotBelong)
{
    const Homes homes = homesOfServices();
    const struct {
        const char* path;
        const char* text;
        std::vector<std::string> strangers;
        const char* why;
    } facts[] = {
        {"player/a.cpp", "auto f = gResolver(\"REALLockObject\");", {"REALLockObject"}, "a second spelling"},
        {"player/a.cpp", "a(\"x\", \"REALYieldToRB\");", {"REALYieldToRB"}, "not the first text of its line"},
        {"player/a.cpp", "f(\"\\\"\", \"REALYieldToRB\");", {"REALYieldToRB"}, "behind a quoted quote"},
        {"player/a.cpp", "f(\"Int32ToVariant\");", {"Int32ToVariant"}, "a later name"},
        {"plugin/services.h", "{\"REALYieldToRB\"};", {}, "at home"},
        {"plugin/services.h", "{\"REALGetRBVersion\"};", {"REALGetRBVersion"}, "at home in the entry point"},
        {"plugin/entry_point.cpp", "resolve(\"REALGetRBVersion\");", {}, "at home"},
        {"plugin/entry_point.cpp", "resolve(\"REALinRuntime\");", {"REALinRuntime"}, "at home in the list"},
        {"player/a.cpp", "REALLockObject(object); // REALLockObject", {}, "the wrapper is not the name"},
        {"player/a.cpp", "#include \"plugin/services.h\"", {}, "an include"},
        {"player/a.cpp",
         "RaiseException(\"NilObjectException\", \"REALLockObject is missing\");",
         {},
         "part of a text"},
    };
    for (const auto& fact : facts)
        EXPECT_EQ(strangersIn(fact.path, fact.text, homes), fact.strangers) << fact.why;
}

} // namespace
