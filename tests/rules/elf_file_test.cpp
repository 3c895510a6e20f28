// Tests the ELF reader with a library of known content: the C library of this process.
#include "tests/rules/elf_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <dlfcn.h>

namespace {

TEST(ElfFile, ReadsTheCLibraryOfThisProcess)
{
    Dl_info info{};
    ASSERT_NE(dladdr(reinterpret_cast<void*>(&std::getenv), &info), 0);
    const rules::ElfFile file = rules::readElf(info.dli_fname);
    EXPECT_EQ(file.bits, int(sizeof(void*) * 8));
    EXPECT_FALSE(file.isSymbolic);
    const auto symbol = std::find_if(file.symbols.begin(), file.symbols.end(),
                                     [](const auto& each) { return each.name == "getenv"; });
    ASSERT_NE(symbol, file.symbols.end());
    EXPECT_TRUE(symbol->isDefined);
}

TEST(ElfFile, IsEmptyForOtherFiles)
{
    EXPECT_EQ(rules::readElf(KVX_SOURCE_DIR "/LICENSE").bits, 0);
    EXPECT_EQ(rules::readElf(KVX_SOURCE_DIR "/no such file").bits, 0);
}

} // namespace
