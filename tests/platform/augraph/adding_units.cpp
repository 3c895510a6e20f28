#include "tests/platform/augraph/adding_units.h"

#include "platform/audiounit/audio_unit.h"
#include "platform/audiounit/life_cycle.h"
#include "platform/audiounit/property.h"
#include "platform/audiounit/render.h"
#include "platform/audiounit/source.h"
#include "platform/audiounit/units.h"
#include "platform/components/registry.h"
#include "platform/hal/device.h"

#include <algorithm>
#include <cstring>
#include <iterator>

// The library does not export its own. No device runs in this program.
namespace kvxplatform::hal {
thread_local Device* turningDevice = nullptr;
}

namespace kvxplatform::audiounit {
namespace {

struct Constant {
    std::atomic<Float32> value{0};
};

std::vector<AudioUnit> initialized;
int openingsLeft = 0, initializationsLeft = 0;

bool fails(int& left) { return left && !--left; }

OSStatus openUnit(Unit& unit)
{
    if (fails(openingsLeft)) return test::failure;
    unit.state = new Constant;
    return noErr;
}

OSStatus initializeUnit(Unit& unit)
{
    if (fails(initializationsLeft)) return test::failure;
    initialized.push_back(unit.self);
    return noErr;
}

OSStatus renderSum(Unit& unit, Slice& slice)
{
    kvxplatform::pcm::clear(slice.out);
    OSStatus status = noErr;
    for (UInt32 bus = 0; bus < unit.inputs().count; ++bus) {
        if (!unit.input(bus).source.get()) continue;
        AudioBufferList* in = nullptr;
        if (const OSStatus failed = pull(unit, bus, slice.flags, slice.time, slice.frames, in))
            status = failed;
        for (UInt32 i = 0; i < std::min(slice.out.mNumberBuffers, in->mNumberBuffers); ++i)
            for (UInt32 frame = 0; frame < slice.frames; ++frame)
                static_cast<Float32*>(slice.out.mBuffers[i].mData)[frame] +=
                    static_cast<const Float32*>(in->mBuffers[i].mData)[frame];
    }
    const Float32 value = stateOf<Constant>(unit).value;
    for (UInt32 i = 0; i < slice.out.mNumberBuffers; ++i)
        for (UInt32 frame = 0; frame < slice.frames; ++frame)
            static_cast<Float32*>(slice.out.mBuffers[i].mData)[frame] += value;
    return status;
}

UnitKind addingKind(OSType subType, decltype(UnitKind::takesFormat) takesFormat)
{
    UnitKind kind{};
    kind.type = 'aufx';
    kind.subType = subType;
    kind.name = "Adder";
    kind.inputs = {1, 1, 4};
    kind.outputs = {2, 2, 2};
    kind.takesFormat = takesFormat;
    kind.open = openUnit;
    kind.destroy = [](void* state) { delete static_cast<Constant*>(state); };
    kind.initialize = initializeUnit;
    kind.render = renderSum;
    return kind;
}

// ---- an output unit that the test renders ----

struct Output {
    bool isRunning = false;
};

OSStatus openOutput(Unit& unit)
{
    unit.state = new Output;
    return noErr;
}

template <bool isRunning>
OSStatus setRunning(Unit& unit)
{
    stateOf<Output>(unit).isRunning = isRunning;
    return noErr;
}

OSStatus getIsRunning(Unit& unit, Place, void* data, UInt32&)
{
    return give(data, UInt32{stateOf<Output>(unit).isRunning});
}

OSStatus renderOutput(Unit& unit, Slice& slice)
{
    kvxplatform::pcm::clear(slice.out);
    AudioBufferList* in = nullptr;
    const OSStatus status = pull(unit, 0, slice.flags, slice.time, slice.frames, in);
    for (UInt32 i = 0; i < std::min(slice.out.mNumberBuffers, in->mNumberBuffers); ++i)
        std::memcpy(slice.out.mBuffers[i].mData, in->mBuffers[i].mData, slice.frames * sizeof(Float32));
    return status;
}

UnitKind output()
{
    static const Property properties[] = {{kAudioOutputUnitProperty_IsRunning, inGlobal, anyElement,
                                           sizeof(UInt32), Access::readOnly, Settable::always, getIsRunning,
                                           nullptr, nullptr}};
    UnitKind kind{};
    kind.type = kAudioUnitType_Output;
    kind.subType = kAudioUnitSubType_GenericOutput;
    kind.name = "Output";
    kind.inputs = kind.outputs = {1, 1, 1};
    kind.properties = properties;
    kind.open = openOutput;
    kind.destroy = [](void* state) { delete static_cast<Output*>(state); };
    kind.render = renderOutput;
    kind.start = setRunning<true>;
    kind.stop = setRunning<false>;
    return kind;
}

bool takesAll(const Unit&, AudioUnitScope, AudioUnitElement, const AudioStreamBasicDescription&)
{
    return true;
}

const UnitKind* kindAt(std::size_t index)
{
    static const UnitKind adder = addingKind('add ', nullptr), anyFormat = addingKind('addf', takesAll),
                          head = output();
    const UnitKind* const kinds[] = {&adder, &anyFormat, &head};
    return kinds[index];
}

const components::Family otherFamily = {"not an audio unit", nullptr, nullptr, nullptr};

} // namespace

const components::Family family = {
    "audio unit",
    [](components::Instance& instance) {
        std::unique_ptr<Unit> unit;
        const OSStatus status =
            open(*static_cast<const UnitKind*>(instance.component.row), instance.self, unit);
        instance.state = unit.release();
        return status;
    },
    [](components::Instance& instance) { close(*static_cast<Unit*>(instance.state)); },
    [](void* unit) { delete static_cast<Unit*>(unit); },
};

std::size_t unitCount() { return 4; }

components::Component describe(std::size_t index)
{
    if (index == 0) return {{'aufx', 'odd ', 'appl', 0, 0}, &otherFamily, nullptr};
    const UnitKind& kind = *kindAt(index - 1);
    return {{kind.type, kind.subType, 'appl', 0, 0}, &family, &kind};
}

} // namespace kvxplatform::audiounit

namespace kvxplatform::components {
const BuiltIn builtIns[] = {{audiounit::unitCount, audiounit::describe}};
const std::size_t builtInCount = std::size(builtIns);
} // namespace kvxplatform::components

namespace test {

namespace audiounit = kvxplatform::audiounit;

void setConstant(AudioUnit unit, Float32 constant)
{
    audiounit::stateOf<audiounit::Constant>(*audiounit::use(unit)).value = constant;
}

bool isInitialized(AudioUnit unit)
{
    const audiounit::UnitUse use = audiounit::use(unit);
    return !use.status && use->isInitialized;
}

std::vector<AudioUnit>& initializedInOrder() { return audiounit::initialized; }
void failOpening(int which) { audiounit::openingsLeft = which; }
void failInitialization(int which) { audiounit::initializationsLeft = which; }

} // namespace test
