// Property values: their types, by selector; values as text, and text as values.
#pragma once

#include "host/kvx/library/core_audio.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace kvx {

// ---- types; a selector has one type for all classes of objects ----

/// The form of a value, or of the items of a list.
enum class Form {
    text,      ///< C text with its terminating zero
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

/// The table of known properties: [first, first + count).
struct PropertyTypes {
    const PropertyType* first;
    std::size_t count;
};
PropertyTypes propertyTypes();

/// Find the type of a property; null if the selector is unknown.
const PropertyType* findPropertyType(Code selector);

// ---- text; parseValue() reads what formatValue() returns ----

/// Format a value in the given form, one item per line, without a newline at the end. A value whose size does
/// not fit the form is formatted by dumpBytes(). The value of a `reference` is the text.
std::string formatValue(Form form, Extent extent, std::string_view value);

/// Whether a property has the value that was written, given the bytes that are read back. A zero field of a
/// written format fits any value; `single` values fit within a ten-thousandth; other values must be
/// identical.
bool isKept(Form form, std::string_view written, std::string_view read);

/// Finds the object that a text in a value names.
/// Errors  throws Failure.
using FindObject = std::function<ObjectID(const std::string& text)>;

/// Read the text of a value into its bytes. White space separates the items of a list.
/// Errors  throws WrongUsage, with an example of a valid text.
std::string parseValue(Form form, Extent extent, const std::string& text, const FindObject& findObject);

} // namespace kvx
