// Folder items as the platform's file references, in a program that links the platform.
#include "host/runtime/host.h"
#include "host/runtime/values/folder_reference.h"
#include "tests/support/temporary_folder.h"

#include <Carbon/Files.h>

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

namespace fs = std::filesystem;

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
    std::string there() const { return fs::weakly_canonical(folder.path()).string(); }
};

TEST_F(FolderReference, IsTheItemsOwnWhereItStands)
{
    for (const char* each : {"a.wav", "caf\xC3\xA9.wav", "two words.wav"}) {
        std::ofstream(folder / each) << "x";
        EXPECT_TRUE(host::itemReference(host::FolderItem::at(folder / each), &reference)) << each;
        EXPECT_EQ(pathOf(reference), there() + "/" + each);
    }
    EXPECT_TRUE(host::itemReference(host::FolderItem::at(folder.path()), &reference));
    EXPECT_EQ(pathOf(reference), there());
}

TEST_F(FolderReference, IsNoneWhereNothingStands)
{
    EXPECT_FALSE(host::itemReference(host::FolderItem::at(folder / "new.wav"), &reference));
    EXPECT_FALSE(host::itemReference(host::FolderItem(), &reference));
}

TEST_F(FolderReference, IsTheFoldersWithTheItemsName)
{
    // Nothing of these names stands there: the folder does.
    const struct {
        std::string name;
        std::u16string units;
        const char* why;
    } facts[] = {
        {"new.wav", u"new.wav", "plain"},
        {"caf\xC3\xA9.wav", u"caf\u00E9.wav", "composed stays composed"},
        {"\xF0\x9D\x84\x9E.wav", u"\U0001D11E.wav", "a pair of units"},
        {std::string(255, 'x'), std::u16string(255, u'x'), "the longest"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        EXPECT_TRUE(host::parentReference(host::FolderItem::at(folder / fact.name), &reference, &name));
        EXPECT_EQ(pathOf(reference), there());
        EXPECT_EQ(textOf(name), fact.units);
        EXPECT_EQ(name.unicode[254], fact.units.size() == 255 ? u'x' : 0) << "zeros behind the name";
    }
}

TEST_F(FolderReference, IsNoneForANameTooLongOrAFolderThatIsNotThere)
{
    HFSUniStr255 untouched = name;
    for (const std::string& path : {folder / std::string(256, 'x'), folder / "no/such", std::string("/")}) {
        EXPECT_FALSE(host::parentReference(host::FolderItem::at(path), &reference, &name)) << path;
        EXPECT_EQ(std::memcmp(&name, &untouched, sizeof name), 0) << path;
    }
}

} // namespace
