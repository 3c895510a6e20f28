// Atomic file replacement keeps all other files and leaves no temporary file.
#include "host/kvx/files/atomic_file.h"
#include "host/kvx/text/failure.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <iterator>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

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

void replace(const std::string& path, const std::string& text)
{
    const std::string temporary = kvx::temporaryPathFor(path);
    write(temporary, text);
    kvx::moveIntoPlace(temporary, path);
}

TEST(AtomicFile, ReplacesTheFileThatALinkNames)
{
    const support::TemporaryFolder folder;
    fs::create_directory(folder / "music");
    write(folder / "music/real.wav", "former");
    fs::create_symlink("music/real.wav", folder / "relative.wav");
    fs::create_symlink(folder / "relative.wav", folder / "absolute.wav");
    fs::create_symlink("music/missing.wav", folder / "dangling.wav");
    const struct {
        const char *link, *target;
    } facts[] = {{"relative.wav", "music/real.wav"},
                 {"absolute.wav", "music/real.wav"},
                 {"dangling.wav", "music/missing.wav"}};
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.link);
        replace(folder / fact.link, fact.link);
        EXPECT_TRUE(fs::is_symlink(folder / fact.link));
        EXPECT_EQ(textOf(folder / fact.target), fact.link);
    }
    EXPECT_EQ(fs::path(kvx::temporaryPathFor(folder / "relative.wav")).parent_path(), folder / "music");
    fs::create_symlink("loop.wav", folder / "loop.wav");
    EXPECT_THROW(replace(folder / "loop.wav", "loop"), kvx::Failure);
}

TEST(AtomicFile, KeepsThePermissionsOfTheFormerFile)
{
    const support::TemporaryFolder folder;
    const mode_t former = umask(027);
    replace(folder / "new.wav", "new");
    EXPECT_EQ(fs::status(folder / "new.wav").permissions(), fs::perms{0640});
    for (const auto mode : {fs::perms{0600}, fs::perms{0666}, fs::perms{0444}, fs::perms{0755}}) {
        fs::permissions(folder / "new.wav", mode);
        replace(folder / "new.wav", "newer");
        EXPECT_EQ(fs::status(folder / "new.wav").permissions(), mode);
    }
    umask(former);
}

TEST(AtomicFile, RemovesWhatEndedProcessesLeft)
{
    const support::TemporaryFolder folder;
    const pid_t ended = fork();
    if (ended == 0) _exit(0);
    waitpid(ended, nullptr, 0);
    const struct {
        std::string name;
        bool isKept;
        const char* why;
    } facts[] = {
        {"out.wav." + std::to_string(ended) + ".part", false, "its process has ended"},
        {"out.wav." + std::to_string(getpid()) + ".part", false, "a former process had our number"},
        {"out.wav." + std::to_string(getppid()) + ".part", true, "its process runs"},
        {"other.wav." + std::to_string(ended) + ".part", true, "the leftover of another file"},
        {"out.wav.." + std::to_string(ended) + ".part", true, "no process number"},
        {"out.wav.x.part", true, "no process number"},
        {"out.wav.0.part", true, "no process has this number"},
        {"out.wav.-1.part", true, "no process has this number"},
        {"out.wav..part", true, "no process number"},
        {"out.wav.part", true, "no process number"},
        {"out.wav." + std::to_string(ended), true, "not a temporary file"},
    };
    for (const auto& fact : facts) write(folder / fact.name, "half");
    kvx::temporaryPathFor(folder / "out.wav");
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.name + ": " + fact.why);
        EXPECT_EQ(fs::exists(folder / fact.name), fact.isKept);
    }
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
