// CoreAudioListenerKVX registered with a small host, and objects of it in memory of their own, so that a
// touch of a dead one is found.
#pragma once

#include "abi/class_definition.h"
#include "tests/support/fake_host.h"

#include <CoreAudio/CoreAudio.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace listening {

using Object = REALobjectStruct*;

struct Address {
    std::uint32_t object, selector, scope, element;
};

/// The host's side of the class.
class WatchedClass : public testing::Test {
protected:
    WatchedClass();
    ~WatchedClass() override;

    /// Begin anew: a host of that version, which reads that layout, and the class registered with it.
    void registerFor(HostInteger layout, double version = 2016.0);
    fake::Host& host() { return *host_; }

    /// The word that the host wrote into the event's record, by which it knows its handlers.
    static constexpr Word eventWord = 0xE7E27;

    /// Attach the test's handler to an object, as the host program does.
    void attach(Object object);

    /// What the handler was called with, in order. `inHandler` runs in each call and may throw.
    std::vector<Object> events;
    std::function<void(Object)> inHandler;

private:
    static void handle(Object object);
    void restore();

    std::unique_ptr<fake::Host> host_;
};

/// An object of the class: memory without construction. Its end frees the memory and nothing else.
class Memory {
public:
    Memory();
    ~Memory();
    Memory(const Memory&) = delete;
    Memory& operator=(const Memory&) = delete;

    Object object() const { return reinterpret_cast<Object>(bytes_); }
    HostInteger& lastError() const;

private:
    char* bytes_;
};

void construct(Object object, Address address);
void destruct(Object object);

/// The value of one of the four properties that have a getter.
std::uint32_t read(Object object, const std::string& property);

} // namespace listening
