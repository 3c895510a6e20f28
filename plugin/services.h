// The host services (functions that the host exports by name), one row per service: signature, wrapper, and
// one or two names.
//
// The first call of a wrapper looks up the host's function and keeps its address. If the host does not have
// the function, the call returns 0, null or false, and the next call looks up the function again. A look-up
// takes no lock.
// All functions: [main].
#pragma once

#include "abi/class_definition.h"
#include "abi/host_values.h"
#include "plugin/foreign_call.h"
#include "plugin/process_state.h"

template <class Signature>
class Service;

template <class Result, class... Arguments>
class Service<Result(Arguments...)> {
public:
    using Function = Result (*)(Arguments...);

    /// Create the wrapper of a service. `laterName` is a second name, looked up only if the host does not
    /// know `name`.
    constexpr explicit Service(const char* name, const char* laterName = nullptr)
        : name_(name), laterName_(laterName)
    {
    }
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    /// Address of the host's function; null if the host does not have the function.
    Function find()
    {
        if (!entry_) entry_ = lookUp(name_);
        if (!entry_ && laterName_) entry_ = lookUp(laterName_);
        return entry_;
    }

    KVX_FOREIGN_CALL Result operator()(Arguments... arguments)
    {
        if (Function function = find()) return function(arguments...);
        return Result();
    }

private:
    static Function lookUp(const char* name)
    {
        return gResolver ? reinterpret_cast<Function>(gResolver(name)) : nullptr;
    }

    Function entry_ = nullptr;
    const char* name_;
    const char* laterName_;
};

struct FSRef;

// Types of functions that some services return; each such function accesses the elements of one array.
using InsertInteger = void (*)(REALarrayStruct*, HostInteger index, HostInteger value);
template <class Element>
using GetElement = Element (*)(REALarrayStruct*, HostInteger index);

// clang-format off
//             signature                                                          wrapper                      names

inline Service<HostBoolean()>                                                     REALinRuntime              {"REALinRuntime"};
inline Service<void(REALclassDefinition*)>                                        REALRegisterClass          {"PluginRegisterClass"};

// object services: the caller owns one reference to a new object
inline Service<REALobjectStruct*(const char* className)>                          REALnewInstance            {"PluginNewInstance"};
inline Service<void(REALobjectStruct*)>                                           REALLockObject             {"REALLockObject"};
inline Service<void(REALobjectStruct*)>                                           REALUnlockObject           {"REALUnlockObject"};
inline Service<void(REALobjectStruct*, const char* property, REALstringStruct*)>  REALSetPropValueString     {"REALSetPropValueString"};
inline Service<void(REALobjectStruct*, const char* property, HostInteger)>        REALSetPropValueInteger    {"REALSetPropValueInteger", "REALSetPropValueInt"};
inline Service<AnyFunction(REALobjectStruct*, const char* declaration)>           REALLoadObjectMethod       {"REALLoadObjectMethod"};
inline Service<AnyFunction(REALobjectStruct*, Word eventSystemUse)>               REALGetEventInstance       {"GetEventInstance"};
inline Service<void(REALobjectStruct* exception)>                                 REALRaiseException         {"RuntimeRaiseException"};
inline Service<REALobjectStruct*(REALstringStruct*)>                              REALNewVariantString       {"StringToVariant"};
inline Service<REALobjectStruct*(HostInteger)>                                    REALNewVariantInteger      {"IntegerToVariant", "Int32ToVariant"};

// string services: the caller owns one reference to a new string; REALSetStringEncoding converts no text
inline Service<void(REALstringStruct*)>                                           REALLockString             {"REALLockString"};
inline Service<void(REALstringStruct*)>                                           REALUnlockString           {"REALUnlockString"};
inline Service<REALstringStruct*(const void* bytes, HostInteger count)>           REALBuildString            {"REALBuildString"};
inline Service<REALstringStruct*(const void* bytes, HostInteger count, std::uint32_t encoding)>
                                                                                  REALBuildStringWithEncoding{"REALBuildStringWithEncoding"};
inline Service<std::uint32_t(REALstringStruct*)>                                  REALGetStringEncoding      {"REALGetStringEncoding"};
inline Service<void(REALstringStruct*, std::uint32_t encoding)>                   REALSetStringEncoding      {"REALSetStringEncoding"};
inline Service<REALstringStruct*(REALstringStruct*, std::uint32_t encoding)>      REALConvertString          {"REALConvertString"};
inline Service<const char*(REALstringStruct*)>                                    REALGetStringBytes         {"StringGetCString"};
inline Service<HostBoolean(REALstringStruct*, std::uint32_t encoding, REALstringData*)>
                                                                                  REALGetStringData          {"PluginGetStringData"};
inline Service<void(REALstringData*)>                                             REALDisposeStringData      {"PluginDisposeStringData"};
inline Service<AnyFunction(const void* none, const char* declaration)>            REALLoadFrameworkMethod    {"REALLoadGlobalMethod"};

// memory block services: the caller owns one reference to a new block
inline Service<REALmemoryBlockStruct*(HostInteger bytes)>                         REALNewMemoryBlock         {"newMemoryBlock"};
inline Service<void*(REALmemoryBlockStruct*)>                                     REALMemoryBlockGetPtr      {"memoryBlockGetPtr"};
inline Service<HostInteger(REALmemoryBlockStruct*)>                               REALMemoryBlockGetSize     {"memoryBlockGetSize"};

// array services: the upper bound of an empty array is -1; a service returns a function that accesses the
// elements
inline Service<REALarrayStruct*(HostInteger elementType, HostInteger upperBound)> REALCreateArray            {"RuntimeArrayCreateSingleDimBoundedArray"};
inline Service<HostInteger(REALarrayStruct*)>                                     REALGetArrayUBound         {"RuntimeUBound"};
inline Service<InsertInteger(REALarrayStruct*)>                                   REALInsertArrayValueInteger{"PluginIntegerArrayInsertProc", "RuntimeArrayDirectGetInsertProc"};
inline Service<GetElement<HostInteger>(REALarrayStruct*)>                         REALGetArrayValueInteger   {"PluginIntegerArrayGetProc", "RuntimeArrayDirectGetGetProc"};
inline Service<GetElement<float>(REALarrayStruct*)>                               REALGetArrayValueSingle    {"PluginSingleArrayGetProc", "RuntimeArrayDirectGetGetProc"};
inline Service<GetElement<double>(REALarrayStruct*)>                              REALGetArrayValueDouble    {"PluginDoubleArrayGetProc", "RuntimeArrayDirectGetGetProc"};

// other services: REALFSRefFromFolderItem returns the FSRef of the item itself if `name` is null; if `name`
// is an HFSUniStr255*, it returns the FSRef of the item's parent folder, and the item's name
inline Service<void()>                                                            REALYieldToRB              {"REALYieldToRB"};
inline Service<HostBoolean(REALfolderItemStruct*, FSRef*, void* name)>            REALFSRefFromFolderItem    {"REALFSRefFromFolderItem"};
// clang-format on

/// Memory blocks and folder items as host objects: the host counts their references with the services for
/// objects.
inline REALobjectStruct* asObject(REALmemoryBlockStruct* block)
{
    return reinterpret_cast<REALobjectStruct*>(block);
}
inline REALobjectStruct* asObject(REALfolderItemStruct* item)
{
    return reinterpret_cast<REALobjectStruct*>(item);
}

/// Wrapper of a method in the host's library, looked up by its declaration on the first call. If the host
/// does not have the method, a call returns 0 or null, and the next call looks up the method again.
template <class Signature>
class FrameworkMethod;

template <class Result, class... Arguments>
class FrameworkMethod<Result(Arguments...)> {
public:
    using Function = Result (*)(Arguments...);

    constexpr explicit FrameworkMethod(const char* declaration) : declaration_(declaration) {}
    FrameworkMethod(const FrameworkMethod&) = delete;
    FrameworkMethod& operator=(const FrameworkMethod&) = delete;

    Result operator()(Arguments... arguments)
    {
        if (!entry_) entry_ = reinterpret_cast<Function>(REALLoadFrameworkMethod(nullptr, declaration_));
        return entry_ ? entry_(arguments...) : Result();
    }

private:
    Function entry_ = nullptr;
    const char* declaration_;
};

/// Length of a host string in bytes.
inline FrameworkMethod<HostInteger(REALstringStruct*)> hostLength{"LenB( s as string ) as integer"};
