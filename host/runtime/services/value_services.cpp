// The services for memory blocks, arrays and variants.
#include "host/runtime/services/c_function.h"
#include "host/runtime/services/services.h"
#include "host/runtime/values/array.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace host::services {

namespace {

/// Return an element of an array. For an index outside the array, note a misuse and return 0.
Value elementAt(REALarrayStruct* handle, HostInteger index)
{
    const auto array = checkedArgument<Array>(handle, "the getter of an array");
    if (index >= 0 && index <= array.upperBound()) return array.at(index);
    noteMisuse(fmt::format("the getter of an array was given index {}, but the array has {} elements", index,
                           array.count()));
    return 0;
}

// ---- C functions that the plug-in receives: getters (array, index), inserters (array, index, element) ----

HostInteger getInteger(REALarrayStruct* array, HostInteger index)
{
    return static_cast<HostInteger>(elementAt(array, index).integer());
}
std::int64_t getInt64(REALarrayStruct* array, HostInteger index) { return elementAt(array, index).integer(); }
float getSingle(REALarrayStruct* array, HostInteger index) { return elementAt(array, index).single(); }
double getDouble(REALarrayStruct* array, HostInteger index) { return elementAt(array, index).number(); }

template <class Item>
void insertItem(REALarrayStruct* handle, HostInteger index, Item item)
{
    auto array = checkedArgument<Array>(handle, "the insert function of an array");
    if (array) array.insert(index, Value(item));
}

struct ElementRow {
    Base base;
    AnyFunction getter;
    AnyFunction inserter;
};

/// Find the getter and inserter for an array's element type; null for a nil array and an unsupported type.
const ElementRow* rowOf(const Array& array)
{
    static const ElementRow rows[] = {
        {Base::integer, cFunction<getInteger>(), cFunction<insertItem<HostInteger>>()},
        {Base::int64, cFunction<getInt64>(), cFunction<insertItem<std::int64_t>>()},
        {Base::single, cFunction<getSingle>(), cFunction<insertItem<float>>()},
        {Base::float64, cFunction<getDouble>(), cFunction<insertItem<double>>()},
    };
    if (!array) return nullptr;
    const auto* found = std::find_if(std::begin(rows), std::end(rows),
                                     [&](const ElementRow& row) { return row.base == array.elementType(); });
    return found == std::end(rows) ? nullptr : found;
}

/// Find the getter and inserter of an array for a service that supports only the element type `expected`. For
/// an array of another type, note a misuse and return null.
const ElementRow* rowFor(REALarrayStruct* handle, const char* service, Base expected)
{
    const auto array = checkedArgument<Array>(handle, service);
    const ElementRow* row = rowOf(array);
    if (!array || (row && row->base == expected)) return row;
    noteMisuse(fmt::format("{} was given {}", service, Value(array).describe()));
    return nullptr;
}

AnyFunction getterOf(const ElementRow* row) { return row ? row->getter : nullptr; }
AnyFunction inserterOf(const ElementRow* row) { return row ? row->inserter : nullptr; }

/// Check an argument that may be any counted value except a string or string data. Null if refused.
const void* checkedObject(const void* value, const char* service)
{
    if (!value) return nullptr;
    const bool isObject = isLive(value) && kindOf(value) != Kind::string && kindOf(value) != Kind::stringData;
    return isObject ? value : checkedValue(value, Kind::object, service);
}

} // namespace

void lockObject(REALobjectStruct* object) { retain(checkedObject(object, "REALLockObject")); }

void unlockObject(REALobjectStruct* object) { release(checkedObject(object, "REALUnlockObject")); }

REALmemoryBlockStruct* newMemoryBlock(HostInteger size) { return MemoryBlock::ofSize(size).detach(); }

void* memoryBlockBytes(REALmemoryBlockStruct* block)
{
    return checkedArgument<MemoryBlock>(block, "memoryBlockGetPtr").data();
}

HostInteger memoryBlockSize(REALmemoryBlockStruct* block)
{
    return static_cast<HostInteger>(checkedArgument<MemoryBlock>(block, "memoryBlockGetSize").size());
}

REALarrayStruct* newArray(HostInteger elementCode, HostInteger upperBound)
{
    if (elementCode == 0 && upperBound >= -1)
        return Array::ofType(Base::integer, static_cast<std::size_t>(upperBound) + 1).detach();
    noteMisuse(fmt::format("an array of element type code {} and upper bound {} cannot be made", elementCode,
                           upperBound));
    return nullptr;
}

HostInteger upperBound(REALarrayStruct* array)
{
    return checkedArgument<Array>(array, "RuntimeUBound").upperBound();
}

AnyFunction integerInserter(REALarrayStruct* array)
{
    return inserterOf(rowFor(array, "PluginIntegerArrayInsertProc", Base::integer));
}

AnyFunction integerGetter(REALarrayStruct* array)
{
    return getterOf(rowFor(array, "PluginIntegerArrayGetProc", Base::integer));
}

AnyFunction singleGetter(REALarrayStruct* array)
{
    return getterOf(rowFor(array, "PluginSingleArrayGetProc", Base::single));
}

AnyFunction doubleGetter(REALarrayStruct* array)
{
    return getterOf(rowFor(array, "PluginDoubleArrayGetProc", Base::float64));
}

AnyFunction directInserter(REALarrayStruct* array)
{
    return inserterOf(rowOf(checkedArgument<Array>(array, "RuntimeArrayDirectGetInsertProc")));
}

AnyFunction directGetter(REALarrayStruct* array)
{
    return getterOf(rowOf(checkedArgument<Array>(array, "RuntimeArrayDirectGetGetProc")));
}

REALobjectStruct* variantFromString(REALstringStruct* string)
{
    return newVariant(checkedArgument<String>(string, "StringToVariant")).detach();
}

REALobjectStruct* variantFromInteger(HostInteger value) { return newVariant(value).detach(); }

REALobjectStruct* variantFromInt32(HostInteger value)
{
    return newVariant(static_cast<std::int32_t>(value)).detach();
}

} // namespace host::services
