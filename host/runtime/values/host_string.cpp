#include "host/runtime/values/host_string.h"

#include "host/runtime/state.h"
#include "host/runtime/values/records.h"
#include "host/runtime/values/text_encoding.h"

#include <cstdlib>
#include <cstring>

namespace host {

namespace {

constexpr std::size_t bytesInFront = 1;
constexpr std::size_t zerosBehind = 1 + 4; ///< the terminator, and what four-character reads may touch

void showRecord(StringRecord& string, bool isReadable)
{
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
    const bool isReadable = Host::current().areRecordsReadable();
    auto* buffer = static_cast<char*>(std::calloc(bytesInFront + bytes.size() + zerosBehind, 1));
    auto* string = buffer ? makeValue<StringRecord>(Kind::string) : nullptr;
    if (!string) {
        std::free(buffer);
        throw std::bad_alloc();
    }
    if (!bytes.empty()) std::memcpy(buffer + bytesInFront, bytes.data(), bytes.size());
    string->buffer = buffer;
    string->length = bytes.size();
    string->encoding = encoding;
    showRecord(*string, isReadable);
    return String(Ref<REALstringStruct>::adopt(&string->visible));
}

void finishString(StringRecord& string) { std::free(string.buffer); }

std::string_view String::bytes() const
{
    if (!get()) return {};
    const auto* string = record<StringRecord>(get());
    return {string->buffer + bytesInFront, string->length};
}

std::uint32_t String::encoding() const
{
    return get() ? record<StringRecord>(get())->encoding : static_cast<std::uint32_t>(encodingUnknown);
}

std::string String::text() const
{
    auto source = encoding();
    if (!isKnownEncoding(source)) source = isUTF8(bytes()) ? encodingUTF8 : encodingMacRoman;
    return *convertText(bytes(), source, encodingUTF8);
}

String convertString(REALstringStruct* source, std::uint32_t encoding)
{
    const String string(Ref<REALstringStruct>::share(source));
    if (!source) return {};
    if (string.encoding() == encoding) return string;
    if (auto converted = convertText(string.bytes(), string.encoding(), encoding))
        return String::ofBytes(*converted, encoding);
    if (isKnownEncoding(encoding) && isAscii(string.bytes()))
        return String::ofBytes(*convertText(string.bytes(), encodingASCII, encoding), encoding);
    return {};
}

} // namespace host
