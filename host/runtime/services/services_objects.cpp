#include "host/runtime/calls/events.h"
#include "host/runtime/calls/object.h"
#include "host/runtime/services/guarded.h"
#include "host/runtime/services/services.h"
#include "host/runtime/state.h"
#include "host/runtime/support/errors.h"
#include "host/runtime/values/folder_reference.h"
#include "host/runtime/values/host_string.h"
#include "host/runtime/values/records.h"

#include <fmt/format.h>

namespace host::services {

namespace {

Object lent(REALobjectStruct* object, const char* service)
{
    auto* live = static_cast<REALobjectStruct*>(liveValue(object, Kind::object, service));
    return Object(Object::share(live));
}

/// Set a property for the plug-in: what the program would see as an error is noted.
void setProperty(REALobjectStruct* handle, const char* name, const Value& value, const char* service)
{
    const auto object = lent(handle, service);
    if (!object || !name) return noteMisuse(fmt::format("{} was given no object or no name", service));
    try {
        object.set(name, value);
    } catch (const HostException& error) {
        raise(error.className().c_str(), error.message(), error.errorNumber());
    }
}

/// Methods of the host's language that belong to no class.
const struct {
    const char* declaration;
    AnyFunction function;
} globalMethods[] = {
    {"LenB(s As String) As Integer", reinterpret_cast<AnyFunction>(&Guarded<stringLength>::entry)},
};

} // namespace

double version() { return Host::current().options().version; }

void registerPluginVersion(std::int32_t layout)
{
    if (layout < oldestLayout || layout > newestLayout)
        noteMisuse(fmt::format("the library announced class layout {}; this host reads {} to {}", layout,
                               oldestLayout, newestLayout));
    if (layout > layoutOfHost(Host::current().visibleVersion()))
        noteMisuse(fmt::format("the library announced class layout {}, newer than host version {} knows",
                               layout, Host::current().visibleVersion()));
    state().registeredLayout = layout;
}

Boolean8 inRuntime() { return Host::current().options().isBuiltProgram; }

void registerPluginClass(REALclassDefinition* definition)
{
    if (!definition) return noteMisuse("PluginRegisterClass was given no definition");
    if (state().registeredLayout == 0)
        return noteMisuse("a class was registered before the library's layout");
    registerClass(*definition, state().registeredLayout, false);
}

void yield()
{
    const auto work = state().yield; // a copy: the work may set another
    if (!work) return;
    try {
        work();
    } catch (...) {
        state().handlerError = std::current_exception();
    }
}

REALobjectStruct* newInstance(const char* className)
{
    const auto* info = className ? Host::current().findClass(className) : nullptr;
    if (!info) return nullptr;
    try {
        return Host::current().create(className).detach();
    } catch (const HostException& error) {
        raise(error.className().c_str(), error.message(), error.errorNumber());
    }
    return nullptr;
}

void setStringProperty(REALobjectStruct* object, const char* name, REALstringStruct* value)
{
    auto* live = static_cast<REALstringStruct*>(liveValue(value, Kind::string, "REALSetPropValueString"));
    setProperty(object, name, Value(String(Ref<REALstringStruct>::share(live))), "REALSetPropValueString");
}

void setIntegerProperty(REALobjectStruct* object, const char* name, HostInteger value)
{
    setProperty(object, name, value, "REALSetPropValueInteger");
}

AnyFunction objectMethod(REALobjectStruct* handle, const char* declaration)
{
    const auto object = lent(handle, "REALLoadObjectMethod");
    if (!object || !declaration) return nullptr;
    const auto wanted = parseDeclaration(declaration);
    for (const auto* method : object.classInfo().methodsNamed(wanted.name)) {
        if (sameSignature(method->declaration, wanted)) return method->function;
    }
    return nullptr;
}

AnyFunction globalMethod(const void* none, const char* declaration)
{
    if (none || !declaration) {
        noteMisuse("REALLoadGlobalMethod takes null and a declaration");
        return nullptr;
    }
    const auto wanted = parseDeclaration(declaration);
    for (const auto& method : globalMethods) {
        if (sameSignature(parseDeclaration(method.declaration), wanted)) return method.function;
    }
    return nullptr;
}

AnyFunction eventInstance(REALobjectStruct* handle, Word systemUse)
{
    const auto object = lent(handle, "GetEventInstance");
    return object ? handlerFunction(object.get(), systemUse, "GetEventInstance") : nullptr;
}

void raiseException(REALobjectStruct* handle)
{
    const auto exception = lent(handle, "RuntimeRaiseException");
    if (!exception) return noteMisuse("RuntimeRaiseException was given no object");
    if (!exception.classInfo().isA("RuntimeException"))
        noteMisuse(fmt::format("an object of class {} was raised, which is no exception",
                               exception.classInfo().name));
    state().pending = exception;
}

Boolean8 folderReference(REALfolderItemStruct* handle, FSRef* reference, void* name)
{
    auto* live =
        static_cast<REALfolderItemStruct*>(liveValue(handle, Kind::folderItem, "REALFSRefFromFolderItem"));
    const FolderItem item(Ref<REALfolderItemStruct>::share(live));
    if (!reference) {
        noteMisuse("REALFSRefFromFolderItem was given no reference to fill");
        return false;
    }
    return name ? parentReference(item, reference, name) : itemReference(item, reference);
}

} // namespace host::services
