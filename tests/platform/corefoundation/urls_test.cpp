// URLs: where a file is.
#include "tests/platform/corefoundation/text.h"

#include <Carbon/Files.h>
#include <KVXPlatform/KVXPlatform.h>

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>

namespace {

namespace fs = std::filesystem;

struct ReleaseURL {
    using pointer = CFURLRef;
    void operator()(CFURLRef url) const { CFRelease(url); }
};
using Owned = std::unique_ptr<const __CFURL, ReleaseURL>;

Owned make(const std::string& path)
{
    return Owned(CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8*>(path.data()),
                                                         static_cast<CFIndex>(path.size()), false));
}

std::string pathOf(CFURLRef url)
{
    UInt8 path[4096];
    return url && CFURLGetFileSystemRepresentation(url, true, path, sizeof path)
               ? reinterpret_cast<char*>(path)
               : "none";
}

/// Objects of every kind that are still to be released.
std::uint32_t kindsAlive() { return KVXPlatformGetLiveCounts(nullptr, 0); }

TEST(URLs, AreMadeFromPaths)
{
    const std::string here = fs::current_path().string();
    const struct {
        std::string given, expected;
        const char* why;
    } facts[] = {
        {"/a/b.wav", "/a/b.wav", "as it is; it need not exist"},
        {"/", "/", "the root"},
        {"/a/", "/a", "no slash at the end"},
        {"//a///b", "/a/b", "one slash is enough"},
        {"/a/./b/.", "/a/b", "no steps on the spot"},
        {"/a/../b", "/a/../b", "a step up may lead elsewhere: it stays"},
        {"a.wav", here + "/a.wav", "from the current folder"},
        {"/K\u00F6nig 100%.wav", "/K\u00F6nig 100%.wav", "nothing is escaped"},
        {"/K\xF6nig.wav", "/K\xF6nig.wav", "bytes that are not text are a path, too"},
        {"", "none", "nothing"},
        {std::string("/a\0b", 4), "none", "a NUL within"},
        {std::string("/a\0", 3), "none", "a NUL behind"},
    };
    for (const auto& fact : facts) EXPECT_EQ(pathOf(make(fact.given).get()), fact.expected) << fact.why;
    EXPECT_EQ(CFURLCreateFromFileSystemRepresentation(nullptr, nullptr, 3, false), nullptr);
    EXPECT_EQ(
        CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8*>("/a"), -1, false),
        nullptr);
    const Owned part(
        CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8*>("/abc"), 2, true));
    EXPECT_EQ(pathOf(part.get()), "/a") << "so many bytes and no more";
    EXPECT_EQ(kindsAlive(), 1u) << "the last one";
}

TEST(URLs, WriteWhatFits)
{
    const Owned url = make("/ab");
    UInt8 path[8] = "xxxxxxx";
    for (const CFIndex size : {-1, 0, 3})
        EXPECT_FALSE(CFURLGetFileSystemRepresentation(url.get(), true, path, size));
    EXPECT_STREQ(reinterpret_cast<char*>(path), "xxxxxxx");
    EXPECT_TRUE(CFURLGetFileSystemRepresentation(url.get(), true, path, 4));
    EXPECT_STREQ(reinterpret_cast<char*>(path), "/ab");
    EXPECT_TRUE(CFURLGetFileSystemRepresentation(url.get(), false, path, 8));
    EXPECT_FALSE(CFURLGetFileSystemRepresentation(url.get(), true, nullptr, 8));
    EXPECT_FALSE(CFURLGetFileSystemRepresentation(nullptr, true, path, 8));
}

TEST(URLs, GetOneMoreComponent)
{
    const struct {
        std::u16string component;
        std::string expected;
        const char* why;
    } facts[] = {
        {u"b.wav", "/a/b.wav", "plain"},
        {u"b c%20d#e?f", "/a/b c%20d#e?f", "nothing is escaped"},
        {u"K\u00F6nig", "/a/K\u00F6nig", "composed stays composed"},
        {u"Ko\u0308nig", "/a/Ko\u0308nig", "decomposed stays decomposed"},
        {u"\U0001F3B5", "/a/\U0001F3B5", "two units"},
        {u"..", "/a/..", "a step up"},
        {u"", "none", "nothing"},
        {u"b/c", "none", "two components"},
        {u"/", "none", "a slash"},
        {std::u16string(u"b\0c", 3), "none", "a NUL"},
        {std::u16string(1, 0xD800), "none", "half a character"},
    };
    const Owned base = make("/a");
    for (const auto& fact : facts) {
        const text::Owned name = text::make(fact.component);
        for (const Boolean isDirectory : {0, 1}) {
            const CFURLRef url =
                CFURLCreateCopyAppendingPathComponent(nullptr, base.get(), name.get(), isDirectory);
            EXPECT_EQ(pathOf(url), fact.expected) << fact.why;
            if (url) CFRelease(url);
        }
    }
    EXPECT_EQ(pathOf(base.get()), "/a") << "the first one is as it was";
    const text::Owned name = text::make(u"b");
    EXPECT_EQ(CFURLCreateCopyAppendingPathComponent(nullptr, nullptr, name.get(), false), nullptr);
    EXPECT_EQ(CFURLCreateCopyAppendingPathComponent(nullptr, base.get(), nullptr, false), nullptr);
    const Owned root = make("/");
    const Owned url(CFURLCreateCopyAppendingPathComponent(nullptr, root.get(), name.get(), false));
    EXPECT_EQ(pathOf(url.get()), "/b");
}

TEST(URLs, AndReferencesMeanTheSameFile)
{
    std::string pattern = (fs::temp_directory_path() / "kvx-urls-XXXXXX").string();
    const std::string folder = mkdtemp(pattern.data());
    std::ofstream(folder + "/K\u00F6nig.wav") << "sound";

    FSRef ref;
    const Owned decomposed = make(folder + "/Ko\u0308nig.wav");
    ASSERT_TRUE(CFURLGetFSRef(decomposed.get(), &ref)) << "found under its own name";
    const Owned url(CFURLCreateFromFSRef(nullptr, &ref));
    EXPECT_EQ(pathOf(url.get()), folder + "/K\u00F6nig.wav");

    // The way of a file that is not there yet: its folder, and its name.
    FSRef above;
    ASSERT_EQ(FSPathMakeRef(reinterpret_cast<const UInt8*>(folder.c_str()), &above, nullptr), noErr);
    HFSUniStr255 name = {3, {'n', 'e', 'w'}};
    const Owned parent(CFURLCreateFromFSRef(nullptr, &above));
    const text::Owned last(FSCreateStringFromHFSUniStr(nullptr, &name));
    const Owned made(CFURLCreateCopyAppendingPathComponent(nullptr, parent.get(), last.get(), false));
    EXPECT_EQ(pathOf(made.get()), folder + "/new");

    std::memset(&ref, 0x55, sizeof ref);
    EXPECT_FALSE(CFURLGetFSRef(made.get(), &ref)) << "it is not there";
    EXPECT_EQ(ref.hidden[0], 0x55) << "nothing is written";
    EXPECT_FALSE(CFURLGetFSRef(nullptr, &ref));
    EXPECT_FALSE(CFURLGetFSRef(made.get(), nullptr));
    EXPECT_EQ(CFURLCreateFromFSRef(nullptr, nullptr), nullptr);
    EXPECT_EQ(CFURLCreateFromFSRef(nullptr, &ref), nullptr);
    fs::remove_all(folder);
}

TEST(URLs, AreCounted)
{
    ASSERT_EQ(kindsAlive(), 0u);
    const CFURLRef url = make("/a").release();
    EXPECT_EQ(CFGetRetainCount(url), 1);
    KVXLiveCount row = {};
    ASSERT_EQ(KVXPlatformGetLiveCounts(&row, 1), 1u);
    EXPECT_STREQ(row.kind, "CFURL");
    EXPECT_EQ(row.count, 1u);
    CFRetain(url);
    CFRelease(url);
    EXPECT_EQ(kindsAlive(), 1u);
    CFRelease(url);
    EXPECT_EQ(kindsAlive(), 0u);
}

} // namespace
