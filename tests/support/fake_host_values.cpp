// The fake host's values, reference counts, and recorded calls.
#include "tests/support/fake_host_services.h"

#include <cstdio>

namespace fake {
namespace {

constexpr char wrongText[] = "!wrong text!"; // contents of the fields that a plug-in must not read
constexpr Word wrongEncoding = 0xDEC0;

} // namespace

std::string quoted(const void* bytes, HostInteger count)
{
    if (!bytes) return "null";
    if (count < 0 || count > 100) return "<" + std::to_string(count) + " bytes>";
    std::string text = "\"";
    for (HostInteger i = 0; i < count; ++i) {
        const auto byte = static_cast<const unsigned char*>(bytes)[i];
        char escaped[8];
        std::snprintf(escaped, sizeof escaped, byte < ' ' || byte > '~' ? "\\x%02X" : "%c", byte);
        text += escaped;
    }
    return text + '"';
}

std::string code(Word value)
{
    char text[24];
    std::snprintf(text, sizeof text, "0x%llX", static_cast<unsigned long long>(value));
    return text;
}

std::string quoted(std::string_view bytes)
{
    return quoted(bytes.data(), static_cast<HostInteger>(bytes.size()));
}

void* Host::resolve(const char* name)
{
    Host& host = Services::host();
    AnyFunction function = nullptr;
    if (!host.withheld_.count(name))
        for (const auto find : {findHostService, findTextService, findArrayService})
            if (!function) function = find(name);
    host.notes_.push_back(std::string("? ") + name + (function ? "" : ": none"));
    return reinterpret_cast<void*>(function);
}

Host::Host(double hostVersion)
    : version(hostVersion), classes{"RuntimeException",
                                    "OutOfMemoryException",
                                    "OutOfBoundsException",
                                    "NilObjectException",
                                    "UnsupportedOperationException",
                                    "IllegalCastException",
                                    "Dictionary"},
      afterText(5, '\0')
{
    if (theHost) throw std::logic_error("another host exists");
    theHost = this;
}

Host::~Host() { theHost = nullptr; }

Host& Host::current() { return Services::host(); }

void Host::startOver()
{
    notes_.clear();
    raised_.clear();
    registrations_.clear();
    counters_.clear();
}

Notes Host::calls() const
{
    Notes calls;
    for (const std::string& note : notes_)
        if (note.rfind("? ", 0) != 0) calls.push_back(note);
    return calls;
}

Notes Host::lookUps() const
{
    Notes names;
    for (const std::string& note : notes_)
        if (note.rfind("? ", 0) == 0) names.push_back(note.substr(2, note.find(": none") - 2));
    return names;
}

Notes Host::live() const
{
    Notes live;
    for (const auto& [address, value] : values_)
        live.push_back(value->name + ": " + std::to_string(value->references));
    for (const auto& [id, data] : textData_) live.push_back("data of " + data->of);
    return live;
}

bool Host::hasOpaqueRecords() const { return version >= 2016.0 && !withheld_.count("REALGetRBVersion"); }

Host::Value& Host::add(char kind)
{
    std::unique_ptr<Value> value(new Value);
    value->kind = kind;
    value->name = kind + std::to_string(++counters_[kind]);
    Value& added = *value;
    values_[added.address()] = std::move(value);
    return added;
}

Host::Value* Host::find(const void* value) const
{
    const auto found = values_.find(value);
    return found == values_.end() ? nullptr : found->second.get();
}

std::string Host::nameOf(const void* value) const
{
    const Value* found = find(value);
    return found ? found->name : value ? "?" : "null";
}

void Host::hold(const void* value) { ++find(value)->references; }

void Host::drop(const void* value)
{
    Value* found = find(value);
    if (!found) {
        fault("a reference released of an unknown address");
        return;
    }
    if (--found->references > 0) return;
    REALstringStruct* message = found->message;
    values_.erase(value);
    if (message) drop(message);
}

void Host::dropAll()
{
    values_.clear();
    textData_.clear();
}

/// Set the fields of a string that the plug-in sees, as a host of this version does.
void Host::place(Value& value)
{
    const std::string whole = 'P' + value.bytes + afterText;
    if (!value.storage) {
        value.storage.reset(new char[whole.size()]);
        std::memcpy(value.storage.get(), whole.data(), whole.size());
    }
    value.text.first = value.text.third = 0xABCD;
    if (hasOpaqueRecords()) {
        value.text.buffer = const_cast<char*>(wrongText);
        value.text.length = static_cast<HostInteger>(sizeof wrongText - 2);
        value.text.encoding = wrongEncoding;
    } else {
        value.text.buffer = value.storage.get();
        value.text.length = static_cast<HostInteger>(value.bytes.size());
        value.text.encoding = value.encoding;
    }
}

REALstringStruct* Host::newString(std::string_view bytes, std::uint32_t encoding)
{
    Value& value = add('s');
    value.bytes = std::string(bytes);
    value.encoding = encoding;
    place(value);
    return &value.text;
}

REALobjectStruct* Host::newObject(const std::string& className)
{
    Value& value = add('o');
    value.className = className;
    return reinterpret_cast<REALobjectStruct*>(&value);
}

REALfolderItemStruct* Host::newFolderItem() { return reinterpret_cast<REALfolderItemStruct*>(&add('f')); }

REALmemoryBlockStruct* Host::newMemoryBlock(std::string_view bytes)
{
    Value& value = add('m');
    value.bytes = std::string(bytes);
    value.storage.reset(new char[bytes.size()]);
    bytes.copy(value.storage.get(), bytes.size());
    return reinterpret_cast<REALmemoryBlockStruct*>(&value);
}

REALarrayStruct* Host::newArray(ElementType type, const void* elements, std::size_t count, std::size_t size)
{
    Value& value = add('a');
    value.elementType = type;
    value.elementSize = size;
    value.upperBound = static_cast<HostInteger>(count) - 1;
    if (count)
        value.elements.assign(static_cast<const char*>(elements),
                              static_cast<const char*>(elements) + count * size);
    value.array.elements = hasOpaqueRecords() ? const_cast<char*>(wrongText) : value.elements.data();
    return &value.array;
}

REALarrayStruct* Host::newIntegers(const std::vector<HostInteger>& elements)
{
    return newArray(ElementType::integer, elements.data(), elements.size(), sizeof(HostInteger));
}
REALarrayStruct* Host::newSingles(const std::vector<float>& elements)
{
    return newArray(ElementType::single, elements.data(), elements.size(), sizeof(float));
}
REALarrayStruct* Host::newDoubles(const std::vector<double>& elements)
{
    return newArray(ElementType::doubleFloat, elements.data(), elements.size(), sizeof(double));
}

void Host::setUpperBound(REALarrayStruct* array, HostInteger upperBound)
{
    find(array)->upperBound = upperBound;
}

std::string Host::bytesOf(const REALstringStruct* text) const { return find(text)->bytes; }
std::uint32_t Host::encodingOf(const REALstringStruct* text) const { return find(text)->encoding; }
const char* Host::storageOf(const REALstringStruct* text) const { return find(text)->storage.get() + 1; }
const char* Host::storageOf(const REALmemoryBlockStruct* block) const { return find(block)->storage.get(); }

void Host::claimSize(REALmemoryBlockStruct* block, HostInteger size) { find(block)->claimedSize = size; }
void Host::takeMemory(REALmemoryBlockStruct* block) { find(block)->hasMemory = false; }

std::string Host::bytesOf(const REALmemoryBlockStruct* block) const
{
    const Value* value = find(block);
    return {value->storage.get(), value->bytes.size()};
}

int Host::references(const void* value) const
{
    const Value* found = find(value);
    return found ? found->references : 0;
}

} // namespace fake
