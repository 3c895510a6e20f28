// The services that concern the host, and the services for objects.
#include "host/runtime/calls/dynamic_call.h"
#include "host/runtime/calls/events.h"
#include "host/runtime/calls/object.h"
#include "host/runtime/classes/registration.h"
#include "host/runtime/services/builtin_classes.h"
#include "host/runtime/services/c_function.h"
#include "host/runtime/services/services.h"
#include "host/runtime/support/options.h"
#include "host/runtime/support/per_host.h"

#include <fmt/format.h>

namespace host::services {

namespace {

/// Run `work` for the plug-in. If `work` throws a HostException, raise the same exception in the plug-in.
template <class Work>
void raising(Work work)
{
    try {
        work();
    } catch (const HostException& error) {
        raise(error.className(), error.message(), error.errorNumber());
    }
}

void setProperty(REALobjectStruct* handle, const char* name, const Value& value, const char* service)
{
    const auto object = checkedArgument<Object>(handle, service);
    if (!object || !name) return noteMisuse(fmt::format("{} was given no object or no name", service));
    raising([&] { object.set(name, value); });
}

/// The global methods of the host's language, which belong to no class.
const struct {
    const char* declaration;
    AnyFunction function;
} globalMethods[] = {
    {"LenB(s As String) As Integer", cFunction<stringLength>()},
};

} // namespace

double version() { return stateOf<Options>().version; }

void registerPluginVersion(std::int32_t layout)
{
    const double hostVersion = stateOf<Options>().visibleVersion();
    if (layout < oldestLayout || layout > newestLayout)
        noteMisuse(fmt::format("the library announced class layout {}; this host reads {} to {}", layout,
                               oldestLayout, newestLayout));
    if (layout > layoutOfHost(hostVersion))
        noteMisuse(fmt::format("the library announced class layout {}, newer than host version {} knows",
                               layout, hostVersion));
    stateOf<ServiceState>().registeredLayout = layout;
}

HostBoolean inRuntime() { return stateOf<Options>().isBuiltProgram; }

void registerPluginClass(REALclassDefinition* definition)
{
    const int layout = stateOf<ServiceState>().registeredLayout;
    if (!definition) return noteMisuse("PluginRegisterClass was given no definition");
    if (layout == 0) return noteMisuse("a class was registered before the library's layout");
    registerClass(*definition, layout, false);
}

void yield()
{
    // Run a copy of the function, because the function may call Host::onYield, which replaces the original.
    const std::function<void()> work = stateOf<ServiceState>().yield;
    if (!work) return;
    try {
        work();
    } catch (...) {
        stateOf<Exceptions>().handlerError = std::current_exception();
    }
}

REALobjectStruct* newInstance(const char* className)
{
    const ClassInfo* info = className ? findClass(className) : nullptr;
    if (!info) return nullptr;
    REALobjectStruct* made = nullptr;
    raising([&] { made = createObject(*info, {}).detach(); });
    return made;
}

void setStringProperty(REALobjectStruct* object, const char* name, REALstringStruct* value)
{
    const char* const service = "REALSetPropValueString";
    setProperty(object, name, checkedArgument<String>(value, service), service);
}

void setIntegerProperty(REALobjectStruct* object, const char* name, HostInteger value)
{
    setProperty(object, name, value, "REALSetPropValueInteger");
}

AnyFunction objectMethod(REALobjectStruct* handle, const char* declaration)
{
    const auto object = checkedArgument<Object>(handle, "REALLoadObjectMethod");
    if (!object || !declaration) return nullptr;
    const Declaration requested = parseDeclaration(declaration);
    for (const auto* method : object.classInfo().methodsNamed(requested.name)) {
        if (sameSignature(method->declaration, requested)) return method->function;
    }
    return nullptr;
}

AnyFunction globalMethod(const void* none, const char* declaration)
{
    if (none || !declaration) {
        noteMisuse("REALLoadGlobalMethod takes null and a declaration");
        return nullptr;
    }
    const Declaration requested = parseDeclaration(declaration);
    for (const auto& method : globalMethods) {
        if (sameSignature(parseDeclaration(method.declaration), requested)) return method.function;
    }
    return nullptr;
}

AnyFunction eventInstance(REALobjectStruct* handle, Word systemUse)
{
    const char* const service = "GetEventInstance";
    const auto object = checkedArgument<Object>(handle, service);
    return object ? eventFunction(handle, systemUse, service) : nullptr;
}

void raiseException(REALobjectStruct* handle)
{
    const auto exception = checkedArgument<Object>(handle, "RuntimeRaiseException");
    if (!exception) return noteMisuse("RuntimeRaiseException was given no object");
    if (!exception.classInfo().isA("RuntimeException"))
        noteMisuse(fmt::format("an object of class {} was raised, which is not an exception",
                               exception.classInfo().name));
    stateOf<Exceptions>().raised = exception;
}

HostBoolean folderReference(REALfolderItemStruct* handle, FSRef* reference, void* name)
{
    const auto item = checkedArgument<FolderItem>(handle, "REALFSRefFromFolderItem");
    if (!reference) {
        noteMisuse("REALFSRefFromFolderItem was given no reference to fill");
        return false;
    }
    return name ? parentReference(item, reference, name) : itemReference(item, reference);
}

} // namespace host::services
