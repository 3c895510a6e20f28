// Atomic file replacement: other files stay, and no temporary file is left over.
#include "host/kvx/files/write_aside.h"
#include "host/kvx/text/failure.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <iterator>

namespace {

namespace fs = std::filesystem;

void write(const std::string& path, const std::string& text) { std::ofstream(path) << text; }

std::string textOf(const std::string& path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(WriteAside, ReplacesTheFileAtTheEnd)
{
    const support::TemporaryFolder folder;
    write(folder / "out.wav", "earlier");
    const std::string aside = kvx::asideOf(folder / "out.wav");
    EXPECT_EQ(folder.count(), 1u);
    write(aside, "new");
    EXPECT_EQ(textOf(folder / "out.wav"), "earlier");
    kvx::moveIntoPlace(aside, folder / "out.wav");
    EXPECT_EQ(textOf(folder / "out.wav"), "new");
    EXPECT_EQ(folder.count(), 1u);
}

TEST(WriteAside, KeepsAForeignFileWithTheTemporaryName)
{
    const support::TemporaryFolder folder;
    const std::string aside = kvx::asideOf(folder / "out.wav");
    write(aside, "foreign");
    EXPECT_THROW(kvx::asideOf(folder / "out.wav"), kvx::Failure);
    EXPECT_EQ(textOf(aside), "foreign");
    EXPECT_EQ(folder.count(), 1u);
}

TEST(WriteAside, RemovesTheTemporaryFileWhenTheRenameFails)
{
    const support::TemporaryFolder folder;
    const std::string aside = kvx::asideOf(folder / "out.wav");
    write(aside, "new");
    fs::create_directory(folder / "out.wav");
    write(folder / "out.wav/inside", "foreign");
    EXPECT_THROW(kvx::moveIntoPlace(aside, folder / "out.wav"), kvx::Failure);
    EXPECT_FALSE(fs::exists(aside));
    EXPECT_EQ(textOf(folder / "out.wav/inside"), "foreign");
}

TEST(WriteAside, RemovesTheTemporaryFileWhenTheDiskIsFull)
{
    const support::TemporaryFolder folder;
    const std::string aside = kvx::asideOf(folder / "out.wav");
    write(aside, "half");
    EXPECT_THROW(kvx::giveUpWriting(aside, folder / "out.wav", ENOSPC), kvx::Failure);
    EXPECT_EQ(folder.count(), 0u);
}

} // namespace
