#include "tests/rules/elf_file.h"

#include <cstring>
#include <elf.h>
#include <fstream>
#include <iterator>

namespace rules {
namespace {

struct Elf32 {
    using Header = Elf32_Ehdr;
    using Section = Elf32_Shdr;
    using Symbol = Elf32_Sym;
    using Dynamic = Elf32_Dyn;
    static int bits() { return 32; }
};

struct Elf64 {
    using Header = Elf64_Ehdr;
    using Section = Elf64_Shdr;
    using Symbol = Elf64_Sym;
    using Dynamic = Elf64_Dyn;
    static int bits() { return 64; }
};

template <class T>
T at(const std::string& bytes, std::size_t offset)
{
    T value{};
    if (offset + sizeof(T) <= bytes.size()) std::memcpy(&value, bytes.data() + offset, sizeof(T));
    return value;
}

std::string textAt(const std::string& bytes, std::size_t offset)
{
    return offset < bytes.size() ? std::string(bytes.c_str() + offset) : std::string();
}

template <class Elf>
void readSymbols(const std::string& bytes, const typename Elf::Section& section,
                 const typename Elf::Section& names, ElfFile& file)
{
    for (std::size_t i = 1; i < section.sh_size / sizeof(typename Elf::Symbol); ++i) {
        const auto symbol =
            at<typename Elf::Symbol>(bytes, section.sh_offset + i * sizeof(typename Elf::Symbol));
        const int binding = symbol.st_info >> 4;
        if (binding != STB_GLOBAL && binding != STB_WEAK) continue;
        file.symbols.push_back({textAt(bytes, names.sh_offset + symbol.st_name), symbol.st_shndx != SHN_UNDEF,
                                binding == STB_WEAK});
    }
}

template <class Elf>
void readDynamic(const std::string& bytes, const typename Elf::Section& section,
                 const typename Elf::Section& names, ElfFile& file)
{
    for (std::size_t i = 0; i < section.sh_size / sizeof(typename Elf::Dynamic); ++i) {
        const auto entry =
            at<typename Elf::Dynamic>(bytes, section.sh_offset + i * sizeof(typename Elf::Dynamic));
        if (entry.d_tag == DT_NEEDED)
            file.needed.push_back(textAt(bytes, names.sh_offset + entry.d_un.d_val));
        if (entry.d_tag == DT_SYMBOLIC) file.isSymbolic = true;
        if (entry.d_tag == DT_FLAGS && (entry.d_un.d_val & DF_SYMBOLIC)) file.isSymbolic = true;
    }
}

template <class Elf>
ElfFile readAs(const std::string& bytes)
{
    ElfFile file;
    const auto header = at<typename Elf::Header>(bytes, 0);
    file.bits = Elf::bits();
    file.machine = header.e_machine;
    const auto sectionAt = [&](std::size_t index) {
        return at<typename Elf::Section>(bytes, header.e_shoff + index * header.e_shentsize);
    };
    for (std::size_t i = 0; i < header.e_shnum; ++i) {
        const auto section = sectionAt(i);
        if (section.sh_type == SHT_DYNSYM) readSymbols<Elf>(bytes, section, sectionAt(section.sh_link), file);
        if (section.sh_type == SHT_DYNAMIC)
            readDynamic<Elf>(bytes, section, sectionAt(section.sh_link), file);
    }
    return file;
}

} // namespace

ElfFile readElf(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    if (bytes.size() < EI_NIDENT || bytes.compare(0, SELFMAG, ELFMAG) != 0) return {};
    return bytes[EI_CLASS] == ELFCLASS64 ? readAs<Elf64>(bytes) : readAs<Elf32>(bytes);
}

std::set<std::string> exportsOf(const std::string& path)
{
    std::set<std::string> names;
    for (const DynamicSymbol& symbol : readElf(path).symbols)
        if (symbol.isDefined) names.insert(symbol.name);
    return names;
}

} // namespace rules
