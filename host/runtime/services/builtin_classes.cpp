// The host's classes have class definitions like those of a plug-in, so that one mechanism registers and
// calls all classes.
#include "host/runtime/services/builtin_classes.h"

#include "abi/accessor_sentinels.h"
#include "abi/class_definition.h"
#include "host/runtime/calls/dynamic_call.h"
#include "host/runtime/calls/object.h"
#include "host/runtime/classes/object_record.h"
#include "host/runtime/classes/registration.h"
#include "host/runtime/services/c_function.h"
#include "host/runtime/support/per_host.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>
#include <vector>

namespace host {

namespace {

// ---- exceptions ----

struct ExceptionData {
    REALstringStruct* message;
    HostInteger errorNumber;
};

REALproperty field(const char* name, const char* type, std::size_t offset)
{
    const auto getter = reinterpret_cast<AnyFunction>(REALstandardGetter);
    const auto setter = reinterpret_cast<AnyFunction>(REALstandardSetter);
    return {"", name, type, 0, getter, setter, static_cast<HostInteger>(offset), nullptr, nullptr, 0, {}};
}

constexpr const char* exceptionClasses[] = {
    "OutOfMemoryException",          "OutOfBoundsException", "NilObjectException",
    "UnsupportedOperationException", "IllegalCastException", "KeyNotFoundException",
};

REALclassDefinition named(const char* name, const char* superName = nullptr)
{
    REALclassDefinition definition = {};
    definition.version = newestLayout;
    definition.name = name;
    definition.superName = superName;
    return definition;
}

void registerExceptions()
{
    REALproperty properties[] = {
        field("Message", "String", offsetof(ExceptionData, message)),
        field("ErrorNumber", "Integer", offsetof(ExceptionData, errorNumber)),
    };
    REALclassDefinition base = named("RuntimeException");
    base.dataSize = sizeof(ExceptionData);
    base.properties = properties;
    base.propertyCount = std::size(properties);
    registerClass(base, newestLayout, true);
    for (const char* name : exceptionClasses) {
        REALclassDefinition definition = named(name, "RuntimeException");
        registerClass(definition, newestLayout, true);
    }
}

// ---- the dictionary: keys of any kind, in the order in which a program first used each key ----

using Entries = std::vector<std::pair<Value, Value>>;

Entries*& entriesOf(REALobjectStruct* dictionary)
{
    return *reinterpret_cast<Entries**>(classDataOf(dictionary, *findClass("Dictionary")));
}

/// The value in a variant.
Value contents(REALobjectStruct* variant) { return Value(AnyRef::share(variant)); }

Entries::iterator find(Entries& entries, const Value& key)
{
    return std::find_if(entries.begin(), entries.end(),
                        [&](const auto& entry) { return sameValue(entry.first, key); });
}

void openDictionary(REALobjectStruct* dictionary) { entriesOf(dictionary) = new Entries; }
void closeDictionary(REALobjectStruct* dictionary) { delete std::exchange(entriesOf(dictionary), nullptr); }

HostInteger countOf(REALobjectStruct* dictionary, HostInteger)
{
    return static_cast<HostInteger>(entriesOf(dictionary)->size());
}

std::uint8_t hasKey(REALobjectStruct* dictionary, REALobjectStruct* key)
{
    Entries& entries = *entriesOf(dictionary);
    return find(entries, contents(key)) != entries.end();
}

REALobjectStruct* valueOf(REALobjectStruct* dictionary, REALobjectStruct* key)
{
    Entries& entries = *entriesOf(dictionary);
    const Entries::iterator found = find(entries, contents(key));
    if (found != entries.end()) return newVariant(found->second).detach();
    raise("KeyNotFoundException", "The dictionary has no key " + contents(key).print() + ".");
    return nullptr;
}

void assignValue(REALobjectStruct* dictionary, REALobjectStruct* key, REALobjectStruct* value)
{
    Entries& entries = *entriesOf(dictionary);
    const Entries::iterator found = find(entries, contents(key));
    if (found != entries.end())
        found->second = contents(value);
    else
        entries.emplace_back(contents(key), contents(value));
}

REALobjectStruct* keyAt(REALobjectStruct* dictionary, HostInteger index)
{
    Entries& entries = *entriesOf(dictionary);
    if (index >= 0 && static_cast<std::size_t>(index) < entries.size())
        return newVariant(entries[static_cast<std::size_t>(index)].first).detach();
    raise("OutOfBoundsException", "The dictionary has no key at index " + std::to_string(index) + ".");
    return nullptr;
}

void removeKey(REALobjectStruct* dictionary, REALobjectStruct* key)
{
    Entries& entries = *entriesOf(dictionary);
    const Entries::iterator found = find(entries, contents(key));
    if (found != entries.end())
        entries.erase(found);
    else
        raise("KeyNotFoundException", "The dictionary has no key " + contents(key).print() + ".");
}

void clearDictionary(REALobjectStruct* dictionary) { entriesOf(dictionary)->clear(); }

void registerDictionary()
{
    REALproperty properties[] = {
        {"", "Count", "Integer", 0, cFunction<countOf>(), nullptr, 0, nullptr, nullptr, 0, {}},
    };
    // clang-format off
    REALmethod methods[] = {
        {cFunction<valueOf>(),         nullptr, "Value(key As Variant) As Variant",                  0, {}},
        {cFunction<assignValue>(),     nullptr, "Value(key As Variant, Assigns _value As Variant)",  0, {}},
        {cFunction<keyAt>(),           nullptr, "Key(index As Integer) As Variant",                  0, {}},
        {cFunction<hasKey>(),          nullptr, "HasKey(key As Variant) As Boolean",                 0, {}},
        {cFunction<removeKey>(),       nullptr, "Remove(key As Variant)",                            0, {}},
        {cFunction<clearDictionary>(), nullptr, "Clear",                                             0, {}},
    };
    // clang-format on
    REALclassDefinition definition = named("Dictionary");
    definition.dataSize = sizeof(Entries*);
    definition.constructor = cFunction<openDictionary>();
    definition.destructor = cFunction<closeDictionary>();
    definition.properties = properties;
    definition.propertyCount = std::size(properties);
    definition.methods = methods;
    definition.methodCount = std::size(methods);
    registerClass(definition, newestLayout, true);
}

} // namespace

void registerBuiltInClasses()
{
    registerExceptions();
    registerDictionary();
}

void raise(const std::string& className, const std::string& message, HostInteger errorNumber)
{
    const Object exception = createObject(classNamed(className), {});
    exception.set("Message", message);
    exception.set("ErrorNumber", errorNumber);
    stateOf<Exceptions>().raised = exception;
}

} // namespace host
