#include "platform/components/calls.h"

#include "platform/components/instances.h"

#include <algorithm>
#include <cstring>

#include <ffi.h>

namespace kvxplatform::components {
namespace {

// Argument and result types, indexed by the 2-bit size code of a procedure-information value:
// no value, one byte, two bytes, one machine word.
ffi_type* const typesByCode[] = {&ffi_type_void, &ffi_type_uint8, &ffi_type_sint16, &ffi_type_pointer};

constexpr unsigned resultShift = 4, firstParameterShift = 6, bitsPerCode = 2;
constexpr unsigned maxParameters = 1 + maxWords; // one parameter for the storage, then a call's arguments

unsigned code(ProcInfoType procInfo, unsigned shift) { return procInfo >> shift & 3; }

/// Whether a procedure-information value describes at most `maxParameters` parameters. A value of 32 bits
/// cannot describe more.
bool isWithinMaximum(ProcInfoType procInfo)
{
    constexpr unsigned end = firstParameterShift + bitsPerCode * maxParameters;
    if constexpr (end < sizeof procInfo * 8)
        return code(procInfo, end) == 0;
    else
        return true;
}

/// Returns  the argument at `index`; 0 past the last argument.
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
    if (!function || !isWithinMaximum(procInfo)) return paramErr;
    ffi_type* argumentTypes[maxParameters];
    void* arguments[maxParameters];
    long words[maxParameters];
    unsigned count = 0;
    for (; count < maxParameters; ++count) {
        const unsigned width = code(procInfo, firstParameterShift + bitsPerCode * count);
        if (width == 0) break;
        argumentTypes[count] = typesByCode[width];
        words[count] = count == 0 ? reinterpret_cast<long>(storage) : wordAt(parameters, count - 1);
        // On a little-endian machine the first bytes of a machine word hold a narrow argument.
        arguments[count] = &words[count];
    }

    ffi_cif call;
    if (ffi_prep_cif(&call, FFI_DEFAULT_ABI, count, typesByCode[code(procInfo, resultShift)],
                     argumentTypes) != FFI_OK)
        return paramErr;
    ffi_arg result = 0; // libffi writes at least a machine word as the result
    ffi_call(&call, reinterpret_cast<void (*)()>(function), &result, arguments);
    return static_cast<ComponentResult>(result);
}

ComponentResult send(ComponentInstance handle, ComponentParameters& parameters)
{
    const Instances::Use instance = use(handle);
    if (!instance) return badComponentInstance;
    const Family& family = *instance->component.family;
    return family.dispatch ? family.dispatch(*instance, parameters) : badComponentSelector;
}

ComponentResult call(ComponentInstance instance, SInt16 selector, std::initializer_list<long> words)
{
    struct {
        ComponentParameters parameters;
        long more[maxWords];
    } record = {{0, static_cast<UInt8>(words.size() * sizeof(long)), selector, {0}}, {}};
    std::memcpy(reinterpret_cast<char*>(&record) + offsetof(ComponentParameters, params), words.begin(),
                std::min(words.size(), maxWords) * sizeof(long));
    return send(instance, record.parameters);
}

} // namespace kvxplatform::components
