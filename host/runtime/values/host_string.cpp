#include "host/runtime/values/host_string.h"

#include "host/runtime/support/options.h"
#include "host/runtime/support/per_host.h"
#include "host/runtime/values/text_encoding.h"

#include <cstdlib>
#include <cstring>

namespace host {

namespace {

struct StringRecord {
    REALstringStruct visible; ///< structure that the plug-in sees; poison without direct access
    char* buffer;             ///< buffer with one unused byte, the text, and five zero bytes
    std::size_t length;
    std::uint32_t encoding;
};

void destroyString(void* string) { std::free(record<StringRecord>(string)->buffer); }

std::string printString(const void* string)
{
    return String(String::share(record<REALstringStruct>(string))).text();
}

Cost costOfString(const void*, const Type& type)
{
    return type.base == Base::string && !type.isArray ? Cost(cost::exact) : Cost();
}

constexpr KindRow stringRow = {Kind::string, destroyString, nullptr, printString, costOfString};

constexpr std::size_t bytesBefore = 1;
// The terminator, and the bytes that a four-byte read at the terminator touches.
constexpr std::size_t zerosAfter = 1 + 4;

void setVisibleWords(StringRecord& string)
{
    const bool isReadable = stateOf<Options>().allowsDirectAccess();
    string.visible.first = poisonWord;
    string.visible.buffer = isReadable ? string.buffer : reinterpret_cast<char*>(poisonWord);
    string.visible.third = poisonWord;
    string.visible.length = isReadable ? static_cast<HostInteger>(string.length) : poisonLength;
    string.visible.encoding = isReadable ? string.encoding : poisonWord;
}

} // namespace

String String::of(std::string_view utf8) { return ofBytes(utf8, encodingUTF8); }

String String::ofBytes(std::string_view bytes, std::uint32_t encoding)
{
    auto* string = makeValue<StringRecord>(stringRow);
    if (!string) throw std::bad_alloc();
    String result(adopt(&string->visible));
    string->buffer = static_cast<char*>(std::calloc(bytesBefore + bytes.size() + zerosAfter, 1));
    if (!string->buffer) throw std::bad_alloc();
    if (!bytes.empty()) std::memcpy(string->buffer + bytesBefore, bytes.data(), bytes.size());
    string->length = bytes.size();
    string->encoding = encoding;
    setVisibleWords(*string);
    return result;
}

std::string_view String::bytes() const
{
    if (!get()) return {};
    const auto* string = record<StringRecord>(get());
    return {string->buffer + bytesBefore, string->length};
}

std::uint32_t String::encoding() const
{
    return get() ? record<StringRecord>(get())->encoding : std::uint32_t{encodingUnknown};
}

void String::setEncoding(std::uint32_t encoding) const
{
    auto* string = record<StringRecord>(get());
    string->encoding = encoding;
    setVisibleWords(*string);
}

std::string String::text() const
{
    std::uint32_t source = encoding();
    if (!isKnownEncoding(source)) source = isUTF8(bytes()) ? encodingUTF8 : encodingMacRoman;
    return *convertText(bytes(), source, encodingUTF8);
}

String String::converted(std::uint32_t to) const
{
    if (!get() || encoding() == to) return *this;
    if (const std::optional<std::string> text = convertText(bytes(), encoding(), to))
        return ofBytes(*text, to);
    if (isKnownEncoding(to) && isAscii(bytes())) return ofBytes(*convertText(bytes(), encodingASCII, to), to);
    return {};
}

} // namespace host
