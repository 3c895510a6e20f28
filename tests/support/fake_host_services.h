// The values of the fake host, and the common part of its services. Internal to the fake host.
#pragma once

#include "tests/support/fake_host.h"

#include <cstring>
#include <stdexcept>

namespace fake {

inline Host* theHost = nullptr;

/// A value of any kind. `text` or `array` is the struct that the plug-in sees; the other fields are the
/// contents.
struct Host::Value {
    char kind; // s: string, o: object, m: memory block, a: array, f: folder item
    std::string name;
    int references = 1;

    REALstringStruct text = {};
    std::string bytes;          // bytes of a string or a memory block
    std::uint32_t encoding = 0; // encoding of a string
    std::unique_ptr<char[]> storage;
    std::optional<HostInteger> claimedSize; // reported size of a memory block instead of the real size
    bool hasMemory = true;                  // whether the address of a memory block is not null

    std::string className; // class of an object
    REALstringStruct* message = nullptr;
    bool hasMessage = false;
    std::optional<HostInteger> number;

    REALarrayStruct array = {};
    ElementType elementType = ElementType::integer;
    std::vector<char> elements;
    std::size_t elementSize = 0;
    HostInteger upperBound = -1;

    const void* address() const
    {
        if (kind == 's') return &text;
        if (kind == 'a') return &array;
        return this;
    }
};

struct Host::TextData {
    std::string of;
    std::unique_ptr<char[]> storage;
};

/// Return an argument in the form of the recorded calls: bytes, a machine word, or the short name of a value.
std::string quoted(const void* bytes, HostInteger count);
std::string code(Word value);
inline std::string shown(const void* value) { return theHost->nameOf(value); }

/// One recorded call of a service.
class Call {
public:
    Call(Notes* notes, const char* name, const std::string& arguments)
        : notes_(notes), index_(notes ? notes->size() : 0), name_(name)
    {
        if (notes) notes->push_back(std::string(name) + "(" + arguments + ")");
    }
    std::string_view name() const { return name_; }
    void answer(const std::string& text)
    {
        if (notes_) (*notes_)[index_] += " = " + text;
    }

private:
    Notes* notes_; // null if the host does not record calls
    std::size_t index_;
    const char* name_;
};

/// The parts that all groups of services share.
struct Services {
    static Host& host()
    {
        if (!theHost) throw std::logic_error("a service is called, but no host exists");
        return *theHost;
    }

    /// Run the actions that the test has set for this call; they may throw. Returns false if the call must
    /// fail.
    static bool begin(Call& call)
    {
        Host& h = host();
        if (h.inEachCall) h.inEachCall();
        if (const auto action = h.actions_.find(call.name()); action != h.actions_.end()) {
            const std::function<void()> run = std::move(action->second);
            h.actions_.erase(action);
            run();
        }
        const auto failure = h.failures_.find(call.name());
        return failure == h.failures_.end() || failure->second-- <= 0;
    }

    static Call note(const char* name, const std::string& arguments = "")
    {
        return Call(host().recordsCalls ? &host().notes_ : nullptr, name, arguments);
    }

    /// Return the value at an address. If no value of these kinds is there, note a misuse and return null.
    static Host::Value* known(const void* value, const char* kinds, const char* service)
    {
        Host::Value* found = host().find(value);
        if (found && std::strchr(kinds, found->kind)) return found;
        host().fault(std::string(service) + " of " + (value ? "an unknown address" : "null"));
        return nullptr;
    }

    template <class Function>
    static AnyFunction row(Function* function)
    {
        return reinterpret_cast<AnyFunction>(function);
    }
};

/// Find a service by name, among those for the host and its objects, for strings, or for memory blocks and
/// arrays.
/// Returns  null if there is no service of that name.
AnyFunction findHostService(const std::string& name);
AnyFunction findTextService(const std::string& name);
AnyFunction findArrayService(const std::string& name);

} // namespace fake
