// A spy for the platform functions that the sound bridge calls: those of components, handles, the mixer of
// classic sound, converters and output units. Recorded calls look like this:
//
//     AudioUnitSetProperty(unit, 23, scope 1, element 0, {renderFromMixer, the state}, whole)
//
// Objects of the platform have short names: component1 for the first component, then instance2, mixer1,
// converter1, handle1. Values that the platform stores have names too: refcon1, storage1. Out-parameters are
// not shown.
//
// By default every call succeeds. A refused call does nothing, returns null if it returns a pointer, and
// fills its out-parameter with garbage.
#pragma once

#include "tests/support/platform_spy.h"

#include <AudioToolbox/AudioToolbox.h>
#include <AudioUnit/AudioUnit.h>
#include <Carbon/Carbon.h>

#include <functional>
#include <string>

namespace sound_spy {

/// The arguments of one AudioConverterFillComplexBuffer call.
struct Filling {
    AudioConverterRef converter;
    AudioConverterComplexInputDataProc input;
    void* client;
    UInt32* packets;
    AudioBufferList* list;
};

struct Platform {
    /// Sets the result of SoundComponentGetSourceData. Without this function the result keeps its value.
    std::function<void(SoundComponentDataPtr*)> nextData;
    /// Replaces AudioConverterFillComplexBuffer.
    std::function<OSStatus(const Filling&)> fill;
    /// Whether CallComponentFunctionWithStorageProcInfo calls the handler.
    bool callsHandlers = true;
};
Platform& platform();

/// Restore the initial platform, and reset the record of calls.
void reset();

/// The arguments of a RegisterComponent call.
struct Registration {
    ComponentDescription description;
    ComponentRoutineUPP entry;
    std::string name; ///< Pascal string, which begins with its length byte
};
Registration lastRegistration();

/// A new instance, without storage, of the component registered last. The component receives no open request.
ComponentInstance newInstance();
Handle storageOf(ComponentInstance instance);
long refconOf(Component component);

/// The render callback that was set last.
AURenderCallbackStruct callback();

/// The bytes in the memory of a handle.
std::string bytesOf(Handle handle);

/// Number of times that any thread has slept during a wait.
int sleeps();

} // namespace sound_spy
