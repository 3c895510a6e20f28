// The fake host's services for strings, with the conversion of text to other encodings.
#include "tests/support/fake_host_services.h"

namespace fake {
namespace {

constexpr char lengthMethod[] = "LenB( s as string ) as integer";

std::optional<std::u32string> decode(std::string_view bytes, std::uint32_t encoding)
{
    std::u32string points;
    const auto unit = [&](std::size_t at, std::size_t size) {
        std::uint32_t value = 0;
        std::memcpy(&value, bytes.data() + at, size);
        return value;
    };
    switch (encoding) {
    case encodingASCII:
    case encodingWindowsLatin1:
    case encodingMacRoman:
        for (unsigned char byte : bytes) {
            if (byte < 0x80 || encoding == encodingWindowsLatin1)
                points += byte;
            else if (encoding == encodingMacRoman && byte == 0x8E)
                points += U'\u00E9';
            else
                return {};
        }
        return points;
    case encodingUTF16:
        for (std::size_t i = 0; i + 2 <= bytes.size(); i += 2) {
            std::uint32_t point = unit(i, 2);
            if ((point & 0xFC00) == 0xD800 && i + 4 <= bytes.size()) {
                point = 0x10000 + ((point & 0x3FF) << 10) + (unit(i + 2, 2) & 0x3FF);
                i += 2;
            }
            points += point;
        }
        return points;
    case encodingUTF32:
        for (std::size_t i = 0; i + 4 <= bytes.size(); i += 4) points += unit(i, 4);
        return points;
    case encodingUTF8:
        for (std::size_t i = 0; i < bytes.size();) {
            const auto lead = static_cast<unsigned char>(bytes[i++]);
            const int more = lead < 0x80 ? 0 : lead < 0xC0 ? -1 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
            if (more < 0 || i + static_cast<std::size_t>(more) > bytes.size()) return {};
            std::uint32_t point = more == 0 ? lead : lead & (0x3Fu >> more);
            for (int k = 0; k < more; ++k)
                point = point << 6 | (static_cast<unsigned char>(bytes[i++]) & 0x3F);
            points += point;
        }
        return points;
    default:
        return {};
    }
}

std::optional<std::string> encode(const std::u32string& points, std::uint32_t encoding)
{
    std::string bytes;
    for (char32_t point : points) {
        if (encoding == encodingMacRoman || encoding == encodingASCII) {
            if (point < 0x80)
                bytes += static_cast<char>(point);
            else if (encoding == encodingMacRoman && point == U'\u00E9')
                bytes += '\x8E';
            else
                return {};
        } else if (encoding != encodingUTF8) {
            return {};
        } else if (point < 0x80) {
            bytes += static_cast<char>(point);
        } else {
            const int more = point < 0x800 ? 1 : point < 0x10000 ? 2 : 3;
            const char32_t lead = more == 1 ? 0xC0 : more == 2 ? 0xE0 : 0xF0;
            bytes += static_cast<char>(lead | point >> 6 * more);
            for (int k = more - 1; k >= 0; --k) bytes += static_cast<char>(0x80 | (point >> 6 * k & 0x3F));
        }
    }
    return bytes;
}

} // namespace

struct TextServices : Services {
    static REALstringStruct* buildString(const void* bytes, HostInteger count)
    {
        Call call = note("REALBuildString", quoted(bytes, count) + ", " + std::to_string(count));
        return build(call, bytes, count, encodingUnknown);
    }
    static REALstringStruct* buildStringWithEncoding(const void* bytes, HostInteger count,
                                                     std::uint32_t encoding)
    {
        Call call = note("REALBuildStringWithEncoding",
                         quoted(bytes, count) + ", " + std::to_string(count) + ", " + code(encoding));
        return build(call, bytes, count, encoding);
    }
    static REALstringStruct* build(Call& call, const void* bytes, HostInteger count, std::uint32_t encoding)
    {
        REALstringStruct* text = nullptr;
        if (begin(call))
            text = host().newString({static_cast<const char*>(bytes), static_cast<std::size_t>(count)},
                                    encoding);
        call.answer(shown(text));
        return text;
    }

    static std::uint32_t getStringEncoding(REALstringStruct* text)
    {
        Call call = note("REALGetStringEncoding", shown(text));
        const Host::Value* found = begin(call) ? known(text, "s", "REALGetStringEncoding") : nullptr;
        const std::uint32_t encoding = found ? found->encoding : 0;
        call.answer(code(encoding));
        return encoding;
    }
    static void setStringEncoding(REALstringStruct* text, std::uint32_t encoding)
    {
        Call call = note("REALSetStringEncoding", shown(text) + ", " + code(encoding));
        Host::Value* found = begin(call) ? known(text, "s", "REALSetStringEncoding") : nullptr;
        if (!found) return;
        found->encoding = encoding;
        host().place(*found);
    }
    static REALstringStruct* convertString(REALstringStruct* text, std::uint32_t encoding)
    {
        Call call = note("REALConvertString", shown(text) + ", " + code(encoding));
        REALstringStruct* result = nullptr;
        if (begin(call) && known(text, "s", "REALConvertString")) result = host().convert(text, encoding);
        call.answer(shown(result));
        return result;
    }
    static const char* getCString(REALstringStruct* text)
    {
        Call call = note("StringGetCString", shown(text));
        const Host::Value* found = begin(call) ? known(text, "s", "StringGetCString") : nullptr;
        return found ? found->storage.get() + 1 : nullptr;
    }
    static HostInteger lenB(REALstringStruct* text)
    {
        Call call = note("LenB", shown(text));
        const Host::Value* found = begin(call) ? known(text, "s", "LenB") : nullptr;
        HostInteger length = found ? static_cast<HostInteger>(found->bytes.size()) : 0;
        if (found && host().claimedLength) length = *host().claimedLength;
        call.answer(std::to_string(length));
        return length;
    }
    static AnyFunction loadGlobalMethod(const void* none, const char* declaration)
    {
        Call call =
            note("REALLoadGlobalMethod", std::string(none ? "something" : "null") + ", " + declaration);
        if (!begin(call) || std::strcmp(declaration, lengthMethod) != 0 || host().withheld_.count("LenB")) {
            call.answer("null");
            return nullptr;
        }
        call.answer("LenB");
        return reinterpret_cast<AnyFunction>(&lenB);
    }

    static HostBoolean getStringData(REALstringStruct* text, std::uint32_t encoding, REALstringData* data)
    {
        Call call = note("PluginGetStringData", shown(text) + ", " + code(encoding));
        Host& h = host();
        const Host::Value* found = begin(call) ? known(text, "s", "PluginGetStringData") : nullptr;
        const auto bytes = found ? h.converted(text, encoding) : std::nullopt;
        call.answer(bytes ? "true" : "false");
        if (!bytes) return 0;
        const std::string whole = *bytes + h.afterText;
        std::unique_ptr<char[]> storage(new char[whole.size()]);
        std::memcpy(storage.get(), whole.data(), whole.size());
        data->bytes = storage.get();
        data->length = static_cast<HostInteger>(bytes->size());
        const std::size_t id = h.nextTextData_++;
        std::memcpy(data->bookkeeping, &id, sizeof id);
        h.textData_[id] =
            std::unique_ptr<Host::TextData>(new Host::TextData{found->name, std::move(storage)});
        return 0x40; // the plug-in takes any byte but 0 for true
    }
    static void disposeStringData(REALstringData* data)
    {
        std::size_t id = 0;
        std::memcpy(&id, data->bookkeeping, sizeof id);
        const auto found = host().textData_.find(id);
        Call call = note("PluginDisposeStringData",
                         found == host().textData_.end() ? "?" : "data of " + found->second->of);
        if (!begin(call)) return;
        if (found == host().textData_.end())
            host().fault("PluginDisposeStringData of data that is not the host's");
        else
            host().textData_.erase(found);
    }

    static AnyFunction find(const std::string& name)
    {
        // clang-format off
        static const std::map<std::string, AnyFunction> names = {
            {"REALBuildString",                         row(&buildString)},
            {"REALBuildStringWithEncoding",             row(&buildStringWithEncoding)},
            {"REALGetStringEncoding",                   row(&getStringEncoding)},
            {"REALSetStringEncoding",                   row(&setStringEncoding)},
            {"REALConvertString",                       row(&convertString)},
            {"StringGetCString",                        row(&getCString)},
            {"REALLoadGlobalMethod",                    row(&loadGlobalMethod)},
            {"PluginGetStringData",                     row(&getStringData)},
            {"PluginDisposeStringData",                 row(&disposeStringData)},
        };
        // clang-format on
        const auto found = names.find(name);
        return found == names.end() ? nullptr : found->second;
    }
};

AnyFunction findTextService(const std::string& name) { return TextServices::find(name); }

std::optional<std::string> Host::converted(const REALstringStruct* text, std::uint32_t encoding) const
{
    const Value* value = find(text);
    const auto points = decode(value->bytes, value->encoding);
    return points ? encode(*points, encoding) : std::nullopt;
}

REALstringStruct* Host::convert(const REALstringStruct* text, std::uint32_t encoding)
{
    const auto bytes = converted(text, encoding);
    return bytes ? newString(*bytes, encoding) : nullptr;
}

} // namespace fake
