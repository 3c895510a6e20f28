// Calls of the plug-in's functions by their declarations, and the exceptions that these functions raise.
//
// Throws  ProgramError before the call: unsuitable arguments, a property that cannot be read or written.
//         After the call: the HostException that the plug-in raised, or the exception of an event handler.
// All functions: [main], except that a property that is a field may be read and written on [any].
#pragma once

#include "abi/host_values.h"
#include "host/runtime/classes/class_info.h"
#include "host/runtime/support/errors.h"
#include "host/runtime/values/value.h"

#include <exception>
#include <string>
#include <vector>

namespace host {

/// Exceptions of the current host that no caller has received yet.
struct Exceptions {
    Ref<REALobjectStruct> raised;    ///< exception object that the plug-in raised
    std::exception_ptr handlerError; ///< C++ exception that a handler of the program threw
    int callDepth = 0;               ///< number of calls into the plug-in that are in progress
};

/// A call into the plug-in. An exception that was raised before the call waits until the call has ended.
class CallScope {
public:
    CallScope();
    ~CallScope();
    CallScope(const CallScope&) = delete;
    CallScope& operator=(const CallScope&) = delete;

    /// Throw the exception that the call raised, or that a handler threw during the call.
    void throwRaised();

private:
    Ref<REALobjectStruct> outer_;
};

/// Convert an exception object to the C++ exception for the program.
HostException asException(REALobjectStruct* raised);

/// Call `function` with the leading words (the object, a property's parameter), then the arguments. Defaults
/// replace missing arguments. Variables receive their changed values even if the call raises an exception.
/// `name` is for messages.
Value callFunction(AnyFunction function, std::vector<Word> leading, const std::vector<Parameter>& parameters,
                   const Type& result, const std::vector<Argument>& arguments, const std::string& name);

/// Call a method of an object; a null object calls a shared method. `owner` is the name of the class.
Value callMethod(REALobjectStruct* object, const MethodInfo& method, const std::vector<Argument>& arguments,
                 const std::string& owner);

/// Read or write a property, through its functions or in the class data. A null object stands for a shared
/// property.
Value readProperty(REALobjectStruct* object, const PropertyInfo& property);
void writeProperty(REALobjectStruct* object, const PropertyInfo& property, const Value& value);

/// The value of a literal in a declaration.
Value literalValue(const Literal& literal);

} // namespace host
