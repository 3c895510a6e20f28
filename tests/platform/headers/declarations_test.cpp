// The library exports every name that a public header declares.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include <dlfcn.h>

namespace {

namespace fs = std::filesystem;

std::string read(const fs::path& file)
{
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

TEST(Declarations, AreExportedByTheLibrary)
{
    // A declared name is the last identifier before a parenthesis or semicolon. Parameters have no export
    // macro.
    static const std::regex declaration("KVX_PLATFORM_EXPORT\\s[^;(]*?\\b([A-Za-z_]\\w*)\\s*[(;]");
    void* const library = dlopen("libkvxplatform.so", RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(library, nullptr) << dlerror();
    int declared = 0;
    for (const auto& entry : fs::recursive_directory_iterator(KVX_SOURCE_DIR "/platform/include")) {
        if (entry.path().filename() == "export.h" || !entry.is_regular_file()) continue;
        const std::string text = read(entry.path());
        for (std::sregex_iterator each(text.begin(), text.end(), declaration), end; each != end; ++each) {
            ++declared;
            const std::string name = (*each)[1];
            EXPECT_NE(dlsym(library, name.c_str()), nullptr)
                << entry.path().filename() << " declares " << name << ", which the library lacks";
        }
    }
    EXPECT_GT(declared, 80);
    dlclose(library);
}

} // namespace
