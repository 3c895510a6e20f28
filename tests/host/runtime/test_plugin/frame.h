// The test plug-in's access to its host: services by name, strings, exceptions.
#pragma once

#include "abi/accessor_sentinels.h"
#include "abi/class_definition.h"
#include "abi/entry_point.h"
#include "abi/host_values.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace probing {

inline REALResolver resolver = nullptr;
inline double hostVersion = 0.0;
inline std::int32_t layout = oldestLayout;
inline std::string lifeLog; ///< names of the constructors and destructors in the order of their calls

template <class Signature>
Signature* service(const char* name)
{
    return reinterpret_cast<Signature*>(resolver(name));
}

template <class Function>
AnyFunction any(Function* function)
{
    return reinterpret_cast<AnyFunction>(function);
}

/// Declare a property that is a field of the class data.
inline REALproperty field(const char* name, const char* type, std::size_t offset, bool isReadOnly = false)
{
    const auto setter = isReadOnly ? nullptr : reinterpret_cast<AnyFunction>(REALstandardSetter);
    const auto getter = reinterpret_cast<AnyFunction>(REALstandardGetter);
    return {"Fields", name,    type, 6, getter, setter, static_cast<HostInteger>(offset),
            nullptr,  nullptr, 0,    {}};
}

inline REALstringStruct* newText(const std::string& text)
{
    auto* string = service<REALstringStruct*(const void*, HostInteger)>("REALBuildString")(
        text.data(), static_cast<HostInteger>(text.size()));
    service<void(REALstringStruct*, std::uint32_t)>("REALSetStringEncoding")(string, encodingUTF8);
    return string;
}

/// Read the bytes of a string: from REALstringStruct before version 2016.0, with services in later hosts.
inline std::string textOf(REALstringStruct* string)
{
    if (!string) return "(nil)";
    if (hostVersion < 2016.0) return {string->buffer + 1, static_cast<std::size_t>(string->length)};
    const auto length =
        reinterpret_cast<HostInteger (*)(REALstringStruct*)>(service<AnyFunction(const void*, const char*)>(
            "REALLoadGlobalMethod")(nullptr, "LenB( s as string ) as integer"));
    const char* bytes = service<const char*(REALstringStruct*)>("StringGetCString")(string);
    return {bytes, static_cast<std::size_t>(length(string))};
}

template <class Record>
void lockObject(Record* object)
{
    service<void(REALobjectStruct*)>("REALLockObject")(reinterpret_cast<REALobjectStruct*>(object));
}
template <class Record>
void unlockObject(Record* object)
{
    service<void(REALobjectStruct*)>("REALUnlockObject")(reinterpret_cast<REALobjectStruct*>(object));
}

inline void raise(const char* className, const std::string& message, HostInteger number)
{
    auto* exception = service<REALobjectStruct*(const char*)>("PluginNewInstance")(className);
    auto* text = newText(message);
    service<void(REALobjectStruct*, const char*, REALstringStruct*)>("REALSetPropValueString")(
        exception, "Message", text);
    service<void(REALobjectStruct*, const char*, HostInteger)>("REALSetPropValueInt")(exception,
                                                                                      "ErrorNumber", number);
    service<void(REALobjectStruct*)>("RuntimeRaiseException")(exception);
    unlockObject(exception);
    service<void(REALstringStruct*)>("REALUnlockString")(text);
}

} // namespace probing
