// A test fixture with a fake host, whose services the plug-in can look up.
#pragma once

#include "abi/class_definition.h"
#include "plugin/process_state.h"
#include "tests/support/fake_host.h"
#include "tests/support/service_caches.h"

#include <gtest/gtest.h>

using fake::Notes;

/// Test fixture that checks, after each test, that no host value is still referenced and that the plug-in
/// broke no rule of the host.
class HostTest : public ::testing::Test {
protected:
    HostTest() { enter(2016.0); }
    ~HostTest() override { gResolver = nullptr; }

    /// Restart the fake host as a host of this version.
    void enter(double version)
    {
        host.version = version;
        gResolver = fake::Host::resolve;
        rbversion_rbversion = version;
        CurrentREALControlVersion = newestLayout;
        forgetServices();
        host.startOver();
    }

    /// Remove the named services from the host.
    template <class... Names>
    void withhold(Names... names)
    {
        (host.withhold(names), ...);
        forgetServices();
    }

    /// Return the calls to the host since the last call of takeCalls.
    Notes takeCalls()
    {
        Notes calls = host.calls();
        host.forget();
        return calls;
    }

    void TearDown() override
    {
        EXPECT_EQ(host.faults(), Notes{});
        EXPECT_EQ(host.live(), Notes{}) << "host values are still referenced";
    }

    fake::Host host;
};
