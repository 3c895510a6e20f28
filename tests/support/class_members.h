// Calls the members of a class as a host does: finds them by name in the class table, and calls their
// addresses.
#pragma once

#include "abi/class_definition.h"
#include "abi/host_values.h"

#include <cctype>
#include <stdexcept>
#include <string>
#include <string_view>

namespace support {

using Object = REALobjectStruct*;

/// The properties and methods of one class. Each function throws if the class lacks the member: the test
/// fails.
class ClassMembers {
public:
    explicit ClassMembers(const REALclassDefinition& definition) : definition_(definition) {}

    const REALproperty& property(std::string_view name) const
    {
        return find<REALproperty>(definition_.properties, definition_.propertyCount, name,
                                  [](const REALproperty& row) { return row.name; });
    }

    /// Return the first method whose declaration begins with `beginning`, such as "Start" or "LoadFile(".
    /// "Start" does not find a method "StartAll", because `beginning` must not end inside a word.
    const REALmethod& method(std::string_view beginning) const
    {
        return find<REALmethod>(definition_.methods, definition_.methodCount, beginning, declarationOf);
    }
    const REALmethod& sharedMethod(std::string_view beginning) const
    {
        return find<REALmethod>(definition_.sharedMethods, definition_.sharedMethodCount, beginning,
                                declarationOf);
    }

    template <class T>
    T get(Object object, std::string_view name) const
    {
        const REALproperty& row = property(name);
        return reinterpret_cast<T (*)(Object, HostInteger)>(row.getter)(object, row.parameter);
    }

    template <class T>
    void set(Object object, std::string_view name, T value) const
    {
        const REALproperty& row = property(name);
        reinterpret_cast<void (*)(Object, HostInteger, T)>(row.setter)(object, row.parameter, value);
    }

    /// Call a method, for example call<HostBoolean>("Start", object).
    template <class Result, class... Arguments>
    Result call(std::string_view beginning, Object object, Arguments... arguments) const
    {
        return reinterpret_cast<Result (*)(Object, Arguments...)>(method(beginning).function)(object,
                                                                                              arguments...);
    }

    template <class Result, class... Arguments>
    Result callShared(std::string_view beginning, Arguments... arguments) const
    {
        return reinterpret_cast<Result (*)(Arguments...)>(sharedMethod(beginning).function)(arguments...);
    }

    void construct(Object object) const
    {
        reinterpret_cast<void (*)(Object)>(definition_.constructor)(object);
    }
    void destruct(Object object) const { reinterpret_cast<void (*)(Object)>(definition_.destructor)(object); }

private:
    static const char* declarationOf(const REALmethod& row) { return row.declaration; }

    template <class Row, class TextOf>
    static const Row& find(const void* rows, Word count, std::string_view beginning, TextOf textOf)
    {
        const auto isLetter = [](char letter) {
            return std::isalnum(static_cast<unsigned char>(letter)) != 0;
        };
        const auto* row = static_cast<const Row*>(rows);
        for (Word i = 0; i < count; ++i) {
            const std::string_view text = textOf(row[i]);
            if (text.substr(0, beginning.size()) != beginning) continue;
            const bool isCut = text.size() > beginning.size() && isLetter(beginning.back()) &&
                               isLetter(text[beginning.size()]);
            if (!isCut) return row[i];
        }
        throw std::runtime_error("the class has no member " + std::string(beginning));
    }

    const REALclassDefinition& definition_;
};

} // namespace support
