#include "platform/audiounit/parameter.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace kvxplatform::audiounit {
namespace {

/// A parameter found in the tables: its row, and where its value is stored.
struct Found {
    const Parameter* row = nullptr;
    // Number of the parameter within its row, counted from the row's first ID.
    UInt32 index = 0;
    // Position of the value among the stored values of one element.
    UInt32 offset = 0;
};

/// Returns  how many values an element stores for a row.
UInt32 storedFor(const Parameter& row) { return row.isReadOnly && row.get ? 0 : row.count; }

UInt32 presentOf(const Unit& unit, const Parameter& row, AudioUnitElement element)
{
    return row.present ? row.present(unit, element) : row.count;
}

Found find(const UnitKind& kind, AudioUnitParameterID id, AudioUnitScope scope)
{
    UInt32 offset = 0;
    for (const Parameter& row : kind.parameters) {
        if (row.scope != scope) continue;
        if (id >= row.id && id - row.id < row.count) return {&row, id - row.id, offset + id - row.id};
        offset += storedFor(row);
    }
    return {};
}

UInt32 valuesOf(const UnitKind& kind, AudioUnitScope scope)
{
    UInt32 count = 0;
    for (const Parameter& row : kind.parameters)
        if (row.scope == scope) count += storedFor(row);
    return count;
}

std::atomic<Float32>& valueOf(const Unit& unit, AudioUnitScope scope, AudioUnitElement element,
                              const Found& found)
{
    return unit.scopes[scope].values[element * valuesOf(unit.kind, scope) + found.offset];
}

OSStatus find(const Unit& unit, AudioUnitParameterID id, AudioUnitScope scope, AudioUnitElement element,
              Found& out)
{
    if (scope >= scopeCount) return kAudioUnitErr_InvalidScope;
    out = find(unit.kind, id, scope);
    if (!out.row) {
        const bool isElsewhere = std::any_of(unit.kind.parameters.begin(), unit.kind.parameters.end(),
                                             [&](const Parameter& row) { return id - row.id < row.count; });
        return isElsewhere ? kAudioUnitErr_InvalidScope : kAudioUnitErr_InvalidParameter;
    }
    if (!hasElement(unit, scope, element)) return kAudioUnitErr_InvalidElement;
    return out.index < presentOf(unit, *out.row, element)
               ? noErr
               : static_cast<OSStatus>(kAudioUnitErr_InvalidParameter);
}

} // namespace

void prepareParameters(Unit& unit)
{
    const UInt32 elements[scopeCount] = {1, unit.kind.inputs.count.most, unit.kind.outputs.count.most};
    for (AudioUnitScope scope = 0; scope < scopeCount; ++scope) {
        unit.scopes[scope].values =
            std::make_unique<std::atomic<Float32>[]>(elements[scope] * valuesOf(unit.kind, scope));
        auto* value = unit.scopes[scope].values.get();
        for (UInt32 element = 0; element < elements[scope]; ++element)
            for (const Parameter& row : unit.kind.parameters)
                if (row.scope == scope)
                    for (UInt32 i = 0; i < storedFor(row); ++i) *value++ = row.initial;
    }
}

OSStatus getParameter(Unit& unit, AudioUnitParameterID id, AudioUnitScope scope, AudioUnitElement element,
                      Float32& out)
{
    Found found;
    if (const OSStatus status = find(unit, id, scope, element, found)) return status;
    if (found.row->get) return found.row->get(unit, *found.row, element, found.index, out);
    out = valueOf(unit, scope, element, found);
    return noErr;
}

OSStatus setParameter(Unit& unit, AudioUnitParameterID id, AudioUnitScope scope, AudioUnitElement element,
                      Float32 value)
{
    Found found;
    if (const OSStatus status = find(unit, id, scope, element, found)) return status;
    if (found.row->isReadOnly) return kAudioUnitErr_PropertyNotWritable;
    if (std::isnan(value)) return kAudioUnitErr_InvalidPropertyValue;
    value = std::clamp(value, found.row->least, found.row->most);
    if (found.row->set) return found.row->set(unit, *found.row, element, found.index, value);
    valueOf(unit, scope, element, found) = value;
    return noErr;
}

Float32 parameterValue(const Unit& unit, AudioUnitParameterID id, AudioUnitScope scope,
                       AudioUnitElement element)
{
    return valueOf(unit, scope, element, find(unit.kind, id, scope)).load(std::memory_order_relaxed);
}

void storeParameter(Unit& unit, AudioUnitParameterID id, AudioUnitScope scope, AudioUnitElement element,
                    Float32 value)
{
    valueOf(unit, scope, element, find(unit.kind, id, scope)).store(value, std::memory_order_relaxed);
}

UInt32 parameterCount(const Unit& unit, AudioUnitScope scope, AudioUnitElement element)
{
    UInt32 count = 0;
    for (const Parameter& row : unit.kind.parameters)
        if (row.scope == scope) count += presentOf(unit, row, element);
    return count;
}

UInt32 parameterList(const Unit& unit, AudioUnitScope scope, AudioUnitElement element,
                     AudioUnitParameterID* out, UInt32 most)
{
    UInt32 count = 0;
    for (const Parameter& row : unit.kind.parameters) {
        if (row.scope != scope) continue;
        const UInt32 present = presentOf(unit, row, element);
        for (UInt32 i = 0; i < present && count < most; ++i) out[count++] = row.id + i;
    }
    return count;
}

OSStatus parameterInfo(const Unit& unit, AudioUnitParameterID id, AudioUnitScope scope,
                       AudioUnitParameterInfo& out)
{
    const Found found = find(unit.kind, id, scope);
    if (!found.row) return kAudioUnitErr_InvalidParameter;
    const Parameter& row = *found.row;
    UInt32 present = 0;
    for (AudioUnitElement i = 0; hasElement(unit, scope, i); ++i)
        present = std::max(present, presentOf(unit, row, i));
    if (found.index >= present) return kAudioUnitErr_InvalidParameter;
    out = {};
    if (row.count > 1)
        std::snprintf(out.name, sizeof out.name, "%s %u", row.name, static_cast<unsigned>(found.index + 1));
    else
        std::snprintf(out.name, sizeof out.name, "%s", row.name);
    out.unit = row.unit;
    out.minValue = row.least;
    out.maxValue = row.most;
    out.defaultValue = row.initial;
    out.flags = kAudioUnitParameterFlag_IsReadable;
    if (row.isReadOnly)
        out.flags |= kAudioUnitParameterFlag_MeterReadOnly;
    else
        out.flags |= kAudioUnitParameterFlag_IsWritable;
    return noErr;
}

} // namespace kvxplatform::audiounit
