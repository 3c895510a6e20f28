// The types of property values by selector, and functions that format values as text and read text as values.
// All functions: [any].
#pragma once

#include "host/kvx/library/core_audio.h"

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>

namespace kvx {

// ---- types (a selector has the same type for objects of all classes) ----

/// The form of a value, or of the items of a list.
enum class Form {
    text,      ///< C text with a terminating zero
    reference, ///< a reference to a text, which the library's text methods read
    flag,      ///< a 32-bit number, 0 or 1
    number,    ///< an unsigned 32-bit number
    integer,   ///< a signed 32-bit number
    code,      ///< a four-character code
    object,    ///< the ID of an object
    single,    ///< a 32-bit floating-point number
    real,      ///< a 64-bit floating-point number
    range,
    format,
    rangedFormat,
    bufferList,
    channelLayout,
};

/// Whether a value is one item or an array of items.
enum class Extent { one, many };

/// What a property does with the question, a value that a caller passes when it reads the property.
enum class Question {
    none,          ///< the property has a value and takes no question
    convert,       ///< the property converts the question, for example a factor to decibels
    check,         ///< the property checks the question, and its status is the answer
    translate,     ///< the property translates a four-character code into a text
    withReference, ///< question or answer is a reference, which a host program cannot create or keep
};

struct PropertyType {
    Code selector;
    Form form; ///< form of the value; also of the question, if the property converts or checks it
    Extent extent;
    Question question;
};

/// The table of known properties.
std::initializer_list<PropertyType> propertyTypes();

/// Find the type of a property; null if the selector is unknown.
const PropertyType* findPropertyType(Code selector);

// ---- text (parseValue() reads the text that formatValue() returns) ----

/// Format a value, one item per line, without a newline at the end. If the size of the value does not fit the
/// form, use dumpBytes(). For Form::reference, `value` is the text itself.
std::string formatValue(Form form, Extent extent, std::string_view value);

/// Whether the bytes read back from a property agree with the written bytes. A field of 0 in a written format
/// agrees with any value; 32-bit floating-point numbers may differ by a ten-thousandth; other values must be
/// identical.
bool isKept(Form form, std::string_view written, std::string_view read);

/// A function that finds the object that a text inside a value names.
/// Errors  throws Failure.
using FindObject = std::function<ObjectID(const std::string& text)>;

/// Convert the text of a value to the bytes of the value. White space separates the items of a list.
/// Errors  throws WrongUsage, with an example of a valid text.
std::string parseValue(Form form, Extent extent, const std::string& text, const FindObject& findObject);

} // namespace kvx
