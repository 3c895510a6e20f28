// The host's own classes: exceptions and the dictionary. They are written as a plug-in would write them, so
// that one way of registering and calling serves all.
#include "host/runtime/services/builtin_classes.h"

#include "abi/accessor_sentinels.h"
#include "abi/class_definition.h"
#include "host/runtime/services/guarded.h"
#include "host/runtime/state.h"
#include "host/runtime/values/records.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <new>
#include <utility>
#include <vector>

namespace host {

namespace {

// ---- exceptions ----

struct ExceptionData {
    REALstringStruct* message;
    HostInteger errorNumber;
};

AnyFunction mark(Word value) { return reinterpret_cast<AnyFunction>(value); }

template <auto function>
AnyFunction entryOf()
{
    return reinterpret_cast<AnyFunction>(&Guarded<function>::entry);
}

REALproperty field(const char* name, const char* type, std::size_t offset)
{
    return {"",
            name,
            type,
            0,
            mark(REALstandardGetter),
            mark(REALstandardSetter),
            static_cast<HostInteger>(offset),
            nullptr,
            nullptr,
            0,
            {}};
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
    auto base = named("RuntimeException");
    base.dataSize = sizeof(ExceptionData);
    base.properties = properties;
    base.propertyCount = std::size(properties);
    registerClass(base, newestLayout, true);
    for (const char* name : exceptionClasses) {
        auto definition = named(name, "RuntimeException");
        registerClass(definition, newestLayout, true);
    }
}

// ---- the dictionary: keys of any value, in the order in which they came ----

using Entries = std::vector<std::pair<Value, Value>>;

const ClassInfo* dictionaryInfo() { return Host::current().findClass("Dictionary"); }

Entries*& entriesOf(REALobjectStruct* dictionary)
{
    const Object object(Object::share(dictionary));
    return *static_cast<Entries**>(object.classData(*dictionaryInfo()));
}

Value inside(REALobjectStruct* variant)
{
    return Value(AnyRef::share(variant)); // unwraps it
}

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
    auto& entries = *entriesOf(dictionary);
    return find(entries, inside(key)) != entries.end();
}

REALobjectStruct* valueOf(REALobjectStruct* dictionary, REALobjectStruct* key)
{
    auto& entries = *entriesOf(dictionary);
    const auto found = find(entries, inside(key));
    if (found != entries.end()) return newVariantObject(found->second);
    raise("KeyNotFoundException", "The dictionary has no key " + inside(key).print() + ".");
    return nullptr;
}

void assignValue(REALobjectStruct* dictionary, REALobjectStruct* key, REALobjectStruct* value)
{
    auto& entries = *entriesOf(dictionary);
    const auto found = find(entries, inside(key));
    if (found != entries.end())
        found->second = inside(value);
    else
        entries.emplace_back(inside(key), inside(value));
}

REALobjectStruct* keyAt(REALobjectStruct* dictionary, HostInteger index)
{
    auto& entries = *entriesOf(dictionary);
    if (index >= 0 && static_cast<std::size_t>(index) < entries.size())
        return newVariantObject(entries[static_cast<std::size_t>(index)].first);
    raise("OutOfBoundsException", "The dictionary has no key at index " + std::to_string(index) + ".");
    return nullptr;
}

void removeKey(REALobjectStruct* dictionary, REALobjectStruct* key)
{
    auto& entries = *entriesOf(dictionary);
    const auto found = find(entries, inside(key));
    if (found != entries.end())
        entries.erase(found);
    else
        raise("KeyNotFoundException", "The dictionary has no key " + inside(key).print() + ".");
}

void clearDictionary(REALobjectStruct* dictionary) { entriesOf(dictionary)->clear(); }

void registerDictionary()
{
    REALproperty properties[] = {
        {"", "Count", "Integer", 0, entryOf<countOf>(), nullptr, 0, nullptr, nullptr, 0, {}},
    };
    // clang-format off
    REALmethod methods[] = {
        {entryOf<valueOf>(),         nullptr, "Value(key As Variant) As Variant",                  0, {}},
        {entryOf<assignValue>(),     nullptr, "Value(key As Variant, Assigns _value As Variant)",  0, {}},
        {entryOf<keyAt>(),           nullptr, "Key(index As Integer) As Variant",                  0, {}},
        {entryOf<hasKey>(),          nullptr, "HasKey(key As Variant) As Boolean",                 0, {}},
        {entryOf<removeKey>(),       nullptr, "Remove(key As Variant)",                            0, {}},
        {entryOf<clearDictionary>(), nullptr, "Clear",                                             0, {}},
    };
    // clang-format on
    auto definition = named("Dictionary");
    definition.dataSize = sizeof(Entries*);
    definition.constructor = entryOf<openDictionary>();
    definition.destructor = entryOf<closeDictionary>();
    definition.properties = properties;
    definition.propertyCount = std::size(properties);
    definition.methods = methods;
    definition.methodCount = std::size(methods);
    registerClass(definition, newestLayout, true);
}

} // namespace

REALobjectStruct* newVariantObject(const Value& value)
{
    auto* variant = makeValue<VariantRecord>(Kind::variant);
    if (!variant) throw std::bad_alloc();
    variant->value = value;
    return reinterpret_cast<REALobjectStruct*>(variant);
}

void registerBuiltInClasses()
{
    registerExceptions();
    registerDictionary();
}

void raise(const char* className, const std::string& message, HostInteger errorNumber)
{
    auto exception = makeObject(*Host::current().findClass(className));
    exception.set("Message", message);
    exception.set("ErrorNumber", errorNumber);
    state().pending = std::move(exception);
}

} // namespace host
