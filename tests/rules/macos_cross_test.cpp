// Tests the preset macos-cross: the commands that it generates for an SDK and a linker, and its messages if
// one of them is missing. The SDK and the linker are empty files, because the tests compare the commands and
// run none.
#include "tests/rules/source_tree.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <regex>

namespace {

namespace fs = std::filesystem;

struct CrossBuild : support::TemporaryFolder {
    CrossBuild()
    {
        for (const char* name : {"SDK/usr/lib/libstdc++.6.0.9.dylib", "SDK/usr/lib/libgcc_s.10.5.dylib",
                                 "ld64", "libc++/cstddef"}) {
            fs::create_directories(fs::path(*this / name).parent_path());
            std::ofstream(*this / name) << '\n';
        }
    }

    static std::string option(const std::string& name, const std::string& value)
    {
        return "-D" + name + "=" + value;
    }
    std::string sdk() const { return option("KVX_MAC_SDK", *this / "SDK"); }
    std::string linker() const { return option("KVX_LD64", *this / "ld64"); }
    std::string headers() const { return option("KVX_LIBCXX_HEADERS", *this / "libc++"); }

    support::ChildResult configure(std::vector<std::string> options) const
    {
        const std::vector<std::string> command = {"cmake", "--preset", "macos-cross", "-B", *this / "build"};
        options.insert(options.begin(), command.begin(), command.end());
        return support::runChild(options, plainCompiler, rules::root());
    }
    std::vector<std::string> commands() const
    {
        return rules::lines(
            support::runChild({"ninja", "-C", *this / "build", "-t", "commands", "KVXAudio"}, plainCompiler)
                .out);
    }

    // Environment that keeps a compiler launcher and compiler options of the user out of the generated
    // commands.
    const support::Child::Environment plainCompiler = {{"CMAKE_C_COMPILER_LAUNCHER", ""},
                                                       {"CMAKE_CXX_COMPILER_LAUNCHER", ""},
                                                       {"CFLAGS", ""},
                                                       {"CXXFLAGS", ""}};
};

std::string replaceAll(const std::string& text, const std::string& pattern, const std::string& replacement)
{
    return std::regex_replace(text, std::regex(pattern), replacement);
}

std::size_t sourceCount()
{
    std::size_t count = 0;
    for (const char* folder : {"plugin", "coreaudio", "player", "auplayer", "soundstream", "listener"})
        for (const auto& entry : fs::directory_iterator(rules::root() / folder))
            count += entry.path().extension() == ".cpp";
    return count;
}

std::string lineWith(const std::vector<std::string>& lines, const std::string& text)
{
    const auto found = std::find_if(lines.begin(), lines.end(),
                                    [&](const std::string& line) { return line.find(text) != line.npos; });
    return found == lines.end() ? "" : *found;
}

TEST(MacosCross, CompilesForTheOldestSystemAndLinksWithTheGivenLinker)
{
    const CrossBuild build;
    const auto configured = build.configure({build.sdk(), build.linker(), build.headers()});
    ASSERT_EQ(configured.exitCode, 0) << configured.err;
    const auto commands = build.commands();
    const std::string top = rules::root();
    const std::string folder = build.path();

    std::string compile = lineWith(commands, "-c " + top + "/plugin/background.cpp");
    compile = replaceAll(compile, " -M\\S+( \\S+\\.(obj|d))?", "");
    EXPECT_EQ(replaceAll(compile, "^\\S*/", ""),
              "clang++  -I" + top + " -target i386-apple-macosx10.6 -isysroot \"" + folder +
                  "/SDK\" -nostdinc++ -isystem \"" + folder +
                  "/libc++\" -fno-constant-cfstrings -O2 -g -DNDEBUG -fPIC -fvisibility=hidden "
                  "-fvisibility-inlines-hidden -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wunused "
                  "-Werror -Wno-four-char-constants -fblocks -ffp-contract=off -msse3 -mfpmath=sse "
                  "-Wno-deprecated-declarations -fno-sized-deallocation -std=c++17 "
                  "-o plugin/CMakeFiles/kvxplugin.dir/background.cpp.obj -c " +
                  top + "/plugin/background.cpp");

    std::string link = lineWith(commands, "/ld64 ");
    const std::regex object(" \\S+\\.obj");
    EXPECT_EQ(std::size_t(std::distance(std::sregex_iterator(link.begin(), link.end(), object), {})),
              sourceCount());
    EXPECT_EQ(std::regex_replace(link, object, ""),
              "cd " + folder + "/build/plugin && " + folder +
                  "/ld64 -arch i386 -macosx_version_min 10.6 -syslibroot " + folder +
                  "/SDK -dylib -install_name KVXAudio.dylib -keep_dwarf_unwind -exported_symbols_list " +
                  top + "/plugin/exports_mac.txt -U _CGPathCreateCopyByTransformingPath -o " + folder +
                  "/build/KVXAudio.dylib -framework CoreAudio -framework AudioUnit -framework AudioToolbox "
                  "-framework CoreServices -framework CoreFoundation -framework Carbon "
                  "-framework ApplicationServices -lSystem " +
                  folder + "/SDK/usr/lib/libstdc++.6.0.9.dylib " + folder +
                  "/SDK/usr/lib/libgcc_s.10.5.dylib");
}

TEST(MacosCross, LeavesSymbolsMissingFromAnEarlySDKUndefined)
{
    const CrossBuild build;
    const auto configured =
        build.configure({build.sdk(), build.linker(), build.headers(), "-DKVX_MAC_EARLY_SDK=ON"});
    ASSERT_EQ(configured.exitCode, 0) << configured.err;
    const auto commands = build.commands();
    EXPECT_NE(lineWith(commands, "/plugin/background.cpp").find(" -DKVX_MAC_EARLY_SDK "), std::string::npos);
    EXPECT_NE(lineWith(commands, "/ld64 ")
                  .find(" -U _CGPathCreateCopyByTransformingPath -U _dispatch_get_global_queue -U "
                        "__dispatch_main_q "),
              std::string::npos);
}

TEST(MacosCross, DeclaresTheGlobalQueuesThatAnEarlySDKLacks)
{
    const support::TemporaryFolder folder;
    fs::create_directory(folder / "dispatch");
    std::ofstream(folder / "dispatch/dispatch.h")
        << "typedef struct dispatch_queue_s* dispatch_queue_t;\n"
           "extern \"C\" void dispatch_async(dispatch_queue_t, void*);\n";
    std::ofstream(folder / "caller.cpp") << "#include \"plugin/weak_symbols.h\"\n"
                                            "auto* queue = dispatch_get_global_queue(0, 0);\n";
    const auto compile = [&](const char* option) {
        return support::runChild({"clang++", "-fsyntax-only", option, "-I", folder.path(), "-I",
                                  rules::root().string(), folder / "caller.cpp"})
            .exitCode;
    };
    EXPECT_EQ(compile("-DKVX_MAC_EARLY_SDK"), 0);
    EXPECT_EQ(compile("-UKVX_MAC_EARLY_SDK"), 1);
}

TEST(MacosCross, ExportsTheEntryPointOnly)
{
    std::ifstream list(rules::root() / "plugin/exports_mac.txt");
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(list), {}), "_REALPluginMain\n");
}

TEST(MacosCross, ReportsUnusableInputsInOneLine)
{
    const CrossBuild build;
    const std::string folder = build.path();
    const auto option = CrossBuild::option;
    const struct {
        std::vector<std::string> options;
        std::string message;
    } facts[] = {
        {{build.linker(), build.headers()},
         "KVX_MAC_SDK is not set: add -DKVX_MAC_SDK=FOLDER with the folder of MacOSX10.6.sdk"},
        {{option("KVX_MAC_SDK", "/missing"), build.linker(), build.headers()},
         "KVX_MAC_SDK=/missing: usr/lib/libstdc++.6.0.9.dylib is missing there; give the folder of a whole "
         "MacOSX10.6.sdk"},
        {{build.sdk(), build.headers()},
         "KVX_LD64 is not set: add -DKVX_LD64=PROGRAM with the path of a linker for 32-bit Mach-O"},
        {{build.sdk(), option("KVX_LD64", "/missing/ld64"), build.headers()},
         "KVX_LD64=/missing/ld64: no such program; give the path of a linker for 32-bit Mach-O"},
        {{build.sdk(), option("KVX_LD64", folder), build.headers()},
         "KVX_LD64=" + folder + ": no such program; give the path of a linker for 32-bit Mach-O"},
        {{build.sdk(), build.linker(), option("KVX_LIBCXX_HEADERS", "/missing")},
         "KVX_LIBCXX_HEADERS=/missing: no C++ headers there; install the package libc++-14-dev"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.message);
        fs::remove_all(build / "build"); // because CMake would use the cached options of the previous row
        const auto refused = build.configure(fact.options);
        EXPECT_EQ(refused.exitCode, 1);
        EXPECT_NE(refused.err.find("   " + fact.message + "\n"), std::string::npos) << refused.err;
    }
}

} // namespace
