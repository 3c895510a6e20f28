// A test with a host in memory that the plug-in has been introduced to.
#pragma once

#include "abi/class_definition.h"
#include "plugin/process_state.h"
#include "tests/plugin/service_caches.h"
#include "tests/support/fake_host.h"

#include <gtest/gtest.h>

using fake::Notes;

/// The end of each test is an account: nothing referenced any more but what the test owns and drops, and
/// nothing done that a plug-in must not do.
class HostTest : public ::testing::Test {
protected:
    HostTest() { enter(2016.0); }
    ~HostTest() override { gResolver = nullptr; }

    /// Be a host of that version from now on, of which nothing has been asked.
    void enter(double version)
    {
        host.version = version;
        gResolver = fake::Host::resolve;
        rbversion_rbversion = version;
        CurrentREALControlVersion = newestLayout;
        forgetServices();
        host.startOver();
    }

    /// The host never knew these names.
    template <class... Names>
    void withhold(Names... names)
    {
        (host.withhold(names), ...);
        forgetServices();
    }

    /// Calls since the last time this was asked.
    Notes takeCalls()
    {
        Notes calls = host.calls();
        host.forget();
        return calls;
    }

    void TearDown() override
    {
        EXPECT_EQ(host.faults(), Notes{});
        EXPECT_EQ(host.live(), Notes{}) << "references are left over";
    }

    fake::Host host;
};
