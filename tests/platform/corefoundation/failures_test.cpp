// Tests in which each memory allocation of each call fails. The call then returns an error or leaves its
// string unchanged.
#include "tests/platform/corefoundation/text.h"
#include "tests/support/allocator_hook.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

/// Repeat `attempt` with 0, 1, 2… successful allocations until the attempt succeeds.
/// Returns  the number of failed attempts.
template <class Attempt>
int countFailures(Attempt attempt)
{
    for (int allowed = 0;; ++allowed) {
        allocator_hook::failNew(allowed, INT_MAX);
        const bool isDone = attempt();
        const bool ranOut = allocator_hook::stopFailing() > 0;
        if (isDone) return allowed;
        if (!ranOut) {
            ADD_FAILURE() << "failed with memory left";
            return allowed;
        }
    }
}

const std::u16string longText(1000, u'\u00E9'); // too long for a string object without a memory allocation

TEST(StringMemory, AFailedAllocationGivesNull)
{
    const text::Owned string = text::make(longText);
    const auto make = [](auto create) {
        return countFailures([&] {
            const CFStringRef made = create();
            if (made) CFRelease(made);
            return made != nullptr;
        });
    };
    EXPECT_GE(make([] {
                  return CFStringCreateWithCharacters(
                      nullptr, reinterpret_cast<const UniChar*>(longText.data()), 1000);
              }),
              2);
    const std::string bytes(1000, 'a');
    EXPECT_GE(make([&] { return CFStringCreateWithCString(nullptr, bytes.c_str(), kCFStringEncodingUTF8); }),
              3);
    EXPECT_GE(make([&]() -> CFStringRef { return CFStringCreateMutableCopy(nullptr, 0, string.get()); }), 2);
    EXPECT_EQ(text::alive(), 1u);
}

TEST(StringMemory, AFailedConversionGivesAnEmptyText)
{
    const text::Owned string = text::make(longText);
    char buffer[3001];
    EXPECT_GE(countFailures([&] {
                  buffer[0] = '#';
                  const bool isDone =
                      CFStringGetCString(string.get(), buffer, sizeof buffer, kCFStringEncodingUTF8);
                  if (!isDone) {
                      EXPECT_EQ(buffer[0], '\0');
                  }
                  return isDone;
              }),
              1);
}

TEST(StringMemory, AFailedNormalisationChangesNothing)
{
    const text::Owned string = text::make(longText);
    const CFMutableStringRef copy = CFStringCreateMutableCopy(nullptr, 0, string.get());
    EXPECT_GE(countFailures([&] {
                  CFStringNormalize(copy, kCFStringNormalizationFormD);
                  const CFIndex length = CFStringGetLength(copy);
                  EXPECT_TRUE(length == 1000 || length == 2000) << length;
                  return length == 2000;
              }),
              2);
    CFRelease(copy);
}

} // namespace
