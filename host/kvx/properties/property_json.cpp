#include "host/kvx/properties/property_json.h"

#include "host/kvx/text/terminal_text.h"

#include <fmt/core.h>

#include <cstddef>

namespace kvx {
namespace {

using nlohmann::ordered_json;

// ---- items: one function per type of item ----

template <class T>
ordered_json numberJson(const T& number)
{
    return number;
}

ordered_json flagJson(const std::uint32_t& flag)
{
    return flag > 1 ? ordered_json(flag) : ordered_json(flag == 1);
}

ordered_json codeJson(const Code& code)
{
    const std::string text = formatCode(code);
    return text.front() == '\'' ? ordered_json(charactersOf(code)) : ordered_json(code);
}

ordered_json rangeJson(const ValueRange& range)
{
    return {{"minimum", range.minimum}, {"maximum", range.maximum}};
}

ordered_json formatJson(const StreamFormat& format)
{
    return {{"rate", format.rate},
            {"format", codeJson(format.format)},
            {"flags", format.flags},
            {"bytesPerPacket", format.bytesPerPacket},
            {"framesPerPacket", format.framesPerPacket},
            {"bytesPerFrame", format.bytesPerFrame},
            {"channels", format.channels},
            {"bits", format.bits}};
}

ordered_json rangedFormatJson(const RangedFormat& ranged)
{
    ordered_json json = formatJson(ranged.format);
    json["rates"] = rangeJson(ranged.rates);
    return json;
}

ordered_json bufferJson(const Buffer& buffer)
{
    return {{"channels", buffer.channels}, {"bytes", buffer.bytes}};
}

ordered_json layoutJson(const ChannelLayout& layout)
{
    return {{"tag", layout.tag}, {"bitmap", layout.bitmap}, {"descriptions", layout.descriptionCount}};
}

// ---- values ----

template <class T>
ordered_json arrayJson(std::string_view value, ordered_json (*toJson)(const T&))
{
    ordered_json list = ordered_json::array();
    for (const T& item : itemsOf<T>(value)) list.push_back(toJson(item));
    return list;
}

template <class T>
ordered_json itemsJson(Extent extent, std::string_view value, ordered_json (*toJson)(const T&))
{
    const bool isWhole = extent == Extent::one ? value.size() == sizeof(T) : value.size() % sizeof(T) == 0;
    if (!isWhole) return bytesJson(value);
    return extent == Extent::one ? toJson(*itemOf<T>(value)) : arrayJson(value, toJson);
}

ordered_json bufferListJson(std::string_view value)
{
    constexpr std::size_t start = offsetof(BufferList, buffers);
    const auto count = itemOf<std::uint32_t>(value);
    const std::string_view buffers = value.size() > start ? value.substr(start) : std::string_view();
    if (!count || buffers.size() != *count * sizeof(Buffer)) return bytesJson(value);
    return arrayJson(buffers, bufferJson);
}

} // namespace

ordered_json valueJson(Form form, Extent extent, std::string_view value)
{
    switch (form) {
    case Form::text:
        return value.substr(0, value.find('\0'));
    case Form::reference:
        return value;
    case Form::flag:
        return itemsJson<std::uint32_t>(extent, value, flagJson);
    case Form::number:
        return itemsJson<std::uint32_t>(extent, value, numberJson);
    case Form::integer:
        return itemsJson<std::int32_t>(extent, value, numberJson);
    case Form::code:
        return itemsJson<Code>(extent, value, codeJson);
    case Form::object:
        return itemsJson<ObjectID>(extent, value, numberJson);
    case Form::single:
        return itemsJson<float>(extent, value, numberJson);
    case Form::real:
        return itemsJson<double>(extent, value, numberJson);
    case Form::range:
        return itemsJson<ValueRange>(extent, value, rangeJson);
    case Form::format:
        return itemsJson<StreamFormat>(extent, value, formatJson);
    case Form::rangedFormat:
        return itemsJson<RangedFormat>(extent, value, rangedFormatJson);
    case Form::bufferList:
        return bufferListJson(value);
    case Form::channelLayout: {
        const auto layout = itemOf<ChannelLayout>(value);
        return layout ? layoutJson(*layout) : bytesJson(value);
    }
    }
    return bytesJson(value);
}

ordered_json bytesJson(std::string_view value)
{
    std::string digits;
    for (const char byte : value) digits += fmt::format("{:02x}", static_cast<unsigned char>(byte));
    return digits;
}

} // namespace kvx
