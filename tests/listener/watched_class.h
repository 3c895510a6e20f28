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

/// The class and its host.
class WatchedClass : public testing::Test {
protected:
    WatchedClass();
    ~WatchedClass() override;

    /// Register the class with a new host of that version, which reads that layout.
    void registerFor(HostInteger layout, double version = 2016.0);
    fake::Host& host() { return *host_; }

    /// The key that the host wrote into the event's record.
    static constexpr Word eventWord = 0xE7E27;

    /// Attach the test's handler to an object, as the host program does.
    void attach(Object object);

    /// The objects for which the handler was called, in order. `inHandler` runs in each call and may throw.
    std::vector<Object> events;
    std::function<void(Object)> inHandler;

private:
    static void handle(Object object);
    void restore();

    std::unique_ptr<fake::Host> host_;
};

/// The memory of an object; construction and destruction are separate.
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
