#include "host/runtime/services/builtin_classes.h"
#include "host/runtime/services/guarded.h"
#include "host/runtime/services/services.h"
#include "host/runtime/state.h"
#include "host/runtime/support/errors.h"
#include "host/runtime/values/array.h"
#include "host/runtime/values/host_string.h"
#include "host/runtime/values/memory_block.h"
#include "host/runtime/values/records.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

namespace host::services {

namespace {

Array lent(REALarrayStruct* array, const char* service)
{
    auto* live = static_cast<REALarrayStruct*>(liveValue(array, Kind::array, service));
    return Array(Ref<REALarrayStruct>::share(live));
}

/// The element, or zero for an index outside the array, which the plug-in should have checked.
Value elementAt(REALarrayStruct* handle, HostInteger index)
{
    const auto array = lent(handle, "an array's getter");
    if (index >= 0 && index <= array.upperBound()) return array.at(index);
    noteMisuse(fmt::format("an array's getter was asked for element {} of {}", index, array.count()));
    return 0;
}

// What the array services hand out: functions of (array, index).

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
    auto array = lent(handle, "an array's insert function");
    if (array) array.insert(index, Value(item));
}

struct ElementRow {
    ElementCode code;
    Base base;
    AnyFunction getter; ///< null: the elements are no numbers, and are reached through the program only
    AnyFunction inserter;
};

template <auto function>
AnyFunction entryOf()
{
    return reinterpret_cast<AnyFunction>(&Guarded<function>::entry);
}

const ElementRow* rowOf(Base base, HostInteger code, bool isByCode)
{
    // clang-format off
    static const ElementRow rows[] = {
        {elementInteger, Base::integer, entryOf<getInteger>(), entryOf<insertItem<HostInteger>>()},
        {elementSingle,  Base::single,  entryOf<getSingle>(),  entryOf<insertItem<float>>()},
        {elementDouble,  Base::float64, entryOf<getDouble>(),  entryOf<insertItem<double>>()},
        {elementString,  Base::string,  nullptr,               nullptr},
        {elementObject,  Base::object,  nullptr,               nullptr},
        {elementVariant, Base::variant, nullptr,               nullptr},
        {elementBoolean, Base::boolean, nullptr,               nullptr},
        {elementInt64,   Base::int64,   entryOf<getInt64>(),   entryOf<insertItem<std::int64_t>>()},
    };
    // clang-format on
    const auto isIt = [&](const ElementRow& row) { return isByCode ? row.code == code : row.base == base; };
    const auto* found = std::find_if(std::begin(rows), std::end(rows), isIt);
    return found == std::end(rows) ? nullptr : found;
}

/// The row of the array's elements, if they are what the service deals in.
const ElementRow* rowFor(REALarrayStruct* handle, const char* service, Base wanted)
{
    const auto array = lent(handle, service);
    if (!array) return nullptr;
    const auto* row = rowOf(array.elementType(), 0, false);
    if (!row || row->base != wanted) {
        noteMisuse(fmt::format("{} was asked for {}", service, Value(array).describe()));
        return nullptr;
    }
    return row;
}

const ElementRow* anyRow(REALarrayStruct* handle, const char* service)
{
    const auto array = lent(handle, service);
    return array ? rowOf(array.elementType(), 0, false) : nullptr;
}

AnyFunction getterOf(const ElementRow* row) { return row ? row->getter : nullptr; }
AnyFunction inserterOf(const ElementRow* row) { return row ? row->inserter : nullptr; }

/// Objects in the wide sense: all that is counted, but strings and their data.
const void* liveObject(const void* value, const char* service)
{
    if (!value) return nullptr;
    const bool isObject = isLive(value) && kindOf(value) != Kind::string && kindOf(value) != Kind::stringData;
    return isObject ? value : liveValue(value, Kind::object, service);
}

} // namespace

void lockObject(REALobjectStruct* object) { retain(liveObject(object, "REALLockObject")); }

void unlockObject(REALobjectStruct* object) { release(liveObject(object, "REALUnlockObject")); }

REALmemoryBlockStruct* newMemoryBlock(HostInteger size) { return MemoryBlock::ofSize(size).detach(); }

void* memoryBlockBytes(REALmemoryBlockStruct* block)
{
    const auto* live = record<MemoryBlockRecord>(liveValue(block, Kind::memoryBlock, "memoryBlockGetPtr"));
    return live ? live->data : nullptr;
}

HostInteger memoryBlockSize(REALmemoryBlockStruct* block)
{
    const auto* live = record<MemoryBlockRecord>(liveValue(block, Kind::memoryBlock, "memoryBlockGetSize"));
    return live ? static_cast<HostInteger>(live->size) : 0;
}

REALarrayStruct* newArray(HostInteger elementCode, HostInteger upperBound)
{
    const auto* row = rowOf(Base::none, elementCode, true);
    if (!row || upperBound < -1) {
        noteMisuse(fmt::format("an array of element code {} and upper bound {} cannot be made", elementCode,
                               upperBound));
        return nullptr;
    }
    return Array::ofType(row->base, static_cast<std::size_t>(upperBound + 1)).detach();
}

HostInteger upperBound(REALarrayStruct* array) { return lent(array, "RuntimeUBound").upperBound(); }

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
    return inserterOf(anyRow(array, "RuntimeArrayDirectGetInsertProc"));
}

AnyFunction directGetter(REALarrayStruct* array)
{
    return getterOf(anyRow(array, "RuntimeArrayDirectGetGetProc"));
}

REALobjectStruct* variantFromString(REALstringStruct* string)
{
    auto* live = static_cast<REALstringStruct*>(liveValue(string, Kind::string, "StringToVariant"));
    return newVariantObject(Value(String(Ref<REALstringStruct>::share(live))));
}

REALobjectStruct* variantFromInteger(HostInteger value) { return newVariantObject(value); }

REALobjectStruct* variantFromInt32(HostInteger value)
{
    return newVariantObject(static_cast<std::int32_t>(value));
}

} // namespace host::services
