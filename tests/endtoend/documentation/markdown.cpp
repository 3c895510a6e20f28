#include "tests/endtoend/documentation/markdown.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace endtoend {

namespace {

namespace fs = std::filesystem;

bool startsWith(const std::string& text, const std::string& prefix) { return text.rfind(prefix, 0) == 0; }

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

/// Return the cells of a table row, without the spaces around each.
std::vector<std::string> cellsOf(const std::string& row)
{
    std::vector<std::string> cells;
    std::istringstream stream(row.substr(1));
    for (std::string cell; std::getline(stream, cell, '|');) {
        const std::size_t first = cell.find_first_not_of(' ');
        cells.push_back(first == cell.npos ? "" : cell.substr(first, cell.find_last_not_of(' ') - first + 1));
    }
    return cells;
}

std::string withoutBackquotes(std::string text)
{
    text.erase(std::remove(text.begin(), text.end(), '`'), text.end());
    return text;
}

MemberEntry entryOfRow(const std::vector<std::string>& cells)
{
    MemberEntry entry;
    entry.declarations = {withoutBackquotes(cells.front())};
    for (std::size_t i = 1; i + 1 < cells.size(); ++i) entry.prose += cells[i];
    entry.basic = withoutBackquotes(cells.back());
    return entry;
}

} // namespace

std::vector<std::string> userDocuments()
{
    std::vector<std::string> found = {"README.md"};
    for (const auto& each : fs::recursive_directory_iterator(fs::path(KVX_SOURCE_DIR) / "docs"))
        if (each.path().extension() == ".md")
            found.push_back(each.path().lexically_relative(KVX_SOURCE_DIR).generic_string());
    std::sort(found.begin(), found.end());
    return found;
}

std::string readDocument(const std::string& path)
{
    std::ifstream file(fs::path(KVX_SOURCE_DIR) / path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<CodeBlock> codeBlocks(const std::string& document)
{
    std::vector<CodeBlock> blocks;
    bool isInside = false;
    for (const std::string& line : linesOf(document)) {
        if (startsWith(line, "```")) {
            isInside = !isInside;
            if (isInside) blocks.push_back({line.substr(3), ""});
        } else if (isInside) {
            blocks.back().text += line + "\n";
        }
    }
    return blocks;
}

std::vector<MemberEntry> memberEntries(const std::string& document)
{
    std::vector<MemberEntry> entries;
    bool isInSection = false, isInTable = false;
    std::string block; // language of the code block that contains the line; empty outside
    for (const std::string& line : linesOf(document)) {
        isInTable = isInTable && startsWith(line, "|");
        if (startsWith(line, "```")) {
            block = block.empty() ? line.substr(3) + " " : "";
        } else if (!block.empty()) {
            if (!isInSection) continue;
            if (block == "text ") entries.back().declarations.push_back(line);
            if (block == "basic ") entries.back().basic += line + "\n";
        } else if (startsWith(line, "### ")) {
            isInSection = true;
            entries.push_back({line.substr(4), {}, "", ""});
        } else if (startsWith(line, "#")) {
            isInSection = false;
        } else if (startsWith(line, "| declaration ")) {
            isInTable = cellsOf(line).back() == "BASIC";
        } else if (isInTable && !startsWith(line, "|--")) {
            entries.push_back(entryOfRow(cellsOf(line)));
        } else if (isInSection) {
            entries.back().prose += line;
        }
    }
    return entries;
}

} // namespace endtoend
