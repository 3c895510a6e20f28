#include "host/kvx/files/sound_list.h"
#include "host/kvx/text/failure.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using Paths = std::vector<std::string>;

void ignore(const kvx::Failure&) {}

struct SoundList : testing::Test {
    support::TemporaryFolder folder;

    void write(const std::string& name, const std::string& text = "x") const
    {
        fs::create_directories(fs::path(folder / name).parent_path());
        std::ofstream(folder / name, std::ios::binary) << text;
    }

    /// Return the expanded paths, without the path of the temporary folder.
    Paths expanded(const std::string& name, bool isRecursive = false) const
    {
        Paths paths = kvx::expandList(folder / name, isRecursive, ignore);
        for (std::string& path : paths)
            if (path.rfind(folder.path() + "/", 0) == 0) path.erase(0, folder.path().size() + 1);
        return paths;
    }

    std::string errorOf(const std::string& name, bool isRecursive = false) const
    {
        try {
            kvx::expandList(folder / name, isRecursive, ignore);
        } catch (const kvx::Failure& failure) {
            return failure.what();
        }
        return "";
    }
};

TEST_F(SoundList, OfAFolderIsSortedWithoutOtherFiles)
{
    for (const char* name :
         {"a/track 10.wav", "a/track 2.FLAC", "a/cover.jpg", "a/.hidden.wav", "a/noextension", "a/notes.txt",
          "a/list.m3u", "a/b/inner.ogg", "a/c/d/deep.mp3", "a/z.wav"})
        write(name);
    fs::create_directory(folder / "a/folder.wav");
    fs::create_directory_symlink(folder / "a", folder / "a/c/round");
    fs::create_symlink(folder / "a/z.wav", folder / "a/link.wav");
    EXPECT_EQ(expanded("a"), Paths({"a/link.wav", "a/track 2.FLAC", "a/track 10.wav", "a/z.wav"}));
    EXPECT_EQ(expanded("a", true), Paths({"a/b/inner.ogg", "a/c/d/deep.mp3", "a/link.wav", "a/track 2.FLAC",
                                          "a/track 10.wav", "a/z.wav"}));
}

TEST_F(SoundList, OfAFolderWithoutSoundFilesIsRefusedWithAdvice)
{
    write("a/b/c.txt");
    EXPECT_EQ(errorOf("a"), folder / "a has no sound files; name another folder, or also search its folders "
                                     "with -r");
    EXPECT_EQ(errorOf("a", true), folder / "a has no sound files; name another folder");
}

TEST_F(SoundList, LeavesOutAFolderThatCannotBeRead)
{
    for (const char* name : {"a/b/inner.wav", "a/closed/c.wav", "a/d/deep.wav"}) write(name);
    fs::permissions(folder.path(), fs::perms(0755));
    fs::permissions(folder / "a/closed", fs::perms::none);
    const bool isRoot = geteuid() == 0; // root reads any folder
    if (isRoot) ASSERT_EQ(seteuid(65534), 0);
    std::vector<std::string> problems;
    const Paths paths =
        kvx::expandList(folder / "a", true, [&](const kvx::Failure& f) { problems.push_back(f.what()); });
    if (isRoot) ASSERT_EQ(seteuid(0), 0);
    fs::permissions(folder / "a/closed", fs::perms::owner_all);
    EXPECT_EQ(paths, Paths({folder / "a/b/inner.wav", folder / "a/d/deep.wav"}));
    EXPECT_EQ(problems, std::vector<std::string>({folder / "a/closed cannot be read: Permission denied; "
                                                           "change its permissions or copy it"}));
}

TEST_F(SoundList, OfAFileIsThePathUnchanged)
{
    write("a.wav");
    EXPECT_EQ(expanded("a.wav"), Paths({"a.wav"}));
    EXPECT_EQ(expanded("missing.wav"), Paths({"missing.wav"}));
    EXPECT_EQ(kvx::expandList("-", false, ignore), Paths({"-"}));
}

TEST_F(SoundList, OfAPlaylistHasPathsRelativeToItsFolder)
{
    write("caf\xc3\xa9.wav");
    write("raw \xe9.wav");
    const std::string absolute = folder / "abs.wav";
    const struct {
        const char* name;
        std::string text;
        Paths paths;
        const char* why;
    } facts[] = {
        {"l.m3u", "a.wav\nsub/b.wav\n", {"a.wav", "sub/b.wav"}, "lines"},
        {"sub/l.m3u", "a.wav\n../b.wav\n", {"sub/a.wav", "sub/../b.wav"}, "relative to the list"},
        {"l.m3u", absolute, {"abs.wav"}, "an absolute path, and no newline at the end"},
        {"l.m3u8",
         "\xEF\xBB\xBF#EXTM3U\r\n#EXTINF:123,Artist - Title\r\na b.wav\r\n\r\n",
         {"a b.wav"},
         "a byte-order mark, comments and CRLF"},
        {"l.M3U", "  a.wav \t\n", {"a.wav"}, "blanks at both ends"},
        {"l.m3u", "caf\xe9.wav\n", {"caf\xc3\xa9.wav"}, "Latin-1"},
        {"l.m3u", "caf\xc3\xa9.wav\n", {"caf\xc3\xa9.wav"}, "UTF-8"},
        {"l.m3u8", "raw \xe9.wav\n", {"raw \xe9.wav"}, "the bytes are the name of a file"},
        {"l.m3u", "http://host/a.mp3\n", {"http://host/a.mp3"}, "a URL stays unchanged"},
        {"l.m3u", "file:///x/a%20b%2fc.wav\n", {"/x/a b/c.wav"}, "the URL of a file, with escapes"},
        {"l.m3u", "FILE://host/100%/%zz%4.wav\n", {"/100%/%zz%4.wav"}, "a host, and no escapes"},
        {"l.m3u", "-\n", {"./-"}, "a file, and not standard input"},
        {"l.m3u", "a://b\n", {"a://b"}, "a drive letter is no URL"},
        {"l.m3u", std::string("a.wav\0b.wav", 11), {"a.wav", "b.wav"}, "a zero byte ends an entry"},
        {"l.pls",
         "[playlist]\r\nNumberOfEntries=3\r\nFile10=c.wav\r\nFile2=b.wav\r\nTitle2=B\r\nLength2=-1\r\nfile1="
         "a.wav\r\n"
         "Filex=d.wav\r\nFile3=\r\nVersion=2\r\n",
         {"a.wav", "b.wav", "c.wav"},
         "the entries of a .pls in the order of their numbers"},
    };
    for (const auto& fact : facts) {
        write(fact.name, fact.text);
        Paths paths = expanded(fact.name);
        EXPECT_EQ(paths, fact.paths) << fact.why;
    }
}

TEST_F(SoundList, OfAPlaylistWithoutEntriesIsRefused)
{
    for (const auto& [name, text] :
         {std::pair("l.m3u", "#EXTM3U\n\n"), std::pair("l.pls", "a.wav\n"), std::pair("e.m3u", "")}) {
        write(name, text);
        EXPECT_EQ(errorOf(name), folder / name + " names no files; write one path per line into it");
    }
    EXPECT_EQ(errorOf("missing.m3u"), folder / "missing.m3u does not exist; check the name and the folder");
    write("large.m3u");
    fs::resize_file(folder / "large.m3u", (16 << 20) + 1);
    EXPECT_EQ(errorOf("large.m3u"),
              folder / "large.m3u is not a playlist; name a file of up to 16 MiB with one path per line");
}

TEST(NestedLists, AreRefused)
{
    const struct {
        const char *path, *message;
    } facts[] = {
        {"a.wav", ""},
        {"http.wav", ""},
        {"http://host/a.mp3", "http://host/a.mp3 is a URL; save it as a file, and name the file"},
        {"b/c.m3u", "b/c.m3u is a playlist in a playlist; name it in the command, or list its files"},
        {"C.PLS", "C.PLS is a playlist in a playlist; name it in the command, or list its files"},
    };
    for (const auto& fact : facts) {
        std::string message;
        try {
            kvx::refuseNestedLists(fact.path);
        } catch (const kvx::Failure& failure) {
            message = failure.what();
        }
        EXPECT_EQ(message, fact.message) << fact.path;
    }
}

// A headerless file, and formats whose content libsndfile does not recognise on this system, are left out.
TEST(SoundFileExtensions, ContainThoseOfLibsndfile)
{
    const std::set<std::string> leftOut = {"raw", "sd2"};
    int count = 0;
    ASSERT_EQ(sf_command(nullptr, SFC_GET_FORMAT_MAJOR_COUNT, &count, sizeof count), 0);
    ASSERT_GT(count, 0);
    const auto known = kvx::soundFileExtensions();
    for (int i = 0; i < count; ++i) {
        SF_FORMAT_INFO info = {};
        info.format = i;
        ASSERT_EQ(sf_command(nullptr, SFC_GET_FORMAT_MAJOR, &info, sizeof info), 0);
        const bool isKnown =
            std::find(known.begin(), known.end(), std::string(info.extension)) != known.end();
        EXPECT_NE(isKnown, leftOut.count(info.extension) == 1) << info.extension << ", " << info.name;
    }
}

} // namespace
