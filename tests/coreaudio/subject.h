// A CoreAudioKVX object in a fake host, with a spy in place of the platform.
#pragma once

#include "plugin/classes.h"
#include "tests/support/c_library_spy.h"
#include "tests/support/class_members.h"
#include "tests/support/fake_host.h"
#include "tests/support/property_spy.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

namespace subject {

using Object = REALobjectStruct*;
using Text = REALstringStruct*;
using Block = REALmemoryBlockStruct*;

inline const support::ClassMembers members(coreAudioClass);

class Subject : public testing::Test {
protected:
    Subject();
    ~Subject() override;

    /// Replace the host by a new host of this version, with no service looked up yet.
    void startHost(double version);
    fake::Host& host() { return *host_; }

    Object object() { return reinterpret_cast<Object>(memory_.get()); }
    HostInteger& lasterror();

    /// Make the next call of a platform function or of a host service throw.
    void throwInPlatform(const std::string& function);
    void throwInHost(const std::string& service);

    /// Make the next service or platform call record `Lasterror`. The record is empty if no call follows.
    void watchFirstCall();
    const std::vector<HostInteger>& lasterrorInFirstCall() const { return firstSeen_; }

    /// Expect that the plug-in holds no reference, so that only the values in `live` exist, and that the
    /// plug-in misused no host service.
    void expectBalance(const fake::Notes& live = {});

private:
    std::unique_ptr<fake::Host> host_;
    std::unique_ptr<char[]> memory_;
    std::vector<HostInteger> firstSeen_;
    long blocksBefore_ = 0;
};

/// An exception of a type that the plug-in does not know.
struct Thrown {};

} // namespace subject
