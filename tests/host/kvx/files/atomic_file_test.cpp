// Atomic file replacement keeps all other files and leaves no temporary file.
#include "host/kvx/files/atomic_file.h"
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

TEST(AtomicFile, ReplacesTheFileOnlyAtTheEnd)
{
    const support::TemporaryFolder folder;
    write(folder / "out.wav", "former");
    const std::string temporary = kvx::temporaryPathFor(folder / "out.wav");
    EXPECT_EQ(folder.count(), 1u);
    write(temporary, "new");
    EXPECT_EQ(textOf(folder / "out.wav"), "former");
    kvx::moveIntoPlace(temporary, folder / "out.wav");
    EXPECT_EQ(textOf(folder / "out.wav"), "new");
    EXPECT_EQ(folder.count(), 1u);
}

TEST(AtomicFile, KeepsAnotherFileAtTheTemporaryPath)
{
    const support::TemporaryFolder folder;
    const std::string temporary = kvx::temporaryPathFor(folder / "out.wav");
    write(temporary, "other");
    EXPECT_THROW(kvx::temporaryPathFor(folder / "out.wav"), kvx::Failure);
    EXPECT_EQ(textOf(temporary), "other");
    EXPECT_EQ(folder.count(), 1u);
}

TEST(AtomicFile, RemovesTheTemporaryFileWhenTheRenameFails)
{
    const support::TemporaryFolder folder;
    const std::string temporary = kvx::temporaryPathFor(folder / "out.wav");
    write(temporary, "new");
    fs::create_directory(folder / "out.wav");
    write(folder / "out.wav/inside", "other");
    EXPECT_THROW(kvx::moveIntoPlace(temporary, folder / "out.wav"), kvx::Failure);
    EXPECT_FALSE(fs::exists(temporary));
    EXPECT_EQ(textOf(folder / "out.wav/inside"), "other");
}

TEST(AtomicFile, RemovesTheTemporaryFileWhenTheDiskIsFull)
{
    const support::TemporaryFolder folder;
    const std::string temporary = kvx::temporaryPathFor(folder / "out.wav");
    write(temporary, "half");
    EXPECT_THROW(kvx::giveUpWriting(temporary, folder / "out.wav", ENOSPC), kvx::Failure);
    EXPECT_EQ(folder.count(), 0u);
}

} // namespace
