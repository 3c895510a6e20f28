#include "host/runtime/classes/registration.h"

#include "abi/accessor_sentinels.h"
#include "host/runtime/classes/object_record.h"
#include "host/runtime/support/misuse.h"
#include "host/runtime/support/per_host.h"

#include <fmt/format.h>

#include <algorithm>

namespace host {

namespace {

constexpr Word largestClassData = 1u << 20; ///< limit in bytes; a definition with more class data is corrupt

std::string textOrEmpty(const char* text) { return text ? text : ""; }

/// One array of rows in a class definition. The class layout decides the size of a row; in every layout, a
/// row starts with the fields of layout 9.
template <class Row9, class Row>
struct Rows {
    void* first;
    Word count;
    std::size_t stride;

    Rows(void* rows, Word rowCount, int layout)
        : first(rows), count(rows ? rowCount : 0), stride(layout == oldestLayout ? sizeof(Row9) : sizeof(Row))
    {
    }
    Row9& operator[](std::size_t i) const
    {
        return *reinterpret_cast<Row9*>(static_cast<char*>(first) + i * stride);
    }
};

bool isSentinel(AnyFunction function, Word value) { return reinterpret_cast<Word>(function) == value; }

/// Reads the members of one class definition into a ClassInfo.
class MemberReader {
public:
    MemberReader(REALclassDefinition& definition, int layout, ClassInfo& info)
        : definition_(definition), layout_(layout), info_(info)
    {
    }

    void readMembers()
    {
        readProperties(definition_.properties, definition_.propertyCount, info_.properties, false);
        readProperties(definition_.sharedProperties, definition_.sharedPropertyCount, info_.sharedProperties,
                       true);
        readMethods(definition_.methods, definition_.methodCount, info_.methods);
        readMethods(definition_.sharedMethods, definition_.sharedMethodCount, info_.sharedMethods);
        readEvents();
        readConstants();
    }

private:
    void leaveOut(const char* kind, const std::string& member, const std::string& why)
    {
        noteMisuse(fmt::format("class {}: {} {} is left out: {}", info_.name, kind, member, why));
    }

    void readProperties(void* rows, Word count, std::vector<PropertyInfo>& list, bool isShared)
    {
        const Rows<REALproperty9, REALproperty> all(rows, count, layout_);
        list.reserve(all.count);
        for (std::size_t i = 0; i < all.count; ++i) {
            const REALproperty9& row = all[i];
            PropertyInfo property;
            property.owner = &info_;
            property.group = textOrEmpty(row.group);
            property.name = textOrEmpty(row.name);
            property.typeText = textOrEmpty(row.type);
            property.type = typeNamed(property.typeText);
            property.flags = row.flags;
            property.getter = row.getter;
            property.setter = row.setter;
            property.parameter = row.parameter;
            property.editor = textOrEmpty(row.editor);
            if (isSentinel(row.getter, REALstandardGetter)) property.getterAccess = Access::field;
            if (isSentinel(row.setter, REALstandardSetter)) property.setterAccess = Access::field;
            const std::string fault = faultOf(property, isShared);
            if (fault.empty())
                list.push_back(std::move(property));
            else
                leaveOut("property", property.name, fault);
        }
    }

    /// Say why the host cannot use a property; "" if the host can use it.
    std::string faultOf(const PropertyInfo& property, bool isShared) const
    {
        if (property.name.empty()) return "it has no name";
        if (property.type.isVoid()) return "it has no type";
        if (!property.getter && !property.setter) return "it has neither getter nor setter";
        const bool isField = property.getterAccess == Access::field || property.setterAccess == Access::field;
        if (!isField) return {};
        if (isShared) return "a shared property has no class data";
        const auto size = static_cast<HostInteger>(sizeInMemory(property.type));
        const auto limit = static_cast<HostInteger>(info_.dataSize) - size;
        if (property.parameter < 0 || property.parameter > limit)
            return fmt::format("its field of {} bytes at {} is outside the class data of {} bytes", size,
                               property.parameter, info_.dataSize);
        return {};
    }

    /// Run `read` for one member. If `read` throws, note the error as a misuse and leave the member out.
    template <class Read>
    void readMember(const char* kind, const std::string& text, Read read)
    {
        try {
            read();
        } catch (const std::exception& error) {
            leaveOut(kind, text, error.what());
        }
    }

    void readMethods(void* rows, Word count, std::vector<MethodInfo>& list)
    {
        const Rows<REALmethod9, REALmethod> all(rows, count, layout_);
        list.reserve(all.count);
        for (std::size_t i = 0; i < all.count; ++i) {
            const REALmethod9& row = all[i];
            MethodInfo method;
            method.text = textOrEmpty(row.declaration);
            method.function = row.function;
            method.setter = row.setter;
            method.flags = row.flags;
            readMember("method", method.text, [&] {
                method.declaration = parseDeclaration(method.text);
                if (!row.function) throw ProgramError("it has no function");
                list.push_back(method);
            });
        }
    }

    static bool hasByRef(const Declaration& declaration)
    {
        const auto isByRef = [](const Parameter& parameter) { return parameter.isByRef; };
        return std::any_of(declaration.parameters.begin(), declaration.parameters.end(), isByRef);
    }

    void readEvents()
    {
        const Rows<REALevent9, REALevent> all(definition_.events, definition_.eventCount, layout_);
        // The list must not reallocate, because the key of an event is the address of its EventInfo.
        info_.events.reserve(all.count);
        for (std::size_t i = 0; i < all.count; ++i) {
            EventInfo event;
            event.owner = &info_;
            event.text = textOrEmpty(all[i].declaration);
            readMember("event", event.text, [&] {
                event.declaration = parseDeclaration(event.text);
                if (hasByRef(event.declaration))
                    throw ProgramError("a handler cannot change a ByRef parameter");
                EventInfo& kept = info_.events.emplace_back(event);
                kept.systemUse = all[i].systemUse = reinterpret_cast<Word>(&kept);
            });
        }
    }

    void readConstants()
    {
        const Rows<REALconstant9, REALconstant> all(definition_.constants, definition_.constantCount,
                                                    layout_);
        for (std::size_t i = 0; i < all.count; ++i) {
            const std::string text = textOrEmpty(all[i].declaration);
            readMember("constant", text, [&] {
                const ConstantDeclaration parsed = parseConstant(text);
                const std::string typeText = parsed.type ? typeName(*parsed.type) : "";
                info_.constants.push_back({text, parsed.name, typeText, parsed.value});
            });
        }
    }

    REALclassDefinition& definition_;
    int layout_;
    ClassInfo& info_;
};

/// Say why the host cannot register a class definition; "" if the host can register it.
std::string faultOf(const REALclassDefinition& definition, int layout)
{
    if (layout < oldestLayout || layout > newestLayout)
        return fmt::format("this host reads the layouts {} to {}, not {}", oldestLayout, newestLayout,
                           layout);
    if (definition.version != static_cast<Word>(layout))
        return fmt::format("its layout is {}, but the library announced {}", definition.version, layout);
    if (!definition.name || !*definition.name) return "it has no name";
    if (findClass(definition.name)) return "there is a class of that name";
    if (definition.dataSize > largestClassData)
        return fmt::format("{} bytes of class data are too many", definition.dataSize);
    if (definition.superName && *definition.superName && !findClass(definition.superName))
        return fmt::format("its superclass {} is not registered", definition.superName);
    return {};
}

/// Choose the offset of the class data in an object. Unrelated classes get different offsets, so that a
/// plug-in fails if it uses the offset of a wrong class.
std::size_t offsetFor(const ClassInfo* super, std::size_t classIndex)
{
    if (super) return roundUpToAlignment(super->dataOffset + super->dataSize);
    return firstDataOffset + alignof(ValueHeader) * (classIndex % 3);
}

} // namespace

const ClassInfo* registerClass(REALclassDefinition& definition, int layout, bool isBuiltIn)
{
    const std::string fault = faultOf(definition, layout);
    if (!fault.empty()) {
        noteMisuse(fmt::format("class {} is not registered: {}", textOrEmpty(definition.name), fault));
        return nullptr;
    }
    std::vector<std::unique_ptr<ClassInfo>>& classes = stateOf<ClassTable>().classes;
    auto info = std::make_unique<ClassInfo>();
    info->name = definition.name;
    info->superName = textOrEmpty(definition.superName);
    info->super = info->superName.empty() ? nullptr : findClass(info->superName);
    info->isBuiltIn = isBuiltIn;
    info->layout = layout;
    info->flags = definition.flags;
    info->dataSize = definition.dataSize;
    info->dataOffset = offsetFor(info->super, classes.size());
    info->constructor = definition.constructor;
    info->destructor = definition.destructor;
    info->interfaces = textOrEmpty(definition.interfaces);
    definition.dataOffset = info->dataOffset;
    MemberReader(definition, layout, *info).readMembers();
    classes.push_back(std::move(info));
    return classes.back().get();
}

} // namespace host
