#include "host/runtime/values/field.h"

#include <cstdint>
#include <cstring>

namespace host {

namespace {

/// An 8-byte word that the compiler knows to be 8-aligned; std::uint64_t is 4-aligned in 32-bit structures.
struct alignas(8) AlignedWord64 {
    std::uint64_t bits;
};

template <class Bits>
Native load(const void* memory, bool isPublished)
{
    auto* field = static_cast<Bits*>(const_cast<void*>(memory));
    Bits bits;
    if (isPublished)
        __atomic_load(field, &bits, __ATOMIC_ACQUIRE);
    else
        __atomic_load(field, &bits, __ATOMIC_RELAXED);
    Native native = {};
    std::memcpy(&native, &bits, sizeof bits);
    return native;
}

template <class Bits>
void store(void* memory, const Native& native, bool isPublished)
{
    auto* field = static_cast<Bits*>(memory);
    Bits bits;
    std::memcpy(&bits, &native, sizeof bits);
    if (isPublished)
        __atomic_store(field, &bits, __ATOMIC_RELEASE);
    else
        __atomic_store(field, &bits, __ATOMIC_RELAXED);
}

bool isPublished(const Type& type)
{
    return type.base == Base::boolean || type.base == Base::pointer || type.isReference();
}

bool isEightAligned(const void* field) { return reinterpret_cast<std::uintptr_t>(field) % 8 == 0; }

} // namespace

Native loadField(const void* field, const Type& type)
{
    switch (sizeInMemory(type)) {
    case 1:
        return load<std::uint8_t>(field, isPublished(type));
    case 2:
        return load<std::uint16_t>(field, isPublished(type));
    case 4:
        return load<std::uint32_t>(field, isPublished(type));
    default:
        break;
    }
    if (isEightAligned(field)) return load<AlignedWord64>(field, isPublished(type));
    Native native = {};
    std::memcpy(&native, field, sizeof(std::uint64_t));
    return native;
}

void storeField(void* field, const Native& native, const Type& type)
{
    switch (sizeInMemory(type)) {
    case 1:
        return store<std::uint8_t>(field, native, isPublished(type));
    case 2:
        return store<std::uint16_t>(field, native, isPublished(type));
    case 4:
        return store<std::uint32_t>(field, native, isPublished(type));
    default:
        break;
    }
    if (isEightAligned(field)) return store<AlignedWord64>(field, native, isPublished(type));
    storeNative(field, native, type);
}

void* exchangeReference(void* field, void* reference)
{
    return __atomic_exchange_n(static_cast<void**>(field), reference, __ATOMIC_ACQ_REL);
}

} // namespace host
