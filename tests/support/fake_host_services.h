// Inside the small host: its values, and what its services have in common. For its own files alone.
#pragma once

#include "tests/support/fake_host.h"

#include <cstring>
#include <stdexcept>

namespace fake {

inline Host* current = nullptr;

/// Any value: a record of the real shape, and what stands behind it.
struct Host::Value {
    char kind; // s, o, m, a, f
    std::string name;
    int references = 1;

    REALstringStruct text = {};
    std::string bytes;          // of a string or a memory block
    std::uint32_t encoding = 0; // of a string
    std::unique_ptr<char[]> storage;

    std::string className; // of an object
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

/// Text for a note.
std::string quoted(const void* bytes, HostInteger count);
std::string code(Word value);
inline std::string shown(const void* value) { return current->nameOf(value); }

/// One call of a service: its note, and the test's hands in it.
class Call {
public:
    Call(Notes& notes, const char* name, const std::string& arguments)
        : notes_(notes), index_(notes.size()), name_(name)
    {
        notes_.push_back(std::string(name) + "(" + arguments + ")");
    }
    const std::string& name() const { return name_; }
    void answer(const std::string& text) { notes_[index_] += " = " + text; }

private:
    Notes& notes_;
    std::size_t index_;
    std::string name_;
};

/// What every group of services is built on.
struct Services {
    static Host& host()
    {
        if (!current) throw std::logic_error("a service is called and there is no host");
        return *current;
    }

    /// Note the call. True: do the work; false: answer nothing. Throws what the test wants thrown.
    static bool begin(Call& call)
    {
        Host& h = host();
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
        return Call(host().notes_, name, arguments);
    }

    static Host::Value* known(const void* value, const char* kinds, const char* service)
    {
        Host::Value* found = host().find(value);
        if (found && std::strchr(kinds, found->kind)) return found;
        host().fault(std::string(service) + " of " + (value ? "a foreign address" : "null"));
        return nullptr;
    }

    /// A row of a table of services.
    template <class Function>
    static AnyFunction row(Function* function)
    {
        return reinterpret_cast<AnyFunction>(function);
    }
};

/// The services by name, in groups; null where a group has none of that name.
AnyFunction findHostService(const std::string& name);  // the host itself, objects, folder items
AnyFunction findTextService(const std::string& name);  // strings
AnyFunction findArrayService(const std::string& name); // memory blocks and arrays

} // namespace fake
