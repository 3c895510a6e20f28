// Calls of the plug-in's functions by their declarations, and the exceptions that these functions raise.
//
// Errors  Before the call, ProgramError for unsuitable arguments or an inaccessible property. After the call,
//         the exception of an event handler, else the HostException that the plug-in raised, else
//         ProgramError if the plug-in returned an address where no live value of the declared type is.
// A number or Boolean property that is a field of the class data may be read and written on any thread.
// All other functions: [main].
#pragma once

#include "abi/host_values.h"
#include "host/runtime/classes/class_info.h"
#include "host/runtime/support/errors.h"
#include "host/runtime/values/value.h"

#include <exception>
#include <string>
#include <vector>

namespace host {

/// The exceptions of the current host that have not reached the program yet.
struct Exceptions {
    Ref<REALobjectStruct> raised;    ///< exception object that the plug-in raised
    std::exception_ptr handlerError; ///< C++ exception of an event handler or of the work of Host::onYield
    int callDepth = 0;               ///< number of calls into the plug-in that are in progress
};

/// The time of one call into the plug-in. An exception of an outer call waits until the inner call has ended.
class CallScope {
public:
    CallScope();
    ~CallScope();
    CallScope(const CallScope&) = delete;
    CallScope& operator=(const CallScope&) = delete;

    /// Throw the exception that an event handler threw during the call, else the one that the plug-in raised.
    /// Returns without effect if there is no exception.
    void throwRaised();

private:
    Ref<REALobjectStruct> outer_; ///< exception that the plug-in raised in the outer call; or nil
};

/// Convert an exception object to the C++ exception for the program.
HostException asException(REALobjectStruct* raised);

/// Call a function of the plug-in with the words in `leading` (object; `parameter` of a property) before the
/// arguments. Missing arguments get defaults; variables change even if the plug-in raises an exception.
Value callFunction(AnyFunction function, std::vector<Word> leading, const std::vector<Parameter>& parameters,
                   const Type& result, const std::vector<Argument>& arguments, const std::string& name);

/// Call a method of an object, or a shared method if `object` is null. `owner` names the class in messages.
Value callMethod(REALobjectStruct* object, const MethodInfo& method, const std::vector<Argument>& arguments,
                 const std::string& owner);

/// Read or write a property, with its getter and setter or as a field of the class data. `object` is null for
/// a shared property.
Value readProperty(REALobjectStruct* object, const PropertyInfo& property);
void writeProperty(REALobjectStruct* object, const PropertyInfo& property, const Value& value);

/// Make a value from a literal in a declaration, such as a default.
Value literalValue(const Literal& literal);

} // namespace host
