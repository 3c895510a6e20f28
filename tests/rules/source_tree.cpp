#include "tests/rules/source_tree.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

namespace rules {

namespace fs = std::filesystem;

fs::path root() { return KVX_SOURCE_DIR; }

std::vector<std::string> files()
{
    std::vector<std::string> found;
    fs::recursive_directory_iterator each(root());
    for (const auto& entry : each) {
        const fs::path path = entry.path().lexically_relative(root());
        if (entry.is_directory() && (path == "build" || path == ".git")) {
            each.disable_recursion_pending();
        } else if (entry.is_regular_file() && path.extension() != ".swp") {
            found.push_back(path.generic_string());
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

bool isSource(const std::string& path)
{
    const std::string extension = fs::path(path).extension().string();
    return extension == ".c" || extension == ".cpp" || extension == ".h";
}

std::string read(const std::string& path)
{
    std::ifstream file(root() / path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> lines(const std::string& text)
{
    std::vector<std::string> result;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) result.push_back(line);
    return result;
}

} // namespace rules
