// Names in one normal form, found in the other.
#include "host/kvx/files/path_lookup.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;

#define E_ACUTE "\xc3\xa9"
#define E_AND_ACUTE "e\xcc\x81"

TEST(PathOnDisk, IsTheFormThatStandsThere)
{
    const struct {
        const char *onDisk, *asked, *found, *why;
    } facts[] = {
        {E_ACUTE ".wav", E_ACUTE ".wav", E_ACUTE ".wav", "as given"},
        {E_AND_ACUTE ".wav", E_AND_ACUTE ".wav", E_AND_ACUTE ".wav", "likewise"},
        {E_ACUTE ".wav", E_AND_ACUTE ".wav", E_ACUTE ".wav", "composed on disk"},
        {E_AND_ACUTE ".wav", E_ACUTE ".wav", E_AND_ACUTE ".wav", "decomposed on disk"},
        {E_ACUTE "/" E_AND_ACUTE ".wav", E_AND_ACUTE "/" E_ACUTE ".wav", E_ACUTE "/" E_AND_ACUTE ".wav",
         "each part in its own form"},
        {"e.wav", E_ACUTE ".wav", E_ACUTE ".wav", "a letter without its accent is another"},
        {E_ACUTE ".wav", "\xe9.wav", "\xe9.wav", "no UTF-8 has no other form"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        support::TemporaryFolder folder;
        const fs::path file = folder / fact.onDisk;
        fs::create_directories(file.parent_path());
        std::ofstream(file) << "x";
        EXPECT_EQ(kvx::pathOnDisk(folder / fact.asked), folder / fact.found);
    }
}

TEST(PathOnDisk, PrefersTheNameAsGiven)
{
    support::TemporaryFolder folder;
    for (const char* name : {E_ACUTE, E_AND_ACUTE}) std::ofstream(folder / name) << "x";
    EXPECT_EQ(kvx::pathOnDisk(folder / E_ACUTE), folder / E_ACUTE);
    EXPECT_EQ(kvx::pathOnDisk(folder / E_AND_ACUTE), folder / E_AND_ACUTE);
}

TEST(PathOnDisk, LeavesWhatIsNowhere)
{
    for (const char* path : {"", "/", ".", "no/such/" E_ACUTE, "/no//such/../" E_ACUTE "/"})
        EXPECT_EQ(kvx::pathOnDisk(path), path);
}

} // namespace
