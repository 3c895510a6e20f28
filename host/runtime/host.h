// The host: its options, its classes, and the library that it loads. One host exists at a time; a test may
// make another host after the destruction of the first one.
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
    /// Throws ProgramError if a host exists, or if a withheld name is not the name of a service.
    explicit Host(Options options = {});

    /// Frees the remaining values without running destructors. Read the leak report before.
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    static Host& current(); ///< Throws ProgramError without a host.
    static Host* currentOrNull();

    // ---- the library ----

    /// Load a library and run its entry point. A host loads one library. Throws LoadError.
    void load(const std::string& path);

    /// Run the entry point of a plug-in that is linked into the program, such as a test's.
    void enter(REALPluginMainFunction pluginMain);

    /// The resolver for the plug-in. It serves the current host.
    static REALResolver resolver() { return resolveService; }

    // ---- classes ----

    /// All classes in the order of registration; the host's own classes come first.
    const std::vector<std::unique_ptr<ClassInfo>>& classes() const;
    std::vector<const ClassInfo*> pluginClasses() const;

    /// Find a class without regard to case; null if there is none.
    const ClassInfo* findClass(std::string_view name) const { return host::findClass(name); }

    /// Make an object of a class as createObject() does. Throws ProgramError for an unknown class, too.
    template <class... Arguments>
    Object create(std::string_view className, Arguments&&... arguments)
    {
        return createObject(classNamed(className), argumentList(std::forward<Arguments>(arguments)...));
    }

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
    void withhold(const std::string& service); ///< Hide a service from further look-ups. Throws ProgramError.
    void provide(const std::string& service);  ///< Make a withheld service available again.
    double visibleVersion() const { return options().visibleVersion(); }
    bool areRecordsReadable() const { return options().areRecordsReadable(); }

    /// Set the work that "REALYieldToRB" runs; an empty function removes the work.
    void onYield(std::function<void()> work);

    // ---- observation ----

    /// The number of calls to a service since the start of the host or resetServiceCalls. Throws ProgramError
    /// for an unknown name.
    std::size_t serviceCalls(const std::string& service) const { return host::serviceCalls(service); }
    void resetServiceCalls() { host::resetServiceCalls(); }

    /// The errors of the plug-in, one sentence each: dead or wrong values, services called off the main
    /// thread, faulty class definitions. Empty for a correct plug-in.
    const std::vector<std::string>& misuses() const;
    void clearMisuses();

    LeakReport leaks() const; ///< Count the live values by kind and class.

    /// Take the exception that was raised outside any call, as in a test that calls plug-in functions
    /// directly. Null without an exception.
    std::unique_ptr<HostException> takeException();

    /// Throw the exception that an event handler threw outside any call. Does nothing without an exception.
    void rethrow();

private:
    struct Layers;
    std::unique_ptr<Layers> layers_;
    std::string libraryPath_; ///< path of the loaded library; empty before the load
};

} // namespace host
