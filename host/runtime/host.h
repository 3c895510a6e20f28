// The host: options, registered classes, and the plug-in library that it loads. One host exists at a time; a
// program may make another host after the destruction of the first one.
// All functions: [main].
#pragma once

#include "abi/entry_point.h"
#include "host/runtime/calls/object.h"
#include "host/runtime/classes/class_info.h"
#include "host/runtime/leak_report.h"
#include "host/runtime/services/service_table.h"
#include "host/runtime/support/errors.h"
#include "host/runtime/support/options.h"
#include "host/runtime/values/array.h"
#include "host/runtime/values/value.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace host {

class Host {
public:
    /// Make the current host. Throws ProgramError if a host exists, or if `options.withheld` contains a name
    /// that is not the name of a service.
    explicit Host(Options options = {});

    /// Free the values that still live, without running the plug-in's destructors. Call leaks() before.
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    static Host& current();       ///< Return the current host. Throws ProgramError if no host exists.
    static Host* currentOrNull(); ///< Return the current host; null if no host exists.

    // ---- the library ----

    /// Load a plug-in library and run its entry point. Throws LoadError, also for a second library.
    void load(const std::string& path);

    /// Run the entry point of a plug-in that is linked into the program, such as the plug-in of a test.
    void enter(REALPluginMainFunction pluginMain);

    /// The function with which the plug-in looks up services of the current host.
    static REALResolver resolver() { return resolveService; }

    // ---- classes ----

    /// All classes in the order of registration; the host's own classes come first.
    const std::vector<std::unique_ptr<ClassInfo>>& classes() const;
    std::vector<const ClassInfo*> pluginClasses() const;

    /// Find a class without regard to case; null if there is none.
    const ClassInfo* findClass(std::string_view name) const { return host::findClass(name); }

    /// Make an object of a class. Throws as createObject(), and ProgramError for an unknown class.
    template <class... Arguments>
    Object create(std::string_view className, Arguments&&... arguments)
    {
        return createObject(classNamed(className), argumentList(std::forward<Arguments>(arguments)...));
    }

    // Shared methods and properties belong to a class; a program uses them without an object.
    template <class... Arguments>
    Value callShared(std::string_view className, std::string_view method, Arguments&&... arguments)
    {
        return callSharedWith(className, method, argumentList(std::forward<Arguments>(arguments)...));
    }
    Value callSharedWith(std::string_view className, std::string_view method,
                         const std::vector<Argument>& arguments);
    Value getShared(std::string_view className, std::string_view property);
    void setShared(std::string_view className, std::string_view property, const Value& value);
    Value constant(std::string_view className, std::string_view name) const;

    // ---- options ----

    const Options& options() const;
    /// Hide a service from later look-ups. Throws ProgramError for an unknown name.
    void withhold(const std::string& service);
    void provide(const std::string& service); ///< Make a withheld service available to later look-ups.
    double visibleVersion() const { return options().visibleVersion(); }
    bool allowsDirectAccess() const { return options().allowsDirectAccess(); }

    /// Set the function that the service "REALYieldToRB" runs; an empty function removes the former one.
    void onYield(std::function<void()> work);

    // ---- observation ----

    /// The errors of the plug-in, one sentence each: dead or wrong values, calls of services on other threads
    /// than the main thread, faulty class definitions. The list is empty for a correct plug-in.
    const std::vector<std::string>& misuses() const;
    void clearMisuses();

    LeakReport leaks() const; ///< Count the live values by kind, and objects by class.

    /// Remove and return the exception that the plug-in raised outside a call of the host, for example in a
    /// test that calls the plug-in's functions directly. Null if there is no exception.
    std::unique_ptr<HostException> takeException();

    /// Throw the exception that an event handler threw outside a call of the host. Returns if there is none.
    void rethrow();

private:
    struct Layers;
    std::unique_ptr<Layers> layers_;
    std::string libraryPath_; ///< path of the loaded library; empty if no library is loaded
};

} // namespace host
