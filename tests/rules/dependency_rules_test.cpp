// Every include of the tree stays inside its walls, and a made-up include that crosses one is found.
#include "tests/rules/dependency_rules.h"
#include "tests/rules/source_tree.h"

#include <gtest/gtest.h>

namespace {

TEST(Walls, HoldForEveryIncludeOfTheTree)
{
    int seen = 0;
    for (const std::string& file : rules::files()) {
        if (!rules::isSource(file)) continue;
        for (const rules::Include& include : rules::includesOf(file, rules::read(file))) {
            ++seen;
            EXPECT_EQ(rules::breach(include), "") << file << ":" << include.line;
        }
    }
    EXPECT_GT(seen, 300) << "the tree was not found";
}

TEST(Walls, FindWhatCrossesThem)
{
    // clang-format off
    const struct { const char* file; const char* directive; bool crosses; const char* why; } facts[] = {
        {"player/render.cpp",            "#include <CoreAudio/CoreAudio.h>",          false, "the platform by its own names"},
        {"player/render.cpp",            "#include \"player/nowhere.h\"",             true,  "no such file: includes name files of the tree"},
        {"player/render.cpp",            "#include \"platform/hal/device.h\"",        true,  "platform internals"},
        {"player/render.cpp",            "#include \"host/runtime/runtime.h\"",       true,  "the host"},
        {"player/render.cpp",            "#include \"coreaudio/class_table.h\"",      true,  "another class"},
        {"player/render.cpp",            "#include <KVXPlatform/KVXPlatform.h>",      true,  "the control header is for hosts and tests"},
        {"player/render.cpp",            "#include <vector>",                         true,  "lives in the compiled C++ library"},
        {"player/render.cpp",            "#include <string>",                         true,  "likewise"},
        {"player/render.cpp",            "#include <mutex>",                          true,  "likewise"},
        {"player/render.cpp",            "#include <string_view>",                    false, "header-only"},
        {"player/render.cpp",            "#include <sched.h>",                        false, "plain C, on every system"},
        {"player/render.cpp",            "#include <sndfile.h>",                      true,  "no library but the platform"},
        {"player/render.cpp",            "#include <unistd.h>",                       true,  "the platform's names only"},
        {"player/render.cpp",            "  #  include   <vector> // why not",        true,  "blanks do not hide it"},
        {"player/render.cpp",            "// #include <vector>",                      false, "a comment includes nothing"},
        {"plugin/services.cpp",          "#include \"abi/class_definition.h\"",       false, "the shared records"},
        {"plugin/services.cpp",          "#include \"tests/support/spy.h\"",          true,  "tests are for tests"},
        {"abi/word.h",                   "#include <cstdint>",                        false, "the standard library's integers"},
        {"abi/word.h",                   "#include <CoreAudio/CoreAudio.h>",          true,  "records know no platform"},
        {"abi/word.h",                   "#include \"plugin/services.h\"",            true,  "nor the plug-in"},
        {"host/kvx/play.cpp",            "#include <KVXPlatform/KVXPlatform.h>",      false, "what a user would do to a device"},
        {"host/kvx/play.cpp",            "#include <CoreAudio/CoreAudio.h>",          true,  "the plug-in's business"},
        {"host/kvx/play.cpp",            "#include \"plugin/services.h\"",            true,  "reached through tables only"},
        {"host/kvx/play.cpp",            "#include \"platform/hal/device.h\"",        true,  "platform internals"},
        {"host/kvx/play.cpp",            "#include <portaudio.h>",                    true,  "below the platform"},
        {"host/kvx/play.cpp",            "#include <sndfile.h>",                      false, "the tune is written with it"},
        {"host/kvx/files/sound_file.cpp", "#include <AudioToolbox/AudioToolbox.h>",   false, "sound files are read through the platform"},
        {"host/kvx/files/sound_file.cpp", "#include \"platform/audiofile/sound_file.h\"", true, "platform internals"},
        {"host/runtime/values/folder_item.cpp", "#include <CoreFoundation/CoreFoundation.h>", false, "a folder item fills a platform record"},
        {"host/runtime/values/text.cpp", "#include <CoreFoundation/CoreFoundation.h>", true, "only the folder item does"},
        {"platform/hal/device.cpp",      "#include <portaudio.h>",                    false, "a library below it"},
        {"platform/hal/device.cpp",      "#include <fmt/core.h>",                     false, "a library below the platform"},
        {"platform/hal/device.cpp",      "#include <CLI/CLI.hpp>",                    true,  "the host's library"},
        {"platform/hal/device.cpp",      "#include \"abi/word.h\"",                   true,  "knows neither side"},
        {"platform/hal/device.cpp",      "#include \"host/kvx/play.h\"",              true,  "knows neither side"},
        {"platform/include/CoreAudio/AudioHardware.h", "#include <vector>",           true,  "public headers are C"},
        {"platform/include/CoreAudio/AudioHardware.h", "#include <stdint.h>",         false, "C"},
        {"tests/endtoend/play_test.cpp", "#include \"player/class_table.h\"",         true,  "end to end goes through the loaded library"},
        {"tests/player/render_test.cpp", "#include \"host/runtime/runtime.h\"",       true,  "unit tests bring their own host"},
        {"newfolder/file.cpp",           "#include <vector>",                         true,  "a folder without walls"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(std::string(fact.file) + ": " + fact.directive + " (" + fact.why + ")");
        bool crosses = false;
        for (const rules::Include& include : rules::includesOf(fact.file, fact.directive))
            crosses |= !rules::breach(include).empty();
        EXPECT_EQ(crosses, fact.crosses);
    }
}

TEST(Walls, CountLinesAndReadBothForms)
{
    const auto found = rules::includesOf("x.cpp", "#include <a.h>\n\nint b;\n#include \"c/d.h\"\n");
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0].line, 1);
    EXPECT_EQ(found[0].target, "a.h");
    EXPECT_FALSE(found[0].isQuoted);
    EXPECT_EQ(found[1].line, 4);
    EXPECT_EQ(found[1].target, "c/d.h");
    EXPECT_TRUE(found[1].isQuoted);
}

} // namespace
