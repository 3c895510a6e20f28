#include "host/runtime/values/field.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>

namespace host {

namespace {

/// An 8-byte word that is aligned for atomic access. In 32-bit structures, std::uint64_t is only 4-aligned.
struct alignas(8) AlignedWord64 {
    std::uint64_t bits;
};

template <class Bits>
Native load(const void* field)
{
    Native native = {};
    Bits bits;
    __atomic_load(static_cast<Bits*>(const_cast<void*>(field)), &bits, __ATOMIC_ACQUIRE);
    std::memcpy(&native, &bits, sizeof bits);
    return native;
}

template <class Bits>
void store(void* field, const Native& native)
{
    Bits bits;
    std::memcpy(&bits, &native, sizeof bits);
    __atomic_store(static_cast<Bits*>(field), &bits, __ATOMIC_RELEASE);
}

struct AtomicAccess {
    std::size_t size; ///< size of the field in bytes
    Native (*load)(const void* field);
    void (*store)(void* field, const Native& native);
};

constexpr AtomicAccess accesses[] = {
    {1, load<std::uint8_t>, store<std::uint8_t>},
    {2, load<std::uint16_t>, store<std::uint16_t>},
    {4, load<std::uint32_t>, store<std::uint32_t>},
    {8, load<AlignedWord64>, store<AlignedWord64>},
};

/// Find the functions for atomic access to a field; null for an 8-byte field that is not 8-aligned.
const AtomicAccess* accessTo(const void* field, const Type& type)
{
    const std::size_t size = sizeInMemory(type);
    if (size == 8 && reinterpret_cast<std::uintptr_t>(field) % 8 != 0) return nullptr;
    return std::find_if(std::begin(accesses), std::end(accesses),
                        [&](const AtomicAccess& access) { return access.size == size; });
}

} // namespace

Native loadField(const void* field, const Type& type)
{
    if (const AtomicAccess* access = accessTo(field, type)) return access->load(field);
    Native native = {};
    std::memcpy(&native, field, sizeInMemory(type));
    return native;
}

void storeField(void* field, const Native& native, const Type& type)
{
    if (const AtomicAccess* access = accessTo(field, type)) return access->store(field, native);
    storeNative(field, native, type);
}

void* exchangeReference(void* field, void* reference)
{
    return __atomic_exchange_n(static_cast<void**>(field), reference, __ATOMIC_ACQ_REL);
}

} // namespace host
