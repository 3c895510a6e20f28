// Replaces the platform functions that the sound bridge calls: those of components, handles, the mixer of
// classic sound, converters and output units. In a test program that links sound_spy.cpp and exports its
// symbols, sound_spy.cpp handles these calls instead of libkvxplatform.
//
// Every call is recorded as text, in order and with all its arguments:
//
//     AudioUnitSetProperty(unit, 23, scope 1, element 0, {renderFromMixer, the state}, whole)
//
// Objects of the platform have short names: component1 for the first component, then instance2, mixer1,
// converter1, handle1. Values that the platform stores have names too: refcon1, storage1. Out-parameters are
// not shown.
//
// By default every call succeeds. A refused call does nothing, returns null if it returns a pointer, and
// fills its out-parameter with garbage. Any thread may call the platform functions; only the test's thread
// calls the functions below.
#pragma once

#include <AudioToolbox/AudioToolbox.h>
#include <AudioUnit/AudioUnit.h>
#include <Carbon/Carbon.h>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace sound_spy {

using Notes = std::vector<std::string>;

/// The behaviour of one platform function, which applies to each of its calls.
struct Answer {
    OSStatus status = 0; ///< status of the call; a status other than 0 refuses the call
    /// Runs inside the call, after the call is recorded. May throw; a release happens nevertheless.
    std::function<void()> during;
};

/// The arguments of one AudioConverterFillComplexBuffer call.
struct Filling {
    AudioConverterRef converter;
    AudioConverterComplexInputDataProc input;
    void* client;
    UInt32* packets;
    AudioBufferList* list;
};

struct Platform {
    std::map<std::string, Answer> answers;
    /// Runs inside every platform call, after the call is recorded, with the function's name. May throw.
    std::function<void(const std::string&)> inEachCall;
    /// Sets the result of SoundComponentGetSourceData. Without this function the result keeps its value.
    std::function<void(SoundComponentDataPtr*)> nextData;
    /// Replaces AudioConverterFillComplexBuffer.
    std::function<OSStatus(const Filling&)> fill;
    /// Whether CallComponentFunctionWithStorageProcInfo calls the handler.
    bool callsHandlers = true;
};
Platform& platform();
Answer& answer(const std::string& function);

/// Restore the initial state: no objects, no recorded calls, no names.
void reset();

Notes calls();
void forgetCalls();

/// Give `pointer` a name for recorded arguments. A pointer without a name is recorded as "memory".
void name(const void* pointer, const std::string& text);

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

/// The names of all objects that were created but not released.
Notes live();

/// Errors of the code under test: releases of an object twice or at an unknown address, and uses after a
/// release.
Notes faults();

/// Number of times that any thread has slept during a wait.
int sleeps();

} // namespace sound_spy
