// The sound output component's entry point, called as the Component Manager calls it.
#include "plugin/classes.h"

#include <Carbon/Carbon.h>
#include <gtest/gtest.h>

namespace {

TEST(SoundStreamDispatcher, RefusesSelectorsItDoesNotKnow)
{
    const auto dispatch = reinterpret_cast<ComponentRoutineProcPtr>(soundStreamDispatcher);
    ASSERT_NE(dispatch, nullptr);
    for (const SInt16 selector : {-32768, -6, -5, 0, 2, 5, 255}) {
        ComponentParameters request = {0, sizeof(long), selector, {7}};
        EXPECT_EQ(dispatch(&request, nullptr), badComponentSelector) << selector;
    }
}

} // namespace
