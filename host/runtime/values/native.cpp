#include "host/runtime/values/native.h"

#include "host/runtime/support/errors.h"

#include <fmt/format.h>

#include <cstring>

namespace host {

namespace {

bool isSigned(Base base)
{
    const Base fixed = fixedWidth(base);
    return fixed == Base::int8 || fixed == Base::int16 || fixed == Base::int32 || fixed == Base::int64;
}

/// Whether an integer fits into `bytes` bytes, as a signed or as an unsigned number.
bool fitsBits(const Value& value, std::size_t bytes)
{
    if (bytes == 8) return true;
    const std::int64_t low = -(std::int64_t{1} << (8 * bytes - 1)),
                       high = (std::int64_t{1} << (8 * bytes)) - 1;
    return !isAboveInt64(value) && value.integer() >= low && value.integer() <= high;
}

int costOfNumber(const Value& value, const Type& type)
{
    const bool isSingle = std::holds_alternative<float>(value.held());
    if (type.base == Base::single) return isSingle ? cost::exact : cost::converted;
    if (type.base == Base::float64) return value.isFloating() && !isSingle ? cost::exact : cost::converted;
    if (value.isFloating() || type.base == Base::pointer || !fitsBits(value, sizeInMemory(type)))
        return cost::narrowed;
    return type.base == Base::integer || type.base == Base::int64 ? cost::exact : cost::converted;
}

/// Whether a reference of type `type` may refer to a value of kind `kind`.
bool isOfType(Kind kind, const Type& type)
{
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

/// One row for each type that is not a reference: `value` converts a native value to a host value.
const struct {
    Base base;
    Value (*value)(const Native& native);
} numberRows[] = {
    // clang-format off
    {Base::boolean, [](const Native& native) -> Value { return native.byte != 0; }},
    {Base::int8,    [](const Native& native) -> Value { return static_cast<std::int8_t>(native.byte); }},
    {Base::int16,   [](const Native& native) -> Value { return static_cast<std::int16_t>(native.word16); }},
    {Base::int32,   [](const Native& native) -> Value { return static_cast<std::int32_t>(native.word32); }},
    {Base::int64,   [](const Native& native) -> Value { return static_cast<std::int64_t>(native.word64); }},
    {Base::uint8,   [](const Native& native) -> Value { return native.byte; }},
    {Base::uint16,  [](const Native& native) -> Value { return native.word16; }},
    {Base::uint32,  [](const Native& native) -> Value { return native.word32; }},
    {Base::uint64,  [](const Native& native) -> Value { return native.word64; }},
    {Base::single,  [](const Native& native) -> Value { return native.single; }},
    {Base::float64, [](const Native& native) -> Value { return native.number; }},
    {Base::pointer, [](const Native& native) -> Value { return reinterpret_cast<std::uintptr_t>(native.pointer); }},
    // clang-format on
};

Native integerNative(const Value& value, const Type& type, const std::string& what)
{
    if (value.isInteger() && !fitsBits(value, sizeInMemory(type)))
        throw ProgramError(
            fmt::format("{}: {} does not fit {}", what, value.print(), withArticle(typeName(type))));
    Native native = {};
    native.word64 = isSigned(type.base) && value.isFloating()
                        ? static_cast<std::uint64_t>(truncatedToInt64(value.number()))
                        : value.unsigned64();
    // The low bytes of the word are the native integer, because the host runs on little-endian machines only.
    return native;
}

Native numberNative(const Value& value, const Type& type, const std::string& what)
{
    Native native = {};
    switch (type.base) {
    case Base::boolean:
        native.byte = value.boolean();
        return native;
    case Base::single:
        // The float is copied in memory, because a function result may lose the bits of a signalling NaN.
        if (const auto* exact = std::get_if<float>(&value.held()))
            native.single = *exact;
        else
            native.single = value.single();
        return native;
    case Base::float64:
        if (const auto* exact = std::get_if<double>(&value.held()))
            native.number = *exact;
        else
            native.number = value.number();
        return native;
    case Base::pointer:
        native.pointer = reinterpret_cast<void*>(static_cast<std::uintptr_t>(value.unsigned64()));
        return native;
    default:
        return integerNative(value, type, what);
    }
}

} // namespace

Cost conversionCost(const Value& value, const Type& type)
{
    if (type.isVoid()) return {};
    const bool isPointer = type.base == Base::pointer && !type.isArray;
    if (value.isNil()) return type.isReference() || isPointer ? Cost(cost::exact) : Cost();
    if (type.base == Base::variant && !type.isArray) return cost::boxed;
    if (const auto* ref = std::get_if<AnyRef>(&value.held())) {
        const KindRow& row = *headerOf(ref->get())->row;
        return row.cost ? row.cost(ref->get(), type) : Cost();
    }
    if (type.isReference()) return {};
    if (type.base == Base::boolean || value.isBoolean())
        return type.base == Base::boolean && value.isBoolean() ? Cost(cost::exact) : Cost();
    if (isPointer && !value.isInteger()) return {};
    return costOfNumber(value, type);
}

Converted toNative(const Value& value, const Type& type, const std::string& what)
{
    if (!conversionCost(value, type))
        throw ProgramError(
            fmt::format("{} is {}, but was given {}", what, withArticle(typeName(type)), value.describe()));
    Converted converted;
    if (type.isReference()) {
        const bool isBoxed = type.base == Base::variant && !type.isArray && !value.isNil();
        converted.reference = isBoxed ? newVariant(value) : value.reference();
        converted.native.pointer = converted.reference.get();
    } else if (value.isNil() || value.isReference(Kind::memoryBlock)) {
        converted.reference = value.reference();
        converted.native.pointer = value.memoryBlock().data();
    } else {
        converted.native = numberNative(value, type, what);
    }
    return converted;
}

Value fromNative(const void* memory, const Type& type, bool isOwned)
{
    Native native = {};
    std::memcpy(&native, memory, sizeInMemory(type));
    if (type.isReference()) {
        if (!native.pointer) return {};
        if (!isLive(native.pointer) || !isOfType(kindOf(native.pointer), type))
            throw ProgramError(
                fmt::format("the library returned {} as {}, but this is not the address of such a "
                            "value",
                            native.pointer, withArticle(typeName(type))));
        return Value(isOwned ? AnyRef::adopt(native.pointer) : AnyRef::share(native.pointer));
    }
    for (const auto& row : numberRows) {
        if (row.base == fixedWidth(type.base)) return row.value(native);
    }
    return {};
}

void storeNative(void* memory, const Native& native, const Type& type)
{
    std::memcpy(memory, &native, sizeInMemory(type));
}

} // namespace host
