// A spy in the place of the platform that the sound bridge uses: components, handles, the mixer of classic
// sound, converters and output units. A test program that links sound_spy.cpp and exports its symbols answers
// these calls itself; it stands in front of libkvxplatform.
//
// Every call is noted with every argument, in order, as text:
//
//     AudioUnitSetProperty(unit, 23, scope 1, element 0, {renderFromMixer, the state}, whole)
//
// What the platform makes goes by short names: component1 the first component, instance2, mixer1, converter1,
// handle1; what it is given to keep, too: refcon1, storage1. A place for an answer is not shown.
//
// As new, the platform does what it is asked. A refused call does nothing, answers null where it answers a
// pointer, and leaves rubbish where its answer would stand. Threads: calls may come from any; the rest is for
// the test's.
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

/// What one function answers, each time it is called.
struct Answer {
    OSStatus status = 0; ///< other than 0: refused
    /// Runs inside the call, after it has been noted; it may throw. What was to be given back is given back.
    std::function<void()> during;
};

/// What a converter is asked to do.
struct Filling {
    AudioConverterRef converter;
    AudioConverterComplexInputDataProc input;
    void* client;
    UInt32* packets;
    AudioBufferList* list;
};

struct Platform {
    std::map<std::string, Answer> answers;
    /// Runs inside every call, after it has been noted, with its name; it may throw.
    std::function<void(const std::string&)> inEachCall;
    /// What a mixer gives, in place of what is asked for; null: it leaves it.
    std::function<void(SoundComponentDataPtr*)> nextData;
    /// What a converter does.
    std::function<OSStatus(const Filling&)> fill;
    /// Whether a call is really made of the handler, by the words of its parameters.
    bool callsHandlers = true;
};
Platform& platform();
Answer& answer(const std::string& function);

/// A platform as new: nothing made, noted or named.
void reset();

Notes calls();
void forgetCalls();

/// How `pointer` shows where a caller hands it over; one without a name is "memory".
void name(const void* pointer, const std::string& text);

/// A registration, as it was made.
struct Registration {
    ComponentDescription description;
    ComponentRoutineUPP entry;
    std::string name; ///< with its length byte
};
Registration lastRegistration();

/// A new instance of the component that was registered last, with no storage yet. Nobody is told of it.
ComponentInstance newInstance();
Handle storageOf(ComponentInstance instance);
long refconOf(Component component);

/// The callback that a unit was given last.
AURenderCallbackStruct callback();

/// The bytes behind a handle.
std::string bytesOf(Handle handle);

/// What was made and not given back, by name.
Notes live();

/// What must never be done, done: a thing released twice or used after that, a foreign address.
Notes faults();

} // namespace sound_spy
