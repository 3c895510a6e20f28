#include "host/runtime/services/services.h"
#include "host/runtime/state.h"
#include "host/runtime/values/host_string.h"
#include "host/runtime/values/records.h"

#include <fmt/format.h>

#include <cstdlib>
#include <cstring>

namespace host::services {

namespace {

String lent(REALstringStruct* string, const char* service)
{
    auto* live = static_cast<REALstringStruct*>(liveValue(string, Kind::string, service));
    return String(Ref<REALstringStruct>::share(live));
}

/// The host's own part of a string-data record.
StringDataRecord*& bookkeepingOf(REALstringData& data)
{
    return *reinterpret_cast<StringDataRecord**>(data.bookkeeping);
}

/// The bytes again, ended by one that is not zero.
char* unterminatedCopy(std::string_view bytes)
{
    auto* copy = static_cast<char*>(std::malloc(bytes.size() + 1));
    if (!copy) throw std::bad_alloc();
    std::memcpy(copy, bytes.data(), bytes.size());
    copy[bytes.size()] = '!';
    return copy;
}

} // namespace

void lockString(REALstringStruct* string) { retain(liveValue(string, Kind::string, "REALLockString")); }

void unlockString(REALstringStruct* string) { release(liveValue(string, Kind::string, "REALUnlockString")); }

REALstringStruct* buildString(const void* bytes, HostInteger count)
{
    return buildStringWithEncoding(bytes, count, encodingUnknown);
}

REALstringStruct* buildStringWithEncoding(const void* bytes, HostInteger count, std::uint32_t encoding)
{
    if (count < 0 || (count > 0 && !bytes)) {
        noteMisuse(fmt::format("a string of {} bytes at {} cannot be built", count, bytes));
        return nullptr;
    }
    const std::string_view view(static_cast<const char*>(bytes), static_cast<std::size_t>(count));
    return String::ofBytes(view, encoding).detach();
}

std::uint32_t stringEncoding(REALstringStruct* string)
{
    return lent(string, "REALGetStringEncoding").encoding();
}

void setStringEncoding(REALstringStruct* string, std::uint32_t encoding)
{
    if (const auto live = lent(string, "REALSetStringEncoding")) {
        record<StringRecord>(live.get())->encoding = encoding;
        if (Host::current().areRecordsReadable()) live.get()->encoding = encoding;
    }
}

REALstringStruct* convertString(REALstringStruct* string, std::uint32_t encoding)
{
    return host::convertString(lent(string, "REALConvertString").get(), encoding).detach();
}

const char* stringBytes(REALstringStruct* string)
{
    const auto live = lent(string, "StringGetCString");
    return live ? live.bytes().data() : nullptr;
}

HostInteger stringLength(REALstringStruct* string)
{
    return static_cast<HostInteger>(lent(string, "LenB").bytes().size());
}

Boolean8 stringData(REALstringStruct* string, std::uint32_t encoding, REALstringData* data)
{
    if (!data) {
        noteMisuse("PluginGetStringData was given no record to fill");
        return false;
    }
    *data = {};
    const auto text = host::convertString(lent(string, "PluginGetStringData").get(), encoding);
    if (!text) return false;
    auto* loan = makeValue<StringDataRecord>(Kind::stringData);
    if (!loan) return false;
    bookkeepingOf(*data) = loan;
    loan->text = text;
    if (!Host::current().options().isStringDataTerminated) loan->copy = unterminatedCopy(text.bytes());
    data->bytes = loan->copy ? loan->copy : text.bytes().data();
    data->length = static_cast<HostInteger>(text.bytes().size());
    return true;
}

void disposeStringData(REALstringData* data)
{
    if (!data) return noteMisuse("PluginDisposeStringData was given no record");
    release(liveValue(bookkeepingOf(*data), Kind::stringData, "PluginDisposeStringData"));
    *data = {};
}

} // namespace host::services
