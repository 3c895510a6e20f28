#include "host/runtime/values/value.h"

#include "host/runtime/support/errors.h"

#include <fmt/format.h>

#include <limits>

namespace host {

namespace {

struct VariantRecord {
    Value value;
};

void destroyVariant(void* variant) { record<VariantRecord>(variant)->~VariantRecord(); }

// The functions describe, print and cost are null, because a Value holds the content of a variant instead.
constexpr KindRow variantRow = {Kind::variant, destroyVariant, nullptr, nullptr, nullptr};

constexpr double twoToThe63 = 9223372036854775808.0;

std::uint64_t truncatedToUInt64(double number)
{
    if (number >= twoToThe63 && number < 2 * twoToThe63) return static_cast<std::uint64_t>(number);
    return static_cast<std::uint64_t>(truncatedToInt64(number));
}

[[noreturn]] void refuse(const Value& value, std::string_view expected)
{
    throw ProgramError(
        fmt::format("{} was expected, but the value is {}", withArticle(expected), value.describe()));
}

} // namespace

bool isAboveInt64(const Value& value)
{
    return std::holds_alternative<std::uint64_t>(value.held()) && value.integer() < 0;
}

std::int64_t truncatedToInt64(double number)
{
    if (number >= -twoToThe63 && number < twoToThe63) return static_cast<std::int64_t>(number);
    return std::numeric_limits<std::int64_t>::min();
}

Ref<REALobjectStruct> newVariant(const Value& value)
{
    auto* variant = makeValue<VariantRecord>(variantRow);
    if (!variant) throw std::bad_alloc();
    variant->value = value;
    return Ref<REALobjectStruct>::adopt(reinterpret_cast<REALobjectStruct*>(variant));
}

Value::Value(const char* utf8)
{
    if (utf8) held_ = AnyRef(String::of(utf8));
}

Value::Value(const std::string& utf8) : held_(AnyRef(String::of(utf8))) {}

Value::Value(std::string_view utf8) : held_(AnyRef(String::of(utf8))) {}

Value::Value(AnyRef ref, FromAny)
{
    if (!ref) return;
    if (kindOf(ref.get()) == Kind::variant)
        *this = record<VariantRecord>(ref.get())->value;
    else
        held_ = std::move(ref);
}

bool Value::isInteger() const
{
    return std::holds_alternative<std::int64_t>(held_) || std::holds_alternative<std::uint64_t>(held_);
}

bool Value::isFloating() const
{
    return std::holds_alternative<float>(held_) || std::holds_alternative<double>(held_);
}

bool Value::isReference(Kind kind) const
{
    const auto* ref = std::get_if<AnyRef>(&held_);
    return ref && headerOf(ref->get())->row->kind == kind;
}

bool Value::boolean() const
{
    if (!isBoolean()) refuse(*this, "boolean");
    return std::get<bool>(held_);
}

std::int64_t Value::integer() const { return static_cast<std::int64_t>(unsigned64()); }

std::uint64_t Value::unsigned64() const
{
    if (const auto* whole = std::get_if<std::int64_t>(&held_)) return static_cast<std::uint64_t>(*whole);
    if (const auto* whole = std::get_if<std::uint64_t>(&held_)) return *whole;
    if (isFloating()) return truncatedToUInt64(number());
    refuse(*this, "number");
}

float Value::single() const
{
    if (const auto* exact = std::get_if<float>(&held_)) return *exact;
    return static_cast<float>(number());
}

double Value::number() const
{
    if (const auto* whole = std::get_if<std::int64_t>(&held_)) return static_cast<double>(*whole);
    if (const auto* whole = std::get_if<std::uint64_t>(&held_)) return static_cast<double>(*whole);
    if (const auto* exact = std::get_if<float>(&held_)) return static_cast<double>(*exact);
    if (const auto* exact = std::get_if<double>(&held_)) return *exact;
    refuse(*this, "number");
}

std::string Value::text() const { return string().text(); }

AnyRef Value::reference() const
{
    const auto* ref = std::get_if<AnyRef>(&held_);
    return ref ? *ref : AnyRef();
}

AnyRef Value::referenceOf(Kind kind) const
{
    if (!isNil() && !isReference(kind)) refuse(*this, kindName(kind));
    return reference();
}

std::string Value::describe() const
{
    if (isNil()) return "nil";
    if (isBoolean()) return "a boolean";
    if (isInteger()) return "an integer";
    if (std::holds_alternative<float>(held_)) return "a single";
    if (std::holds_alternative<double>(held_)) return "a double";
    const void* value = std::get<AnyRef>(held_).get();
    const KindRow& row = *headerOf(value)->row;
    return row.describe ? row.describe(value) : withArticle(kindName(row.kind));
}

std::string Value::print() const
{
    if (isNil()) return "nil";
    if (isBoolean()) return boolean() ? "true" : "false";
    if (const auto* whole = std::get_if<std::int64_t>(&held_)) return fmt::format("{}", *whole);
    if (const auto* whole = std::get_if<std::uint64_t>(&held_)) return fmt::format("{}", *whole);
    if (const auto* exact = std::get_if<float>(&held_)) return fmt::format("{}", *exact);
    if (const auto* exact = std::get_if<double>(&held_)) return fmt::format("{}", *exact);
    const void* value = std::get<AnyRef>(held_).get();
    const KindRow& row = *headerOf(value)->row;
    return row.print ? row.print(value) : describe();
}

bool sameValue(const Value& left, const Value& right)
{
    if (left.isInteger() && right.isInteger())
        return isAboveInt64(left) == isAboveInt64(right) && left.integer() == right.integer();
    if (left.isNumber() && right.isNumber()) return left.number() == right.number();
    if (left.isText() && right.isText()) return left.text() == right.text();
    if (left.isBoolean() && right.isBoolean()) return left.boolean() == right.boolean();
    if (left.isNil() || right.isNil()) return left.isNil() && right.isNil();
    const AnyRef first = left.reference(), second = right.reference();
    return first && first.get() == second.get();
}

} // namespace host
