#include "host/kvx/properties/property_values.h"

#include "host/kvx/text/failure.h"
#include "host/kvx/text/number_text.h"
#include "host/kvx/text/terminal_text.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>

namespace kvx {
namespace {

// ---- types ----

constexpr Extent one = Extent::one, many = Extent::many;

constexpr PropertyType value(Code selector, Form form, Extent extent = one)
{
    return {selector, form, extent, Question::none};
}
constexpr PropertyType question(Code selector, Question kind, Form form = Form::text)
{
    return {selector, form, one, kind};
}

// clang-format off
constexpr std::initializer_list<PropertyType> types = {
    // ---- properties of every object ----
    value('clas', Form::code),      value('stdv', Form::object),    value('ownd', Form::object, many),
    value('oplg', Form::reference), value('lnam', Form::reference), value('lmak', Form::reference),
    value('lchn', Form::reference), value('lccn', Form::reference), value('lcnn', Form::reference),

    // ---- properties of the system ----
    value('dev#', Form::object, many),
    value('dIn ', Form::object), value('dOut', Form::object), value('sOut', Form::object),
    value('mast', Form::flag),   value('inot', Form::flag),   value('euid', Form::number),
    value('pmut', Form::flag),   value('slep', Form::flag),   value('unld', Form::flag),
    value('hogr', Form::flag),   value('user', Form::flag),   value('stmo', Form::flag),
    value('bbvs', Form::single), value('bbvd', Form::single), value('bbd#', Form::range),
    question('bv2d', Question::convert, Form::single), question('bd2v', Question::convert, Form::single),
    value('bvtf', Form::number),
    question('duid', Question::withReference), question('pibi', Question::withReference),
    question('rnlp', Question::withReference),

    // ---- properties of devices: identity ----
    value('plug', Form::integer),
    value('uid ', Form::reference), value('muid', Form::reference), value('capp', Form::reference),
    value('name', Form::text),      value('makr', Form::text),
    value('chnm', Form::text),      value('ccnm', Form::text),      value('cnnm', Form::text),
    value('tran', Form::code),      value('akin', Form::object, many), value('clkd', Form::number),
    value('dflt', Form::flag),      value('sflt', Form::flag),      value('hidn', Form::flag),
    question('icon', Question::withReference),

    // ---- properties of devices: operation ----
    value('livn', Form::flag),   value('diff', Form::flag),  value('goin', Form::flag),
    value('gone', Form::flag),   value('over', Form::flag),  value('oink', Form::integer),
    value('ltnc', Form::number), value('saft', Form::number),
    value('fsiz', Form::number), value('fsz#', Form::range), value('vfsz', Form::number),
    value('bsiz', Form::number), value('bsz#', Form::range), value('rbuf', Form::bufferList),
    value('mix?', Form::flag),   value('ncyc', Form::single), question('suse', Question::withReference),
    value('nsrt', Form::real),   value('asrt', Form::real),  value('nsr#', Form::range, many),

    // ---- properties of devices: streams and formats ----
    value('stm#', Form::object, many), value('slay', Form::bufferList),
    value('sfmt', Form::format),       value('sfm#', Form::format, many),
    question('sfm?', Question::check, Form::format), question('sfmm', Question::convert, Form::format),
    value('dch2', Form::number, many), value('srnd', Form::channelLayout),

    // ---- properties of devices: controls ----
    value('jack', Form::flag),
    value('volm', Form::single), value('vold', Form::single), value('vdb#', Form::range),
    question('v2db', Question::convert, Form::single), question('db2v', Question::convert, Form::single),
    value('vctf', Form::number), value('span', Form::single), value('spn#', Form::number, many),
    value('mute', Form::flag),   value('solo', Form::flag),   value('thru', Form::flag),
    value('ssrc', Form::code),   value('ssc#', Form::code, many),
    question('sscn', Question::translate), question('lscn', Question::withReference),
    value('csrc', Form::code),   value('csc#', Form::code, many),
    question('cscn', Question::translate), question('lcsn', Question::withReference),
    value('thrs', Form::flag),
    value('mvsc', Form::single), value('mvdb', Form::single), value('mvd#', Form::range),
    question('mv2d', Question::convert, Form::single), question('mv2s', Question::convert, Form::single),
    value('mspn', Form::single), value('msp#', Form::number, many),
    value('mdds', Form::code),   value('mdd#', Form::code, many),
    question('mddn', Question::translate), question('mddc', Question::withReference),
    value('nlvl', Form::code),   value('nlv#', Form::code, many),
    question('cnlv', Question::translate), question('lcnl', Question::withReference),
    value('isub', Form::flag),
    value('svlm', Form::single), value('svld', Form::single), value('svd#', Form::range),
    question('sv2d', Question::convert, Form::single), question('sd2v', Question::convert, Form::single),
    value('smut', Form::flag),

    // ---- properties of streams ----
    value('sdir', Form::number), value('term', Form::code), value('schn', Form::number),
    value('sfma', Form::rangedFormat, many),
    value('pft ', Form::format), value('pft#', Form::format, many), value('pfta', Form::rangedFormat, many),
    question('pft?', Question::check, Form::format), question('pftm', Question::convert, Form::format),
};
// clang-format on

// ---- helpers ----

/// Split a text at each separator that is not inside quotes. Empty parts are dropped.
std::vector<std::string> splitOutsideQuotes(std::string_view text, std::string_view separators)
{
    std::vector<std::string> parts(1);
    bool isQuoted = false;
    for (char c : text) {
        if (c == '\'') isQuoted = !isQuoted;
        if (!isQuoted && separators.find(c) != separators.npos)
            parts.emplace_back();
        else
            parts.back() += c;
    }
    parts.erase(std::remove(parts.begin(), parts.end(), ""), parts.end());
    return parts;
}

[[noreturn]] void refuse(const std::string& text, const char* example)
{
    throw WrongUsage(
        fmt::format("\"{}\" is not a value for this; write {}, or bytes with --hex", text, example));
}

template <class T>
std::string bytesOrRefusal(const std::optional<T>& item, const std::string& text, const char* example)
{
    if (!item) refuse(text, example);
    return bytesOf(*item);
}

// ---- formats: name=value,name=value,… ----

struct FormatField {
    const char* name;
    std::uint32_t StreamFormat::*field;
    std::string (*toText)(std::uint32_t);
};

std::string formatDecimal(std::uint32_t number) { return fmt::format("{}", number); }
std::string formatHexadecimal(std::uint32_t number) { return fmt::format("{:#x}", number); }

// clang-format off
constexpr FormatField formatFields[] = {
    {"format",        &StreamFormat::format,          formatCode},
    {"flags",         &StreamFormat::flags,           formatHexadecimal},
    {"bytes/packet",  &StreamFormat::bytesPerPacket,  formatDecimal},
    {"frames/packet", &StreamFormat::framesPerPacket, formatDecimal},
    {"bytes/frame",   &StreamFormat::bytesPerFrame,   formatDecimal},
    {"channels",      &StreamFormat::channels,        formatDecimal},
    {"bits",          &StreamFormat::bits,            formatDecimal},
};
// clang-format on

constexpr const char* formatExample =
    "rate=48000,format='lpcm',channels=2 (a field that is left out is 0, which means any value)";

std::string formatStreamFormat(const StreamFormat& format)
{
    std::string text = fmt::format("rate={}", format.rate);
    for (const FormatField& each : formatFields)
        text += fmt::format(",{}={}", each.name, each.toText(format.*each.field));
    return text;
}

/// Read one field of a format, such as "channels=2", into `format`.
/// Returns  whether `part` is a valid field.
bool readFormatField(const std::string& part, StreamFormat& format)
{
    const std::size_t equals = part.find('=');
    if (equals == part.npos) return false;
    const std::string name = part.substr(0, equals), value = part.substr(equals + 1);
    if (name == "rate") {
        const std::optional<double> rate = readDecimal<double>(value);
        format.rate = rate.value_or(0);
        return rate.has_value();
    }
    for (const FormatField& each : formatFields) {
        if (name != each.name) continue;
        const std::optional<std::uint32_t> number =
            each.field == &StreamFormat::format ? readCodeOrNumber(value) : readNumber(value);
        format.*each.field = number.value_or(0);
        return number.has_value();
    }
    return false;
}

// ---- one item of each form ----

template <class T>
T as(std::string_view item)
{
    return *itemOf<T>(item);
}

std::string formatFlag(std::string_view item)
{
    const auto flag = as<std::uint32_t>(item);
    return flag > 1 ? fmt::format("{}", flag) : flag ? "yes" : "no";
}
std::string parseFlag(const std::string& text, const FindObject&)
{
    static constexpr const char* words[][2] = {{"no", "yes"}, {"off", "on"}, {"false", "true"}};
    for (const auto& pair : words)
        for (std::uint32_t flag : {0u, 1u})
            if (text == pair[flag]) return bytesOf(flag);
    return bytesOrRefusal(readNumber(text), text, "yes or no");
}

template <class T>
std::string formatNumber(std::string_view item)
{
    return fmt::format("{}", as<T>(item));
}
std::string parseNumber(const std::string& text, const FindObject&)
{
    return bytesOrRefusal(readNumber(text), text, "a whole number such as 512 or 0x200");
}
std::string parseInteger(const std::string& text, const FindObject&)
{
    return bytesOrRefusal(readDecimal<std::int32_t>(text), text, "a whole number such as -1");
}
std::string parseSingle(const std::string& text, const FindObject&)
{
    return bytesOrRefusal(readDecimal<float>(text), text, "a number such as 0.5");
}
std::string parseReal(const std::string& text, const FindObject&)
{
    return bytesOrRefusal(readDecimal<double>(text), text, "a number such as 48000");
}

std::string parseCode(const std::string& text, const FindObject&)
{
    return bytesOrRefusal(readCodeOrNumber(text), text, "four characters such as 'line', or a number");
}

std::string parseObject(const std::string& text, const FindObject& findObject)
{
    return bytesOf(findObject(text));
}

std::string formatRange(const ValueRange& range)
{
    return fmt::format("{}..{}", range.minimum, range.maximum);
}
std::string parseRange(const std::string& text, const FindObject&)
{
    const std::size_t dots = text.find("..");
    const std::size_t second = dots == text.npos ? text.size() : dots + 2;
    const std::optional<double> low = readDecimal<double>(text.substr(0, dots));
    const std::optional<double> high = readDecimal<double>(text.substr(second));
    if (!low || !high) refuse(text, "a range such as 8000..96000");
    return bytesOf(ValueRange{*low, *high});
}

std::string parseFormat(const std::string& text, const FindObject&)
{
    StreamFormat format = {};
    for (const std::string& part : splitOutsideQuotes(text, ","))
        if (!readFormatField(part, format)) refuse(text, formatExample);
    return bytesOf(format);
}

std::string formatRangedFormat(std::string_view item)
{
    const auto ranged = as<RangedFormat>(item);
    return formatStreamFormat(ranged.format) + ",rates=" + formatRange(ranged.rates);
}

template <auto format, class T>
std::string formatItem(std::string_view item)
{
    return format(as<T>(item));
}

struct FormFact {
    Form form;
    std::size_t size; ///< size of an item in bytes
    std::string (*toText)(std::string_view item);
    /// Convert text to an item. If this pointer is null, the user must give the value with --hex.
    std::string (*parse)(const std::string& text, const FindObject& findObject);
};

// clang-format off
constexpr FormFact forms[] = {
    {Form::flag,         4,                    formatFlag,                                   parseFlag},
    {Form::number,       4,                    formatNumber<std::uint32_t>,                  parseNumber},
    {Form::integer,      4,                    formatNumber<std::int32_t>,                   parseInteger},
    {Form::code,         4,                    formatItem<formatCode, Code>,                 parseCode},
    {Form::object,       4,                    formatNumber<ObjectID>,                       parseObject},
    {Form::single,       4,                    formatNumber<float>,                          parseSingle},
    {Form::real,         8,                    formatNumber<double>,                         parseReal},
    {Form::range,        sizeof(ValueRange),   formatItem<formatRange, ValueRange>,          parseRange},
    {Form::format,       sizeof(StreamFormat), formatItem<formatStreamFormat, StreamFormat>, parseFormat},
    {Form::rangedFormat, sizeof(RangedFormat), formatRangedFormat,                           nullptr},
};
// clang-format on

const FormFact* findForm(Form form)
{
    const auto* found = std::find_if(std::begin(forms), std::end(forms),
                                     [form](const FormFact& fact) { return fact.form == form; });
    return found == std::end(forms) ? nullptr : found;
}

// ---- values that are read back ----

/// Compare the format that the user gave with the format of the device, field by field. A field of 0 in the
/// given format agrees with any value.
bool formatIsKept(const StreamFormat& written, const StreamFormat& read)
{
    return (written.rate == 0 || written.rate == read.rate) &&
           std::all_of(std::begin(formatFields), std::end(formatFields), [&](const FormatField& each) {
               return written.*each.field == 0 || written.*each.field == read.*each.field;
           });
}

/// Compare with a tolerance, because a device that stores a factor as decibels, or decibels as a factor,
/// changes the last digits.
bool singleIsKept(float written, float read)
{
    return std::fabs(written - read) <= 1e-4f * std::fmax(std::fabs(written), std::fabs(read));
}

// ---- values of variable size ----

std::optional<std::string> formatBufferList(std::string_view value)
{
    const auto count = itemOf<std::uint32_t>(value);
    if (!count || value.size() < offsetof(BufferList, buffers))
        return value.size() == 4 && *count == 0 ? std::optional<std::string>("") : std::nullopt;
    const auto buffers = itemsOf<Buffer>(value.substr(offsetof(BufferList, buffers)));
    if (buffers.size() != *count) return std::nullopt;
    std::string text;
    for (const Buffer& buffer : buffers)
        text +=
            fmt::format("{}channels={},bytes={}", text.empty() ? "" : "\n", buffer.channels, buffer.bytes);
    return text;
}

std::optional<std::string> formatLayout(std::string_view value)
{
    const auto layout = itemOf<ChannelLayout>(value);
    if (!layout) return std::nullopt;
    return fmt::format("tag={:#x},bitmap={:#x},descriptions={}", layout->tag, layout->bitmap,
                       layout->descriptionCount);
}

std::optional<std::string> formatRecord(Form form, std::string_view value)
{
    switch (form) {
    case Form::text:
        return plainText(value.substr(0, value.find('\0')));
    case Form::reference:
        return plainText(value);
    case Form::bufferList:
        return formatBufferList(value);
    case Form::channelLayout:
        return formatLayout(value);
    default:
        return std::nullopt;
    }
}

} // namespace

std::initializer_list<PropertyType> propertyTypes() { return types; }

const PropertyType* findPropertyType(Code selector)
{
    const auto* found =
        std::find_if(std::begin(types), std::end(types),
                     [selector](const PropertyType& type) { return type.selector == selector; });
    return found == std::end(types) ? nullptr : found;
}

std::string formatValue(Form form, Extent extent, std::string_view value)
{
    const FormFact* fact = findForm(form);
    if (!fact) return formatRecord(form, value).value_or(dumpBytes(value));
    const bool isWhole = extent == Extent::one ? value.size() == fact->size : value.size() % fact->size == 0;
    if (!isWhole) return dumpBytes(value);
    std::string text;
    for (std::size_t at = 0; at < value.size(); at += fact->size)
        text += (at ? "\n" : "") + fact->toText(value.substr(at, fact->size));
    return text;
}

bool isKept(Form form, std::string_view written, std::string_view read)
{
    if (form == Form::format && written.size() == sizeof(StreamFormat) && read.size() == written.size())
        return formatIsKept(as<StreamFormat>(written), as<StreamFormat>(read));
    if (form == Form::single && written.size() == sizeof(float) && read.size() == written.size())
        return singleIsKept(as<float>(written), as<float>(read));
    return written == read;
}

std::string parseValue(Form form, Extent extent, const std::string& text, const FindObject& findObject)
{
    if (form == Form::text) return text + '\0';
    const FormFact* fact = findForm(form);
    if (!fact || !fact->parse)
        throw WrongUsage("a value of this property can be given as bytes only; use --hex");
    // Only lists are split at blanks, because one item may be the name of an object with blanks.
    const std::vector<std::string> items =
        extent == Extent::many ? splitOutsideQuotes(text, " \t\n") : std::vector<std::string>{text};
    std::string bytes;
    for (const std::string& item : items) bytes += fact->parse(item, findObject);
    return bytes;
}

} // namespace kvx
