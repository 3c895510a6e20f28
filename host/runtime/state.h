// What the host keeps, for the runtime's own files.
#pragma once

#include "host/runtime/host.h"

#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <unordered_set>
#include <vector>

namespace host {

struct EventBinding;
struct EventBindingDeleter {
    void operator()(EventBinding* binding) const;
};

struct Host::State {
    Options options;
    std::thread::id mainThread = std::this_thread::get_id();
    std::unordered_set<const void*> live; ///< addresses of all live values
    std::vector<std::unique_ptr<ClassInfo>> classes;
    std::vector<std::unique_ptr<EventBinding, EventBindingDeleter>> events;
    int registeredLayout = 0; ///< from "RegisterPluginVersion"; 0 before
    std::string libraryPath;

    Object pending;                  ///< raised by the plug-in and not yet seen by the caller
    std::exception_ptr handlerError; ///< thrown by an event's handler, waiting for the host's own code
    int callDepth = 0;

    std::function<void()> yield;
    bool isLogging = false;
    mutable ServiceLog log;
    std::map<std::string, std::size_t> callsBefore; ///< the counters when logging began

    std::mutex misuseLock;
    std::vector<std::string> misuses;
};

/// The state of the current host; null if there is none.
Host::State* stateOrNull();
Host::State& state(); ///< throws ProgramError if there is none

/// Note what the plug-in did wrong. [any]
void noteMisuse(std::string sentence);

/// Make an instance for the plug-in or for a program. The constructors' exceptions are thrown.
Object makeObject(const ClassInfo& info);

/// Register a class as "PluginRegisterClass" does. Returns the class, or null with a misuse noted.
const ClassInfo* registerClass(REALclassDefinition& definition, int layout, bool isBuiltIn);

/// Raise a host exception from one of the host's own functions, as the plug-in would.
void raise(const char* className, const std::string& message, HostInteger errorNumber = 0);

/// A call into the plug-in. What it raises belongs to this call: an exception that waited outside is put back
/// after.
class CallScope {
public:
    CallScope();
    ~CallScope();
    CallScope(const CallScope&) = delete;
    CallScope& operator=(const CallScope&) = delete;

    /// Throws what was raised, or what a handler threw, during the call.
    void finish();

private:
    Object outer_;
};

/// The exception object as a C++ exception.
HostException asException(const Object& raised);

} // namespace host
