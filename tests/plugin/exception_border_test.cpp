#include "plugin/exception_border.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <type_traits>

namespace {

double half(int value) { return value / 2.0; }
double throwsError(int) { throw std::runtime_error("an error"); }
int throwsNumber() { throw 42; }
void throwsText() { throw "text"; }

TEST(CatchAll, ReturnsTheResultOfACallThatDoesNotThrow)
{
    EXPECT_EQ(catchAll([] { return 7; }), 7);
    EXPECT_EQ(catchAll([] { return 7; }, -1), 7);
    EXPECT_EQ(*catchAll([] { return std::make_unique<int>(7); }), 7);
}

TEST(CatchAll, ReturnsTheNeutralValueOfACallThatThrows)
{
    EXPECT_EQ(catchAll(throwsNumber), 0);
    EXPECT_EQ(catchAll([] { return throwsError(1); }), 0.0);
    EXPECT_EQ(catchAll([]() -> bool { throw 1; }), false);
    EXPECT_EQ(catchAll([]() -> std::unique_ptr<int> { throw 1; }), nullptr);
    EXPECT_NO_THROW(catchAll(throwsText));
}

TEST(CatchAll, ReturnsTheFallbackOfACallThatThrows)
{
    EXPECT_EQ(catchAll(throwsNumber, -1), -1);
    EXPECT_EQ(catchAll([] { return throwsError(1); }, 0.25), 0.25);
}

TEST(CatchAll, WrapsAFunctionWithoutChangingItsType)
{
    static_assert(std::is_same_v<decltype(catchingAll<half>), double (*const)(int)>);
    EXPECT_EQ(catchingAll<half>(3), 1.5);
    EXPECT_EQ(catchingAll<throwsError>(3), 0.0);
    EXPECT_EQ((catchingAll<throwsNumber, -7>()), -7);
    EXPECT_NO_THROW(catchingAll<throwsText>());
}

} // namespace
