// Host strings: bytes with a marked encoding. The bytes never change; the mark may (that is what the host's
// "REALSetStringEncoding" does).
#pragma once

#include "abi/host_values.h"
#include "host/runtime/values/reference.h"

#include <string>
#include <string_view>

namespace host {

/// Shape   the record's buffer holds one unused byte, the bytes, a zero, and at least four zero bytes more,
/// so that
///         short reads past a text stay inside it. In a host whose records are not readable the record holds
///         poison.
/// Thread  [main]
class String : public Ref<REALstringStruct> {
public:
    using Ref::Ref;
    String(Ref<REALstringStruct> ref) : Ref(std::move(ref)) {}

    /// A new string of UTF-8 text. Never nil, also for "".
    static String of(std::string_view utf8);

    /// A new string of any bytes, marked with `encoding` (one of TextEncoding, or any other code).
    static String ofBytes(std::string_view bytes, std::uint32_t encoding);

    /// The bytes as they are; "" for nil. The view lives as long as the string.
    std::string_view bytes() const;

    /// encodingUnknown for nil.
    std::uint32_t encoding() const;

    /// The text in UTF-8. Bytes of unknown encoding are taken as UTF-8 where they are that, else as Mac
    /// Roman.
    std::string text() const;
};

/// The text of `string` in `encoding`, `string` itself if it is marked so already; nil where either encoding
/// is not known and the bytes are not plain ASCII.
String convertString(REALstringStruct* string, std::uint32_t encoding);

} // namespace host
