#include "host/runtime/services/service_table.h"

#include "host/runtime/services/c_function.h"
#include "host/runtime/services/services.h"
#include "host/runtime/support/options.h"
#include "host/runtime/support/per_host.h"

#include <fmt/format.h>

#include <limits>

namespace host {

namespace {

using namespace services;

constexpr double always = 0;
constexpr double forEver = std::numeric_limits<double>::infinity();

/// The C function of a service. It refuses calls on threads other than the main thread. `line`, the source
/// line of the table row, distinguishes services that have one host function but different names.
template <int line, auto function>
struct Entry;

template <int line, class Result, class... Arguments, Result (*function)(Arguments...)>
struct Entry<line, function> {
    static inline const char* name = nullptr;

    static Result call(Arguments... arguments) noexcept
    {
        const auto* state = stateOrNull<ServiceState>();
        if (!state) return Result();
        if (std::this_thread::get_id() != state->mainThread) {
            noteMisuse(std::string(name) + " was called off the main thread, and refused");
            return Result();
        }
        return CFunction<function>::call(arguments...);
    }
};

template <int line, auto function>
Service row(const char* name, double first, double removedIn)
{
    Entry<line, function>::name = name;
    return {name, reinterpret_cast<void*>(&Entry<line, function>::call), first, removedIn};
}

#define SERVICE(name, function, first, removedIn) row<__LINE__, function>(name, first, removedIn)

// clang-format off
const std::initializer_list<Service> services_ = {
    //      name                                       function                 first version  removed in
    SERVICE("REALGetRBVersion",                        version,                 always,        forEver),
    SERVICE("RegisterPluginVersion",                   registerPluginVersion,   always,        forEver),
    SERVICE("REALinRuntime",                           inRuntime,               always,        forEver),
    SERVICE("PluginRegisterClass",                     registerPluginClass,     always,        forEver),
    SERVICE("PluginNewInstance",                       newInstance,             always,        forEver),
    SERVICE("REALLockObject",                          lockObject,              always,        forEver),
    SERVICE("REALUnlockObject",                        unlockObject,            always,        forEver),
    SERVICE("REALLockString",                          lockString,              always,        forEver),
    SERVICE("REALUnlockString",                        unlockString,            always,        forEver),
    SERVICE("REALBuildString",                         buildString,             always,        forEver),
    SERVICE("REALBuildStringWithEncoding",             buildStringWithEncoding, 2012.0,        forEver),
    SERVICE("REALGetStringEncoding",                   stringEncoding,          always,        forEver),
    SERVICE("REALSetStringEncoding",                   setStringEncoding,       always,        forEver),
    SERVICE("REALConvertString",                       convertString,           always,        forEver),
    SERVICE("StringGetCString",                        stringBytes,             2012.0,        forEver),
    SERVICE("REALLoadGlobalMethod",                    globalMethod,            2012.0,        forEver),
    SERVICE("PluginGetStringData",                     stringData,              2012.0,        forEver),
    SERVICE("PluginDisposeStringData",                 disposeStringData,       2012.0,        forEver),
    SERVICE("newMemoryBlock",                          newMemoryBlock,          always,        forEver),
    SERVICE("memoryBlockGetPtr",                       memoryBlockBytes,        always,        forEver),
    SERVICE("memoryBlockGetSize",                      memoryBlockSize,         always,        forEver),
    SERVICE("RuntimeArrayCreateSingleDimBoundedArray", newArray,                always,        forEver),
    SERVICE("RuntimeUBound",                           upperBound,              always,        forEver),
    SERVICE("PluginIntegerArrayInsertProc",            integerInserter,         2013.0,        forEver),
    SERVICE("RuntimeArrayDirectGetInsertProc",         directInserter,          always,        2016.0),
    SERVICE("PluginIntegerArrayGetProc",               integerGetter,           2013.0,        forEver),
    SERVICE("PluginSingleArrayGetProc",                singleGetter,            2013.0,        forEver),
    SERVICE("PluginDoubleArrayGetProc",                doubleGetter,            2013.0,        forEver),
    SERVICE("RuntimeArrayDirectGetGetProc",            directGetter,            always,        2016.0),
    SERVICE("StringToVariant",                         variantFromString,       always,        forEver),
    SERVICE("IntegerToVariant",                        variantFromInteger,      2013.0,        forEver),
    SERVICE("Int32ToVariant",                          variantFromInt32,        always,        forEver),
    SERVICE("REALSetPropValueString",                  setStringProperty,       always,        forEver),
    SERVICE("REALSetPropValueInteger",                 setIntegerProperty,      2013.0,        forEver),
    SERVICE("REALSetPropValueInt",                     setIntegerProperty,      always,        forEver),
    SERVICE("REALLoadObjectMethod",                    objectMethod,            always,        forEver),
    SERVICE("GetEventInstance",                        eventInstance,           always,        forEver),
    SERVICE("RuntimeRaiseException",                   raiseException,          always,        forEver),
    SERVICE("REALYieldToRB",                           services::yield,         always,        forEver),
    SERVICE("REALFSRefFromFolderItem",                 folderReference,         always,        forEver),
};
// clang-format on

#undef SERVICE

} // namespace

std::initializer_list<Service> serviceTable() { return services_; }

const Service* findService(std::string_view name, double version)
{
    for (const auto& service : services_) {
        if (service.name == name)
            return version >= service.first && version < service.removedIn ? &service : nullptr;
    }
    return nullptr;
}

void* resolveService(const char* name)
{
    const auto* options = stateOrNull<Options>();
    if (!options || !name || options->withheld.count(name) != 0) return nullptr;
    const Service* service = findService(name, options->version);
    return service ? service->function : nullptr;
}

void checkServiceName(std::string_view name)
{
    for (const auto& service : services_) {
        if (service.name == name) return;
    }
    throw ProgramError(fmt::format("there is no service {}", name));
}

} // namespace host
