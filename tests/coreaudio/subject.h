// An object of CoreAudioKVX in a small host, with a spy in the platform's place. Members are called as a host
// calls them: through the addresses in the class table.
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

/// The address of the method of that name, shared or not; a name that the class has not fails the test.
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

    /// Begin anew with a host of that version, all services still to be looked up.
    void startHost(double version);
    fake::Host& host() { return *host_; }

    Object object() { return reinterpret_cast<Object>(memory_.get()); }
    HostInteger& lasterror();

    /// Have the platform, or a service of the host, throw in its next call.
    void throwInPlatform(const std::string& function);
    void throwInHost(const std::string& service);

    /// "memoryBlockGetSize" answers this for `block`, whatever it holds.
    void claimSize(Block block, HostInteger size);
    /// "memoryBlockGetPtr" answers null for `block`.
    void takeMemory(Block block);

    /// Where the bytes of `block` stand.
    const void* addressOf(Block block);

    /// Note what `Lasterror` is in the first service or platform call from now on; nothing if none comes.
    void watchFirstCall();
    const std::vector<HostInteger>& lasterrorInFirstCall() const { return firstSeen_; }

    /// Nothing of what the plug-in took is still held: every value made by the test has one reference,
    /// nothing else lives, and no service was misused.
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

/// A thing that the plug-in has never heard of, to be thrown at it.
struct Thrown {};

} // namespace subject
