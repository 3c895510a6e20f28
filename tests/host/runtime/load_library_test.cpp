// Tests of loading a plug-in library: each failure has a message with the problem and the next step.
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

TEST_F(Loading, WithTooManyOpenFilesNamesTheLimit)
{
    if (support::hasAddressSanitizer)
        GTEST_SKIP() << "the address sanitizer needs file descriptors that the test would use up";
    rlimit former = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &former), 0);
    rlimit few = former;
    few.rlim_cur = rlim_t(dup(0)); // lowest free descriptor; all lower ones are in use
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    const std::string message = errorOf(folder + "test_plugin.so");
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &former), 0);
    close(int(few.rlim_cur));
    EXPECT_EQ(message, folder + "test_plugin.so: too many files are open; raise the limit with `ulimit -n`");
}

TEST_F(Loading, FailureNamesProblemAndNextStep)
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
        {folder + "no_such_library.so", "this file does not exist", "build the library, or give its path"},
        {temporary.string(), "this is a folder", "give the path of the library in the folder"},
        {file("empty.so", ""), "this is not a shared library", "give the path of a plug-in library"},
        {file("text.so", "A text that is longer than the head of a library file."),
         "this is not a shared library", "give"},
        {file("short.so", head.substr(0, 15)), "this is not a shared library", "give"},
        {file("other.so", head),
         sizeof(void*) == 4 ? "the library is 64-bit and this host is 32-bit"
                            : "the library is 32-bit and this host is 64-bit",
         "give the library that was built together with this host"},
        {file("broken.so", own), "the system cannot load the library (",
         "install the libraries that it needs in the same folder"},
        {folder + "no_entry.so", "the library exports no REALPluginMain",
         "give the path of a plug-in library"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.path);
        const auto message = errorOf(fact.path);
        EXPECT_NE(message.find(fact.why), std::string::npos) << message;
        EXPECT_NE(message.find(fact.next), std::string::npos) << message;
    }
    EXPECT_TRUE(host.pluginClasses().empty());
    host.load(folder + "test_plugin.so");
    EXPECT_EQ(host.pluginClasses().size(), 3u) << "a correct library loads after the failures";
    EXPECT_NE(errorOf(folder + "test_plugin.so").find("is loaded already"), std::string::npos);
}

TEST_F(Loading, OfARelativePathStartsAtTheCurrentFolder)
{
    std::filesystem::current_path(folder);
    host.load("test_plugin.so");
    EXPECT_EQ(host.pluginClasses().size(), 3u);
}

TEST(LoadingInAChild, WithoutThePluginVersionServiceEndsTheProcess)
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
