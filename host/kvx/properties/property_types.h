// What the values of the known properties are: a table of facts, by selector. A selector means the same for
// every class of object that has it.
#pragma once

#include "host/kvx/text/codes.h"

#include <cstddef>

namespace kvx {

/// How a value is to be read: its items' form, or a record's.
enum class Form {
    text,      ///< C text with its terminating zero
    reference, ///< to a text, which the library's text methods read
    flag,      ///< 32 bits, 0 or 1
    number,    ///< 32 bits, unsigned
    integer,   ///< 32 bits, signed
    code,      ///< four characters
    object,    ///< an object's ID
    single,
    real, ///< 64 bits
    range,
    format,
    rangedFormat,
    bufferList,
    channelLayout,
};

enum class Extent { one, many };

/// Whether a property has a value of its own, or answers a question.
enum class Asks {
    nothing,
    inPlace,     ///< the value is the question and becomes the answer: a conversion, a best match
    whether,     ///< the value is the question, the status is the answer
    byCode,      ///< by a code, for a text
    byReference, ///< by or for references or addresses, which a host program cannot make or keep
};

struct PropertyType {
    Code selector;
    Form form; ///< of the value; of the question, where it is asked in place
    Extent extent;
    Asks asks;
};

/// The whole table: [first, first + count).
struct PropertyTypes {
    const PropertyType* first;
    std::size_t count;
};
PropertyTypes propertyTypes();

/// Null for a selector of which nothing is known.
const PropertyType* findPropertyType(Code selector);

} // namespace kvx
