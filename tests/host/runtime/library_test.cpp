// Loading: each way it can fail says why and what to do next.
#include "tests/host/runtime/plugin_host.h"
#include "tests/support/sanitizers.h"

#include <gtest/gtest.h>

#include <elf.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>

namespace {

using namespace host;
using test::thrownBy;

const std::string folder = KVX_BINARY_DIR "/tests/";

class Loading : public testing::Test {
protected:
    Loading() { std::filesystem::create_directories(temporary); }
    ~Loading() override { std::filesystem::remove_all(temporary); }

    std::string file(const char* name, const std::string& bytes)
    {
        const auto path = temporary / name;
        std::ofstream(path, std::ios::binary) << bytes;
        return path.string();
    }

    std::string errorOf(const std::string& path)
    {
        const auto message = thrownBy<LoadError>([&] { host.load(path); });
        EXPECT_EQ(message.find(path + ": "), 0u) << message;
        return message;
    }

    std::filesystem::path temporary =
        std::filesystem::temp_directory_path() / ("kvx-loading-" + std::to_string(getpid()));
    Host host;
};

TEST_F(Loading, OfTooManyOpenFilesSaysSo)
{
    if (support::hasAddressSanitizer) GTEST_SKIP() << "which needs descriptors itself";
    rlimit former = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &former), 0);
    rlimit few = former;
    few.rlim_cur = rlim_t(dup(0)); // the lowest free descriptor, and with it all below, is taken
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    const std::string message = errorOf(folder + "test_plugin.so");
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &former), 0);
    close(int(few.rlim_cur));
    EXPECT_EQ(message, folder + "test_plugin.so: too many files are open; raise the limit with `ulimit -n`");
}

TEST_F(Loading, FailuresSayWhatToDo)
{
    std::string head(64, '\0');
    std::memcpy(&head[0], ELFMAG, SELFMAG);
    head[EI_CLASS] = sizeof(void*) == 4 ? ELFCLASS64 : ELFCLASS32;
    auto own = head;
    own[EI_CLASS] = sizeof(void*) == 4 ? ELFCLASS32 : ELFCLASS64;

    const struct {
        std::string path;
        const char* why;
        const char* next;
    } facts[] = {
        {folder + "no_such_library.so", "there is no such file", "build the library, or give its path"},
        {temporary.string(), "that is a folder", "give the path of the library in it"},
        {file("empty.so", ""), "that is no shared library", "give the path of a plug-in library"},
        {file("text.so", "This is no library, but a text that is long enough."), "that is no shared library",
         "give"},
        {file("short.so", head.substr(0, 15)), "that is no shared library", "give"},
        {file("other.so", head),
         sizeof(void*) == 4 ? "the library is 64-bit and this host is 32-bit"
                            : "the library is 32-bit and this host is 64-bit",
         "give the one that was built with this host"},
        {file("broken.so", own), "the system refuses it (",
         "check that the libraries it needs stand beside it"},
        {folder + "no_entry.so", "the library exports no REALPluginMain", "give another one"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.path);
        const auto message = errorOf(fact.path);
        EXPECT_NE(message.find(fact.why), std::string::npos) << message;
        EXPECT_NE(message.find(fact.next), std::string::npos) << message;
    }
    EXPECT_TRUE(host.pluginClasses().empty());
    host.load(folder + "test_plugin.so");
    EXPECT_EQ(host.pluginClasses().size(), 3u) << "after failures the right one still loads";
    EXPECT_NE(errorOf(folder + "test_plugin.so").find("is loaded already"), std::string::npos);
}

TEST_F(Loading, ARelativePathIsTakenFromTheCurrentFolder)
{
    std::filesystem::current_path(folder);
    host.load("test_plugin.so");
    EXPECT_EQ(host.pluginClasses().size(), 3u);
}

TEST(LoadingInAChild, WithoutThePluginVersionServiceItIsFatalByDesign)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(
        {
            Options options;
            options.withheld = {"RegisterPluginVersion"};
            test::PluginHost plugin(options);
        },
        "");
}

} // namespace
