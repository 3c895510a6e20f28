// The dynamic symbols and flags of a shared library, read from its file.
#pragma once

#include <string>
#include <vector>

namespace rules {

struct DynamicSymbol {
    std::string name;
    bool isDefined = false;
    bool isWeak = false;
};

struct ElfFile {
    int bits = 0;                       ///< 32 or 64; 0 when the file is no ELF shared library
    int machine = 0;                    ///< EM_386, EM_X86_64
    std::vector<DynamicSymbol> symbols; ///< global and weak ones
    std::vector<std::string> needed;
    bool isSymbolic = false; ///< binds its own names first: nobody can stand in front of them
};

/// Read the library at `path`; an unreadable or foreign file gives no bits and no symbols.
ElfFile readElf(const std::string& path);

} // namespace rules
