// The pictures that scripts/pictures draws.
#include "tests/endtoend/documentation/markdown.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

using namespace endtoend;

TEST(Pictures, AreTheOutputOfTheScript)
{
    const support::TemporaryFolder folder;
    const auto result = support::runChild({KVX_SOURCE_DIR "/scripts/pictures", folder.path(), KVX_BINARY_DIR},
                                          {}, folder.path());
    ASSERT_EQ(result.exitCode, 0) << result.err;
    int count = 0;
    for (const auto& each : std::filesystem::directory_iterator(folder.path())) {
        const std::string name = each.path().filename().string();
        ++count;
        if (name == "tune.png") continue; // colours may differ by one between processors
        std::ifstream drawn(each.path());
        EXPECT_EQ(readDocument("docs/" + name), std::string(std::istreambuf_iterator<char>(drawn), {}))
            << name << " is out of date; run scripts/pictures";
    }
    EXPECT_EQ(count, 4);
}

} // namespace
