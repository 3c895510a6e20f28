#include "host/runtime/values/array.h"

#include "host/runtime/state.h"
#include "host/runtime/support/checked_size.h"
#include "host/runtime/support/errors.h"
#include "host/runtime/values/native.h"
#include "host/runtime/values/records.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

namespace host {

namespace {

ArrayRecord& recordOf(const Array& array)
{
    if (!array) throw ProgramError("the array is nil");
    return *record<ArrayRecord>(array.get());
}

void showRecord(ArrayRecord& array)
{
    const auto& host = Host::current();
    const bool isReadable = host.areRecordsReadable();
    std::fill(std::begin(array.visible.first), std::end(array.visible.first), poisonWord);
    array.visible.elements = reinterpret_cast<void*>(poisonWord);
    if (isReadable) array.visible.elements = host.options().isArrayStorageReadable ? array.storage : nullptr;
}

std::size_t elementSize(const ArrayRecord& array) { return sizeInMemory(array.element); }

std::uint8_t* elementAt(const ArrayRecord& array, std::size_t index)
{
    return array.storage + index * elementSize(array);
}

void checkIndex(const ArrayRecord& array, HostInteger index, std::size_t limit)
{
    if (index < 0 || static_cast<std::size_t>(index) >= limit)
        throw ProgramError(fmt::format("index {} is outside the array, whose upper bound is {}", index,
                                       static_cast<HostInteger>(array.count) - 1));
}

/// Exactly as many bytes as there are elements, so that a read behind the end is seen by the address
/// sanitizer.
void resize(ArrayRecord& array, std::size_t count)
{
    const std::size_t bytes = checkedSize(count, elementSize(array));
    auto* storage = static_cast<std::uint8_t*>(std::realloc(array.storage, std::max<std::size_t>(1, bytes)));
    if (!storage) throw std::bad_alloc();
    array.storage = storage;
    if (count > array.count)
        std::memset(elementAt(array, array.count), 0, (count - array.count) * elementSize(array));
    array.count = count;
    showRecord(array);
}

/// A native value whose reference, if it is one, now belongs to the array.
Native owned(const ArrayRecord& array, const Value& value)
{
    auto lent = toNative(value, array.element, "an element");
    lent.keep.detach();
    return lent.native;
}

template <class Item>
Array arrayOf(Base element, const std::vector<Item>& items)
{
    auto array = Array::ofType(element);
    for (const auto& item : items) array.append(Value(item));
    return array;
}

} // namespace

Array Array::ofType(Base element, std::size_t count)
{
    auto* made = makeValue<ArrayRecord>(Kind::array);
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

void finishArray(ArrayRecord& array)
{
    if (array.element.isReference()) {
        for (std::size_t i = 0; i < array.count; ++i) release(*reinterpret_cast<void**>(elementAt(array, i)));
    }
    std::free(array.storage);
    array.~ArrayRecord();
}

Base Array::elementType() const { return recordOf(*this).element.base; }

std::size_t Array::count() const { return get() ? record<ArrayRecord>(get())->count : 0; }

Value Array::at(HostInteger index) const
{
    const auto& array = recordOf(*this);
    checkIndex(array, index, array.count);
    return fromNative(elementAt(array, static_cast<std::size_t>(index)), array.element, false);
}

void Array::put(HostInteger index, const Value& value)
{
    auto& array = recordOf(*this);
    checkIndex(array, index, array.count);
    auto* element = elementAt(array, static_cast<std::size_t>(index));
    const auto native = owned(array, value);
    void* old = array.element.isReference() ? *reinterpret_cast<void**>(element) : nullptr;
    storeNative(element, native, array.element);
    release(old);
}

void Array::insert(HostInteger index, const Value& value)
{
    auto& array = recordOf(*this);
    checkIndex(array, index, array.count + 1);
    const auto place = static_cast<std::size_t>(index);
    const auto native = owned(array, value);
    resize(array, array.count + 1);
    std::memmove(elementAt(array, place + 1), elementAt(array, place),
                 (array.count - 1 - place) * elementSize(array));
    storeNative(elementAt(array, place), native, array.element);
}

void Array::remove(HostInteger index)
{
    auto& array = recordOf(*this);
    checkIndex(array, index, array.count);
    const auto place = static_cast<std::size_t>(index);
    void* old = array.element.isReference() ? *reinterpret_cast<void**>(elementAt(array, place)) : nullptr;
    std::memmove(elementAt(array, place), elementAt(array, place + 1),
                 (array.count - 1 - place) * elementSize(array));
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
