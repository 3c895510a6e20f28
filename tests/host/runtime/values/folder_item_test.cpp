// Tests of folder items and of the platform references (FSRef) to files and folders.
#include "host/runtime/values/folder_item.h"

#include "host/runtime/host.h"
#include "tests/support/temporary_folder.h"

#include <Carbon/Files.h>

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

namespace fs = std::filesystem;
using host::FolderItem;

TEST(FolderItem, HasAnAbsolutePath)
{
    host::Host host;
    const auto item = FolderItem::at("/a/b/../c.wav");
    EXPECT_EQ(item.path(), "/a/c.wav");
    EXPECT_EQ(item.name(), "c.wav");
    EXPECT_EQ(item.parent(), "/a");
    EXPECT_EQ(FolderItem::at("/a/b/").path(), "/a/b");
    EXPECT_EQ(FolderItem::at("/").path(), "/");
    EXPECT_EQ(FolderItem::at("x").path()[0], '/') << "a relative path starts at the current folder";
    EXPECT_EQ(FolderItem().path(), "");
}

std::string pathOf(const FSRef& reference)
{
    UInt8 path[4096] = {};
    EXPECT_EQ(FSRefMakePath(&reference, path, sizeof path), 0);
    return fs::weakly_canonical(reinterpret_cast<const char*>(path)).string();
}

std::u16string textOf(const HFSUniStr255& name) { return {name.unicode, name.unicode + name.length}; }

struct FolderReference : testing::Test {
    support::TemporaryFolder folder;
    host::Host host;
    FSRef reference = {};
    HFSUniStr255 name;

    FolderReference() { std::memset(&name, 0x55, sizeof name); }
    std::string folderPath() const { return fs::weakly_canonical(folder.path()).string(); }
};

TEST_F(FolderReference, OfAnExistingItemIsTheItemsOwn)
{
    for (const char* each : {"a.wav", "caf\xC3\xA9.wav", "two words.wav"}) {
        std::ofstream(folder / each) << "x";
        EXPECT_TRUE(host::itemReference(FolderItem::at(folder / each), &reference)) << each;
        EXPECT_EQ(pathOf(reference), folderPath() + "/" + each);
    }
    EXPECT_TRUE(host::itemReference(FolderItem::at(folder.path()), &reference));
    EXPECT_EQ(pathOf(reference), folderPath());
}

TEST_F(FolderReference, OfAMissingItemIsNotMade)
{
    EXPECT_FALSE(host::itemReference(FolderItem::at(folder / "new.wav"), &reference));
    EXPECT_FALSE(host::itemReference(FolderItem(), &reference));
}

TEST_F(FolderReference, OfTheParentComesWithTheItemsName)
{
    // No file with these names exists, but the folder does.
    const struct {
        std::string name;
        std::u16string units;
        const char* why;
    } facts[] = {
        {"new.wav", u"new.wav", "an ASCII name"},
        {"caf\xC3\xA9.wav", u"caf\u00E9.wav", "a composed letter stays composed"},
        {"\xF0\x9D\x84\x9E.wav", u"\U0001D11E.wav", "a surrogate pair"},
        {std::string(255, 'x'), std::u16string(255, u'x'), "the longest name"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        EXPECT_TRUE(host::parentReference(FolderItem::at(folder / fact.name), &reference, &name));
        EXPECT_EQ(pathOf(reference), folderPath());
        EXPECT_EQ(textOf(name), fact.units);
        EXPECT_EQ(name.unicode[254], fact.units.size() == 255 ? u'x' : 0) << "zeros follow the name";
    }
}

TEST_F(FolderReference, OfTheParentIsNotMadeForALongNameOrAMissingFolder)
{
    const HFSUniStr255 untouched = name;
    for (const std::string& path : {folder / std::string(256, 'x'), folder / "no/such", std::string("/")}) {
        EXPECT_FALSE(host::parentReference(FolderItem::at(path), &reference, &name)) << path;
        EXPECT_EQ(std::memcmp(&name, &untouched, sizeof name), 0) << path;
    }
}

} // namespace
