// A host that has loaded the test plug-in, whose tables are global: one such host at a time.
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

/// A test of an object of the class Probe. It fails for unexpected misuses and leaks.
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

/// The message of the Error that `action` throws. Fails if `action` throws nothing or another type.
template <class Error, class Action>
std::string thrownBy(Action action)
{
    try {
        action();
    } catch (const Error& error) {
        return error.what();
    } catch (const std::exception& error) {
        ADD_FAILURE() << "an exception of another type: " << error.what();
        return error.what();
    }
    ADD_FAILURE() << "no exception";
    return {};
}

} // namespace test
