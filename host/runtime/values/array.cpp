#include "host/runtime/values/array.h"

#include "host/runtime/support/checked_size.h"
#include "host/runtime/support/errors.h"
#include "host/runtime/support/options.h"
#include "host/runtime/support/per_host.h"
#include "host/runtime/values/native.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

namespace host {

namespace {

struct ArrayRecord {
    REALarrayStruct visible; ///< structure that the plug-in sees; poison without direct access
    Type element;
    std::uint8_t* storage;
    std::size_t count;
};

ArrayRecord& recordOf(const Array& array)
{
    if (!array) throw ProgramError("the array is nil");
    return *record<ArrayRecord>(array.get());
}

Array shared(const void* array) { return Array(Array::share(record<REALarrayStruct>(array))); }

std::size_t elementSize(const ArrayRecord& array) { return sizeInMemory(array.element); }

std::uint8_t* elementAt(const ArrayRecord& array, std::size_t index)
{
    return array.storage + index * elementSize(array);
}

/// The address of the value to which an element refers; null if the elements are not references.
void* referenceAt(const ArrayRecord& array, std::size_t index)
{
    return array.element.isReference() ? *reinterpret_cast<void**>(elementAt(array, index)) : nullptr;
}

// ---- functions for counted values of kind array (KindRow) ----

void destroyArray(void* value)
{
    auto& array = *record<ArrayRecord>(value);
    for (std::size_t i = 0; i < array.count; ++i) release(referenceAt(array, i));
    std::free(array.storage);
    array.~ArrayRecord();
}

std::string describeArray(const void* array)
{
    return "an array of " + typeName(record<ArrayRecord>(array)->element);
}

std::string printArray(const void* value)
{
    std::string all;
    const Array array = shared(value);
    for (HostInteger i = 0; i <= array.upperBound(); ++i) all += (i ? ", " : "") + array.at(i).print();
    return "(" + all + ")";
}

Cost costOfArray(const void* array, const Type& type)
{
    const Base element = record<ArrayRecord>(array)->element.base;
    return type.isArray && fixedWidth(type.base) == fixedWidth(element) ? Cost(cost::exact) : Cost();
}

constexpr KindRow arrayRow = {Kind::array, destroyArray, describeArray, printArray, costOfArray};

void setVisibleWords(ArrayRecord& array)
{
    const auto& options = stateOf<Options>();
    std::fill(std::begin(array.visible.first), std::end(array.visible.first), poisonWord);
    array.visible.elements = reinterpret_cast<void*>(poisonWord);
    if (options.allowsDirectAccess())
        array.visible.elements = options.isArrayStorageReadable ? array.storage : nullptr;
}

void checkIndex(const ArrayRecord& array, HostInteger index, std::size_t limit)
{
    if (index < 0 || static_cast<std::size_t>(index) >= limit)
        throw ProgramError(fmt::format("index {} is outside the array, whose upper bound is {}", index,
                                       static_cast<HostInteger>(array.count) - 1));
}

void resize(ArrayRecord& array, std::size_t count)
{
    // The storage has no spare element, so that the address sanitizer finds a read past the end.
    const std::size_t bytes = checkedSize(count, elementSize(array));
    auto* storage = static_cast<std::uint8_t*>(std::realloc(array.storage, std::max<std::size_t>(1, bytes)));
    if (!storage) throw std::bad_alloc();
    array.storage = storage;
    if (count > array.count)
        std::memset(elementAt(array, array.count), 0, (count - array.count) * elementSize(array));
    array.count = count;
    setVisibleWords(array);
}

/// Convert a value to an element. The caller stores the element in the array, which then owns its reference.
Native elementOf(const ArrayRecord& array, const Value& value)
{
    Converted converted = toNative(value, array.element, "an element");
    converted.reference.detach();
    return converted.native;
}

template <class Item>
Array arrayOf(Base element, const std::vector<Item>& items)
{
    Array array = Array::ofType(element);
    for (const auto& item : items) array.append(Value(item));
    return array;
}

} // namespace

Array Array::ofType(Base element, std::size_t count)
{
    auto* made = makeValue<ArrayRecord>(arrayRow);
    if (!made) throw std::bad_alloc();
    Array array(adopt(&made->visible));
    made->element.base = element;
    if (element == Base::object) made->element.className = "Object";
    resize(*made, count);
    return array;
}

Array Array::of(const std::vector<HostInteger>& items) { return arrayOf(Base::integer, items); }
Array Array::of(const std::vector<float>& items) { return arrayOf(Base::single, items); }
Array Array::of(const std::vector<double>& items) { return arrayOf(Base::float64, items); }
Array Array::of(const std::vector<std::string>& items) { return arrayOf(Base::string, items); }

Array Value::array() const { return as<Array>(); }

Base Array::elementType() const { return recordOf(*this).element.base; }

std::size_t Array::count() const { return get() ? record<ArrayRecord>(get())->count : 0; }

Value Array::at(HostInteger index) const
{
    const ArrayRecord& array = recordOf(*this);
    checkIndex(array, index, array.count);
    return fromNative(elementAt(array, static_cast<std::size_t>(index)), array.element, false);
}

void Array::put(HostInteger index, const Value& value)
{
    ArrayRecord& array = recordOf(*this);
    checkIndex(array, index, array.count);
    const auto slot = static_cast<std::size_t>(index);
    const Native element = elementOf(array, value);
    void* const old = referenceAt(array, slot);
    storeNative(elementAt(array, slot), element, array.element);
    release(old);
}

void Array::insert(HostInteger index, const Value& value)
{
    ArrayRecord& array = recordOf(*this);
    checkIndex(array, index, array.count + 1);
    const auto slot = static_cast<std::size_t>(index);
    const Native element = elementOf(array, value);
    resize(array, array.count + 1);
    std::memmove(elementAt(array, slot + 1), elementAt(array, slot),
                 (array.count - 1 - slot) * elementSize(array));
    storeNative(elementAt(array, slot), element, array.element);
}

void Array::remove(HostInteger index)
{
    ArrayRecord& array = recordOf(*this);
    checkIndex(array, index, array.count);
    const auto slot = static_cast<std::size_t>(index);
    void* const old = referenceAt(array, slot);
    std::memmove(elementAt(array, slot), elementAt(array, slot + 1),
                 (array.count - 1 - slot) * elementSize(array));
    resize(array, array.count - 1);
    release(old);
}

std::vector<double> Array::numbers() const
{
    std::vector<double> all;
    for (HostInteger i = 0; i <= upperBound(); ++i) all.push_back(at(i).number());
    return all;
}

} // namespace host
