// kvx get and kvx set: any property of any object, through the library's methods.
#include "host/kvx/devices/object_choice.h"
#include "host/kvx/devices/shared_options.h"
#include "host/kvx/library/core_audio.h"
#include "host/kvx/properties/property_text.h"
#include "host/kvx/properties/property_types.h"
#include "host/kvx/text/failure.h"
#include "host/kvx/text/number_text.h"
#include "host/kvx/text/terminal_text.h"

#include <KVXPlatform/KVXPlatform.h>
#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <memory>

namespace kvx {
namespace {

struct PropertyOptions {
    std::string object, selector;
    std::vector<std::string> value;
    std::string scope = "global";
    std::string element = "0";
    bool isHex = false;
    LibraryOptions library;

    std::string valueText() const
    {
        std::string text;
        for (const std::string& part : value) text += (text.empty() ? "" : " ") + part;
        return text;
    }
};

/// What is asked of what.
struct Subject {
    ChosenObject object;
    PropertyAddress address;
    const PropertyType* type; ///< null: nothing is known of its values
};

struct ScopeName {
    const char* name;
    Code scope;
};
constexpr ScopeName scopeNames[] = {
    {"global", globalScope}, {"output", outputScope}, {"input", inputScope}, {"playthrough", 'ptru'}};

Code readScope(const std::string& text)
{
    for (const ScopeName& each : scopeNames)
        if (text == each.name) return each.scope;
    if (const auto code = readCodeOrNumber(text)) return *code;
    throw WrongUsage(fmt::format(
        "\"{}\" is no scope; it is global, output, input, playthrough, four characters or a number", text));
}

std::uint32_t readElement(const std::string& text)
{
    if (const auto element = readNumber(text)) return *element;
    throw WrongUsage(fmt::format("\"{}\" is no element; it is 0 for the whole, or a channel's number", text));
}

Code readSelector(const CoreAudio& core, const std::string& text)
{
    if (const auto code = readCodeOrNumber(text)) return *code;
    if (const auto constant = core.constant(text)) return *constant;
    throw WrongUsage(
        fmt::format("\"{}\" is no selector: neither up to four characters, nor a number, nor a constant "
                    "of the library; `kvx get system` and `kvx get 0` show some",
                    text));
}

Subject subjectOf(const CoreAudio& core, const PropertyOptions& options)
{
    // What is wrong with the words themselves is told before the object is looked for.
    PropertyAddress address = {0, readSelector(core, options.selector), readScope(options.scope),
                               readElement(options.element)};
    const ChosenObject object = chooseObject(core, options.object);
    address.object = object.id;
    return {object, address, findPropertyType(address.selector)};
}

[[noreturn]] void failWith(Status status, const Subject& subject)
{
    throw Failure(fmt::format("{}, {}: {}", subject.object.name, printCode(subject.address.selector),
                              printStatus(status)));
}

/// The value, or the end.
const std::string& valueOf(const Answer& answer, const Subject& subject)
{
    if (!answer.isGood()) failWith(answer.status, subject);
    return answer.value;
}

std::string bytesFromUser(const CoreAudio& core, const PropertyOptions& options, Form form, Extent extent)
{
    if (options.isHex) return parseHex(options.valueText());
    return parseValue(form, extent, options.valueText(),
                      [&core](const std::string& text) { return objectInValue(core, text); });
}

// ---- get ----

std::string printBytes(const Subject& subject, const std::string& value, bool isHex)
{
    return subject.type && !isHex ? printValue(subject.type->form, subject.type->extent, value)
                                  : dumpBytes(value);
}

std::string printPlain(const CoreAudio& core, const Subject& subject, bool isHex)
{
    if (subject.type && subject.type->form == Form::reference) {
        if (isHex)
            throw WrongUsage(
                fmt::format("{} is a reference to a text; its bytes mean nothing, so leave out --hex",
                            printCode(subject.address.selector)));
        return printValue(Form::reference, Extent::one, valueOf(core.readText(subject.address), subject));
    }
    const Answer answer = core.read(subject.address);
    return printBytes(subject, valueOf(answer, subject), isHex);
}

std::string printInPlace(const CoreAudio& core, const Subject& subject, const PropertyOptions& options)
{
    const std::string question = bytesFromUser(core, options, subject.type->form, subject.type->extent);
    const Answer answer = core.read(subject.address, question);
    const std::string& value = valueOf(answer, subject);
    if (subject.type->asks == Asks::whether) return "yes";
    return options.isHex ? dumpBytes(value) : printValue(subject.type->form, subject.type->extent, value);
}

std::string printForCode(const CoreAudio& core, const Subject& subject, const PropertyOptions& options)
{
    const std::string question = bytesFromUser(core, options, Form::code, Extent::one);
    const auto code = itemOf<Code>(question);
    if (!code) throw WrongUsage("the value that is asked about is four bytes long");
    const Answer answer = core.readTextFor(subject.address, *code);
    return printValue(Form::text, Extent::one, valueOf(answer, subject));
}

std::string printProperty(const CoreAudio& core, const Subject& subject, const PropertyOptions& options)
{
    const Asks asks = subject.type ? subject.type->asks : Asks::nothing;
    const std::string selector = printCode(subject.address.selector);
    if (asks == Asks::byReference)
        throw Failure(
            fmt::format("{} asks by, or answers with, a reference that no host program can hold; `kvx "
                        "devices` shows every device with its UID",
                        selector));
    if (asks == Asks::nothing) {
        if (!options.value.empty())
            throw WrongUsage(fmt::format("{} is read without a value; `kvx set` is for writing", selector));
        return printPlain(core, subject, options.isHex);
    }
    if (options.value.empty())
        throw WrongUsage(fmt::format("{} answers a question; give a VALUE to ask about", selector));
    return asks == Asks::byCode ? printForCode(core, subject, options) : printInPlace(core, subject, options);
}

void printLines(const std::string& text)
{
    if (!text.empty()) fmt::print("{}\n", text);
}

/// The lines of a value as one.
std::string onOneLine(std::string text)
{
    for (std::size_t at; (at = text.find('\n')) != text.npos;) text.replace(at, 1, "; ");
    return text;
}

/// Every published selector that the object answers, a line each; on a terminal no longer than it is wide.
void printAll(const CoreAudio& core, const PropertyOptions& options)
{
    const std::size_t width = terminalWidth();
    const Code scope = readScope(options.scope);
    const std::uint32_t element = readElement(options.element);
    const ChosenObject object = chooseObject(core, options.object);
    for (const std::string& name : core.constants()) {
        const Code selector = *core.constant(name);
        const Subject subject = {object, {object.id, selector, scope, element}, findPropertyType(selector)};
        if (!subject.type || subject.type->asks != Asks::nothing) continue;
        try {
            const std::string value = onOneLine(printPlain(core, subject, false));
            const std::string line =
                fmt::format("{:<6} {:<51} {}", printCode(selector), name, value.empty() ? "(none)" : value);
            printLines(width ? cutToWidth(line, width) : line);
        } catch (const Failure&) {
            // The object does not have this one.
        }
    }
}

int get(const PropertyOptions& options)
{
    Library library(options.library);
    {
        checkHardware();
        const CoreAudio core(library.host());
        if (options.selector.empty())
            printAll(core, options);
        else
            printLines(printProperty(core, subjectOf(core, options), options));
    }
    return reportLeaks(library, 0);
}

// ---- set ----

/// Whether the property now has the value that was written.
bool isInForce(const Subject& subject, const std::string& written, const std::string& read)
{
    constexpr Code hogMode = 'oink'; // a write takes or releases the device, whatever the value
    return subject.address.selector == hogMode ||
           isKept(subject.type ? subject.type->form : Form::text, written, read);
}

/// Show what the property now is. Throws Failure where that is not what was written. Write-only properties
/// show nothing.
void checkReadBack(const CoreAudio& core, const Subject& subject, const std::string& written, bool isHex)
{
    // A device may change some time after the write: half a second is given.
    Answer answer = core.read(subject.address);
    for (int i = 0; i < 10 && answer.isGood() && !isInForce(subject, written, answer.value); ++i) {
        KVXPlatformDrainMainQueue(0.05);
        answer = core.read(subject.address);
    }
    if (!answer.isGood()) return;
    const std::string now = printBytes(subject, answer.value, isHex);
    printLines(now);
    if (isInForce(subject, written, answer.value)) return;
    throw Failure(fmt::format(
        "{}, {}: {} was written and {} is read back; give a value that the device takes", subject.object.name,
        printCode(subject.address.selector), onOneLine(printBytes(subject, written, isHex)), onOneLine(now)));
}

void writeProperty(const CoreAudio& core, const Subject& subject, const PropertyOptions& options)
{
    const std::string selector = printCode(subject.address.selector);
    if (!subject.type && !options.isHex)
        throw WrongUsage(
            fmt::format("nothing is known of the values of {}; give the bytes with --hex", selector));
    if (subject.type && (subject.type->form == Form::reference || subject.type->asks == Asks::byReference))
        throw Failure(
            fmt::format("the value of {} is a reference, which no host program can make", selector));
    const std::string bytes = subject.type
                                  ? bytesFromUser(core, options, subject.type->form, subject.type->extent)
                                  : parseHex(options.valueText());
    if (const Status status = core.write(subject.address, bytes); status != 0) failWith(status, subject);
    if (!subject.type || subject.type->asks == Asks::nothing)
        checkReadBack(core, subject, bytes, options.isHex);
}

int set(const PropertyOptions& options)
{
    Library library(options.library);
    {
        checkHardware();
        const CoreAudio core(library.host());
        writeProperty(core, subjectOf(core, options), options);
    }
    return reportLeaks(library, 0);
}

void addPropertyOptions(CLI::App& command, PropertyOptions& options)
{
    command
        .add_option("--scope", options.scope,
                    "global, output, input, playthrough, or four characters [global]")
        ->type_name("S");
    command.add_option("--element", options.element, "0 the whole, 1 the first channel [0]")->type_name("N");
    addLibraryOptions(command, options.library);
}

constexpr const char* objectHelp =
    "system; a device by its row in `kvx devices`, its name, a part of it or its UID; id:N or stream:N";
constexpr const char* selectorHelp =
    "Up to four characters (nsrt), a number (0x6E737274), or the library's name for it "
    "(kAudioDevicePropertyNominalSampleRate)";

} // namespace

void addGetCommand(CLI::App& app, Action& action)
{
    auto options = std::make_shared<PropertyOptions>();
    CLI::App* command = app.add_subcommand("get", "Read a property of a device, a stream or the system");
    command->add_option("object", options->object, objectHelp)->required()->type_name("OBJECT");
    command
        ->add_option("selector", options->selector,
                     std::string(selectorHelp) + "; without one, all there are")
        ->type_name("SELECTOR");
    command
        ->add_option("value", options->value,
                     "What to ask about, where a property converts or checks a value (v2db, sfm?, sscn)")
        ->type_name("VALUE");
    command->add_flag("--hex", options->isHex, "Show, and ask with, the bytes as they lie in memory");
    addPropertyOptions(*command, *options);
    command->callback([options, &action] { action = [options] { return get(*options); }; });
}

void addSetCommand(CLI::App& app, Action& action)
{
    auto options = std::make_shared<PropertyOptions>();
    CLI::App* command = app.add_subcommand(
        "set",
        "Write a property and show its new value; exit code 1 where that differs from VALUE. Simulated "
        "devices live as long as the command");
    command->add_option("object", options->object, objectHelp)->required()->type_name("OBJECT");
    command->add_option("selector", options->selector, selectorHelp)->required()->type_name("SELECTOR");
    command
        ->add_option("value", options->value,
                     "As `kvx get` shows it: 0.5, yes, 'spkr', rate=48000,channels=2; devices by name or ID")
        ->required()
        ->type_name("VALUE");
    command->add_flag("--hex", options->isHex, "VALUE is bytes as they lie in memory: 0000003f");
    addPropertyOptions(*command, *options);
    command->callback([options, &action] { action = [options] { return set(*options); }; });
}

} // namespace kvx
