// Host strings: bytes with an encoding. The bytes never change; "REALSetStringEncoding" changes the encoding.
// All functions: [main].
#pragma once

#include "abi/host_values.h"
#include "host/runtime/values/reference.h"

#include <string>
#include <string_view>

namespace host {

/// Shape  The record's buffer has one unused byte, the bytes, a zero byte and at least four more zeros.
///        A four-character read at any byte of the text thus stays inside the buffer. If the plug-in may not
///        read records, the record's words hold poison.
class String : public Ref<REALstringStruct> {
public:
    static constexpr Kind kind = Kind::string;
    using Ref::Ref;
    String(Ref<REALstringStruct> ref) : Ref(std::move(ref)) {}

    /// Make a string of UTF-8 text. Never nil, even for "". Throws std::bad_alloc.
    static String of(std::string_view utf8);

    /// Make a string of any bytes. `encoding` is a HostTextEncoding or any other code. Throws std::bad_alloc.
    static String ofBytes(std::string_view bytes, std::uint32_t encoding);

    /// The bytes of the string; "" for nil. The view is valid while the string lives.
    std::string_view bytes() const;

    std::uint32_t encoding() const;                 ///< encoding of the bytes; encodingUnknown for nil
    void setEncoding(std::uint32_t encoding) const; ///< Set the encoding of a string that is not nil.

    /// The text in UTF-8; "" for nil. Bytes of unknown encoding are read as UTF-8 if they are well-formed
    /// UTF-8, otherwise as Mac Roman. Throws as convertText.
    std::string text() const;

    /// Convert the text to `encoding`; a string that has this encoding already returns itself.
    /// Returns  nil for nil, and if either encoding is unknown and the bytes are not plain ASCII.
    /// Throws   std::bad_alloc, and as convertText.
    String converted(std::uint32_t encoding) const;
};

/// Content of the words that the plug-in must not read: an address that faults, and an impossible length.
constexpr Word poisonWord = static_cast<Word>(0xBAD0BAD1);
constexpr HostInteger poisonLength = -1;

} // namespace host
