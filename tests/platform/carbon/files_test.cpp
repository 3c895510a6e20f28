// Tests of file references, and of path lookup by the Unicode normal form of a name.
#include <Carbon/Carbon.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class Folder {
public:
    Folder()
    {
        std::string pattern = (fs::temp_directory_path() / "kvx-files-XXXXXX").string();
        path_ = mkdtemp(pattern.data()) ? pattern : "/missing";
    }
    ~Folder()
    {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    std::string operator/(const std::string& name) const { return path_ + '/' + name; }

private:
    std::string path_;
};

void makeFile(const std::string& path) { std::ofstream(path) << "sound"; }

const UInt8* bytes(const std::string& path) { return reinterpret_cast<const UInt8*>(path.c_str()); }

std::string pathOf(const FSRef& ref)
{
    UInt8 path[4096];
    const OSStatus status = FSRefMakePath(&ref, path, sizeof path);
    return status == noErr ? reinterpret_cast<char*>(path) : "status " + std::to_string(status);
}

/// Make a file reference for a path.
/// Returns  the path of the reference, or a text with the error status.
std::string found(const std::string& path)
{
    FSRef ref;
    const OSStatus status = FSPathMakeRef(bytes(path), &ref, nullptr);
    return status == noErr ? pathOf(ref) : "status " + std::to_string(status);
}

TEST(FileReferences, NameAPath)
{
    const Folder folder;
    makeFile(folder / "a.wav");
    FSRef ref, again, other;
    Boolean isFolder = 2;
    ASSERT_EQ(FSPathMakeRef(bytes(folder / "a.wav"), &ref, &isFolder), noErr);
    EXPECT_EQ(isFolder, 0);
    EXPECT_EQ(pathOf(ref), folder / "a.wav");
    ASSERT_EQ(FSPathMakeRef(bytes(folder / ""), &other, &isFolder), noErr);
    EXPECT_EQ(isFolder, 1);
    ASSERT_EQ(FSPathMakeRef(bytes(folder / "a.wav"), &again, nullptr), noErr);
    EXPECT_EQ(std::memcmp(&ref, &again, sizeof ref), 0) << "one path, one reference";
    EXPECT_NE(std::memcmp(&ref, &other, sizeof ref), 0);

    fs::remove(folder / "a.wav");
    EXPECT_EQ(pathOf(ref), folder / "a.wav") << "valid after the item is removed";
}

TEST(FileReferences, HaveAbsolutePaths)
{
    const Folder folder;
    makeFile(folder / "a.wav");
    fs::create_directory(folder / "sub");
    fs::create_symlink("a.wav", folder / "link");
    const fs::path before = fs::current_path();
    fs::current_path(folder / "sub");
    // The path is read back, because the folder for temporary files may be a symbolic link.
    const std::string here = fs::current_path().string();
    const struct {
        std::string given, expected;
    } facts[] = {
        {folder / "/a.wav", folder / "a.wav"},
        {folder / "./a.wav", folder / "a.wav"},
        {folder / "sub/", folder / "sub"},
        {folder / "sub//.//", folder / "sub"},
        {folder / "link", folder / "link"},
        {"../a.wav", here + "/../a.wav"},
        {".", here},
        {"/", "/"},
        {"///", "/"},
        {"/.", "/"},
    };
    for (const auto& fact : facts) EXPECT_EQ(found(fact.given), fact.expected) << fact.given;
    fs::current_path(before);
}

TEST(FileReferences, AreNotMadeForMissingItems)
{
    const Folder folder;
    makeFile(folder / "a.wav");
    fs::create_symlink("missing", folder / "dangling");
    const struct {
        std::string path;
        OSStatus status;
        const char* why;
    } facts[] = {
        {folder / "b.wav", fnfErr, "no such file"},
        {folder / "dangling", fnfErr, "a link to nothing"},
        {folder / "no/b.wav", dirNFErr, "no such folder"},
        {folder / "a.wav/b.wav", dirNFErr, "a file in place of a folder"},
        {folder / std::string(256, 'x'), errFSNameTooLong, "a name that is too long"},
        {"", paramErr, "an empty path"},
    };
    for (const auto& fact : facts) {
        FSRef ref;
        std::memset(&ref, 0x55, sizeof ref);
        Boolean isFolder = 2;
        EXPECT_EQ(FSPathMakeRef(bytes(fact.path), &ref, &isFolder), fact.status) << fact.why;
        EXPECT_EQ(ref.hidden[0], 0x55) << "written to: " << fact.why;
        EXPECT_EQ(isFolder, 2) << fact.why;
    }
    FSRef ref;
    EXPECT_EQ(FSPathMakeRef(nullptr, &ref, nullptr), paramErr);
    EXPECT_EQ(FSPathMakeRef(bytes("/"), nullptr, nullptr), paramErr);
}

TEST(FileReferences, OfOtherBytesAreRefused)
{
    const Folder folder;
    makeFile(folder / "a.wav");
    FSRef good;
    ASSERT_EQ(FSPathMakeRef(bytes(folder / "a.wav"), &good, nullptr), noErr);
    UInt8 path[4096];
    for (const int filler : {0, 1, 0x55, 0xFF}) {
        FSRef ref;
        std::memset(&ref, filler, sizeof ref);
        EXPECT_EQ(FSRefMakePath(&ref, path, sizeof path), errFSBadFSRef) << filler;
        EXPECT_EQ(CFURLCreateFromFSRef(nullptr, &ref), nullptr) << filler;
    }
    for (std::size_t i = 0; i < sizeof good; ++i) { // a changed bit in any byte makes the reference invalid
        FSRef ref = good;
        ref.hidden[i] ^= 0x40;
        EXPECT_EQ(FSRefMakePath(&ref, path, sizeof path), errFSBadFSRef) << i;
    }
    EXPECT_EQ(FSRefMakePath(nullptr, path, sizeof path), paramErr);
    EXPECT_EQ(FSRefMakePath(&good, nullptr, sizeof path), paramErr);
}

TEST(FileReferences, NeedABufferForTheWholePath)
{
    FSRef ref;
    ASSERT_EQ(FSPathMakeRef(bytes("/tmp"), &ref, nullptr), noErr);
    UInt8 path[8] = "xxxxxxx";
    EXPECT_EQ(FSRefMakePath(&ref, path, 4), errFSNameTooLong);
    EXPECT_EQ(FSRefMakePath(&ref, path, 0), errFSNameTooLong);
    EXPECT_STREQ(reinterpret_cast<char*>(path), "xxxxxxx");
    EXPECT_EQ(FSRefMakePath(&ref, path, 5), noErr) << "with the NUL";
    EXPECT_STREQ(reinterpret_cast<char*>(path), "/tmp");
}

TEST(FileReferences, AreTheSameOnAllThreads)
{
    const Folder folder;
    for (int i = 0; i < 50; ++i) makeFile(folder / std::to_string(i));
    std::vector<std::thread> threads;
    std::vector<std::vector<FSRef>> refs(4, std::vector<FSRef>(50));
    for (auto& own : refs)
        threads.emplace_back([&] {
            for (std::size_t i = 0; i < 50; ++i)
                FSPathMakeRef(bytes(folder / std::to_string(i)), &own[i], nullptr);
        });
    for (std::thread& thread : threads) thread.join();
    std::set<std::string> paths;
    for (std::size_t i = 0; i < 50; ++i)
        for (const auto& own : refs) {
            EXPECT_EQ(std::memcmp(&own[i], &refs[0][i], sizeof(FSRef)), 0) << i;
            paths.insert(pathOf(own[i]));
        }
    EXPECT_EQ(paths.size(), 50u);
}

// ---- composed and decomposed file names ----

const std::string composed = "K\u00F6nig \u00C5ngstr\u00F6m";
const std::string decomposed = "Ko\u0308nig A\u030Angstro\u0308m";

TEST(FileNames, AreFoundComposedOrDecomposed)
{
    const struct {
        std::string onDisk, requested;
        const char* why;
    } facts[] = {
        {composed, composed, "the stored form"},
        {decomposed, decomposed, "the stored form"},
        {composed, decomposed, "composed on the disk"},
        {decomposed, composed, "decomposed on the disk"},
        {composed + "/" + decomposed, decomposed + "/" + composed, "each component in another form"},
        {decomposed + "/x/" + composed, composed + "/x/" + composed, "a folder"},
        {composed + "/plain.wav", decomposed + "/plain.wav", "with an ASCII component"},
        {"\uD55C\uAE00", "\u1112\u1161\u11AB\u1100\u1173\u11AF", "syllables and their letters"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const Folder folder;
        fs::create_directories(fs::path(folder / fact.onDisk).parent_path());
        makeFile(folder / fact.onDisk);
        EXPECT_EQ(found(folder / fact.requested), folder / fact.onDisk);
    }
}

TEST(FileNames, ThatExistAreNotReplaced)
{
    const Folder folder;
    makeFile(folder / composed);
    makeFile(folder / decomposed);
    EXPECT_EQ(found(folder / composed), folder / composed);
    EXPECT_EQ(found(folder / decomposed), folder / decomposed);

    // If both the composed and the decomposed folder exist, the lookup uses the requested folder, even if
    // only the other folder holds the file.
    const Folder other;
    fs::create_directory(other / composed);
    fs::create_directory(other / decomposed);
    makeFile(other / (decomposed + "/x.wav"));
    EXPECT_EQ(found(other / (composed + "/x.wav")), "status -43");
    EXPECT_EQ(found(other / (decomposed + "/x.wav")), other / (decomposed + "/x.wav"));
}

TEST(FileNames, ThatAreNotUtf8HaveOneForm)
{
    const Folder folder;
    const std::string latin = "K\xF6nig.wav"; // a file name that is not valid UTF-8
    makeFile(folder / latin);
    EXPECT_EQ(found(folder / latin), folder / latin);
    EXPECT_EQ(found(folder / "K\xF6nigin.wav"), "status -43");
}

TEST(FileNames, AreConvertedToStrings)
{
    HFSUniStr255 name = {};
    for (const UInt16 length : {0, 1, 254, 255}) {
        name.length = length;
        for (UInt16 i = 0; i < length; ++i) name.unicode[i] = static_cast<UniChar>('a' + i % 26);
        const CFStringRef text = FSCreateStringFromHFSUniStr(nullptr, &name);
        ASSERT_NE(text, nullptr) << length;
        EXPECT_EQ(CFStringGetLength(text), length);
        CFRelease(text);
    }
    name.length = 256;
    EXPECT_EQ(FSCreateStringFromHFSUniStr(nullptr, &name), nullptr);
    name.length = 0xFFFF;
    EXPECT_EQ(FSCreateStringFromHFSUniStr(nullptr, &name), nullptr);
    EXPECT_EQ(FSCreateStringFromHFSUniStr(nullptr, nullptr), nullptr);
}

} // namespace
