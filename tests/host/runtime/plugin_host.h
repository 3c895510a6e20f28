// A host that has loaded the test plug-in. One exists at a time, because the tables of the plug-in are
// global.
#pragma once

#include "tests/host/runtime/services.h"

#include <gtest/gtest.h>

namespace test {

struct PluginHost {
    explicit PluginHost(host::Options options = {}) : host(std::move(options))
    {
        host.load(KVX_BINARY_DIR "/tests/test_plugin.so");
    }
    host::Host host;
};

/// A fixture with an object of the test plug-in's class Probe. Unexpected misuses and leaks fail the test.
class WithPlugin : public testing::Test {
protected:
    ~WithPlugin() override
    {
        probe = host::Object();
        if (!expectMisuse) EXPECT_EQ(misuses(), "");
        if (!expectLeaks) EXPECT_EQ(plugin.host.leaks().text(), "");
    }

    PluginHost plugin;
    host::Host& host = plugin.host;
    host::Object probe = host.create("Probe");
    bool expectMisuse = false;
    bool expectLeaks = false;
};

/// Return the message of the Error that `action` throws. The test fails if `action` throws no Error.
template <class Error, class Action>
std::string thrownBy(Action action)
{
    try {
        action();
    } catch (const Error& error) {
        return error.what();
    } catch (const std::exception& error) {
        ADD_FAILURE() << "the action threw an exception of another type: " << error.what();
        return error.what();
    }
    ADD_FAILURE() << "the action threw no exception";
    return {};
}

} // namespace test
