// The exceptions that the host throws to the program that uses it.
#pragma once

#include "abi/word.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace host {

/// Error for a request that the host cannot fulfil: an unknown class, method or property, a wrong number or
/// type of arguments, a value of the wrong kind. what() is a sentence for the program's author.
class ProgramError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Error for a library that cannot be loaded. what() names the file, the problem and the next step.
class LoadError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// An exception that the plug-in raised during a call. what() is "Class: message", or only the name of the
/// class if the message is empty.
class HostException : public std::runtime_error {
public:
    HostException(std::string className, std::string message, HostInteger errorNumber)
        : std::runtime_error(message.empty() ? className : className + ": " + message),
          className_(std::move(className)), message_(std::move(message)), errorNumber_(errorNumber)
    {
    }

    const std::string& className() const { return className_; }
    const std::string& message() const { return message_; } ///< message in UTF-8; "" if the message is nil
    HostInteger errorNumber() const { return errorNumber_; }

private:
    std::string className_;
    std::string message_;
    HostInteger errorNumber_;
};

} // namespace host
