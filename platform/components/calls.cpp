#include "platform/components/calls.h"

#include <algorithm>
#include <cstring>

#include <ffi.h>

namespace kvxplatform::components {
namespace {

// Size codes of a procedure-information word: none, one byte, two bytes, one word.
ffi_type* const types[] = {&ffi_type_void, &ffi_type_uint8, &ffi_type_sint16, &ffi_type_pointer};

constexpr unsigned resultShift = 4, firstParameterShift = 6, bitsPerCode = 2;
constexpr unsigned mostParameters = 1 + mostWords; // the storage in front

unsigned code(ProcInfoType procInfo, unsigned shift) { return procInfo >> shift & 3; }

/// Whether a word has no more parameters than there can be; one of 32 bits never has.
bool hasRoom(ProcInfoType procInfo)
{
    constexpr unsigned end = firstParameterShift + bitsPerCode * mostParameters;
    if constexpr (end < sizeof procInfo * 8)
        return code(procInfo, end) == 0;
    else
        return true;
}

/// The word at `index`, or 0 where the call has none.
long wordAt(const ComponentParameters& parameters, std::size_t index)
{
    long word = 0;
    if ((index + 1) * sizeof word <= parameters.paramSize)
        std::memcpy(&word,
                    reinterpret_cast<const char*>(&parameters) + offsetof(ComponentParameters, params) +
                        index * sizeof word,
                    sizeof word);
    return word;
}

} // namespace

ComponentResult callFunction(Handle storage, const ComponentParameters& parameters, ProcPtr function,
                             ProcInfoType procInfo)
{
    if (!function || !hasRoom(procInfo)) return paramErr;
    ffi_type* argumentTypes[mostParameters];
    void* arguments[mostParameters];
    long words[mostParameters];
    unsigned count = 0;
    for (; count < mostParameters; ++count) {
        const unsigned width = code(procInfo, firstParameterShift + bitsPerCode * count);
        if (width == 0) break;
        argumentTypes[count] = types[width];
        words[count] = count == 0 ? reinterpret_cast<long>(storage) : wordAt(parameters, count - 1);
        arguments[count] = &words[count]; // the narrow ones are its first bytes
    }

    ffi_cif call;
    if (ffi_prep_cif(&call, FFI_DEFAULT_ABI, count, types[code(procInfo, resultShift)], argumentTypes) !=
        FFI_OK)
        return paramErr;
    ffi_arg result = 0; // at least a word, whatever the result's width
    ffi_call(&call, reinterpret_cast<void (*)()>(function), &result, arguments);
    return static_cast<ComponentResult>(result);
}

ComponentResult send(ComponentInstance handle, ComponentParameters& parameters)
{
    const Instances::Use instance = use(handle);
    if (!instance) return badComponentInstance;
    const auto dispatch = instance->component.family->dispatch;
    return dispatch ? dispatch(*instance, parameters) : badComponentSelector;
}

ComponentResult call(ComponentInstance instance, SInt16 selector, std::initializer_list<long> words)
{
    struct {
        ComponentParameters parameters;
        long more[mostWords];
    } record = {{0, static_cast<UInt8>(words.size() * sizeof(long)), selector, {0}}, {}};
    std::memcpy(reinterpret_cast<char*>(&record) + offsetof(ComponentParameters, params), words.begin(),
                std::min(words.size(), mostWords) * sizeof(long));
    return send(instance, record.parameters);
}

} // namespace kvxplatform::components
