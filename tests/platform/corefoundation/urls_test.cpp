// Tests of file URLs.
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

/// Returns  the number of object kinds that have live objects.
std::uint32_t liveKinds() { return KVXPlatformGetLiveCounts(nullptr, 0); }

TEST(URLs, AreMadeFromPaths)
{
    const std::string here = fs::current_path().string();
    const struct {
        std::string given, expected;
        const char* why;
    } facts[] = {
        {"/a/b.wav", "/a/b.wav", "unchanged; the file need not exist"},
        {"/", "/", "the root"},
        {"/a/", "/a", "a slash at the end is removed"},
        {"//a///b", "/a/b", "repeated slashes are joined"},
        {"/a/./b/.", "/a/b", "single dots are removed"},
        {"/a/../b", "/a/../b", "double dots are kept: the parent of a link is another folder"},
        {"a.wav", here + "/a.wav", "a relative path"},
        {"/K\u00F6nig 100%.wav", "/K\u00F6nig 100%.wav", "nothing is escaped"},
        {"/K\xF6nig.wav", "/K\xF6nig.wav", "bytes that are not UTF-8"},
        {"", "none", "an empty path"},
        {std::string("/a\0b", 4), "none", "a NUL inside"},
        {std::string("/a\0", 3), "none", "a NUL at the end"},
    };
    for (const auto& fact : facts) EXPECT_EQ(pathOf(make(fact.given).get()), fact.expected) << fact.why;
    EXPECT_EQ(CFURLCreateFromFileSystemRepresentation(nullptr, nullptr, 3, false), nullptr);
    EXPECT_EQ(
        CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8*>("/a"), -1, false),
        nullptr);
    const Owned part(
        CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8*>("/abc"), 2, true));
    EXPECT_EQ(pathOf(part.get()), "/a") << "two bytes of the buffer";
    EXPECT_EQ(liveKinds(), 1u) << "`part`";
}

TEST(URLs, NeedABufferForTheWholePath)
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

TEST(URLs, AppendOneComponent)
{
    const struct {
        std::u16string component;
        std::string expected;
        const char* why;
    } facts[] = {
        {u"b.wav", "/a/b.wav", "ASCII"},
        {u"b c%20d#e?f", "/a/b c%20d#e?f", "nothing is escaped"},
        {u"K\u00F6nig", "/a/K\u00F6nig", "composed stays composed"},
        {u"Ko\u0308nig", "/a/Ko\u0308nig", "decomposed stays decomposed"},
        {u"\U0001F3B5", "/a/\U0001F3B5", "a surrogate pair"},
        {u"..", "/a/..", "double dots"},
        {u"", "none", "an empty component"},
        {u"b/c", "none", "two components"},
        {u"/", "none", "a slash"},
        {std::u16string(u"b\0c", 3), "none", "a NUL"},
        {std::u16string(1, 0xD800), "none", "an unpaired surrogate"},
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
    EXPECT_EQ(pathOf(base.get()), "/a") << "the base is unchanged";
    const text::Owned name = text::make(u"b");
    EXPECT_EQ(CFURLCreateCopyAppendingPathComponent(nullptr, nullptr, name.get(), false), nullptr);
    EXPECT_EQ(CFURLCreateCopyAppendingPathComponent(nullptr, base.get(), nullptr, false), nullptr);
    const Owned root = make("/");
    const Owned url(CFURLCreateCopyAppendingPathComponent(nullptr, root.get(), name.get(), false));
    EXPECT_EQ(pathOf(url.get()), "/b");
}

TEST(URLs, AreConvertedToFileReferencesAndBack)
{
    std::string pattern = (fs::temp_directory_path() / "kvx-urls-XXXXXX").string();
    const std::string folder = mkdtemp(pattern.data());
    std::ofstream(folder + "/K\u00F6nig.wav") << "sound";

    FSRef ref;
    const Owned decomposed = make(folder + "/Ko\u0308nig.wav");
    ASSERT_TRUE(CFURLGetFSRef(decomposed.get(), &ref)) << "found by its stored name";
    const Owned url(CFURLCreateFromFSRef(nullptr, &ref));
    EXPECT_EQ(pathOf(url.get()), folder + "/K\u00F6nig.wav");

    // The URL of a file that does not exist yet is made from the parent folder and the file name.
    FSRef parentRef;
    ASSERT_EQ(FSPathMakeRef(reinterpret_cast<const UInt8*>(folder.c_str()), &parentRef, nullptr), noErr);
    HFSUniStr255 name = {3, {'n', 'e', 'w'}};
    const Owned parent(CFURLCreateFromFSRef(nullptr, &parentRef));
    const text::Owned last(FSCreateStringFromHFSUniStr(nullptr, &name));
    const Owned made(CFURLCreateCopyAppendingPathComponent(nullptr, parent.get(), last.get(), false));
    EXPECT_EQ(pathOf(made.get()), folder + "/new");

    std::memset(&ref, 0x55, sizeof ref);
    EXPECT_FALSE(CFURLGetFSRef(made.get(), &ref)) << "the file does not exist";
    EXPECT_EQ(ref.hidden[0], 0x55) << "unchanged";
    EXPECT_FALSE(CFURLGetFSRef(nullptr, &ref));
    EXPECT_FALSE(CFURLGetFSRef(made.get(), nullptr));
    EXPECT_EQ(CFURLCreateFromFSRef(nullptr, nullptr), nullptr);
    EXPECT_EQ(CFURLCreateFromFSRef(nullptr, &ref), nullptr);
    fs::remove_all(folder);
}

TEST(URLs, HaveALiveCount)
{
    ASSERT_EQ(liveKinds(), 0u);
    const CFURLRef url = make("/a").release();
    EXPECT_EQ(CFGetRetainCount(url), 1);
    KVXLiveCount row = {};
    ASSERT_EQ(KVXPlatformGetLiveCounts(&row, 1), 1u);
    EXPECT_STREQ(row.kind, "CFURL");
    EXPECT_EQ(row.count, 1u);
    CFRetain(url);
    CFRelease(url);
    EXPECT_EQ(liveKinds(), 1u);
    CFRelease(url);
    EXPECT_EQ(liveKinds(), 0u);
}

} // namespace
