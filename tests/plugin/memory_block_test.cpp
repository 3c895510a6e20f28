// Memory blocks built from bytes.
#include "plugin/memory_block.h"
#include "tests/plugin/host_fixture.h"

#include <new>
#include <stdexcept>

namespace {

class MemoryBlockTest : public HostTest {
protected:
    void expectOutOfMemory(const std::string& message)
    {
        ASSERT_EQ(host.raised().size(), 1u);
        EXPECT_EQ(host.raised()[0].className, "OutOfMemoryException");
        EXPECT_EQ(host.raised()[0].message, message);
        EXPECT_EQ(host.raised()[0].number, 0);
        EXPECT_EQ(host.live(), Notes{});
    }
};

const char bytes[] = "abc\0def";
const std::string failed8 = "Failed to allocate a memoryblock with 8 bytes in size.";

TEST_F(MemoryBlockTest, HasACopyOfTheBytes)
{
    for (long long size : {1, 2, 8}) {
        enter(2016.0);
        REALmemoryBlockStruct* block = REALBuildMemoryblock(bytes, size);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(host.calls(),
                  (Notes{"newMemoryBlock(" + std::to_string(size) + ") = m1", "memoryBlockGetPtr(m1)"}));
        EXPECT_EQ(host.bytesOf(block), std::string(bytes, static_cast<std::size_t>(size)));
        EXPECT_EQ(host.references(block), 1) << "the reference for the caller";
        host.drop(block);
    }
}

TEST_F(MemoryBlockTest, IsNullWithoutDataAndRaisesNoException)
{
    // clang-format off
    const struct { const void* data; long long size; const char* why; } facts[] = {
        {bytes,   0,                  "no size"},
        {bytes,   -1,                 "a negative size"},
        {bytes,   -0x7FFFFFFFLL,      "a negative size"},
        {bytes,   -0x7FFFFFFFFFFFLL,  "a negative size whose low half is positive"},
        {nullptr, 1,                  "no data"},
        {nullptr, 0x7FFFFFFF,         "no data and a size that is too large"},
        {nullptr, 0,                  "neither"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        EXPECT_EQ(REALBuildMemoryblock(fact.data, fact.size), nullptr) << fact.why;
        EXPECT_EQ(host.notes(), Notes{}) << fact.why;
    }
}

TEST_F(MemoryBlockTest, IsNotRequestedFromTheHostIfItIsTooLarge)
{
    // clang-format off
    const struct { long long size; bool isRequested; const char* message; } facts[] = {
        {0x7FFFFFFE,            true,  "Failed to allocate a memoryblock with 2147483646 bytes in size."},
        {0x7FFFFFFF,            false, "Failed to allocate a memoryblock with 2147483647 bytes in size."},
        {0x80000000,            false, "Failed to allocate a memoryblock with 2147483648 bytes in size."},
        {0x100000001,           false, "Failed to allocate a memoryblock with 4294967297 bytes in size."},
        {0x7FFFFFFFFFFFFFFFLL,  false, "Failed to allocate a memoryblock with 9223372036854775807 bytes in size."},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.size);
        enter(2016.0);
        EXPECT_EQ(REALBuildMemoryblock(bytes, fact.size), nullptr);
        expectOutOfMemory(fact.message);
        EXPECT_EQ(host.calls()[0].rfind("newMemoryBlock(", 0) == 0, fact.isRequested) << host.calls()[0];
    }
}

TEST_F(MemoryBlockTest, RaisesWhenTheHostReturnsNull)
{
    host.failNext("newMemoryBlock");
    EXPECT_EQ(REALBuildMemoryblock(bytes, 8), nullptr);
    expectOutOfMemory(failed8);

    enter(2016.0);
    withhold("newMemoryBlock");
    EXPECT_EQ(REALBuildMemoryblock(bytes, 8), nullptr);
    expectOutOfMemory(failed8);
}

TEST_F(MemoryBlockTest, IsReleasedWithoutAnAddress)
{
    const Notes released = {"newMemoryBlock(8) = m1", "memoryBlockGetPtr(m1)", "REALUnlockObject(m1)"};
    host.blocksHaveBytes = false;
    EXPECT_EQ(REALBuildMemoryblock(bytes, 8), nullptr);
    Notes calls = host.calls();
    calls.resize(3);
    EXPECT_EQ(calls, released) << "before the exception";
    expectOutOfMemory(failed8);

    host.blocksHaveBytes = true;
    enter(2016.0);
    withhold("memoryBlockGetPtr");
    EXPECT_EQ(REALBuildMemoryblock(bytes, 8), nullptr);
    calls = host.calls();
    calls.resize(2);
    EXPECT_EQ(calls, (Notes{released[0], released[2]}));
    expectOutOfMemory(failed8);
}

TEST_F(MemoryBlockTest, RaisesTheSameWhenTheHostThrowsBadAlloc)
{
    for (const char* service : {"newMemoryBlock", "memoryBlockGetPtr"}) {
        SCOPED_TRACE(service);
        enter(2016.0);
        host.inNext(service, [] { throw std::bad_alloc(); });
        EXPECT_EQ(REALBuildMemoryblock(bytes, 8), nullptr);
        expectOutOfMemory(failed8);
    }
}

TEST_F(MemoryBlockTest, IsReleasedWhenTheHostThrows)
{
    host.inNext("memoryBlockGetPtr", [] { throw std::runtime_error("not memory"); });
    EXPECT_THROW(REALBuildMemoryblock(bytes, 8), std::runtime_error) << "the exception border catches it";
    EXPECT_TRUE(host.raised().empty());
    EXPECT_EQ(host.live(), Notes{});
}

} // namespace
