// Errors that the host throws to the program.
#pragma once

#include "abi/word.h"

#include <stdexcept>
#include <string>

namespace host {

/// The program's request is impossible: an unknown class, method or property, the wrong number or type of
/// arguments, a value of the wrong kind. what() is a sentence for the program's author.
class ProgramError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The library cannot be loaded. what() names the file, the problem and the next step.
class LoadError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A host exception that the plug-in raised during a call. what() is "Class: message", or the class alone if
/// the exception has no message.
class HostException : public std::runtime_error {
public:
    HostException(std::string className, std::string message, HostInteger errorNumber)
        : std::runtime_error(message.empty() ? className : className + ": " + message),
          className_(std::move(className)), message_(std::move(message)), errorNumber_(errorNumber)
    {
    }

    const std::string& className() const { return className_; }
    const std::string& message() const { return message_; } ///< message text in UTF-8; empty if nil
    HostInteger errorNumber() const { return errorNumber_; }

private:
    std::string className_;
    std::string message_;
    HostInteger errorNumber_;
};

} // namespace host
