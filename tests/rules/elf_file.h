// Reads the dynamic symbols and flags from the file of a shared library.
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
    int bits = 0;                       ///< 32 or 64; 0 if the file is not an ELF shared library
    int machine = 0;                    ///< EM_386 or EM_X86_64
    std::vector<DynamicSymbol> symbols; ///< global and weak symbols
    std::vector<std::string> needed;    ///< names of the libraries that this library loads
    bool isSymbolic = false;            ///< whether a program cannot replace functions of the library
};

/// Read the library at `path`. If the file is missing or no ELF file, the result has 0 bits and no symbols.
ElfFile readElf(const std::string& path);

/// Return the names of the symbols that the library at `path` exports.
std::set<std::string> exportsOf(const std::string& path);

} // namespace rules
