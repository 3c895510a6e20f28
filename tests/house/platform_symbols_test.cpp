// The platform exports what its public headers declare, and nothing else.
#include "tests/house/elf_file.h"
#include "tests/house/tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <set>

namespace {

std::string withoutComments(const std::string& text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size();) {
        if (text.compare(i, 2, "/*") == 0) {
            const auto end = text.find("*/", i + 2);
            i = end == text.npos ? text.size() : end + 2;
        } else if (text.compare(i, 2, "//") == 0) {
            i = std::min(text.find('\n', i), text.size());
        } else {
            result += text[i++];
        }
    }
    return result;
}

std::set<std::string> wordsOfThePublicHeaders()
{
    static const std::regex word("[A-Za-z_][A-Za-z0-9_]*");
    std::set<std::string> words;
    for (const std::string& file : house::files()) {
        if (file.rfind("platform/include/", 0) != 0) continue;
        const std::string text = withoutComments(house::read(file));
        for (std::sregex_iterator each(text.begin(), text.end(), word), end; each != end; ++each)
            words.insert(each->str());
    }
    return words;
}

TEST(PlatformSymbols, AreDeclaredInThePublicHeaders)
{
    const std::set<std::string> declared = wordsOfThePublicHeaders();
    int exported = 0;
    for (const auto& symbol : house::readElf(KVX_BINARY_DIR "/libkvxplatform.so").symbols) {
        if (!symbol.isDefined) continue;
        ++exported;
        EXPECT_TRUE(declared.count(symbol.name))
            << symbol.name << " is exported, but no public header knows it";
    }
    EXPECT_GT(exported, 20);
}

TEST(PlatformSymbols, EveryControlFunctionIsExported)
{
    const house::ElfFile file = house::readElf(KVX_BINARY_DIR "/libkvxplatform.so");
    const std::string text = withoutComments(house::read("platform/include/KVXPlatform/KVXPlatform.h"));
    static const std::regex function("\\b(KVXPlatform[A-Za-z]+)\\(");
    int declared = 0;
    for (std::sregex_iterator each(text.begin(), text.end(), function), end; each != end; ++each) {
        ++declared;
        const std::string name = (*each)[1];
        EXPECT_TRUE(std::any_of(file.symbols.begin(), file.symbols.end(), [&](const auto& symbol) {
            return symbol.isDefined && symbol.name == name;
        })) << name;
    }
    EXPECT_GT(declared, 15);
}

std::set<std::string> exportsOf(const std::string& library)
{
    std::set<std::string> names;
    for (const auto& symbol : house::readElf(KVX_BINARY_DIR + library).symbols)
        if (symbol.isDefined) names.insert(symbol.name);
    return names;
}

// Programs find out by them how old a system is: the older platform has all the others.
TEST(PlatformSymbols, TheOlderPlatformLacksTwo)
{
    std::set<std::string> names = exportsOf("/libkvxplatform.so");
    for (const char* name : {"CGPathCreateCopyByTransformingPath", "dispatch_async"})
        EXPECT_EQ(names.erase(name), 1u) << name;
    EXPECT_EQ(exportsOf("/older/libkvxplatform.so"), names);
}

TEST(PlatformSymbols, CommentsDeclareNothing)
{
    EXPECT_EQ(withoutComments("a /* b */ c // d\ne"), "a  c \ne");
    EXPECT_EQ(withoutComments("/* unfinished"), "");
}

} // namespace
