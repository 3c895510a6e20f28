#include "tests/rules/include_graph.h"

#include "tests/rules/source_tree.h"

#include <algorithm>
#include <filesystem>

namespace rules {
namespace {

namespace fs = std::filesystem;

std::string unitOf(const fs::path& file) { return (file.parent_path() / file.stem()).generic_string(); }

/// Follow the includes of the unit or folder `name`, depth first. `path` is the chain of includes that led to
/// `name`.
std::vector<std::string> cycleThrough(const IncludeGraph& graph, const std::string& name,
                                      std::vector<std::string> path, std::set<std::string>& done)
{
    const auto repeated = std::find(path.begin(), path.end(), name);
    const bool isRepeated = repeated != path.end();
    if (isRepeated) path.erase(path.begin(), repeated);
    path.push_back(name);
    if (isRepeated) return path;
    const auto includes = graph.find(name);
    if (includes == graph.end() || done.count(name) != 0) return {};
    for (const std::string& next : includes->second)
        if (auto cycle = cycleThrough(graph, next, path, done); !cycle.empty()) return cycle;
    done.insert(name);
    return {};
}

} // namespace

IncludeGraph unitsOf(const std::vector<Include>& includes)
{
    IncludeGraph units;
    for (const Include& include : includes) {
        const std::string from = unitOf(include.file);
        const std::string to =
            unitOf(include.isQuoted ? include.target : "platform/include/" + include.target);
        if (from != to) units[from].insert(to);
    }
    return units;
}

IncludeGraph foldersOf(const IncludeGraph& units)
{
    IncludeGraph folders;
    for (const auto& [unit, includes] : units)
        for (const std::string& include : includes) {
            const fs::path from = fs::path(unit).parent_path(), to = fs::path(include).parent_path();
            const auto [a, b] = std::mismatch(from.begin(), from.end(), to.begin(), to.end());
            if (a == from.end() || b == to.end()) continue; // one folder contains the other
            fs::path common;
            for (auto each = from.begin(); each != a; ++each) common /= *each;
            folders[(common / *a).generic_string()].insert((common / *b).generic_string());
        }
    return folders;
}

std::vector<std::string> cycleIn(const IncludeGraph& graph)
{
    std::set<std::string> done;
    for (const auto& each : graph)
        if (auto cycle = cycleThrough(graph, each.first, {}, done); !cycle.empty()) return cycle;
    return {};
}

} // namespace rules
