// The parts of a Markdown document that the documentation tests read.
// All functions: [any].
#pragma once

#include <string>
#include <vector>

namespace endtoend {

/// Return the paths of the documents for users, relative to the root folder: README.md and docs/**/*.md.
std::vector<std::string> userDocuments();

/// Return the content of a file of the repository.
std::string readDocument(const std::string& path);

struct CodeBlock {
    std::string language; ///< the word after the opening fence; may be empty
    std::string text;     ///< the lines between the fences, each with its newline
};

/// Return the fenced code blocks of a document, in order.
std::vector<CodeBlock> codeBlocks(const std::string& document);

/// The description of one member, or of overloads of one name, on a page of docs/reference.
struct MemberEntry {
    std::string heading; ///< name in the heading of a section; empty for a row of a table
    std::vector<std::string> declarations;
    std::string prose;
    std::string basic;
};

/// Return the members on a reference page, in order. A member is either a section "### NAME" with its
/// declarations in a code block "text", or a row of a table whose first column is "declaration" and whose
/// last column is "BASIC".
std::vector<MemberEntry> memberEntries(const std::string& document);

} // namespace endtoend
