#include "host/kvx/properties/property_commands.h"

#include "host/kvx/devices/output_device.h"
#include "host/kvx/library/core_audio.h"
#include "host/kvx/properties/property_json.h"
#include "host/kvx/properties/property_values.h"
#include "host/kvx/text/failure.h"
#include "host/kvx/text/number_text.h"
#include "host/kvx/text/terminal_text.h"

#include <fmt/core.h>

#include <algorithm>
#include <unistd.h>

namespace kvx {
namespace {

using nlohmann::ordered_json;

/// The property that the command reads or writes.
struct Subject {
    PropertyAddress address;
    const PropertyType* type; ///< type of the property; null: unknown
};

// ---- arguments ----

// Words for the selectors of the properties that users read and write most.
constexpr struct {
    const char* word;
    Code selector;
} selectors[] = {{"rate", 'nsrt'}, {"volume", 'volm'}, {"mute", 'mute'},
                 {"name", 'name'}, {"buffer", 'fsiz'}, {"latency", 'ltnc'}};

constexpr const char* simulatedOutput = "simulated"; // the device that --device calls so

Code readScope(const std::string& text)
{
    static constexpr struct {
        const char* name;
        Code scope;
    } scopes[] = {
        {"global", globalScope}, {"output", outputScope}, {"input", inputScope}, {"playthrough", 'ptru'}};
    for (const auto& each : scopes)
        if (text == each.name) return each.scope;
    if (const std::optional<Code> code = readCodeOrNumber(text)) return *code;
    throw WrongUsage(fmt::format("\"{}\" is not a scope; give global, output, input, playthrough, four "
                                 "characters or a number",
                                 text));
}

std::uint32_t readElement(const std::string& text)
{
    if (const std::optional<std::uint32_t> element = readNumber(text)) return *element;
    throw WrongUsage(
        fmt::format("\"{}\" is not an element; give 0 for all channels, or the number of a channel", text));
}

Code readSelector(const CoreAudio& core, const std::string& text)
{
    for (const auto& each : selectors)
        if (text == each.word) return each.selector;
    if (const std::optional<Code> code = readCodeOrNumber(text)) return *code;
    if (const std::optional<Code> named = core.selectorNamed(text)) return *named;
    throw WrongUsage(
        fmt::format("\"{}\" is not a selector; give up to four characters, a number or a constant "
                    "of the library, as `kvx get system` and `kvx get 0` list them",
                    text));
}

std::string valueText(const PropertyOptions& options)
{
    std::string text;
    for (const std::string& word : options.value) text += (text.empty() ? "" : " ") + word;
    return text;
}

// ---- the object ----

/// Read the class of an object.
/// Errors  throws Failure if the object does not exist.
Code classOf(const CoreAudio& core, ObjectID id)
{
    const Answer answer = core.classOf(id);
    if (!answer.isGood())
        throw Failure(fmt::format("object {}: {}; `kvx devices` lists the devices, `kvx get DEVICE stm#` the "
                                  "streams of a device",
                                  id, formatStatus(answer.status)));
    return itemOf<Code>(answer.value).value_or(0);
}

/// The name of an object, for messages.
std::string nameOf(const CoreAudio& core, ObjectID id)
{
    const Code kind = classOf(core, id);
    if (kind == systemClass) return "system";
    if (kind == deviceClass) return plainText(core.readText({id, 'lnam'}).value);
    return fmt::format("{} {}", kind == streamClass ? "stream" : "object", id);
}

/// Find the device that the user names by row number, name, part of a name or UID; "simulated" is the
/// simulated output device. A number without a row is the ID of an object.
ObjectID findDeviceOrID(const std::string& text)
{
    if (const std::optional<std::uint32_t> number = readNumber(text)) {
        const std::vector<KVXDeviceInfo> rows = listDevices();
        return *number < rows.size() ? rows[*number].device : *number;
    }
    std::vector<KVXDeviceInfo> found = findDevices(text);
    if (text == simulatedOutput)
        found.erase(std::remove_if(found.begin(), found.end(),
                                   [](const KVXDeviceInfo& device) {
                                       return !device.isSimulated || device.outputChannels == 0;
                                   }),
                    found.end());
    if (found.size() == 1) return found[0].device;
    if (found.empty())
        throw Failure(
            fmt::format("no device is called \"{}\"; `kvx devices` lists all devices", plainText(text)));
    std::string names;
    for (const KVXDeviceInfo& device : found)
        names += fmt::format("{}\"{}\"", names.empty() ? "" : ", ", plainText(device.name));
    throw Failure(fmt::format("\"{}\" fits {}; give the number from `kvx devices`", plainText(text), names));
}

/// Read the number after a prefix, such as 7 in "id:7".
/// Errors  nullopt if the text begins with another prefix or contains no number.
std::optional<std::uint32_t> numberAfter(std::string_view prefix, std::string_view text)
{
    return text.substr(0, prefix.size()) == prefix ? readNumber(text.substr(prefix.size())) : std::nullopt;
}

/// Find the object that the user names: "system", "id:N", "stream:N" or a device. An object with a given ID
/// may be missing, because withObject() checks whether the object exists only after a failure.
ObjectID findObject(const CoreAudio& core, const std::string& text)
{
    if (text == "system") return systemObject;
    if (const std::optional<std::uint32_t> id = numberAfter("id:", text)) return *id;
    if (const std::optional<std::uint32_t> id = numberAfter("stream:", text)) {
        if (const Code kind = classOf(core, *id); kind != streamClass)
            throw Failure(fmt::format("object {} is of class {}, not {}; use id:{}", *id, formatCode(kind),
                                      formatCode(streamClass), *id));
        return *id;
    }
    return findDeviceOrID(text);
}

/// Find the object that a text inside a value names. A number is always an ID here, and 0 means no object.
ObjectID objectInValue(const CoreAudio& core, const std::string& text)
{
    const std::optional<std::uint32_t> id = readNumber(text);
    if (id) return *id;
    const ObjectID object = findObject(core, text);
    classOf(core, object);
    return object;
}

/// Run the part of a command that uses an object. If that part fails and the object does not exist, report
/// only that the object does not exist.
template <class Body>
void withObject(const CoreAudio& core, ObjectID object, Body body)
{
    try {
        body();
    } catch (const Failure&) {
        classOf(core, object);
        throw;
    }
}

// The next step for the user after a status of a property call.
constexpr struct {
    Status status;
    const char* nextStep;
} nextSteps[] = {
    {'who?',
     "`kvx get OBJECT` lists the properties of an object, with `--element 1` those of its first channel"},
    {'unop', "choose a property that can be written"},
    {'nope', "choose another value"},
    {'!dat', "`kvx get DEVICE nsr#` lists the rates of a device, `kvx get DEVICE sfm#` its formats"},
    {'!siz', "`kvx get --hex` shows the size of the value"},
    {'!dev', "`kvx devices` lists the devices; row:N is row N of that list"},
    {'!hog', "end the process that has the device"},
    {'!str', "`kvx get DEVICE stm#` lists the streams of a device"},
    {-108, "close other programs and try again"},
};

const char* nextStep(Status status)
{
    for (const auto& each : nextSteps)
        if (each.status == status) return each.nextStep;
    return "choose another property or device";
}

[[noreturn]] void failWith(Status status, const CoreAudio& core, const Subject& subject)
{
    throw Failure(fmt::format("{}, {}: {}; {}", nameOf(core, subject.address.object),
                              formatCode(subject.address.selector), formatStatus(status), nextStep(status)));
}

std::string valueOf(const Answer& answer, const CoreAudio& core, const Subject& subject)
{
    if (!answer.isGood()) failWith(answer.status, core, subject);
    return answer.value;
}

Subject subjectOf(const CoreAudio& core, const PropertyOptions& options)
{
    // Other arguments are checked first, so a wrong argument is reported before a missing object.
    PropertyAddress address = {0, readSelector(core, options.selector), readScope(options.scope),
                               readElement(options.element)};
    address.object = findObject(core, options.object);
    return {address, findPropertyType(address.selector)};
}

std::string bytesFromUser(const CoreAudio& core, const PropertyOptions& options, Form form, Extent extent)
{
    if (options.isHex) return parseHex(valueText(options));
    return parseValue(form, extent, valueText(options),
                      [&core](const std::string& text) { return objectInValue(core, text); });
}

// ---- get ----

/// The value of a property, or its answer to a question.
struct Value {
    std::optional<Form> form; ///< nullopt: the form is unknown, or the user requests bytes
    Extent extent;
    std::string bytes; ///< the bytes; for Form::reference the text itself

    std::string text() const { return form ? formatValue(*form, extent, bytes) : dumpBytes(bytes); }
    ordered_json json() const { return form ? valueJson(*form, extent, bytes) : bytesJson(bytes); }
};

Value valueOfType(const Subject& subject, const std::string& bytes, bool isHex)
{
    if (!subject.type || isHex) return {std::nullopt, Extent::one, bytes};
    return {subject.type->form, subject.type->extent, bytes};
}

Value readPlain(const CoreAudio& core, const Subject& subject, bool isHex)
{
    if (!subject.type || subject.type->form != Form::reference)
        return valueOfType(subject, valueOf(core.read(subject.address), core, subject), isHex);
    if (isHex)
        throw WrongUsage(
            fmt::format("{} is a reference to a text, so its bytes are meaningless; leave out --hex",
                        formatCode(subject.address.selector)));
    return {Form::reference, Extent::one, valueOf(core.readText(subject.address), core, subject)};
}

Value readAnswer(const CoreAudio& core, const Subject& subject, const PropertyOptions& options)
{
    const std::string question = bytesFromUser(core, options, subject.type->form, subject.type->extent);
    const std::string bytes = valueOf(core.read(subject.address, question), core, subject);
    if (subject.type->question == Question::check)
        return {Form::flag, Extent::one, bytesOf(std::uint32_t{1})};
    return valueOfType(subject, bytes, options.isHex);
}

Value readForCode(const CoreAudio& core, const Subject& subject, const PropertyOptions& options)
{
    const std::optional<Code> code = itemOf<Code>(bytesFromUser(core, options, Form::code, Extent::one));
    if (!code) throw WrongUsage("VALUE is a code of four bytes; give four bytes with --hex");
    const Answer answer = core.readTextFor(subject.address, *code);
    return {Form::text, Extent::one, valueOf(answer, core, subject)};
}

Value readProperty(const CoreAudio& core, const Subject& subject, const PropertyOptions& options)
{
    const Question question = subject.type ? subject.type->question : Question::none;
    const std::string selector = formatCode(subject.address.selector);
    if (question == Question::withReference)
        throw Failure(fmt::format("{} takes or returns a CoreFoundation object that a host program cannot "
                                  "hold; `kvx devices` lists the devices with their UIDs",
                                  selector));
    if (question == Question::none) {
        if (!options.value.empty())
            throw WrongUsage(fmt::format("{} is read without a value; use `kvx set` to write", selector));
        return readPlain(core, subject, options.isHex);
    }
    if (options.value.empty())
        throw WrongUsage(fmt::format("{} converts or checks a value; give a VALUE", selector));
    return question == Question::translate ? readForCode(core, subject, options)
                                           : readAnswer(core, subject, options);
}

void printLines(const std::string& text)
{
    if (!text.empty()) fmt::print("{}\n", text);
}

/// Replace the ends of lines in a value by semicolons.
std::string onOneLine(std::string text)
{
    for (std::size_t at; (at = text.find('\n')) != text.npos;) text.replace(at, 1, "; ");
    return text;
}

/// A property with its value, and the library's name for its selector; an empty name if there is none.
struct NamedValue {
    Subject subject;
    std::string name;
    Value value;
};

/// Read each property of the object whose selector is a constant of the library.
std::vector<NamedValue> readAll(const CoreAudio& core, const PropertyOptions& options)
{
    std::vector<NamedValue> all;
    const Code scope = readScope(options.scope);
    const std::uint32_t element = readElement(options.element);
    const ObjectID object = findObject(core, options.object);
    classOf(core, object);
    for (const std::string& name : core.selectorNames()) {
        const Code selector = *core.selectorNamed(name);
        const Subject subject = {{object, selector, scope, element}, findPropertyType(selector)};
        if (!subject.type || subject.type->question != Question::none) continue;
        const Answer answer = subject.type->form == Form::reference ? core.readText(subject.address)
                                                                    : core.read(subject.address);
        if (!answer.isGood()) continue; // skip a property that the object does not have
        all.push_back({subject, name, valueOfType(subject, answer.value, false)});
    }
    return all;
}

/// Print properties, one per line, cut to the width of the terminal.
void printTable(const std::vector<NamedValue>& all)
{
    const std::size_t width = terminalWidth(STDOUT_FILENO);
    for (const NamedValue& each : all) {
        const std::string value = onOneLine(each.value.text());
        const std::string line = fmt::format("{:<6} {:<51} {}", formatCode(each.subject.address.selector),
                                             each.name, value.empty() ? "(none)" : value);
        printLines(width ? cutToWidth(line, width) : line);
    }
}

ordered_json propertyJson(const NamedValue& property)
{
    const PropertyAddress& address = property.subject.address;
    ordered_json json = {{"object", address.object},
                         {"selector", charactersOf(address.selector)},
                         {"scope", charactersOf(address.scope)},
                         {"element", address.element},
                         {"value", property.value.json()}};
    if (!property.name.empty()) json["name"] = property.name;
    return json;
}

void printJson(const ordered_json& json)
{
    fmt::print("{}\n", json.dump(2, ' ', false, ordered_json::error_handler_t::replace));
}

/// The library's name for a selector; "" if there is none.
std::string nameOfSelector(const CoreAudio& core, Code selector)
{
    for (const std::string& name : core.selectorNames())
        if (core.selectorNamed(name) == selector) return name;
    return {};
}

void getAll(const CoreAudio& core, const PropertyOptions& options)
{
    const std::vector<NamedValue> all = readAll(core, options);
    if (!options.isJson) return printTable(all);
    ordered_json list = ordered_json::array();
    for (const NamedValue& each : all) list.push_back(propertyJson(each));
    printJson(list);
}

void printValue(const CoreAudio& core, const Subject& subject, const Value& value, bool isJson)
{
    if (isJson)
        printJson(propertyJson({subject, nameOfSelector(core, subject.address.selector), value}));
    else
        printLines(value.text());
}

void getOne(const CoreAudio& core, const PropertyOptions& options)
{
    const Subject subject = subjectOf(core, options);
    withObject(core, subject.address.object,
               [&] { printValue(core, subject, readProperty(core, subject, options), options.isJson); });
}

// ---- set ----

/// Whether the value that was read shows that the written value is in force.
bool isInForce(const Subject& subject, const std::string& written, const std::string& read)
{
    constexpr Code hogMode = 'oink'; // exclusive access: any written value takes or releases the device
    return subject.address.selector == hogMode ||
           isKept(subject.type ? subject.type->form : Form::text, written, read);
}

/// Read back a property that was written, and print its value. If the property is write-only, print nothing.
/// Errors  throws Failure if the value is not the written value.
void checkReadBack(const CoreAudio& core, const Subject& subject, const std::string& written,
                   const PropertyOptions& options)
{
    // A device may apply a write after a delay, so read the property again for up to half a second.
    Answer answer = core.read(subject.address);
    for (int i = 0; i < 10 && answer.isGood() && !isInForce(subject, written, answer.value); ++i) {
        KVXPlatformDrainMainQueue(0.05);
        answer = core.read(subject.address);
    }
    if (!answer.isGood()) return;
    const Value now = valueOfType(subject, answer.value, options.isHex);
    printValue(core, subject, now, options.isJson);
    if (isInForce(subject, written, answer.value)) return;
    throw Failure(
        fmt::format("{}, {}: {} was written and {} is read back; give a value that the device takes",
                    nameOf(core, subject.address.object), formatCode(subject.address.selector),
                    onOneLine(valueOfType(subject, written, options.isHex).text()), onOneLine(now.text())));
}

void writeProperty(const CoreAudio& core, const Subject& subject, const PropertyOptions& options)
{
    const std::string selector = formatCode(subject.address.selector);
    if (!subject.type && !options.isHex)
        throw WrongUsage(
            fmt::format("the type of the values of {} is unknown; give the bytes with --hex", selector));
    if (subject.type &&
        (subject.type->form == Form::reference || subject.type->question == Question::withReference))
        throw Failure(fmt::format("the value of {} is a reference, which a host program cannot create; "
                                  "choose another property",
                                  selector));
    const std::string bytes = subject.type
                                  ? bytesFromUser(core, options, subject.type->form, subject.type->extent)
                                  : parseHex(valueText(options));
    if (const Status status = core.write(subject.address, bytes); status != 0)
        failWith(status, core, subject);
    if (!subject.type || subject.type->question == Question::none)
        checkReadBack(core, subject, bytes, options);
}

} // namespace

std::vector<std::string> selectorWords()
{
    std::vector<std::string> words;
    for (const auto& each : selectors) words.emplace_back(each.word);
    return words;
}

int runGet(const PropertyOptions& options)
{
    if (options.object == simulatedOutput) useSimulatedDevicesOnly();
    Library library(options.library);
    {
        checkHardware();
        const CoreAudio core(library.host());
        options.selector.empty() ? getAll(core, options) : getOne(core, options);
    }
    return reportLeaks(library, 0);
}

int runSet(const PropertyOptions& options)
{
    if (options.object == simulatedOutput) useSimulatedDevicesOnly();
    Library library(options.library);
    {
        checkHardware();
        const CoreAudio core(library.host());
        const Subject subject = subjectOf(core, options);
        withObject(core, subject.address.object, [&] { writeProperty(core, subject, options); });
    }
    return reportLeaks(library, 0);
}

} // namespace kvx
