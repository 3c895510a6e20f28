#include "tests/platform/augraph/adding_units.h"

#include "platform/audiounit/family.h"
#include "platform/audiounit/life_cycle.h"
#include "platform/audiounit/property.h"
#include "platform/audiounit/render.h"
#include "platform/audiounit/source.h"
#include "platform/audiounit/unit_handle.h"
#include "platform/components/registry.h"

#include <algorithm>
#include <cstring>
#include <iterator>

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

void destroyConstant(void* state) { delete static_cast<Constant*>(state); }

// ---- output unit for tests that call its render function ----

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

OSStatus getIsRunning(Unit& unit, ElementAddress, void* data, UInt32&)
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

void destroyOutput(void* state) { delete static_cast<Output*>(state); }

bool takesAll(const Unit&, AudioUnitScope, AudioUnitElement, const AudioStreamBasicDescription&)
{
    return true;
}

const Property outputProperties[] = {{kAudioOutputUnitProperty_IsRunning, inGlobal, anyElement,
                                      sizeof(UInt32), Access::readOnly, Settable::always, getIsRunning,
                                      nullptr, nullptr}};

using namespace column;

// clang-format off
const UnitKind kinds[] = {
    {'aufx', 'add ', "Adder", Inputs{{1, 1, 4}}, Outputs{{2, 2, 2}}, nullptr, nullptr, InputMemory::ofBus, TakesFormat{nullptr},
     Open{openUnit}, Close{nullptr}, Destroy{destroyConstant}, Initialize{initializeUnit}, Uninitialize{nullptr},
     Renew{nullptr}, Reset{nullptr}, Render{renderSum}, RenderInside{nullptr}, Start{nullptr}, Stop{nullptr}},
    {'aufx', 'addf', "Adder", Inputs{{1, 1, 4}}, Outputs{{2, 2, 2}}, nullptr, nullptr, InputMemory::ofBus, TakesFormat{takesAll},
     Open{openUnit}, Close{nullptr}, Destroy{destroyConstant}, Initialize{initializeUnit}, Uninitialize{nullptr},
     Renew{nullptr}, Reset{nullptr}, Render{renderSum}, RenderInside{nullptr}, Start{nullptr}, Stop{nullptr}},
    {kAudioUnitType_Output, kAudioUnitSubType_GenericOutput, "Output", Inputs{{1, 1, 1}}, Outputs{{1, 1, 1}}, outputProperties, nullptr, InputMemory::ofBus, TakesFormat{nullptr},
     Open{openOutput}, Close{nullptr}, Destroy{destroyOutput}, Initialize{nullptr}, Uninitialize{nullptr},
     Renew{nullptr}, Reset{nullptr}, Render{renderOutput}, RenderInside{nullptr}, Start{setRunning<true>}, Stop{setRunning<false>}},
};
// clang-format on

const components::Family otherFamily = {"not an audio unit", nullptr, nullptr, nullptr};

std::size_t unitCount() { return 1 + std::size(kinds); }

components::Component describe(std::size_t index)
{
    if (index == 0) return {{'aufx', 'odd ', 'appl', 0, 0}, &otherFamily, nullptr};
    return componentOf(kinds[index - 1]);
}

} // namespace
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
