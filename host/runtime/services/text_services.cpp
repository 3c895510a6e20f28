// The services for strings.
#include "host/runtime/services/services.h"
#include "host/runtime/support/misuse.h"
#include "host/runtime/support/options.h"
#include "host/runtime/support/per_host.h"
#include "host/runtime/values/host_string.h"

#include <fmt/format.h>

#include <cstdlib>
#include <cstring>

namespace host::services {

namespace {

/// The text that one call of "PluginGetStringData" returned; it lives until "PluginDisposeStringData".
struct StringDataRecord {
    String text;
    char* copy; ///< copy of the bytes plus a byte that is not zero, so that a read past the end shows;
                ///< null if `text` is used
};

void destroyStringData(void* value)
{
    auto* data = record<StringDataRecord>(value);
    std::free(data->copy);
    data->~StringDataRecord();
}

constexpr KindRow stringDataRow = {Kind::stringData, destroyStringData, nullptr, nullptr, nullptr};

/// The host's pointer in the bookkeeping bytes of the REALstringData that the plug-in passes.
StringDataRecord*& recordIn(REALstringData& data)
{
    return *reinterpret_cast<StringDataRecord**>(data.bookkeeping);
}

char* unterminatedCopy(std::string_view bytes)
{
    auto* copy = static_cast<char*>(std::malloc(bytes.size() + 1));
    if (!copy) throw std::bad_alloc();
    std::memcpy(copy, bytes.data(), bytes.size());
    copy[bytes.size()] = '!';
    return copy;
}

} // namespace

void lockString(REALstringStruct* string) { retain(checkedValue(string, Kind::string, "REALLockString")); }

void unlockString(REALstringStruct* string)
{
    release(checkedValue(string, Kind::string, "REALUnlockString"));
}

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
    return checkedArgument<String>(string, "REALGetStringEncoding").encoding();
}

void setStringEncoding(REALstringStruct* string, std::uint32_t encoding)
{
    if (const auto live = checkedArgument<String>(string, "REALSetStringEncoding"))
        live.setEncoding(encoding);
}

REALstringStruct* convertString(REALstringStruct* string, std::uint32_t encoding)
{
    return checkedArgument<String>(string, "REALConvertString").converted(encoding).detach();
}

const char* stringBytes(REALstringStruct* string)
{
    return checkedArgument<String>(string, "StringGetCString").bytes().data();
}

HostInteger stringLength(REALstringStruct* string)
{
    return static_cast<HostInteger>(checkedArgument<String>(string, "LenB").bytes().size());
}

HostBoolean stringData(REALstringStruct* string, std::uint32_t encoding, REALstringData* data)
{
    if (!data) {
        noteMisuse("PluginGetStringData was given no record to fill");
        return false;
    }
    *data = {};
    const String text = checkedArgument<String>(string, "PluginGetStringData").converted(encoding);
    if (!text) return false;
    auto* kept = makeValue<StringDataRecord>(stringDataRow);
    if (!kept) return false;
    recordIn(*data) = kept;
    kept->text = text;
    if (!stateOf<Options>().isStringDataTerminated) kept->copy = unterminatedCopy(text.bytes());
    data->bytes = kept->copy ? kept->copy : text.bytes().data();
    data->length = static_cast<HostInteger>(text.bytes().size());
    return true;
}

void disposeStringData(REALstringData* data)
{
    if (!data) return noteMisuse("PluginDisposeStringData was given no record");
    release(checkedValue(recordIn(*data), Kind::stringData, "PluginDisposeStringData"));
    *data = {};
}

} // namespace host::services
