// Tests of memory handles.
#include <Carbon/Carbon.h>
#include <KVXPlatform/KVXPlatform.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace {

long alive()
{
    KVXLiveCount rows[32];
    const std::uint32_t kinds = KVXPlatformGetLiveCounts(rows, 32);
    for (std::uint32_t i = 0; i < kinds; ++i)
        if (std::string(rows[i].kind) == "Handle") return static_cast<long>(rows[i].count);
    return 0;
}

TEST(Handles, HaveTheRequestedSize)
{
    for (Size size : {0, 1, 2, 4, 5, 255, 4096, 1000003}) {
        for (Handle (*make)(Size) : {NewHandle, NewHandleClear}) {
            const Handle handle = make(size);
            ASSERT_NE(handle, nullptr) << size;
            ASSERT_NE(*handle, nullptr) << "size 0 has a block, too";
            EXPECT_EQ(MemError(), noErr);
            EXPECT_EQ(GetHandleSize(handle), size);
            EXPECT_EQ(MemError(), noErr);
            if (make == NewHandleClear)
                for (Size i = 0; i < size; ++i) ASSERT_EQ((*handle)[i], 0) << i;
            std::memset(*handle, 0xFF, static_cast<std::size_t>(size)); // the whole memory block is writable
            EXPECT_EQ(alive(), 1);
            DisposeHandle(handle);
            EXPECT_EQ(MemError(), noErr);
            EXPECT_EQ(alive(), 0);
        }
    }
}

// The C library's allocator reuses the memory block that the loop has just written and freed.
TEST(Handles, AreClearInReusedMemory)
{
    for (int i = 0; i < 100; ++i) {
        const Handle handle = NewHandleClear(200);
        for (int at = 0; at < 200; ++at) ASSERT_EQ((*handle)[at], 0);
        std::memset(*handle, 0xFF, 200);
        DisposeHandle(handle);
    }
}

TEST(Handles, OfANegativeSizeAreRefused)
{
    const Size least = static_cast<Size>(~(~0UL >> 1));
    for (Size size : {Size{-1}, Size{-1000}, least}) {
        EXPECT_EQ(NewHandle(size), nullptr) << size;
        EXPECT_EQ(MemError(), memFullErr);
        EXPECT_EQ(NewHandleClear(size), nullptr) << size;
        EXPECT_EQ(MemError(), memFullErr);
        EXPECT_EQ(MemError(), noErr) << "reading clears the error";
    }
    EXPECT_EQ(alive(), 0);
}

TEST(Handles, KeepTheirContentsWhenResized)
{
    const Handle handle = NewHandle(4);
    std::memcpy(*handle, "abcd", 4);
    const struct {
        Size size;
        const char* contents;
    } facts[] = {{8, "abcd"}, {100000, "abcd"}, {3, "abc"}, {3, "abc"}, {1, "a"}, {0, ""}, {10, ""}};
    for (const auto& fact : facts) {
        SetHandleSize(handle, fact.size);
        EXPECT_EQ(MemError(), noErr);
        EXPECT_EQ(GetHandleSize(handle), fact.size);
        EXPECT_EQ(std::memcmp(*handle, fact.contents, std::strlen(fact.contents)), 0) << fact.size;
        if (fact.size > 4) (*handle)[fact.size - 1] = 1;
    }
    std::memcpy(*handle, "0123456789", 10);
    SetHandleSize(handle, -1);
    EXPECT_EQ(MemError(), memFullErr);
    EXPECT_EQ(GetHandleSize(handle), 10) << "unchanged after a refusal";
    EXPECT_EQ(std::memcmp(*handle, "0123456789", 10), 0);
    HLock(handle);
    EXPECT_EQ(MemError(), noErr);
    HUnlock(handle);
    EXPECT_EQ(GetHandleSize(handle), 10);
    DisposeHandle(handle);
    EXPECT_EQ(alive(), 0);
}

TEST(Handles, ThatAreInvalidAreReported)
{
    const Handle disposed = NewHandle(10);
    DisposeHandle(disposed);
    Ptr block = nullptr;
    const struct {
        Handle handle;
        OSErr error;
    } facts[] = {{nullptr, nilHandleErr}, {disposed, memWZErr}, {&block, memWZErr}};
    for (const auto& fact : facts) {
        EXPECT_EQ(GetHandleSize(fact.handle), 0);
        EXPECT_EQ(MemError(), fact.error);
        SetHandleSize(fact.handle, 5);
        EXPECT_EQ(MemError(), fact.error);
        EXPECT_EQ(MemError(), noErr);
        DisposeHandle(fact.handle); // the second row's handle has already been disposed of
        EXPECT_EQ(MemError(), fact.handle ? fact.error : noErr) << "NULL is not an error";
    }
    EXPECT_EQ(alive(), 0);
}

TEST(Handles, ReportErrorsToTheCallingThread)
{
    EXPECT_EQ(NewHandle(-1), nullptr);
    std::thread([] {
        EXPECT_EQ(MemError(), noErr);
        GetHandleSize(nullptr);
    }).join();
    EXPECT_EQ(MemError(), memFullErr);
}

TEST(Handles, MayBeUsedBySeveralThreads)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([i] {
            for (Size size = 0; size < 500; ++size) {
                const Handle handle = NewHandle(size);
                std::memset(*handle, i, static_cast<std::size_t>(size));
                SetHandleSize(handle, size + 10);
                EXPECT_EQ(GetHandleSize(handle), size + 10);
                for (Size at = 0; at < size; ++at) ASSERT_EQ((*handle)[at], i);
                DisposeHandle(handle);
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(alive(), 0);
}

} // namespace
