// Bytes for the eye, and from the hand.
#include "host/kvx/text/hex_text.h"

#include "host/kvx/text/failure.h"

#include <gtest/gtest.h>

namespace {

TEST(HexText, DumpsSixteenBytesALine)
{
    EXPECT_EQ(kvx::dumpBytes(""), "");
    std::string bytes;
    for (int i = 0; i < 18; ++i) bytes += char(0x78 + i);
    EXPECT_EQ(kvx::dumpBytes(bytes),
              "0000  78 79 7a 7b 7c 7d 7e 7f 80 81 82 83 84 85 86 87  |xyz{|}~.........|\n"
              "0010  88 89                                            |..|");
}

TEST(HexText, ReadsBytes)
{
    EXPECT_EQ(kvx::parseHex("0000803f"), std::string("\0\0\x80\x3F", 4));
    EXPECT_EQ(kvx::parseHex(" 00 00\t80\n3F "), std::string("\0\0\x80\x3F", 4));
    EXPECT_EQ(kvx::parseHex(""), "");
    for (const char* text : {"0", "000", "0x00", "gg", "-1", "+1", "0g"})
        EXPECT_THROW(kvx::parseHex(text), kvx::WrongUsage) << text;
}

} // namespace
