// The common test fixture of the player tests: the device spy, and a fake host of version 2013.04.
#pragma once

#include "tests/player/player_object.h"
#include "tests/support/device_spy.h"
#include "tests/support/fake_host.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

namespace test {

class FreshPlatform : public ::testing::Test {
protected:
    FreshPlatform();
    ~FreshPlatform() override;

    fake::Host& host() { return host_; }

    /// Restore the fake host, but without the `withheld` services. The plug-in looks up all services again.
    void startHost(std::initializer_list<const char*> withheld = {});

    /// Return the number of calls, or of look-ups, of one service since the last startHost().
    int calls(const std::string& service) const;
    int lookUps(const std::string& service) const;

    /// Return the strings and exceptions to which the plug-in holds references.
    fake::Notes heldValues() const;

private:
    fake::Host host_{2013.04};
};

} // namespace test
