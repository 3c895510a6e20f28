// Checks every include directive of the tree against the dependency rules, and the rules against examples.
#include "tests/rules/dependency_rules.h"
#include "tests/rules/source_tree.h"

#include <gtest/gtest.h>

namespace {

TEST(DependencyRules, HoldForEveryIncludeOfTheTree)
{
    int count = 0;
    for (const std::string& file : rules::files()) {
        if (!rules::isSource(file)) continue;
        for (const rules::Include& include : rules::includesOf(file, rules::read(file))) {
            ++count;
            EXPECT_EQ(rules::violationOf(include), "") << file << ":" << include.line;
        }
    }
    EXPECT_GT(count, 300) << "the sources were not read";
}

TEST(DependencyRules, FindForbiddenIncludes)
{
    // clang-format off
    const struct { const char* file; const char* directive; bool isForbidden; const char* why; } facts[] = {
        {"player/render.cpp",            "#include <CoreAudio/CoreAudio.h>",          false, "the platform's public headers are allowed"},
        {"player/render.cpp",            "#include \"player/missing.h\"",             true,  "there is no such file"},
        {"player/render.cpp",            "#include \"platform/hal/device.h\"",        true,  "the platform's internal headers are forbidden"},
        {"player/render.cpp",            "#include \"host/runtime/runtime.h\"",       true,  "the plug-in does not know the host"},
        {"player/render.cpp",            "#include \"coreaudio/class_table.h\"",      true,  "a class folder does not include another one"},
        {"player/render.cpp",            "#include <KVXPlatform/KVXPlatform.h>",      true,  "the control header is for hosts and tests"},
        {"player/render.cpp",            "#include <vector>",                         true,  "vectors need the compiled C++ library"},
        {"player/render.cpp",            "#include <string>",                         true,  "strings need the compiled C++ library"},
        {"player/render.cpp",            "#include <mutex>",                          true,  "mutexes need the compiled C++ library"},
        {"player/render.cpp",            "#include <string_view>",                    false, "the header needs no compiled library"},
        {"player/render.cpp",            "#include <sched.h>",                        false, "every system has this C header"},
        {"player/render.cpp",            "#include <sndfile.h>",                      true,  "the plug-in uses no library but the platform"},
        {"player/render.cpp",            "#include <unistd.h>",                       true,  "the header is not in the list of allowed C headers"},
        {"player/render.cpp",            "  #  include   <vector> // why not",        true,  "spaces do not hide the directive"},
        {"player/render.cpp",            "// #include <vector>",                      false, "a comment is not a directive"},
        {"plugin/services.cpp",          "#include \"abi/class_definition.h\"",       false, "the plug-in uses the shared records"},
        {"plugin/services.cpp",          "#include \"tests/support/spy.h\"",          true,  "only tests include test headers"},
        {"abi/word.h",                   "#include <cstdint>",                        false, "the records use fixed-width integers"},
        {"abi/word.h",                   "#include <CoreAudio/CoreAudio.h>",          true,  "the records do not depend on the platform"},
        {"abi/word.h",                   "#include \"plugin/services.h\"",            true,  "the records do not depend on the plug-in"},
        {"host/kvx/play.cpp",            "#include <KVXPlatform/KVXPlatform.h>",      false, "the command controls simulated devices"},
        {"host/kvx/play.cpp",            "#include <CoreAudio/CoreAudio.h>",          true,  "the command reaches devices through the plug-in"},
        {"host/kvx/play.cpp",            "#include \"plugin/services.h\"",            true,  "the host reaches the plug-in through class tables only"},
        {"host/kvx/play.cpp",            "#include \"platform/hal/device.h\"",        true,  "the platform's internal headers are forbidden"},
        {"host/kvx/play.cpp",            "#include <portaudio.h>",                    true,  "only the platform uses PortAudio"},
        {"host/kvx/play.cpp",            "#include <sndfile.h>",                      false, "the command writes the tune with libsndfile"},
        {"host/kvx/files/sound_file.cpp", "#include <AudioToolbox/AudioToolbox.h>",   false, "sound files are read through the platform"},
        {"host/kvx/files/sound_file.cpp", "#include \"platform/audiofile/sound_file.h\"", true, "the platform's internal headers are forbidden"},
        {"host/runtime/values/folder_item.cpp", "#include <CoreFoundation/CoreFoundation.h>", false, "a folder item fills a platform record"},
        {"host/runtime/text.cpp",        "#include <CoreFoundation/CoreFoundation.h>", true, "only the folder item and the text encodings may"},
        {"host/runtime/calls/object.cpp", "#include \"host/runtime/values/value.h\"",  false, "a lower layer of the runtime"},
        {"host/runtime/values/value.cpp", "#include \"host/runtime/calls/object.h\"",  true,  "a higher layer of the runtime"},
        {"host/runtime/values/value.cpp", "#include \"host/runtime/host.h\"",          true,  "the top layer of the runtime"},
        {"platform/hal/device.cpp",      "#include <portaudio.h>",                    false, "the platform plays through PortAudio"},
        {"platform/hal/device.cpp",      "#include <fmt/core.h>",                     false, "the platform formats text with fmt"},
        {"platform/hal/device.cpp",      "#include <CLI/CLI.hpp>",                    true,  "only the host uses CLI11"},
        {"platform/hal/device.cpp",      "#include \"abi/word.h\"",                   true,  "the platform knows no plug-in"},
        {"platform/hal/device.cpp",      "#include \"host/kvx/play.h\"",              true,  "the platform knows no host"},
        {"platform/include/CoreAudio/AudioHardware.h", "#include <vector>",           true,  "public headers are plain C"},
        {"platform/include/CoreAudio/AudioHardware.h", "#include <stdint.h>",         false, "a C header"},
        {"tests/endtoend/play_test.cpp", "#include \"player/class_table.h\"",         true,  "end-to-end tests use the loaded library"},
        {"tests/player/render_test.cpp", "#include \"host/runtime/runtime.h\"",       true,  "unit tests use the fake host"},
        {"newfolder/file.cpp",           "#include <vector>",                         true,  "the folder has no rule"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(std::string(fact.file) + ": " + fact.directive + " (" + fact.why + ")");
        bool isForbidden = false;
        for (const rules::Include& include : rules::includesOf(fact.file, fact.directive))
            isForbidden |= !rules::violationOf(include).empty();
        EXPECT_EQ(isForbidden, fact.isForbidden);
    }
}

TEST(DependencyRules, ReadQuotedAndAngledIncludes)
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
