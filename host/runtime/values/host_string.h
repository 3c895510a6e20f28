// Host strings: bytes and their encoding. The bytes never change, but setEncoding() changes the encoding.
// All functions: [main].
#pragma once

#include "abi/host_values.h"
#include "host/runtime/values/reference.h"

#include <string>
#include <string_view>

namespace host {

/// A reference to a host string, or nil. The plug-in sees a REALstringStruct, whose words are valid only with
/// direct access (Options::allowsDirectAccess); otherwise they are poisonWord and poisonLength.
/// Shape  a buffer of one unused byte, the text and five zero bytes, so four bytes can be read at each byte.
class String : public Ref<REALstringStruct> {
public:
    static constexpr Kind kind = Kind::string;
    using Ref::Ref;
    String(Ref<REALstringStruct> ref) : Ref(std::move(ref)) {}

    /// Make a string of UTF-8 text. The string is never nil, even for "". Throws std::bad_alloc.
    static String of(std::string_view utf8);

    /// Make a string of any bytes. `encoding` may be a code outside HostTextEncoding. Throws std::bad_alloc.
    static String ofBytes(std::string_view bytes, std::uint32_t encoding);

    /// The bytes of the string; "" if the string is nil. The view is valid while the string lives.
    std::string_view bytes() const;

    std::uint32_t encoding() const;                 ///< encoding of the bytes; encodingUnknown if nil
    void setEncoding(std::uint32_t encoding) const; ///< Set the encoding. The string must not be nil.

    /// The text in UTF-8; "" if the string is nil. Bytes of unknown encoding are read as UTF-8 if they are
    /// well-formed UTF-8, else as Mac Roman. Throws as convertText().
    std::string text() const;

    /// Convert the text to `encoding`.
    /// Returns  this string if it is nil or has this encoding; nil if `encoding` is unknown, or if the string
    ///          has an unknown encoding and a byte that is not ASCII.
    /// Errors   std::bad_alloc, and the errors of convertText().
    String converted(std::uint32_t encoding) const;
};

/// Values of words that the plug-in must not read: an address that causes a fault, and an impossible length.
constexpr Word poisonWord = static_cast<Word>(0xBAD0BAD1);
constexpr HostInteger poisonLength = -1;

} // namespace host
