// The sound output component's dispatcher, called as the Component Manager calls it.
#include "plugin/classes.h"

#include <Carbon/Carbon.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

struct ComponentParameters;

namespace {

using Dispatcher = ComponentResult (*)(ComponentParameters*, Handle);

TEST(SoundStreamDispatcher, RefusesEverySelector)
{
    const auto dispatch = reinterpret_cast<Dispatcher>(soundStreamDispatcher);
    ASSERT_NE(dispatch, nullptr);
    EXPECT_EQ(dispatch(nullptr, nullptr), badComponentSelector);
    EXPECT_EQ(static_cast<UInt32>(dispatch(nullptr, nullptr)), 0x80008002u);

    // The request is flags, size of the parameters, selector, parameters; whichever it is, it stays as it is.
    for (const std::int16_t selector : {-1, -5, 0, 1, 0x105, 0x7FFF}) {
        const struct {
            std::uint8_t flags, size;
            std::int16_t what;
            std::int32_t parameters[4];
        } request = {0, 16, selector, {1, 2, 3, 4}};
        auto copy = request;
        char storage[4] = {'s', 't', 'o', 'r'};
        char* pointer = storage;
        EXPECT_EQ(dispatch(reinterpret_cast<ComponentParameters*>(&copy), &pointer), badComponentSelector)
            << selector;
        EXPECT_EQ(std::memcmp(&copy, &request, sizeof copy), 0) << selector;
        EXPECT_EQ(std::string(storage, 4), "stor") << selector;
        EXPECT_EQ(pointer, storage) << selector;
    }
}

} // namespace
