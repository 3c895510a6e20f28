#include "host/runtime/calls/events.h"
#include "host/runtime/state.h"
#include "host/runtime/values/records.h"

#include "abi/accessor_sentinels.h"

#include <fmt/format.h>

#include <algorithm>

namespace host {

namespace {

constexpr Word largestClassData = 1u << 20; ///< bytes; more is taken for garbage

std::string textOrEmpty(const char* text) { return text ? text : ""; }

/// The rows of a registered array, whose stride depends on the layout; what every layout has comes first in a
/// row.
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

bool isMark(AnyFunction function, Word mark) { return reinterpret_cast<Word>(function) == mark; }

/// Reads one class; every member that cannot be used is noted and left out.
class Registration {
public:
    Registration(REALclassDefinition& definition, int layout, ClassInfo& info)
        : definition_(definition), layout_(layout), info_(info)
    {
    }

    void readMembers()
    {
        readProperties(definition_.properties, definition_.propertyCount, info_.properties, false);
        readProperties(definition_.sharedProperties, definition_.sharedPropertyCount, info_.sharedProperties,
                       true);
        readMethods(definition_.methods, definition_.methodCount, info_.methods, false);
        readMethods(definition_.sharedMethods, definition_.sharedMethodCount, info_.sharedMethods, true);
        readEvents();
        readConstants();
    }

private:
    void refuse(const char* kind, const std::string& member, const std::string& why)
    {
        noteMisuse(fmt::format("class {}: {} {} is left out: {}", info_.name, kind, member, why));
    }

    void readProperties(void* rows, Word count, std::vector<PropertyInfo>& list, bool isShared)
    {
        const Rows<REALproperty9, REALproperty> all(rows, count, layout_);
        list.reserve(all.count);
        for (std::size_t i = 0; i < all.count; ++i) {
            const auto& row = all[i];
            PropertyInfo property;
            property.group = textOrEmpty(row.group);
            property.name = textOrEmpty(row.name);
            property.typeText = textOrEmpty(row.type);
            property.type = typeNamed(property.typeText);
            property.flags = row.flags;
            property.getter = row.getter;
            property.setter = row.setter;
            property.parameter = row.parameter;
            property.editor = textOrEmpty(row.editor);
            property.isReadOnly = !row.setter;
            property.isShared = isShared;
            if (isMark(row.getter, REALstandardGetter)) property.getterAccess = Access::field;
            if (isMark(row.setter, REALstandardSetter)) property.setterAccess = Access::field;
            const auto fault = faultOf(property);
            if (fault.empty())
                list.push_back(std::move(property));
            else
                refuse("property", property.name, fault);
        }
    }

    std::string faultOf(const PropertyInfo& property) const
    {
        if (property.name.empty()) return "it has no name";
        if (!property.type.exists()) return "it has no type";
        if (!property.getter && !property.setter) return "it has neither getter nor setter";
        const bool isField = property.getterAccess == Access::field || property.setterAccess == Access::field;
        if (!isField) return {};
        if (property.isShared) return "a shared property has no class data";
        const auto size = static_cast<HostInteger>(sizeInMemory(property.type));
        const auto limit = static_cast<HostInteger>(info_.dataSize) - size;
        if (property.parameter < 0 || property.parameter > limit)
            return fmt::format("its field of {} bytes at {} is outside the class data of {} bytes", size,
                               property.parameter, info_.dataSize);
        return {};
    }

    void readMethods(void* rows, Word count, std::vector<MethodInfo>& list, bool isShared)
    {
        const Rows<REALmethod9, REALmethod> all(rows, count, layout_);
        list.reserve(all.count);
        for (std::size_t i = 0; i < all.count; ++i) {
            const auto& row = all[i];
            MethodInfo method;
            method.text = textOrEmpty(row.declaration);
            method.function = row.function;
            method.setter = row.setter;
            method.flags = row.flags;
            method.isShared = isShared;
            try {
                method.declaration = parseDeclaration(method.text);
                if (row.function)
                    list.push_back(std::move(method));
                else
                    refuse("method", method.declaration.name, "it has no function");
            } catch (const std::exception& error) {
                refuse("method", method.text, error.what());
            }
        }
    }

    void readEvents()
    {
        const Rows<REALevent9, REALevent> all(definition_.events, definition_.eventCount, layout_);
        info_.events.reserve(all.count);
        for (std::size_t i = 0; i < all.count; ++i) {
            EventInfo event;
            event.text = textOrEmpty(all[i].declaration);
            try {
                event.declaration = parseDeclaration(event.text);
                event.systemUse = bindEvent(info_, event);
                all[i].systemUse = event.systemUse;
                info_.events.push_back(std::move(event));
            } catch (const std::exception& error) {
                refuse("event", event.text, error.what());
            }
        }
    }

    void readConstants()
    {
        const Rows<REALconstant9, REALconstant> all(definition_.constants, definition_.constantCount,
                                                    layout_);
        for (std::size_t i = 0; i < all.count; ++i) {
            ConstantInfo constant;
            constant.text = textOrEmpty(all[i].declaration);
            try {
                auto parsed = parseConstant(constant.text);
                constant.name = std::move(parsed.name);
                constant.typeText = parsed.type ? typeName(*parsed.type) : "";
                constant.value = std::move(parsed.value);
                info_.constants.push_back(std::move(constant));
            } catch (const std::exception& error) {
                refuse("constant", constant.text, error.what());
            }
        }
    }

    REALclassDefinition& definition_;
    int layout_;
    ClassInfo& info_;
};

/// Why the definition as a whole cannot be registered; empty if it can.
std::string faultOf(const REALclassDefinition& definition, int layout, const Host& host)
{
    if (layout < oldestLayout || layout > newestLayout)
        return fmt::format("this host reads the layouts {} to {}, not {}", oldestLayout, newestLayout,
                           layout);
    if (definition.version != static_cast<Word>(layout))
        return fmt::format("it is written in layout {}, but {} was announced", definition.version, layout);
    if (!definition.name || !*definition.name) return "it has no name";
    if (host.findClass(definition.name)) return "there is a class of that name";
    if (definition.dataSize > largestClassData)
        return fmt::format("{} bytes of class data are too many", definition.dataSize);
    if (definition.superName && *definition.superName && !host.findClass(definition.superName))
        return fmt::format("its superclass {} is not registered", definition.superName);
    return {};
}

/// Where the class data stands. It differs from class to class, so that a plug-in that takes another class's
/// word for its own does not get away with it.
std::size_t offsetFor(const ClassInfo* super, std::size_t classIndex)
{
    if (super) return roundUpToAlignment(super->dataOffset + super->dataSize);
    return roundUpToAlignment(sizeof(ObjectRecord)) + dataAlignment * (classIndex % 3);
}

} // namespace

const ClassInfo* registerClass(REALclassDefinition& definition, int layout, bool isBuiltIn)
{
    auto& host = Host::current();
    const auto fault = faultOf(definition, layout, host);
    if (!fault.empty()) {
        noteMisuse(fmt::format("class {} is not registered: {}", textOrEmpty(definition.name), fault));
        return nullptr;
    }
    auto& classes = state().classes;
    auto info = std::make_unique<ClassInfo>();
    info->name = definition.name;
    info->superName = textOrEmpty(definition.superName);
    info->super = info->superName.empty() ? nullptr : host.findClass(info->superName);
    info->isBuiltIn = isBuiltIn;
    info->layout = layout;
    info->flags = definition.flags;
    info->dataSize = definition.dataSize;
    info->dataOffset = offsetFor(info->super, classes.size());
    info->constructor = definition.constructor;
    info->destructor = definition.destructor;
    info->interfaces = textOrEmpty(definition.interfaces);
    info->eventInstanceCount = definition.eventInstances ? definition.eventInstanceCount : 0;
    definition.dataOffset = info->dataOffset;
    Registration(definition, layout, *info).readMembers();
    classes.push_back(std::move(info));
    return classes.back().get();
}

} // namespace host
