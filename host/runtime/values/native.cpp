#include "host/runtime/values/native.h"

#include "host/runtime/calls/object.h"
#include "host/runtime/services/builtin_classes.h"
#include "host/runtime/support/errors.h"
#include "host/runtime/values/array.h"
#include "host/runtime/values/host_string.h"
#include "host/runtime/values/memory_block.h"
#include "host/runtime/values/native_numbers.h"
#include "host/runtime/values/records.h"

#include <fmt/format.h>

#include <cstring>
#include <new>

namespace host {

namespace {

/// Integer under the name of its width, so that both may stand for each other.
Base plain(Base base)
{
    if (base == Base::integer) return sizeof(HostInteger) == 4 ? Base::int32 : Base::int64;
    if (base == Base::uinteger) return sizeof(HostInteger) == 4 ? Base::uint32 : Base::uint64;
    return base;
}

bool isSigned(Base base)
{
    switch (plain(base)) {
    case Base::int8:
    case Base::int16:
    case Base::int32:
    case Base::int64:
        return true;
    default:
        return false;
    }
}

/// Whether the integer's bits fit `bytes` bytes, as a signed or as an unsigned number.
bool fitsBits(const Value& value, std::size_t bytes)
{
    if (bytes == 8) return true;
    const bool isHuge = std::holds_alternative<std::uint64_t>(value.held()) && value.integer() < 0;
    const std::int64_t low = -(std::int64_t{1} << (8 * bytes - 1)),
                       high = (std::int64_t{1} << (8 * bytes)) - 1;
    return !isHuge && value.integer() >= low && value.integer() <= high;
}

constexpr int converted = 1, narrowed = 2, boxed = 4;

std::optional<int> numberMisfit(const Value& value, const Type& type)
{
    if (!value.isNumber()) return std::nullopt;
    const bool isSingle = std::holds_alternative<float>(value.held());
    if (type.base == Base::single) return isSingle ? 0 : converted;
    if (type.base == Base::float64) return value.isFloating() && !isSingle ? 0 : converted;
    if (value.isFloating()) return narrowed;
    if (!fitsBits(value, sizeInMemory(type))) return narrowed;
    return type.base == Base::integer || type.base == Base::int64 ? 0 : converted;
}

std::optional<int> objectMisfit(const Value& value, const Type& type)
{
    if (!value.isReference(Kind::object)) {
        const bool isAnyObject = sameName(type.className, "Object");
        return isAnyObject && (value.isReference(Kind::memoryBlock) || value.isReference(Kind::folderItem))
                   ? std::optional<int>(converted)
                   : std::nullopt;
    }
    const auto& info = value.object().classInfo();
    if (sameName(info.name, type.className)) return 0;
    return sameName(type.className, "Object") || info.isA(type.className) ? std::optional<int>(converted)
                                                                          : std::nullopt;
}

std::optional<int> onlyIf(bool fits) { return fits ? std::optional<int>(0) : std::nullopt; }

std::string nameOfKind(const Type& type)
{
    const auto name = typeName(type);
    const bool isVowel = std::string_view("AEIOaeio").find(name[0]) != std::string_view::npos;
    return (isVowel ? "an " : "a ") + name;
}

/// Whether a live value may stand for a reference of that type.
bool isOfKind(const void* value, const Type& type)
{
    const auto kind = kindOf(value);
    if (type.isArray) return kind == Kind::array;
    switch (type.base) {
    case Base::string:
        return kind == Kind::string;
    case Base::variant:
        return kind == Kind::variant;
    case Base::memoryBlock:
        return kind == Kind::memoryBlock;
    case Base::folderItem:
        return kind == Kind::folderItem;
    default:
        return kind != Kind::string && kind != Kind::stringData;
    }
}

Native integerNative(const Value& value, const Type& type, const std::string& what)
{
    if (value.isInteger() && !fitsBits(value, sizeInMemory(type)))
        throw ProgramError(fmt::format("{}: {} does not fit {}", what, value.print(), nameOfKind(type)));
    Native native = {};
    native.word64 = isSigned(type.base) && value.isFloating()
                        ? static_cast<std::uint64_t>(truncatedToInt64(value.number()))
                        : value.unsigned64();
    return native; // the low bytes are the value: this host runs on little-endian machines only
}

/// An 8-byte word is only 4-aligned by itself on the 32-bit target; the builtins need to hear that it is
/// aligned.
struct alignas(8) AlignedWord64 {
    std::uint64_t bits;
};

template <class Bits>
Native load(const Bits* field, bool isPublished)
{
    Bits bits;
    if (isPublished)
        __atomic_load(const_cast<Bits*>(field), &bits, __ATOMIC_ACQUIRE);
    else
        __atomic_load(const_cast<Bits*>(field), &bits, __ATOMIC_RELAXED);
    Native native = {};
    std::memcpy(&native, &bits, sizeof bits);
    return native;
}

template <class Bits>
void store(Bits* field, const Native& native, bool isPublished)
{
    Bits bits;
    std::memcpy(&bits, &native, sizeof bits);
    if (isPublished)
        __atomic_store(field, &bits, __ATOMIC_RELEASE);
    else
        __atomic_store(field, &bits, __ATOMIC_RELAXED);
}

/// Flags and addresses announce what was written before them.
bool isPublished(const Type& type)
{
    return type.base == Base::boolean || type.base == Base::pointer || type.isReference();
}

bool isEightAligned(const void* field) { return reinterpret_cast<std::uintptr_t>(field) % 8 == 0; }

} // namespace

std::optional<int> misfit(const Value& value, const Type& type)
{
    if (type.isArray) {
        if (value.isNil()) return 0;
        if (!value.isReference(Kind::array)) return std::nullopt;
        return onlyIf(plain(value.array().elementType()) == plain(type.base));
    }
    if (type.base == Base::boolean) return onlyIf(value.isBoolean());
    if (type.base == Base::pointer) {
        if (value.isNil()) return 0;
        if (value.isReference(Kind::memoryBlock)) return converted;
        return value.isInteger() ? std::optional<int>(narrowed) : std::nullopt;
    }
    if (type.isNumber()) return numberMisfit(value, type);
    if (!type.exists()) return std::nullopt;
    if (value.isNil()) return 0;
    switch (type.base) {
    case Base::string:
        return onlyIf(value.isText());
    case Base::variant:
        return boxed;
    case Base::memoryBlock:
        return onlyIf(value.isReference(Kind::memoryBlock));
    case Base::folderItem:
        return onlyIf(value.isReference(Kind::folderItem));
    default:
        return objectMisfit(value, type);
    }
}

Lent toNative(const Value& value, const Type& type, const std::string& what)
{
    if (!misfit(value, type))
        throw ProgramError(
            fmt::format("{} is {}, but was given {}", what, nameOfKind(type), value.describe()));
    Lent lent;
    if (type.isReference()) {
        if (type.base == Base::variant && !type.isArray)
            lent.keep = value.isNil() ? AnyRef() : AnyRef::adopt(newVariantObject(value));
        else
            lent.keep = value.reference();
        lent.native.pointer = lent.keep.get();
        return lent;
    }
    switch (type.base) {
    case Base::boolean:
        lent.native.byte = value.boolean();
        break;
    case Base::single:
        // Copied in place: a float that is returned from a function may lose the bits of a signalling NaN.
        if (const auto* exact = std::get_if<float>(&value.held()))
            lent.native.single = *exact;
        else
            lent.native.single = value.single();
        break;
    case Base::float64:
        if (const auto* exact = std::get_if<double>(&value.held()))
            lent.native.number = *exact;
        else
            lent.native.number = value.number();
        break;
    case Base::pointer:
        if (value.isInteger()) {
            lent.native.pointer = reinterpret_cast<void*>(static_cast<std::uintptr_t>(value.unsigned64()));
        } else {
            lent.keep = value.reference();
            lent.native.pointer = value.memoryBlock().data();
        }
        break;
    default:
        lent.native = integerNative(value, type, what);
    }
    return lent;
}

Value fromNative(const void* memory, const Type& type, bool isOwned)
{
    Native native = {};
    std::memcpy(&native, memory, sizeInMemory(type));
    if (type.isReference()) {
        if (!native.pointer) return {};
        if (!isLive(native.pointer) || !isOfKind(native.pointer, type))
            throw ProgramError(
                fmt::format("the library gave {} as {}, which it is not", native.pointer, nameOfKind(type)));
        return Value(isOwned ? AnyRef::adopt(native.pointer) : AnyRef::share(native.pointer));
    }
    switch (plain(type.base)) {
    case Base::boolean:
        return native.byte != 0;
    case Base::int8:
        return static_cast<std::int8_t>(native.byte);
    case Base::int16:
        return static_cast<std::int16_t>(native.word16);
    case Base::int32:
        return static_cast<std::int32_t>(native.word32);
    case Base::int64:
        return static_cast<std::int64_t>(native.word64);
    case Base::uint8:
        return native.byte;
    case Base::uint16:
        return native.word16;
    case Base::uint32:
        return native.word32;
    case Base::uint64:
        return native.word64;
    case Base::single:
        return native.single;
    case Base::float64:
        return native.number;
    case Base::pointer:
        return reinterpret_cast<std::uintptr_t>(native.pointer);
    default:
        return {};
    }
}

Value literalValue(const Literal& literal)
{
    return std::visit(
        [](const auto& plainValue) -> Value {
            if constexpr (std::is_same_v<std::decay_t<decltype(plainValue)>, std::monostate>)
                return {};
            else
                return plainValue;
        },
        literal);
}

void storeNative(void* memory, const Native& native, const Type& type)
{
    std::memcpy(memory, &native, sizeInMemory(type));
}

Native loadField(const void* field, const Type& type)
{
    switch (sizeInMemory(type)) {
    case 1:
        return load(static_cast<const std::uint8_t*>(field), isPublished(type));
    case 2:
        return load(static_cast<const std::uint16_t*>(field), isPublished(type));
    case 4:
        return load(static_cast<const std::uint32_t*>(field), isPublished(type));
    default:
        break;
    }
    if (isEightAligned(field)) return load(static_cast<const AlignedWord64*>(field), isPublished(type));
    Native native = {};
    std::memcpy(&native, field, sizeof(std::uint64_t));
    return native;
}

void storeField(void* field, const Native& native, const Type& type)
{
    switch (sizeInMemory(type)) {
    case 1:
        return store(static_cast<std::uint8_t*>(field), native, isPublished(type));
    case 2:
        return store(static_cast<std::uint16_t*>(field), native, isPublished(type));
    case 4:
        return store(static_cast<std::uint32_t*>(field), native, isPublished(type));
    default:
        break;
    }
    if (isEightAligned(field)) return store(static_cast<AlignedWord64*>(field), native, isPublished(type));
    std::memcpy(field, &native, sizeof(std::uint64_t));
}

void* exchangeReference(void* field, void* reference)
{
    return __atomic_exchange_n(static_cast<void**>(field), reference, __ATOMIC_ACQ_REL);
}

} // namespace host
