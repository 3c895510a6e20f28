// KVXPlatformGetLibraries: names, versions and files of the loaded libraries.
#include <KVXPlatform/KVXPlatform.h>

#include <gmock/gmock.h>
#include <sndfile.h>

#include <algorithm>
#include <filesystem>

namespace {

std::vector<KVXLibraryInfo> libraries()
{
    std::vector<KVXLibraryInfo> rows(KVXPlatformGetLibraries(nullptr, 0));
    EXPECT_EQ(KVXPlatformGetLibraries(rows.data(), uint32_t(rows.size())), rows.size());
    return rows;
}

KVXLibraryInfo libraryNamed(const std::string& name)
{
    for (const KVXLibraryInfo& row : libraries())
        if (row.name == name) return row;
    return {};
}

TEST(Libraries, AreListedWithTheirFiles)
{
    std::vector<std::string> names;
    for (const KVXLibraryInfo& row : libraries()) {
        names.push_back(row.name);
        EXPECT_TRUE(std::filesystem::is_regular_file(row.path)) << row.name << ": " << row.path;
        EXPECT_FALSE(std::filesystem::is_symlink(row.path)) << row.path;
        EXPECT_STREQ(row.systems, "") << row.name << ", before the devices were read";
    }
    for (const char* name :
         {"libsndfile", "libsamplerate", "Rubber Band", "PortAudio", "JACK", "ALSA", "utf8proc", "libffi"})
        EXPECT_EQ(std::count(names.begin(), names.end(), name), 1) << name;
}

TEST(Libraries, HaveTheVersionsThatTheyReport)
{
    EXPECT_EQ("libsndfile-" + std::string(libraryNamed("libsndfile").version), sf_version_string());
    for (const char* name : {"libsamplerate", "PortAudio", "JACK", "ALSA", "utf8proc"})
        EXPECT_THAT(libraryNamed(name).version, testing::MatchesRegex("[0-9]+\\.[0-9]+[^ ,]*")) << name;
    for (const char* name : {"Rubber Band", "libffi"}) EXPECT_STREQ(libraryNamed(name).version, "") << name;
}

TEST(Libraries, FillUpToTheCapacity)
{
    KVXLibraryInfo rows[2] = {};
    const uint32_t count = KVXPlatformGetLibraries(rows, 1);
    EXPECT_GT(count, 1u);
    EXPECT_STREQ(rows[0].name, "libsndfile");
    EXPECT_STREQ(rows[1].name, "");
}

} // namespace
