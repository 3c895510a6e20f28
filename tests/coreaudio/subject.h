// A CoreAudioKVX object in a fake host, with a spy in place of the platform. Tests call members through the
// addresses in the class table, as a host does.
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

/// Address of a method or shared method. An unknown name throws an exception, which fails the test.
AnyFunction methodNamed(const std::string& name);

/// Call a method by its name, for example call<HostInteger>("AudioUnitInitialize", object, HostInteger(1)).
template <class Result, class... Arguments>
Result call(const std::string& name, Arguments... arguments)
{
    return reinterpret_cast<Result (*)(Arguments...)>(methodNamed(name))(arguments...);
}

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

    /// Make "memoryBlockGetSize" return `size` for `block`.
    void claimSize(Block block, HostInteger size);
    /// Make "memoryBlockGetPtr" return null for `block`.
    void takeMemory(Block block);

    /// The address of the bytes of `block`.
    const void* addressOf(Block block);

    /// Make the next service or platform call record `Lasterror`. The record is empty if no call follows.
    void watchFirstCall();
    const std::vector<HostInteger>& lasterrorInFirstCall() const { return firstSeen_; }

    /// Expect that the plug-in holds no reference, so that only the values in `live` exist, and that the
    /// plug-in misused no host service.
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
