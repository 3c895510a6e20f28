// The types of property values, by selector. A selector has one type for all classes of objects.
#pragma once

#include "host/kvx/text/codes.h"

#include <cstddef>

namespace kvx {

/// The form of a value, or of the items of a list.
enum class Form {
    text,      ///< C text with its terminating zero
    reference, ///< a reference to a text; the library's text methods read the text
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

/// The kind of question that a property answers.
enum class Asks {
    nothing,     ///< the property has a value, and answers no question
    inPlace,     ///< the property replaces the value of the question by the answer, for example a conversion
    whether,     ///< the property checks the value of the question; the status is the answer
    byCode,      ///< the property translates a code into a text
    byReference, ///< the question or the answer is a reference, which a host program cannot create or keep
};

struct PropertyType {
    Code selector;
    Form form; ///< form of the value; for inPlace and whether also of the question
    Extent extent;
    Asks asks;
};

/// The table of known properties: [first, first + count).
struct PropertyTypes {
    const PropertyType* first;
    std::size_t count;
};
PropertyTypes propertyTypes();

/// Find the type of a property; null if the selector is unknown.
const PropertyType* findPropertyType(Code selector);

} // namespace kvx
