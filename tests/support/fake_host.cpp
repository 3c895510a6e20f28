#include "tests/support/fake_host.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <tuple>
#include <type_traits>

struct FSRef;

namespace fake {

namespace {
Host* current = nullptr;

constexpr char decoyText[] = "!decoy text!";
constexpr Word decoyEncoding = 0xDEC0;
constexpr char lengthMethod[] = "LenB( s as string ) as integer";
} // namespace

/// Any value: a record of the real shape, and what stands behind it.
struct Host::Value {
    char kind; // s, o, m, a, f
    std::string name;
    int references = 1;

    REALstringStruct text = {};
    std::string bytes;          // of a string or a memory block
    std::uint32_t encoding = 0; // of a string
    std::unique_ptr<char[]> storage;

    std::string className; // of an object
    REALstringStruct* message = nullptr;
    bool hasMessage = false;
    std::optional<HostInteger> number;

    REALarrayStruct array = {};
    ElementType elementType = ElementType::integer;
    std::vector<char> elements;
    std::size_t elementSize = 0;
    HostInteger upperBound = -1;

    const void* address() const
    {
        if (kind == 's') return &text;
        if (kind == 'a') return &array;
        return this;
    }
};

struct Host::TextData {
    std::string of;
    std::unique_ptr<char[]> storage;
};

namespace {

// ---- text ----

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

/// Text for a note: quoted, with anything unprintable as \xNN; long text by its length alone.
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

std::string shown(const void* value) { return current->nameOf(value); }

} // namespace

std::string quoted(std::string_view bytes)
{
    return quoted(bytes.data(), static_cast<HostInteger>(bytes.size()));
}

// ---- services ----

/// One call of a service: its note, and the test's hands in it.
class Call {
public:
    Call(Notes& notes, const char* name, const std::string& arguments)
        : notes_(notes), index_(notes.size()), name_(name)
    {
        notes_.push_back(std::string(name) + "(" + arguments + ")");
    }
    const std::string& name() const { return name_; }
    void answer(const std::string& text) { notes_[index_] += " = " + text; }

private:
    Notes& notes_;
    std::size_t index_;
    std::string name_;
};

struct Services {
    static Host& host()
    {
        if (!current) throw std::logic_error("a service is called and there is no host");
        return *current;
    }

    /// Note the call. True: do the work; false: answer nothing. Throws what the test wants thrown.
    static bool begin(Call& call)
    {
        Host& h = host();
        if (const auto action = h.actions_.find(call.name()); action != h.actions_.end()) {
            const std::function<void()> run = std::move(action->second);
            h.actions_.erase(action);
            run();
        }
        const auto failure = h.failures_.find(call.name());
        return failure == h.failures_.end() || failure->second-- <= 0;
    }

    static Call note(const char* name, const std::string& arguments = "")
    {
        return Call(host().notes_, name, arguments);
    }

    static Host::Value* known(const void* value, const char* kinds, const char* service)
    {
        Host::Value* found = host().find(value);
        if (found && std::strchr(kinds, found->kind)) return found;
        host().fault(std::string(service) + " of " + (value ? "a foreign address" : "null"));
        return nullptr;
    }

    // -- the host itself --

    static double getVersion()
    {
        Call call = note("REALGetRBVersion");
        return begin(call) ? host().version : 0;
    }

    static void registerVersion(int layout)
    {
        Call call = note("RegisterPluginVersion", std::to_string(layout));
        begin(call);
    }

    static HostBoolean inRuntime()
    {
        Call call = note("REALinRuntime");
        return begin(call) && host().isBuiltProgram ? 0x80 : 0; // any bit is true
    }

    static void registerClass(REALclassDefinition* definition)
    {
        Call call = note("PluginRegisterClass", definition->name ? definition->name : "null");
        if (!begin(call)) return;
        std::vector<Word> words(sizeof *definition / sizeof(Word));
        std::memcpy(words.data(), definition, sizeof *definition);
        host().registrations_.push_back({definition, std::move(words)});
        if (host().dataOffset) definition->dataOffset = host().dataOffset;
    }

    static void yield()
    {
        Call call = note("REALYieldToRB");
        begin(call);
    }

    // -- objects --

    static REALobjectStruct* newInstance(const char* className)
    {
        Call call = note("PluginNewInstance", className);
        const bool makes = begin(call) && host().classes.count(className);
        REALobjectStruct* object = makes ? host().newObject(className) : nullptr;
        call.answer(shown(object));
        return object;
    }

    static void lock(const void* value, const char* kinds, const char* service)
    {
        Call call = note(service, shown(value));
        if (!begin(call)) return;
        if (Host::Value* found = known(value, kinds, service)) ++found->references;
    }

    static void unlock(const void* value, const char* kinds, const char* service)
    {
        Call call = note(service, shown(value));
        if (begin(call) && known(value, kinds, service)) host().drop(value);
    }

    static void lockObject(REALobjectStruct* o) { lock(o, "omf", "REALLockObject"); }
    static void unlockObject(REALobjectStruct* o) { unlock(o, "omf", "REALUnlockObject"); }
    static void lockString(REALstringStruct* s) { lock(s, "s", "REALLockString"); }
    static void unlockString(REALstringStruct* s) { unlock(s, "s", "REALUnlockString"); }

    static void setPropString(REALobjectStruct* object, const char* property, REALstringStruct* value)
    {
        Call call = note("REALSetPropValueString", shown(object) + ", " + property + ", " + shown(value));
        if (!begin(call) || std::strcmp(property, "Message") != 0) return;
        Host::Value* exception = known(object, "o", "REALSetPropValueString");
        if (!exception) return;
        if (Host::Value* text = value ? known(value, "s", "REALSetPropValueString") : nullptr)
            ++text->references;
        if (exception->message) host().drop(exception->message);
        exception->message = value;
        exception->hasMessage = true;
    }

    static void setPropInteger(REALobjectStruct* object, const char* property, HostInteger value)
    {
        setNumber("REALSetPropValueInteger", object, property, value);
    }
    static void setPropInt(REALobjectStruct* object, const char* property, HostInteger value)
    {
        setNumber("REALSetPropValueInt", object, property, value);
    }
    static void setNumber(const char* name, REALobjectStruct* object, const char* property, HostInteger value)
    {
        Call call = note(name, shown(object) + ", " + property + ", " + std::to_string(value));
        if (!begin(call) || std::strcmp(property, "ErrorNumber") != 0) return;
        if (Host::Value* exception = known(object, "o", name)) exception->number = value;
    }

    static AnyFunction loadObjectMethod(REALobjectStruct* object, const char* declaration)
    {
        Call call = note("REALLoadObjectMethod", shown(object) + ", " + declaration);
        const auto found = host().objectMethods.find(declaration);
        return begin(call) && found != host().objectMethods.end() ? found->second : nullptr;
    }

    static AnyFunction getEventInstance(REALobjectStruct* object, Word systemUse)
    {
        Call call = note("GetEventInstance", shown(object) + ", " + code(systemUse));
        const auto found = host().eventHandlers.find({object, systemUse});
        return begin(call) && found != host().eventHandlers.end() ? found->second : nullptr;
    }

    static void raise(REALobjectStruct* object)
    {
        Call call = note("RuntimeRaiseException", shown(object));
        if (!begin(call)) return;
        const Host::Value* exception = known(object, "o", "RuntimeRaiseException");
        if (!exception) return;
        Raised raised{exception->className, {}, {}, exception->number};
        if (exception->message) {
            raised.message = host().bytesOf(exception->message);
            raised.encoding = host().encodingOf(exception->message);
        }
        host().raised_.push_back(raised);
    }

    template <class T>
    static REALobjectStruct* variant(const char* service, T, const std::string& argument)
    {
        Call call = note(service, argument);
        REALobjectStruct* object = begin(call) ? host().newObject("Variant") : nullptr;
        call.answer(shown(object));
        return object;
    }
    static REALobjectStruct* stringToVariant(REALstringStruct* value)
    {
        return variant("StringToVariant", value, shown(value));
    }
    static REALobjectStruct* integerToVariant(HostInteger value)
    {
        return variant("IntegerToVariant", value, std::to_string(value));
    }
    static REALobjectStruct* int32ToVariant(HostInteger value)
    {
        return variant("Int32ToVariant", value, std::to_string(value));
    }

    // -- strings --

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
        const std::string whole = *bytes + h.behindText;
        std::unique_ptr<char[]> storage(new char[whole.size()]);
        std::memcpy(storage.get(), whole.data(), whole.size());
        data->bytes = storage.get();
        data->length = static_cast<HostInteger>(bytes->size());
        const std::size_t id = h.nextTextData_++;
        std::memcpy(data->bookkeeping, &id, sizeof id);
        h.textData_[id] =
            std::unique_ptr<Host::TextData>(new Host::TextData{found->name, std::move(storage)});
        return 0x40; // any bit is true
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

    // -- memory blocks --

    static REALmemoryBlockStruct* newMemoryBlock(HostInteger size)
    {
        Call call = note("newMemoryBlock", std::to_string(size));
        REALmemoryBlockStruct* block = nullptr;
        if (begin(call) && size >= 0 && size <= host().largestBlock)
            block = host().newMemoryBlock(std::string(static_cast<std::size_t>(size), '\0'));
        call.answer(shown(block));
        return block;
    }
    static void* getPtr(REALmemoryBlockStruct* block)
    {
        Call call = note("memoryBlockGetPtr", shown(block));
        const Host::Value* found = begin(call) ? known(block, "m", "memoryBlockGetPtr") : nullptr;
        return found && host().blocksHaveBytes ? found->storage.get() : nullptr;
    }
    static HostInteger getSize(REALmemoryBlockStruct* block)
    {
        Call call = note("memoryBlockGetSize", shown(block));
        const Host::Value* found = begin(call) ? known(block, "m", "memoryBlockGetSize") : nullptr;
        return found ? static_cast<HostInteger>(found->bytes.size()) : 0;
    }

    // -- arrays --

    static REALarrayStruct* createArray(HostInteger type, HostInteger upperBound)
    {
        Call call = note("RuntimeArrayCreateSingleDimBoundedArray",
                         std::to_string(type) + ", " + std::to_string(upperBound));
        REALarrayStruct* array = nullptr;
        if (begin(call) && type == 0)
            array = host().newIntegers(std::vector<HostInteger>(static_cast<std::size_t>(upperBound + 1)));
        call.answer(shown(array));
        return array;
    }
    static HostInteger uBound(REALarrayStruct* array)
    {
        Call call = note("RuntimeUBound", shown(array));
        const Host::Value* found = begin(call) ? known(array, "a", "RuntimeUBound") : nullptr;
        const HostInteger upperBound = found ? found->upperBound : 0;
        call.answer(std::to_string(upperBound));
        return upperBound;
    }

    template <class T>
    static T element(REALarrayStruct* array, HostInteger index)
    {
        Call call = note("get", shown(array) + ", " + std::to_string(index));
        const Host::Value* found = begin(call) ? known(array, "a", "get") : nullptr;
        T value = {};
        if (!found) return value;
        const std::size_t at = static_cast<std::size_t>(index) * sizeof(T);
        if (index < 0 || found->elementSize != sizeof(T) || at + sizeof(T) > found->elements.size())
            host().fault("get outside " + found->name);
        else
            std::memcpy(&value, found->elements.data() + at, sizeof(T));
        return value;
    }
    template <class T>
    using Get = T (*)(REALarrayStruct*, HostInteger);
    template <class T>
    static Get<T> handOut(const char* service, REALarrayStruct* array)
    {
        Call call = note(service, shown(array));
        return begin(call) && known(array, "a", service) ? &element<T> : nullptr;
    }
    static Get<HostInteger> integerGet(REALarrayStruct* a)
    {
        return handOut<HostInteger>("PluginIntegerArrayGetProc", a);
    }
    static Get<float> singleGet(REALarrayStruct* a) { return handOut<float>("PluginSingleArrayGetProc", a); }
    static Get<double> doubleGet(REALarrayStruct* a)
    {
        return handOut<double>("PluginDoubleArrayGetProc", a);
    }
    template <class T>
    static Get<T> directGet(REALarrayStruct* a)
    {
        return handOut<T>("RuntimeArrayDirectGetGetProc", a);
    }

    static void insert(REALarrayStruct* array, HostInteger index, HostInteger value)
    {
        Call call =
            note("insert", shown(array) + ", " + std::to_string(index) + ", " + std::to_string(value));
        Host::Value* found = begin(call) ? known(array, "a", "insert") : nullptr;
        if (!found) return;
        if (index < 0 || index > found->upperBound + 1) {
            host().fault("insert outside " + found->name);
            return;
        }
        char bytes[sizeof value];
        std::memcpy(bytes, &value, sizeof value);
        found->elements.insert(found->elements.begin() + index * static_cast<HostInteger>(sizeof value),
                               bytes, bytes + sizeof value);
        ++found->upperBound;
        if (!host().hasOpaqueRecords()) found->array.elements = found->elements.data();
    }
    using Insert = void (*)(REALarrayStruct*, HostInteger, HostInteger);
    template <int which>
    static Insert insertProc(REALarrayStruct* array)
    {
        const char* name = which == 0 ? "PluginIntegerArrayInsertProc" : "RuntimeArrayDirectGetInsertProc";
        Call call = note(name, shown(array));
        return begin(call) && known(array, "a", name) ? &insert : nullptr;
    }

    // -- folder items --

    /// The name is a platform's HFSUniStr255: its length in units, and room for 255 of them.
    static HostBoolean fsRefFromFolderItem(REALfolderItemStruct* item, FSRef* reference, void* name)
    {
        constexpr std::size_t nameBytes = 256 * sizeof(char16_t), referenceBytes = 80;
        const auto* const room = static_cast<const char*>(name);
        const bool isZeroed =
            name && std::all_of(room, room + nameBytes, [](char byte) { return byte == 0; });
        Call call = note("REALFSRefFromFolderItem", shown(item) + ", " +
                                                        (!name      ? "null"
                                                         : isZeroed ? "zeros"
                                                                    : "a used name"));
        Host& h = host();
        const bool works =
            begin(call) && known(item, "f", "REALFSRefFromFolderItem") && (name || h.itemsExist);
        call.answer(works ? "true" : "false");
        if (!works) return 0;
        const std::string_view text = name ? "its folder" : "the item";
        std::memset(static_cast<void*>(reference), 0, referenceBytes);
        std::memcpy(static_cast<void*>(reference), text.data(), text.size());
        if (name) {
            const auto length = static_cast<std::uint16_t>(h.itemName.size());
            const std::uint16_t claimed = h.claimedNameUnits.value_or(length);
            std::memcpy(name, &claimed, sizeof claimed);
            std::memcpy(static_cast<char*>(name) + sizeof claimed, h.itemName.data(),
                        length * sizeof(char16_t));
        }
        return 0x20; // any bit is true
    }

    // -- the names --

    static AnyFunction find(const std::string& name)
    {
        const auto row = [](auto* function) { return reinterpret_cast<AnyFunction>(function); };
        // clang-format off
        static const std::map<std::string, AnyFunction> names = {
            {"REALGetRBVersion",                        row(&getVersion)},
            {"RegisterPluginVersion",                   row(&registerVersion)},
            {"REALinRuntime",                           row(&inRuntime)},
            {"PluginRegisterClass",                     row(&registerClass)},
            {"PluginNewInstance",                       row(&newInstance)},
            {"REALLockObject",                          row(&lockObject)},
            {"REALUnlockObject",                        row(&unlockObject)},
            {"REALLockString",                          row(&lockString)},
            {"REALUnlockString",                        row(&unlockString)},
            {"REALBuildString",                         row(&buildString)},
            {"REALBuildStringWithEncoding",             row(&buildStringWithEncoding)},
            {"REALGetStringEncoding",                   row(&getStringEncoding)},
            {"REALSetStringEncoding",                   row(&setStringEncoding)},
            {"REALConvertString",                       row(&convertString)},
            {"StringGetCString",                        row(&getCString)},
            {"REALLoadGlobalMethod",                    row(&loadGlobalMethod)},
            {"PluginGetStringData",                     row(&getStringData)},
            {"PluginDisposeStringData",                 row(&disposeStringData)},
            {"newMemoryBlock",                          row(&newMemoryBlock)},
            {"memoryBlockGetPtr",                       row(&getPtr)},
            {"memoryBlockGetSize",                      row(&getSize)},
            {"RuntimeArrayCreateSingleDimBoundedArray", row(&createArray)},
            {"RuntimeUBound",                           row(&uBound)},
            {"PluginIntegerArrayInsertProc",            row(&insertProc<0>)},
            {"RuntimeArrayDirectGetInsertProc",         row(&insertProc<1>)},
            {"PluginIntegerArrayGetProc",               row(&integerGet)},
            {"PluginSingleArrayGetProc",                row(&singleGet)},
            {"PluginDoubleArrayGetProc",                row(&doubleGet)},
            {"StringToVariant",                         row(&stringToVariant)},
            {"IntegerToVariant",                        row(&integerToVariant)},
            {"Int32ToVariant",                          row(&int32ToVariant)},
            {"REALSetPropValueString",                  row(&setPropString)},
            {"REALSetPropValueInteger",                 row(&setPropInteger)},
            {"REALSetPropValueInt",                     row(&setPropInt)},
            {"REALLoadObjectMethod",                    row(&loadObjectMethod)},
            {"GetEventInstance",                        row(&getEventInstance)},
            {"RuntimeRaiseException",                   row(&raise)},
            {"REALYieldToRB",                           row(&yield)},
            {"REALFSRefFromFolderItem",                 row(&fsRefFromFolderItem)},
        };
        // clang-format on
        if (name == "RuntimeArrayDirectGetGetProc") switch (host().directGet) {
            case ElementType::integer:
                return row(&directGet<HostInteger>);
            case ElementType::single:
                return row(&directGet<float>);
            case ElementType::doubleFloat:
                return row(&directGet<double>);
            }
        const auto found = names.find(name);
        return found == names.end() ? nullptr : found->second;
    }
};

void* Host::resolve(const char* name)
{
    Host& host = Services::host();
    AnyFunction function = host.withheld_.count(name) ? nullptr : Services::find(name);
    host.notes_.push_back(std::string("? ") + name + (function ? "" : ": none"));
    return reinterpret_cast<void*>(function);
}

// ---- the host ----

Host::Host(double hostVersion)
    : version(hostVersion), classes{"RuntimeException",
                                    "OutOfMemoryException",
                                    "OutOfBoundsException",
                                    "NilObjectException",
                                    "UnsupportedOperationException",
                                    "IllegalCastException",
                                    "Dictionary"},
      behindText(5, '\0')
{
    if (current) throw std::logic_error("there is a host already");
    current = this;
}

Host::~Host() { current = nullptr; }

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
        fault("a reference dropped of a foreign address");
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

/// Put a string's bytes where a host of this version has them.
void Host::place(Value& value)
{
    const std::string whole = 'P' + value.bytes + behindText;
    if (!value.storage) {
        value.storage.reset(new char[whole.size()]);
        std::memcpy(value.storage.get(), whole.data(), whole.size());
    }
    value.text.first = value.text.third = 0xABCD;
    if (hasOpaqueRecords()) {
        value.text.buffer = const_cast<char*>(decoyText);
        value.text.length = static_cast<HostInteger>(sizeof decoyText - 2);
        value.text.encoding = decoyEncoding;
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
    std::memcpy(value.storage.get(), bytes.data(), bytes.size());
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
    value.array.elements = hasOpaqueRecords() ? const_cast<char*>(decoyText) : value.elements.data();
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
