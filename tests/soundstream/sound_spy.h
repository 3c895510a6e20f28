// Stands in for the platform functions that the sound bridge calls: components, handles, the mixer of classic
// sound, converters and output units. A test program that links sound_spy.cpp and exports its symbols answers
// these calls itself, instead of libkvxplatform.
//
// Every call is recorded with every argument, in order, as text:
//
//     AudioUnitSetProperty(unit, 23, scope 1, element 0, {renderFromMixer, the state}, whole)
//
// Objects of the platform have short names: component1 is the first component, then instance2, mixer1,
// converter1, handle1. So do the words that the platform stores: refcon1, storage1. Out-parameters are not
// shown.
//
// By default the platform grants every call. A refused call does nothing, returns null where it returns a
// pointer, and fills its out-parameter with garbage. Any thread may call the platform; the test's thread
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

/// How one function answers each of its calls.
struct Answer {
    OSStatus status = 0; ///< other than 0: refused
    /// Runs inside the call, after it is recorded; it may throw. A release happens all the same.
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
    /// Runs inside every call, after it is recorded, with the function's name; it may throw.
    std::function<void(const std::string&)> inEachCall;
    /// Sets the result of SoundComponentGetSourceData; null: the result keeps its value.
    std::function<void(SoundComponentDataPtr*)> nextData;
    /// Replaces the converter's work.
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

/// Name `pointer` in recorded arguments; a pointer without a name is "memory".
void name(const void* pointer, const std::string& text);

/// The arguments of a RegisterComponent call.
struct Registration {
    ComponentDescription description;
    ComponentRoutineUPP entry;
    std::string name; ///< with its length byte
};
Registration lastRegistration();

/// A new instance of the component registered last, without storage. The component gets no open request.
ComponentInstance newInstance();
Handle storageOf(ComponentInstance instance);
long refconOf(Component component);

/// The render callback set last.
AURenderCallbackStruct callback();

/// The contents of a handle.
std::string bytesOf(Handle handle);

/// The names of objects that were created and not released.
Notes live();

/// Errors of the caller: an object released twice or used after its release, an unknown address released.
Notes faults();

/// How often a thread has slept while it waited.
int sleeps();

} // namespace sound_spy
