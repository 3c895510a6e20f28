// Tests of strings, memory blocks, arrays, values, references and the leak report.
#include "tests/host/runtime/services.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace {

using namespace host;
using test::version;

TEST(String, RecordNamesBufferLengthAndEncoding)
{
    Host host(version(2015.99));
    const auto string = String::of("abc");
    const auto* record = string.get();
    EXPECT_EQ(std::memcmp(record->buffer + 1, "abc\0\0\0\0\0", 8), 0)
        << "a zero byte and four more zeros follow the text";
    EXPECT_EQ(record->length, 3);
    EXPECT_EQ(record->encoding, Word{encodingUTF8});
    const auto* words = reinterpret_cast<const Word*>(record);
    EXPECT_EQ(words[1], reinterpret_cast<Word>(record->buffer))
        << "the second word is the address of the buffer";
    EXPECT_EQ(words[3], 3u) << "the fourth word is the length";
    EXPECT_EQ(words[4], Word{encodingUTF8}) << "the fifth word is the encoding";

    const auto empty = String::of("");
    ASSERT_TRUE(empty);
    EXPECT_EQ(empty.get()->length, 0);
    EXPECT_EQ(std::memcmp(empty.get()->buffer + 1, "\0\0\0\0\0", 5), 0);
}

TEST(String, RecordHasPoisonFromVersion2016)
{
    Host host(version(2016.0));
    const auto string = String::of("abc");
    EXPECT_EQ(string.get()->length, -1);
    EXPECT_NE(string.get()->buffer + 1, string.bytes().data());
    EXPECT_NE(string.get()->encoding, Word{encodingUTF8});
    EXPECT_EQ(string.bytes(), "abc") << "the services still reach the bytes";
}

TEST(String, RecordIsReadableWithoutTheVersionService)
{
    auto options = version(2016.0);
    options.withheld.insert("REALGetRBVersion");
    Host host(options);
    EXPECT_EQ(host.visibleVersion(), 0.0);
    EXPECT_EQ(String::of("abc").get()->length, 3);
}

TEST(String, TextOfUnknownEncodingIsUTF8OrMacRoman)
{
    Host host;
    EXPECT_EQ(String::ofBytes("\xC3\xA9", encodingUnknown).text(), "\xC3\xA9")
        << "the bytes are well-formed UTF-8";
    EXPECT_EQ(String::ofBytes("\x8E", encodingUnknown).text(), "\xC3\xA9")
        << "the bytes are not UTF-8, so they are read as Mac Roman";
    EXPECT_EQ(String::ofBytes("\xE9", encodingWindowsLatin1).text(), "\xC3\xA9");
    EXPECT_EQ(String().text(), "");
    EXPECT_EQ(String().encoding(), std::uint32_t{encodingUnknown});
}

TEST(MemoryBlock, HasItsSizeAndZeros)
{
    Host host;
    const auto block = MemoryBlock::ofSize(5);
    ASSERT_TRUE(block);
    EXPECT_EQ(block.size(), 5u);
    EXPECT_EQ(block.bytes(), std::string_view("\0\0\0\0\0", 5));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(MemoryBlock::ofSize(64).data()) % 16, 0u);

    const auto empty = MemoryBlock::ofSize(0);
    ASSERT_TRUE(empty) << "a size of 0 is allowed";
    EXPECT_EQ(empty.data(), nullptr);
    EXPECT_EQ(empty.size(), 0u);

    EXPECT_FALSE(MemoryBlock::ofSize(-1));
    EXPECT_FALSE(MemoryBlock::ofSize(0x80000000LL));
    EXPECT_EQ(MemoryBlock().size(), 0u);
    EXPECT_EQ(MemoryBlock::copyOf(std::vector<float>{1, 2}).as<float>()[1], 2.0f);
}

// The size in bytes of each array overflows std::size_t, and the overflowed size could be allocated.
TEST(Array, OfTooManyElementsIsRefused)
{
    Host host(version(2015.0));
    constexpr std::size_t most = std::numeric_limits<std::size_t>::max();
    for (std::size_t count : {most / 8 + 2, most / 4, most})
        EXPECT_THROW(Array::ofType(Base::float64, count), std::bad_alloc) << count;
}

TEST(Array, GrowsAndShrinks)
{
    Host host(version(2015.0));
    auto array = Array::of(std::vector<HostInteger>{10, 20});
    EXPECT_EQ(array.upperBound(), 1);
    array.insert(0, 5);
    array.append(30);
    array.remove(1);
    array.put(1, -1);
    EXPECT_EQ(array.numbers(), (std::vector<double>{5, -1, 30}));
    EXPECT_EQ(static_cast<HostInteger*>(array.get()->elements)[2], 30)
        << "the eighth word is the address of the elements";
    EXPECT_EQ(reinterpret_cast<Word*>(array.get())[7], reinterpret_cast<Word>(array.get()->elements));

    EXPECT_EQ(Array::ofType(Base::single).upperBound(), -1);
    EXPECT_EQ(Array().upperBound(), -1);
    for (HostInteger index : {HostInteger{-1}, HostInteger{3}}) {
        EXPECT_THROW(array.at(index), ProgramError);
        EXPECT_THROW(array.put(index, 0), ProgramError);
        EXPECT_THROW(array.remove(index), ProgramError);
    }
    EXPECT_THROW(array.insert(4, 0), ProgramError);
    EXPECT_THROW(array.append("text"), ProgramError);
    EXPECT_THROW(Array().at(0), ProgramError);
}

TEST(Array, RecordHasNullOrPoisonForHiddenElements)
{
    {
        auto options = version(2015.0);
        options.isArrayStorageReadable = false;
        Host host(options);
        EXPECT_EQ(Array::of(std::vector<double>{1}).get()->elements, nullptr);
    }
    Host host(version(2016.0));
    const auto array = Array::of(std::vector<double>{1});
    EXPECT_NE(array.get()->elements, nullptr);
    EXPECT_EQ(reinterpret_cast<Word>(array.get()->elements), Word{0xBAD0BAD1});
    EXPECT_EQ(array.at(0).number(), 1.0);
}

TEST(Array, OwnsItsElements)
{
    Host host;
    const auto text = String::of("x");
    {
        auto array = Array::ofType(Base::string);
        array.append(text);
        array.append(text);
        EXPECT_EQ(referenceCount(text.get()), 3u);
        array.put(0, "other");
        EXPECT_EQ(referenceCount(text.get()), 2u);
        EXPECT_EQ(array.at(1).text(), "x");
        array.remove(1);
        EXPECT_EQ(referenceCount(text.get()), 1u);
        array.append(text);
        array.append(nullptr);
        EXPECT_TRUE(array.at(2).isNil());
    }
    EXPECT_EQ(referenceCount(text.get()), 1u);

    auto mixed = Array::ofType(Base::variant);
    mixed.append(1.5);
    mixed.append("text");
    mixed.append(nullptr);
    EXPECT_EQ(mixed.at(0).number(), 1.5);
    EXPECT_EQ(mixed.at(1).text(), "text");
    EXPECT_TRUE(mixed.at(2).isNil());
}

TEST(Value, KnowsItsKindAndConvertsNumbers)
{
    Host host;
    EXPECT_TRUE(Value().isNil());
    EXPECT_TRUE(Value(nullptr).isNil());
    EXPECT_TRUE(Value(static_cast<const char*>(nullptr)).isNil());
    EXPECT_TRUE(Value(Object()).isNil());
    EXPECT_TRUE(Value(true).isBoolean());
    EXPECT_TRUE(Value(0).isInteger());
    EXPECT_TRUE(Value(1.0f).isFloating());
    EXPECT_TRUE(Value("").isText());

    EXPECT_EQ(Value(3).number(), 3.0);
    EXPECT_EQ(Value(2.9).integer(), 2) << "a number is truncated toward zero";
    EXPECT_EQ(Value(-2.9f).integer(), -2);
    EXPECT_EQ(Value(std::nan("")).integer(), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(Value(std::numeric_limits<double>::infinity()).integer(),
              std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(Value(-9223372036854775808.0).integer(), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(Value(9223372036854775808.0).unsigned64(), 0x8000000000000000u);
    EXPECT_EQ(Value(18446744073709551615u).unsigned64(), 0xFFFFFFFFFFFFFFFFu);
    EXPECT_EQ(Value(18446744073709551615u).number(), 18446744073709551616.0);
    EXPECT_EQ(Value().text(), "");

    EXPECT_THROW(Value(1).boolean(), ProgramError);
    EXPECT_THROW(Value(true).integer(), ProgramError);
    EXPECT_THROW(Value("1").number(), ProgramError);
    EXPECT_THROW(Value(1).text(), ProgramError);
    EXPECT_THROW(Value("x").object(), ProgramError);
    EXPECT_THROW(Value("x").memoryBlock(), ProgramError);
    EXPECT_FALSE(Value().object());
}

TEST(Value, IsDescribedAndPrinted)
{
    Host host;
    const struct {
        Value value;
        const char* described;
        const char* printed;
    } facts[] = {
        {{}, "nil", "nil"},
        {true, "a boolean", "true"},
        {-5, "an integer", "-5"},
        {18446744073709551615u, "an integer", "18446744073709551615"},
        {0.1f, "a single", "0.1"},
        {0.1, "a double", "0.1"},
        {"caf\xC3\xA9", "a string", "caf\xC3\xA9"},
        {MemoryBlock::ofSize(3), "a memory block", "a memory block of 3 bytes"},
        {Array::of(std::vector<float>{1, 2.5f}), "an array of Single", "(1, 2.5)"},
        {FolderItem::at("/a"), "a folder item", "/a"},
        {host.create("Dictionary"), "an object of class Dictionary", "an object of class Dictionary"},
    };
    for (const auto& fact : facts) {
        EXPECT_EQ(fact.value.describe(), fact.described);
        EXPECT_EQ(fact.value.print(), fact.printed);
    }
}

TEST(Value, ComparesAsADictionaryKey)
{
    Host host;
    const auto block = MemoryBlock::ofSize(1);
    const struct {
        Value left, right;
        bool same;
    } facts[] = {
        {1, 1, true},
        {1, 1.0, true},
        {1, 2, false},
        {-1, 18446744073709551615u, false},
        {18446744073709551615u, 18446744073709551615u, true},
        {"a", String::ofBytes("a", encodingASCII), true},
        {"a", "A", false},
        {true, true, true},
        {true, 1, false},
        {"1", 1, false},
        {{}, {}, true},
        {{}, 0, false},
        {block, block, true},
        {block, MemoryBlock::ofSize(1), false},
    };
    for (const auto& fact : facts) {
        EXPECT_EQ(sameValue(fact.left, fact.right), fact.same)
            << fact.left.print() << " " << fact.right.print();
        EXPECT_EQ(sameValue(fact.right, fact.left), fact.same);
    }
}

TEST(Reference, IsCounted)
{
    Host host;
    auto block = MemoryBlock::ofSize(1);
    const void* address = block.get();
    EXPECT_EQ(referenceCount(address), 1u);
    {
        const Value copy = block;
        const AnyRef another = block;
        EXPECT_EQ(referenceCount(address), 3u);
    }
    EXPECT_EQ(referenceCount(address), 1u);
    const auto moved = std::move(block);
    EXPECT_EQ(referenceCount(address), 1u);
    EXPECT_EQ(kindOf(address), Kind::memoryBlock);

    auto* detached = MemoryBlock(moved).detach();
    EXPECT_EQ(referenceCount(address), 2u);
    release(detached);
    EXPECT_EQ(referenceCount(address), 1u);
    EXPECT_TRUE(host.misuses().empty());
}

TEST(Reference, ToADeadAddressIsMisuse)
{
    Host host;
    int something = 0;
    retain(&something);
    release(&something);
    retain(nullptr);
    release(nullptr);
    EXPECT_EQ(host.misuses().size(), 2u);
    EXPECT_EQ(referenceCount(&something), 0u);
    EXPECT_FALSE(isLive(&something));
    EXPECT_THROW(kindOf(&something), ProgramError);
    host.clearMisuses();
    EXPECT_TRUE(host.misuses().empty());
}

TEST(LeakReport, CountsByKindAndClass)
{
    Host host;
    EXPECT_TRUE(host.leaks().isClean());
    EXPECT_EQ(host.leaks().text(), "");
    {
        const auto dictionaries = {host.create("Dictionary"), host.create("Dictionary")};
        const auto exception = host.create("NilObjectException");
        const auto string = String::of("x");
        const auto block = MemoryBlock::ofSize(1);
        const auto array = Array::ofType(Base::integer);
        const auto item = FolderItem::at("/");
        const auto report = host.leaks();
        EXPECT_EQ(report.total(), 7u);
        EXPECT_EQ(report.count(Kind::object), 3u);
        EXPECT_EQ(report.countOfClass("dictionary"), 2u);
        EXPECT_EQ(report.countOfClass("RuntimeException"), 0u);
        EXPECT_EQ(report.text(),
                  "2 objects of class Dictionary\n1 object of class NilObjectException\n1 string\n"
                  "1 memory block\n1 array\n1 folder item\n");
        EXPECT_EQ(dictionaries.size(), 2u);
    }
    EXPECT_TRUE(host.leaks().isClean());
}

TEST(Host, IsTheOnlyOne)
{
    EXPECT_EQ(Host::currentOrNull(), nullptr);
    EXPECT_THROW(Host::current(), ProgramError);
    EXPECT_THROW(String::of("x"), ProgramError);
    MemoryBlock outliving;
    {
        Host host;
        EXPECT_EQ(&Host::current(), &host);
        EXPECT_THROW(Host(), ProgramError);
        EXPECT_EQ(&Host::current(), &host);
        outliving = MemoryBlock::ofSize(1);
        MemoryBlock::ofSize(1).detach(); // a leaked block, which the destructor of the host frees
        EXPECT_EQ(host.leaks().count(Kind::memoryBlock), 2u);
    }
    EXPECT_EQ(Host::currentOrNull(), nullptr);
    Host another;
    EXPECT_TRUE(another.leaks().isClean());
}

} // namespace
