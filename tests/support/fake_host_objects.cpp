// The fake host's services for versions, registration, objects and folder items.
#include "tests/support/fake_host_services.h"

#include <algorithm>

struct FSRef;

namespace fake {

struct HostServices : Services {
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
        return begin(call) && host().isBuiltProgram ? 0x80 : 0; // the plug-in takes any byte but 0 for true
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

    /// `name` is the platform's HFSUniStr255: a length in UTF-16 units, then 255 units.
    static HostBoolean fsRefFromFolderItem(REALfolderItemStruct* item, FSRef* reference, void* name)
    {
        constexpr std::size_t nameBytes = 256 * sizeof(char16_t), referenceBytes = 80;
        const auto* const bytes = static_cast<const char*>(name);
        const bool isZeroed =
            name && std::all_of(bytes, bytes + nameBytes, [](char byte) { return byte == 0; });
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
        return 0x20; // the plug-in takes any byte but 0 for true
    }

    static AnyFunction find(const std::string& name)
    {
        // clang-format off
        static const std::map<std::string, AnyFunction> names = {
            {"REALGetRBVersion",                        row(&getVersion)},
            {"RegisterPluginVersion",                   row(&registerVersion)},
            {"REALinRuntime",                           row(&inRuntime)},
            {"PluginRegisterClass",                     row(&registerClass)},
            {"REALYieldToRB",                           row(&yield)},
            {"PluginNewInstance",                       row(&newInstance)},
            {"REALLockObject",                          row(&lockObject)},
            {"REALUnlockObject",                        row(&unlockObject)},
            {"REALLockString",                          row(&lockString)},
            {"REALUnlockString",                        row(&unlockString)},
            {"StringToVariant",                         row(&stringToVariant)},
            {"IntegerToVariant",                        row(&integerToVariant)},
            {"Int32ToVariant",                          row(&int32ToVariant)},
            {"REALSetPropValueString",                  row(&setPropString)},
            {"REALSetPropValueInteger",                 row(&setPropInteger)},
            {"REALSetPropValueInt",                     row(&setPropInt)},
            {"REALLoadObjectMethod",                    row(&loadObjectMethod)},
            {"GetEventInstance",                        row(&getEventInstance)},
            {"RuntimeRaiseException",                   row(&raise)},
            {"REALFSRefFromFolderItem",                 row(&fsRefFromFolderItem)},
        };
        // clang-format on
        const auto found = names.find(name);
        return found == names.end() ? nullptr : found->second;
    }
};

AnyFunction findHostService(const std::string& name) { return HostServices::find(name); }

} // namespace fake
