// The host's services, one row each: signature, wrapper, and the name or names that the host knows.
//
// A service is looked up on its first call, and its address is kept. A service that the host does not have
// returns 0, null or false, and is looked up again on the next call. The look-up takes no lock.
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

    /// `laterName` is looked up only if the host does not know `name`.
    constexpr explicit Service(const char* name, const char* laterName = nullptr)
        : name_(name), laterName_(laterName)
    {
    }
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    /// The host's function, or null.
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

// Functions that some services return; each accesses one array.
using InsertInteger = void (*)(REALarrayStruct*, HostInteger index, HostInteger value);
template <class Element>
using GetElement = Element (*)(REALarrayStruct*, HostInteger index);

// clang-format off
//             signature                                                          wrapper                      names

inline Service<HostBoolean()>                                                     REALinRuntime              {"REALinRuntime"};
inline Service<void(REALclassDefinition*)>                                        REALRegisterClass          {"PluginRegisterClass"};

// objects: a new instance comes with one reference
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

// strings: a built or converted string comes with one reference; setting an encoding converts nothing
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

// memory blocks: a new one comes with one reference
inline Service<REALmemoryBlockStruct*(HostInteger bytes)>                         REALNewMemoryBlock         {"newMemoryBlock"};
inline Service<void*(REALmemoryBlockStruct*)>                                     REALMemoryBlockGetPtr      {"memoryBlockGetPtr"};
inline Service<HostInteger(REALmemoryBlockStruct*)>                               REALMemoryBlockGetSize     {"memoryBlockGetSize"};

// arrays: an upper bound of -1 is an empty array; elements are accessed by a function that a service returns
inline Service<REALarrayStruct*(HostInteger elementType, HostInteger upperBound)> REALCreateArray            {"RuntimeArrayCreateSingleDimBoundedArray"};
inline Service<HostInteger(REALarrayStruct*)>                                     REALGetArrayUBound         {"RuntimeUBound"};
inline Service<InsertInteger(REALarrayStruct*)>                                   REALInsertArrayValueInteger{"PluginIntegerArrayInsertProc", "RuntimeArrayDirectGetInsertProc"};
inline Service<GetElement<HostInteger>(REALarrayStruct*)>                         REALGetArrayValueInteger   {"PluginIntegerArrayGetProc", "RuntimeArrayDirectGetGetProc"};
inline Service<GetElement<float>(REALarrayStruct*)>                               REALGetArrayValueSingle    {"PluginSingleArrayGetProc", "RuntimeArrayDirectGetGetProc"};
inline Service<GetElement<double>(REALarrayStruct*)>                              REALGetArrayValueDouble    {"PluginDoubleArrayGetProc", "RuntimeArrayDirectGetGetProc"};

// others: with a null name, a folder item's FSRef is its own; with an HFSUniStr255*, it is the parent folder's
inline Service<void()>                                                            REALYieldToRB              {"REALYieldToRB"};
inline Service<HostBoolean(REALfolderItemStruct*, FSRef*, void* name)>            REALFSRefFromFolderItem    {"REALFSRefFromFolderItem"};
// clang-format on

/// For the host, memory blocks and folder items are objects: the same services count their references.
inline REALobjectStruct* asObject(REALmemoryBlockStruct* block)
{
    return reinterpret_cast<REALobjectStruct*>(block);
}
inline REALobjectStruct* asObject(REALfolderItemStruct* item)
{
    return reinterpret_cast<REALobjectStruct*>(item);
}

/// A method of the host's library, looked up by its declaration on the first call. A method that the host
/// does not have behaves like a missing service.
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

/// The length of a string in bytes.
inline FrameworkMethod<HostInteger(REALstringStruct*)> hostLength{"LenB( s as string ) as integer"};
