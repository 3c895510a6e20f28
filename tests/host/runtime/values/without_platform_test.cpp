// Tests of the host in a program that does not link the platform.
#include "host/runtime/host.h"
#include "host/runtime/values/text_encoding.h"
#include "tests/host/runtime/plugin_host.h"

#include <gtest/gtest.h>

namespace {

using namespace host;
using test::thrownBy;

TEST(WithoutPlatform, FolderItemsHaveNoReference)
{
    Host host;
    unsigned char reference[80], name[512];
    EXPECT_FALSE(itemReference(FolderItem::at("/"), reference));
    EXPECT_FALSE(parentReference(FolderItem::at("/x"), reference, name));
}

TEST(WithoutPlatform, UnicodeAndASCIIAreConverted)
{
    for (std::uint32_t encoding : {encodingUTF16, encodingUTF32})
        EXPECT_EQ(convertText(*convertText("\xC3\xA9", encodingUTF8, encoding), encoding, encodingUTF8),
                  "\xC3\xA9");
    EXPECT_EQ(convertText("\xC3\xA9", encodingUTF8, encodingASCII), "?");
    EXPECT_EQ(convertText("abc", encodingMacRoman, encodingWindowsLatin1), "abc") << "ASCII needs no table";
}

TEST(WithoutPlatform, MacRomanAndWindowsTextNameTheMissingLibrary)
{
    for (std::uint32_t encoding : {encodingMacRoman, encodingWindowsLatin1}) {
        for (const auto& message :
             {thrownBy<ProgramError>([&] { convertText("\x8E", encoding, encodingUTF8); }),
              thrownBy<ProgramError>([&] { convertText("\xC3\xA9", encodingUTF8, encoding); })})
            EXPECT_NE(message.find("link the program with libkvxplatform.so"), std::string::npos) << message;
    }
}

} // namespace
