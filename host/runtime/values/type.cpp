#include "host/runtime/values/type.h"

#include <algorithm>
#include <iterator>

namespace host {

namespace {

struct TypeRow {
    Base base;
    const char* name;
    std::size_t bytes;
};

// A base may have several names. Messages and listings use the name in the first row of the base.
// clang-format off
constexpr TypeRow typeRows[] = {
    {Base::none,        "",            0},
    {Base::boolean,     "Boolean",     1},
    {Base::int8,        "Int8",        1},
    {Base::int16,       "Int16",       2},
    {Base::int32,       "Int32",       4},
    {Base::int64,       "Int64",       8},
    {Base::uint8,       "UInt8",       1},
    {Base::uint8,       "Byte",        1},
    {Base::uint16,      "UInt16",      2},
    {Base::uint32,      "UInt32",      4},
    {Base::uint64,      "UInt64",      8},
    {Base::integer,     "Integer",     sizeof(HostInteger)},
    {Base::uinteger,    "UInteger",    sizeof(HostInteger)},
    {Base::single,      "Single",      4},
    {Base::float64,     "Double",      8},
    {Base::pointer,     "Ptr",         sizeof(void*)},
    {Base::string,      "String",      sizeof(void*)},
    {Base::variant,     "Variant",     sizeof(void*)},
    {Base::memoryBlock, "MemoryBlock", sizeof(void*)},
    {Base::folderItem,  "FolderItem",  sizeof(void*)},
    {Base::object,      "Object",      sizeof(void*)},
};
// clang-format on

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

const TypeRow& rowOf(Base base)
{
    return *std::find_if(std::begin(typeRows), std::end(typeRows),
                         [&](const TypeRow& row) { return row.base == base; });
}

} // namespace

bool sameName(std::string_view left, std::string_view right)
{
    return left.size() == right.size() && std::equal(left.begin(), left.end(), right.begin(),
                                                     [](char a, char b) { return lower(a) == lower(b); });
}

bool operator==(const Type& left, const Type& right)
{
    return left.base == right.base && left.isArray == right.isArray &&
           sameName(left.className, right.className);
}

Base fixedWidth(Base base)
{
    if (base == Base::integer) return sizeof(HostInteger) == 4 ? Base::int32 : Base::int64;
    if (base == Base::uinteger) return sizeof(HostInteger) == 4 ? Base::uint32 : Base::uint64;
    return base;
}

bool isAnyObject(const Type& type)
{
    return type.base == Base::object && !type.isArray && sameName(type.className, "Object");
}

Type typeNamed(std::string_view name)
{
    Type type;
    while (!name.empty() && name.back() == ' ') name.remove_suffix(1);
    if (name.size() > 2 && name.back() == ')') {
        const std::size_t open = name.find('(');
        if (open != name.npos && name.find_first_not_of(' ', open + 1) == name.size() - 1) {
            type.isArray = true;
            name = name.substr(0, open);
            while (!name.empty() && name.back() == ' ') name.remove_suffix(1);
        }
    }
    if (name.empty()) return {};
    for (const auto& row : typeRows) {
        if (row.base == Base::none || !sameName(row.name, name)) continue;
        type.base = row.base;
        if (type.base == Base::object) type.className = row.name;
        return type;
    }
    type.base = Base::object;
    type.className = std::string(name);
    return type;
}

std::string typeName(const Type& type)
{
    std::string name = type.base == Base::object ? type.className : rowOf(type.base).name;
    return type.isArray ? name + "()" : name;
}

std::string withArticle(std::string_view noun)
{
    const bool isVowel = std::string_view("AEIOaeio").find(noun.front()) != std::string_view::npos;
    return (isVowel ? "an " : "a ") + std::string(noun);
}

std::size_t sizeInMemory(const Type& type) { return type.isArray ? sizeof(void*) : rowOf(type.base).bytes; }

} // namespace host
