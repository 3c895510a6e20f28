// A reader for the dynamic symbols and flags in the file of a shared library.
#pragma once

#include <set>
#include <string>
#include <vector>

namespace rules {

struct DynamicSymbol {
    std::string name;
    bool isDefined = false;
    bool isWeak = false;
};

struct ElfFile {
    int bits = 0;                       ///< 32 or 64; 0 if the file is no ELF shared library
    int machine = 0;                    ///< EM_386 or EM_X86_64
    std::vector<DynamicSymbol> symbols; ///< the global and weak symbols
    std::vector<std::string> needed;    ///< names of the libraries that this library loads
    bool isSymbolic = false;            ///< true if a program cannot interpose the library's own symbols
};

/// Read the library at `path`. The result has 0 bits and no symbols if the file is missing or no ELF file.
ElfFile readElf(const std::string& path);

/// The names of the symbols that the library at `path` exports.
std::set<std::string> exportsOf(const std::string& path);

} // namespace rules
