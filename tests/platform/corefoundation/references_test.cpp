// Tests of reference counts.
#include "tests/platform/corefoundation/text.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

CFStringRef greeting()
{
    return CFStringCreateWithCString(kCFAllocatorDefault, "hello", kCFStringEncodingASCII);
}

TEST(References, StartWithTheCreatorsOne)
{
    ASSERT_EQ(text::alive(), 0u);
    const CFStringRef string = greeting();
    EXPECT_EQ(CFGetRetainCount(string), 1);
    EXPECT_EQ(text::alive(), 1u);

    EXPECT_EQ(CFRetain(string), string) << "returns its argument";
    EXPECT_EQ(CFGetRetainCount(string), 2);
    EXPECT_EQ(text::alive(), 1u) << "one object";

    CFRelease(string);
    EXPECT_EQ(CFGetRetainCount(string), 1);
    EXPECT_EQ(CFStringGetLength(string), 5);
    CFRelease(string);
    EXPECT_EQ(text::alive(), 0u);
}

TEST(References, AreSeparateForACopy)
{
    const CFStringRef string = greeting();
    const CFMutableStringRef copy = CFStringCreateMutableCopy(kCFAllocatorDefault, 0, string);
    EXPECT_EQ(CFGetRetainCount(string), 1);
    EXPECT_EQ(CFGetRetainCount(copy), 1);
    EXPECT_EQ(text::alive(), 2u);
    CFRelease(string);
    EXPECT_EQ(text::units(copy), u"hello");
    CFRelease(copy);
    EXPECT_EQ(text::alive(), 0u);
}

TEST(References, AreCountedOnAllThreads)
{
    const CFStringRef string = greeting();
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([=] {
            for (int i = 0; i < 10000; ++i) {
                CFRetain(string);
                CFRelease(greeting());
                CFRelease(string);
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(CFGetRetainCount(string), 1);
    EXPECT_EQ(text::alive(), 1u);
    CFRelease(string);
}

TEST(ReferencesDeathTest, NullEndsTheProcess)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(CFRetain(nullptr), "CFRetain was given NULL");
    EXPECT_DEATH(CFRelease(nullptr), "CFRelease was given NULL");
    EXPECT_DEATH(CFGetRetainCount(nullptr), "CFGetRetainCount was given NULL");
    EXPECT_DEATH(CFStringGetLength(nullptr), "CFStringGetLength was given NULL");
    char buffer[4];
    EXPECT_DEATH(CFStringGetCString(nullptr, buffer, 4, kCFStringEncodingUTF8),
                 "CFStringGetCString was given NULL");
    EXPECT_DEATH(CFStringCreateMutableCopy(nullptr, 0, nullptr), "CFStringCreateMutableCopy was given NULL");
    EXPECT_DEATH(CFStringNormalize(nullptr, kCFStringNormalizationFormC),
                 "CFStringNormalize was given a string");
}

TEST(ReferencesDeathTest, NormalisingAnImmutableStringEndsTheProcess)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const text::Owned string = text::make(u"é");
    EXPECT_DEATH(CFStringNormalize(const_cast<CFMutableStringRef>(string.get()), kCFStringNormalizationFormD),
                 "CFStringNormalize was given a string that cannot change");
}

} // namespace
