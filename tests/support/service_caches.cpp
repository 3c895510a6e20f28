#include "tests/support/service_caches.h"

#include "plugin/services.h"

#include <cstring>
#include <vector>

namespace {

/// A service wrapper of the plug-in, and a copy of the wrapper's bytes from before any look-up.
struct Cache {
    void* wrapper;
    std::vector<char> fresh;
};

template <class... Wrappers>
std::vector<Cache> cachesOf(Wrappers&... wrappers)
{
    const auto bytes = [](auto& wrapper) {
        const char* first = reinterpret_cast<const char*>(&wrapper);
        return Cache{&wrapper, std::vector<char>(first, first + sizeof wrapper)};
    };
    return {bytes(wrappers)...};
}

const std::vector<Cache> caches = cachesOf(
    REALinRuntime, REALRegisterClass, REALnewInstance, REALLockObject, REALUnlockObject,
    REALSetPropValueString, REALSetPropValueInteger, REALLoadObjectMethod, REALGetEventInstance,
    REALRaiseException, REALNewVariantString, REALNewVariantInteger, REALLockString, REALUnlockString,
    REALBuildString, REALBuildStringWithEncoding, REALGetStringEncoding, REALSetStringEncoding,
    REALConvertString, REALGetStringBytes, REALGetStringData, REALDisposeStringData, REALLoadFrameworkMethod,
    REALNewMemoryBlock, REALMemoryBlockGetPtr, REALMemoryBlockGetSize, REALCreateArray, REALGetArrayUBound,
    REALInsertArrayValueInteger, REALGetArrayValueInteger, REALGetArrayValueSingle, REALGetArrayValueDouble,
    REALYieldToRB, REALFSRefFromFolderItem, hostLength);

} // namespace

void forgetServices()
{
    for (const Cache& cache : caches) std::memcpy(cache.wrapper, cache.fresh.data(), cache.fresh.size());
}
