#include "host/runtime/values/value.h"

#include "host/runtime/calls/object.h"
#include "host/runtime/support/errors.h"
#include "host/runtime/values/array.h"
#include "host/runtime/values/folder_item.h"
#include "host/runtime/values/host_string.h"
#include "host/runtime/values/memory_block.h"
#include "host/runtime/values/native_numbers.h"
#include "host/runtime/values/records.h"

#include <fmt/format.h>

#include <cmath>
#include <limits>

namespace host {

namespace {

[[noreturn]] void refuse(const Value& value, const char* wanted)
{
    throw ProgramError(fmt::format("{} was expected, but the value is {}", wanted, value.describe()));
}

template <class Handle, class Record>
Handle referenceAs(const Value& value, Kind kind, const char* wanted)
{
    if (value.isNil()) return {};
    if (!value.isReference(kind)) refuse(value, wanted);
    auto ref = value.reference();
    return Handle(Ref<Record>::adopt(static_cast<Record*>(ref.detach())));
}

} // namespace

std::int64_t truncatedToInt64(double number)
{
    constexpr double limit = 9223372036854775808.0; // 2^63
    if (number >= -limit && number < limit) return static_cast<std::int64_t>(number);
    return std::numeric_limits<std::int64_t>::min();
}

std::uint64_t truncatedToUInt64(double number)
{
    constexpr double limit = 9223372036854775808.0; // 2^63
    if (number >= limit && number < 2 * limit) return static_cast<std::uint64_t>(number);
    return static_cast<std::uint64_t>(truncatedToInt64(number));
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
    return ref && headerOf(ref->get())->kind == kind;
}

bool Value::boolean() const
{
    if (!isBoolean()) refuse(*this, "a boolean");
    return std::get<bool>(held_);
}

std::int64_t Value::integer() const { return static_cast<std::int64_t>(unsigned64()); }

std::uint64_t Value::unsigned64() const
{
    if (const auto* whole = std::get_if<std::int64_t>(&held_)) return static_cast<std::uint64_t>(*whole);
    if (const auto* whole = std::get_if<std::uint64_t>(&held_)) return *whole;
    if (isFloating()) return truncatedToUInt64(number());
    refuse(*this, "a number");
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
    refuse(*this, "a number");
}

std::string Value::text() const { return string().text(); }

Object Value::object() const
{
    return referenceAs<Object, REALobjectStruct>(*this, Kind::object, "an object");
}

MemoryBlock Value::memoryBlock() const
{
    return referenceAs<MemoryBlock, REALmemoryBlockStruct>(*this, Kind::memoryBlock, "a memory block");
}

Array Value::array() const { return referenceAs<Array, REALarrayStruct>(*this, Kind::array, "an array"); }

FolderItem Value::folderItem() const
{
    return referenceAs<FolderItem, REALfolderItemStruct>(*this, Kind::folderItem, "a folder item");
}

String Value::string() const
{
    return referenceAs<String, REALstringStruct>(*this, Kind::string, "a string");
}

AnyRef Value::reference() const
{
    const auto* ref = std::get_if<AnyRef>(&held_);
    return ref ? *ref : AnyRef();
}

std::string Value::describe() const
{
    if (isNil()) return "nil";
    if (isBoolean()) return "a boolean";
    if (isInteger()) return "an integer";
    if (std::holds_alternative<float>(held_)) return "a single";
    if (std::holds_alternative<double>(held_)) return "a double";
    if (isReference(Kind::object)) return "an object of class " + object().classInfo().name;
    if (isReference(Kind::array)) {
        Type element;
        element.base = array().elementType();
        element.className = "Object";
        return fmt::format("an array of {}", typeName(element));
    }
    return fmt::format("a {}", kindName(headerOf(reference().get())->kind));
}

std::string Value::print() const
{
    if (isNil()) return "nil";
    if (isBoolean()) return boolean() ? "true" : "false";
    if (const auto* whole = std::get_if<std::int64_t>(&held_)) return fmt::format("{}", *whole);
    if (const auto* whole = std::get_if<std::uint64_t>(&held_)) return fmt::format("{}", *whole);
    if (const auto* exact = std::get_if<float>(&held_)) return fmt::format("{}", *exact);
    if (const auto* exact = std::get_if<double>(&held_)) return fmt::format("{}", *exact);
    if (isText()) return text();
    if (isReference(Kind::memoryBlock))
        return fmt::format("a memory block of {} bytes", memoryBlock().size());
    if (isReference(Kind::folderItem)) return folderItem().path();
    if (isReference(Kind::array)) {
        std::string all;
        const auto items = array();
        for (HostInteger i = 0; i <= items.upperBound(); ++i) all += (i ? ", " : "") + items.at(i).print();
        return "(" + all + ")";
    }
    return describe();
}

bool sameValue(const Value& left, const Value& right)
{
    if (left.isInteger() && right.isInteger()) {
        const bool isHuge[] = {std::holds_alternative<std::uint64_t>(left.held()) && left.integer() < 0,
                               std::holds_alternative<std::uint64_t>(right.held()) && right.integer() < 0};
        return isHuge[0] == isHuge[1] && left.integer() == right.integer();
    }
    if (left.isNumber() && right.isNumber()) return left.number() == right.number();
    if (left.isText() && right.isText()) return left.text() == right.text();
    if (left.isBoolean() && right.isBoolean()) return left.boolean() == right.boolean();
    if (left.isNil() || right.isNil()) return left.isNil() && right.isNil();
    const auto first = left.reference(), second = right.reference();
    return first && first.get() == second.get();
}

} // namespace host
