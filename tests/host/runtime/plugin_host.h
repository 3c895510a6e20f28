// A host with the test plug-in loaded. The plug-in's tables are its process's: one host a process.
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

/// The message of what `action` throws as an Error; fails if it throws nothing or something else.
template <class Error, class Action>
std::string thrownBy(Action action)
{
    try {
        action();
    } catch (const Error& error) {
        return error.what();
    } catch (const std::exception& error) {
        ADD_FAILURE() << "something else was thrown: " << error.what();
        return error.what();
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}

} // namespace test
