// An object of CoreAudioKVX in a fake host, with a spy instead of the platform. Members are called through
// the addresses in the class table, as a host calls them.
#pragma once

#include "plugin/classes.h"
#include "tests/support/c_library_spy.h"
#include "tests/support/fake_host.h"
#include "tests/support/property_spy.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

namespace subject {

using Object = REALobjectStruct*;
using Text = REALstringStruct*;
using Block = REALmemoryBlockStruct*;

/// The address of a method or shared method; an unknown name throws and fails the test.
AnyFunction methodNamed(const std::string& name);

/// Call a method: call<HostInteger>("AudioUnitInitialize", object, HostInteger(1)).
template <class Result, class... Arguments>
Result call(const std::string& name, Arguments... arguments)
{
    return reinterpret_cast<Result (*)(Arguments...)>(methodNamed(name))(arguments...);
}

class Subject : public testing::Test {
protected:
    Subject();
    ~Subject() override;

    /// Continue with a new host of that version, before any look-up.
    void startHost(double version);
    fake::Host& host() { return *host_; }

    Object object() { return reinterpret_cast<Object>(memory_.get()); }
    HostInteger& lasterror();

    /// Make the next call of a platform function or host service throw.
    void throwInPlatform(const std::string& function);
    void throwInHost(const std::string& service);

    /// Make "memoryBlockGetSize" return `size` for `block`.
    void claimSize(Block block, HostInteger size);
    /// Make "memoryBlockGetPtr" return null for `block`.
    void takeMemory(Block block);

    /// The address of the bytes of `block`.
    const void* addressOf(Block block);

    /// Record `Lasterror` in the next service or platform call; empty if no call follows.
    void watchFirstCall();
    const std::vector<HostInteger>& lasterrorInFirstCall() const { return firstSeen_; }

    /// Expect that the plug-in holds no reference: only the values in `live` exist, and no service was
    /// misused.
    void expectBalance(const fake::Notes& live = {});

private:
    static void* resolve(const char* name);
    static HostInteger blockSize(Block block);
    static void* blockAddress(Block block);

    std::unique_ptr<fake::Host> host_;
    std::unique_ptr<char[]> memory_;
    std::vector<HostInteger> firstSeen_;
    std::map<Block, HostInteger> claimedSizes_;
    std::map<Block, bool> withoutMemory_;
    long blocksBefore_ = 0;
};

/// An exception of a type that the plug-in does not know.
struct Thrown {};

} // namespace subject
