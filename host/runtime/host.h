// The host itself: its version and what follows from it, the classes it knows, the library it loads.
//
// There is one host at a time. Tests make another after the last one has gone; a program makes one.
#pragma once

#include "abi/class_definition.h"
#include "abi/entry_point.h"
#include "host/runtime/calls/object.h"
#include "host/runtime/classes/class_info.h"
#include "host/runtime/leak_report.h"
#include "host/runtime/support/errors.h"
#include "host/runtime/values/array.h"
#include "host/runtime/values/folder_item.h"
#include "host/runtime/values/host_string.h"
#include "host/runtime/values/memory_block.h"
#include "host/runtime/values/value.h"

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace host {

struct Options {
    double version = 2016.0;    ///< decides services, record layouts and class layout; see service_table.h
    bool isBuiltProgram = true; ///< what "REALinRuntime" answers; false: the development environment
    std::set<std::string> withheld; ///< services that the resolver denies, by name
    /// Strings' data handed out by "PluginGetStringData" may end without a terminating zero; tests choose
    /// that.
    bool isStringDataTerminated = true;
    /// Older hosts may keep an array's elements elsewhere: the record's eighth word is then null.
    bool isArrayStorageReadable = true;
};

/// What was asked of the resolver, and how often each service was called.
struct ServiceLog {
    struct Lookup {
        std::string name;
        bool isKnown;
    };
    std::vector<Lookup> lookups; ///< in order, repeated ones too
    std::map<std::string, std::size_t> calls;

    std::size_t lookupsOf(std::string_view name) const;
    std::size_t callsOf(const std::string& name) const;
};

class Host {
public:
    /// Throws ProgramError if there is a host already, or if a withheld name is no service's.
    explicit Host(Options options = {});

    /// Frees what is still alive, without running destructors; the leak report is to be read before.
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    static Host& current(); ///< throws ProgramError if there is none
    static Host* currentOrNull();

    // ---- the library ----

    /// Load a library and enter it. Once per host. Throws LoadError.
    void load(const std::string& path);

    /// Enter a library that is already in the process (a test's own).
    void enter(REALPluginMainFunction pluginMain);

    /// The resolver as the plug-in gets it. It answers for whichever host is the current one.
    static REALResolver resolver();

    // ---- classes ----

    /// All classes in order of registration; the host's own first.
    const std::vector<std::unique_ptr<ClassInfo>>& classes() const;
    std::vector<const ClassInfo*> pluginClasses() const;
    const ClassInfo* findClass(std::string_view name) const; ///< without regard to case; null: none

    /// A new object: class data zeroed, constructors run (superclasses first), then the method "Constructor"
    /// that fits the arguments. Throws ProgramError or HostException; a half-made object is destroyed.
    template <class... Arguments>
    Object create(std::string_view className, Arguments&&... arguments)
    {
        std::vector<Argument> list;
        list.reserve(sizeof...(arguments));
        (list.emplace_back(std::forward<Arguments>(arguments)), ...);
        return createWith(className, list);
    }
    Object createWith(std::string_view className, const std::vector<Argument>& arguments);

    template <class... Arguments>
    Value callShared(std::string_view className, std::string_view method, Arguments&&... arguments)
    {
        std::vector<Argument> list;
        list.reserve(sizeof...(arguments));
        (list.emplace_back(std::forward<Arguments>(arguments)), ...);
        return callSharedWith(className, method, list);
    }
    Value callSharedWith(std::string_view className, std::string_view method,
                         const std::vector<Argument>& arguments);
    Value getShared(std::string_view className, std::string_view property);
    void setShared(std::string_view className, std::string_view property, const Value& value);
    Value constant(std::string_view className, std::string_view name) const;

    // ---- options ----

    const Options& options() const;
    void withhold(const std::string& service); ///< from the next look-up on; throws as above
    void provide(const std::string& service);  ///< take that back

    /// The version that the plug-in sees: 0.0 while "REALGetRBVersion" is withheld.
    double visibleVersion() const;
    /// Whether string and array records hold what they say: before 2016.0, or with the version withheld.
    bool areRecordsReadable() const;

    /// Called by "REALYieldToRB": lets the program run what is waiting. Nothing happens without one.
    void onYield(std::function<void()> work);

    // ---- observation ----

    void logServices(bool isOn); ///< off at first; switching on starts an empty log
    const ServiceLog& serviceLog() const;

    /// What the plug-in did wrong, a sentence each: dead or wrong values, services called off the main
    /// thread, bad class definitions. A well-behaved plug-in leaves this empty.
    const std::vector<std::string>& misuses() const;
    void clearMisuses();

    LeakReport leaks() const; ///< values alive now

    /// The exception raised outside any call (a test calling plug-in functions directly); null where there is
    /// none. Taking it clears it.
    std::unique_ptr<HostException> takeException();

    /// Throw what an event's handler threw while no call was under way. Does nothing where nothing was
    /// thrown.
    void rethrow();

    struct State;
    State& state() { return *state_; } ///< for the runtime's own files

private:
    std::unique_ptr<State> state_;
};

} // namespace host
