// Live-object counts.
#include <CoreAudio/CoreAudio.h>
#include <CoreFoundation/CoreFoundation.h>
#include <KVXPlatform/KVXPlatform.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

OSStatus quiet(AudioDeviceID, const AudioTimeStamp*, const AudioBufferList*, const AudioTimeStamp*,
               AudioBufferList*, const AudioTimeStamp*, void*)
{
    return noErr;
}

/// Returns  lines of the form "kind count", in the order of the rows that the library returns.
std::vector<std::string> report(uint32_t capacity = 16)
{
    std::vector<KVXLiveCount> rows(capacity);
    const uint32_t kinds = KVXPlatformGetLiveCounts(rows.data(), capacity);
    std::vector<std::string> lines;
    for (uint32_t i = 0; i < std::min(kinds, capacity); ++i)
        lines.push_back(std::string(rows[i].kind) + " " + std::to_string(rows[i].count));
    return lines;
}

using Lines = std::vector<std::string>;

TEST(LiveCounts, AreEmptyWithoutObjects)
{
    EXPECT_EQ(KVXPlatformGetLiveCounts(nullptr, 0), 0u);
    EXPECT_EQ(report(), Lines{});
}

TEST(LiveCounts, CountObjectsByKind)
{
    const AudioDeviceID device = KVXPlatformBuiltInSimulatedDevice();
    const CFStringRef a = CFStringCreateWithCString(nullptr, "a", kCFStringEncodingUTF8);
    const CFStringRef b = CFStringCreateMutableCopy(nullptr, 0, a);
    CFRetain(a);
    EXPECT_EQ(report(), (Lines{"CFString 2"})) << "objects, not references";
    ASSERT_EQ(AudioDeviceAddIOProc(device, quiet, nullptr), noErr);
    EXPECT_EQ(report(), (Lines{"CFString 2", "IOProc 1"})) << "sorted by kind";
    EXPECT_EQ(KVXPlatformGetLiveCounts(nullptr, 0), 2u) << "the number of kinds without rows";
    EXPECT_EQ(report(1).size(), 1u) << "at most `capacity` rows";
    CFRelease(a);
    CFRelease(b);
    EXPECT_EQ(report(), (Lines{"CFString 1", "IOProc 1"}));
    CFRelease(a);
    ASSERT_EQ(AudioDeviceRemoveIOProc(device, quiet), noErr);
    EXPECT_EQ(report(), Lines{});
}

TEST(LiveCounts, AreCountedOnAllThreads)
{
    std::vector<CFStringRef> strings[4];
    const auto onFourThreads = [&](auto work) {
        std::vector<std::thread> threads;
        for (auto& each : strings) threads.emplace_back([&each, work] { work(each); });
        for (auto& thread : threads) thread.join();
    };
    onFourThreads([](std::vector<CFStringRef>& each) {
        for (int i = 0; i < 1000; ++i)
            each.push_back(CFStringCreateWithCString(nullptr, "text", kCFStringEncodingUTF8));
    });
    EXPECT_EQ(report(), Lines{"CFString 4000"});
    onFourThreads([](std::vector<CFStringRef>& each) {
        for (const CFStringRef string : each) CFRelease(string);
    });
    EXPECT_EQ(report(), Lines{});
}

} // namespace
