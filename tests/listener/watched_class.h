// CoreAudioListenerKVX registered with a fake host. Each object has its own allocation, so that the address
// sanitizer reports an access to a destroyed object.
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

/// Test fixture with the registered class and its fake host.
class WatchedClass : public testing::Test {
protected:
    WatchedClass();
    ~WatchedClass() override;

    /// Register the class with a new host of version `version` that reads class definitions in `layout`.
    void registerFor(HostInteger layout, double version = 2016.0);
    fake::Host& host() { return *host_; }

    /// Key that the host wrote into the event at registration.
    static constexpr Word eventWord = 0xE7E27;

    /// Attach the test's handler of the event to an object, as the host program does.
    void attach(Object object);

    /// Objects whose handler was called, in order. Each handler call runs `inHandler`, which may throw.
    std::vector<Object> events;
    std::function<void(Object)> inHandler;

private:
    static void handle(Object object);
    void restore();

    std::unique_ptr<fake::Host> host_;
};

/// Memory of one host object, whose construction and destruction are separate steps of a test.
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

/// Value of a property by its name, for the four properties that have a getter function.
std::uint32_t read(Object object, const std::string& property);

} // namespace listening
