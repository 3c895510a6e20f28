#include "platform/audiounit/life_cycle.h"

#include "platform/audiounit/parameter.h"
#include "platform/audiounit/source.h"
#include "platform/support/border.h"

namespace kvxplatform::audiounit {
namespace {

void prepareScope(Scope& scope, const ElementCount& count)
{
    scope.elements = std::make_unique<Element[]>(count.most);
    for (UInt32 i = 0; i < count.most; ++i) {
        scope.elements[i].format = pcm::canonicalFormat(pcm::defaultSampleRate, 2);
        scope.elements[i].channels = 2;
    }
    scope.count = count.initial;
}

void prepareMemory(Scope& scope, UInt32 frames)
{
    for (UInt32 i = 0; i < scope.count; ++i)
        scope.elements[i].buffers.prepare(scope.elements[i].format, frames);
}

void prepareLists(Scope& scope)
{
    for (UInt32 i = 0; i < scope.count; ++i)
        scope.elements[i].partialList.prepare(pcm::buffersOf(scope.elements[i].format));
}

void releaseBuffers(Scope& scope)
{
    for (UInt32 i = 0; i < scope.count; ++i) scope.elements[i].buffers.release();
}

OSStatus allocate(Unit& unit)
{
    return withinBorder(memFullErr, kAudioUnitErr_FailedInitialization, [&]() -> OSStatus {
        prepareLists(unit.inputs());
        if (unit.kind.inputMemory == InputMemory::ofBus) prepareMemory(unit.inputs(), unit.sliceLimit);
        prepareMemory(unit.outputs(), unit.sliceLimit);
        return unit.kind.initialize ? unit.kind.initialize(unit) : noErr;
    });
}

void release(Unit& unit)
{
    if (unit.kind.uninitialize) unit.kind.uninitialize(unit);
    releaseBuffers(unit.inputs());
    releaseBuffers(unit.outputs());
}

} // namespace

OSStatus open(const UnitKind& kind, AudioUnit self, std::unique_ptr<Unit>& out)
{
    auto unit = std::make_unique<Unit>(kind);
    unit->self = self;
    unit->hostTicksPerSecond = AudioGetHostClockFrequency();
    prepareScope(unit->scopes[kAudioUnitScope_Global], {1, 1, 1});
    prepareScope(unit->inputs(), kind.inputs.count);
    prepareScope(unit->outputs(), kind.outputs.count);
    prepareParameters(*unit);
    if (kind.open)
        if (const OSStatus status = kind.open(*unit)) return status;
    out = std::move(unit);
    return noErr;
}

void close(Unit& unit)
{
    if (unit.kind.close) unit.kind.close(unit);
    // A unit that is closed inside its own slice still renders from its buffers, so it is not uninitialised
    // here.
    if (!unit.scope.isInside()) uninitialize(unit);
}

OSStatus initialize(Unit& unit)
{
    if (unit.isInitialized) return noErr;
    const std::lock_guard<std::mutex> life(unit.lifeCycle);
    if (unit.isInitialized) return noErr;
    if (const OSStatus status = checkConnections(unit)) return status;

    const std::lock_guard<std::mutex> guard(unit.settings);
    const OSStatus status = allocate(unit);
    if (status) {
        release(unit);
        return status;
    }
    unit.isResetPending = false;
    unit.lastRenderError = noErr;
    unit.isInitialized = true;
    return noErr;
}

OSStatus uninitialize(Unit& unit)
{
    if (unit.scope.isInside()) return kAudioUnitErr_CannotDoInCurrentContext;
    const std::lock_guard<std::mutex> life(unit.lifeCycle);
    if (!unit.isInitialized) return noErr;
    if (unit.kind.stop) unit.kind.stop(unit);
    unit.isInitialized = false;
    unit.scope.wait();
    const std::lock_guard<std::mutex> guard(unit.settings);
    release(unit);
    return noErr;
}

OSStatus reset(Unit& unit, AudioUnitScope scope, AudioUnitElement element)
{
    if (scope >= scopeCount) return kAudioUnitErr_InvalidScope;
    if (!hasElement(unit, scope, element)) return kAudioUnitErr_InvalidElement;
    if (unit.kind.renew && !RenderScope::isInsideAny()) {
        const std::lock_guard<std::mutex> guard(unit.settings);
        return unit.isInitialized ? unit.kind.renew(unit) : OSStatus{noErr};
    }
    unit.isResetPending = true;
    return noErr;
}

OSStatus start(Unit& unit)
{
    if (!unit.kind.start) return badComponentSelector;
    if (!unit.isInitialized) return kAudioUnitErr_Uninitialized;
    if (unit.scope.isInside()) return unit.kind.start(unit);
    const std::lock_guard<std::mutex> life(unit.lifeCycle);
    return unit.isInitialized ? unit.kind.start(unit) : static_cast<OSStatus>(kAudioUnitErr_Uninitialized);
}

OSStatus stop(Unit& unit)
{
    if (!unit.kind.stop) return badComponentSelector;
    if (unit.scope.isInside()) {
        unit.isStopping = true;
        return unit.kind.stop(unit);
    }
    const std::lock_guard<std::mutex> life(unit.lifeCycle);
    return unit.kind.stop(unit);
}

} // namespace kvxplatform::audiounit
