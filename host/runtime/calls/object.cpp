#include "host/runtime/calls/object.h"

#include "host/runtime/calls/dynamic_call.h"
#include "host/runtime/calls/overload.h"
#include "host/runtime/classes/object_record.h"
#include "host/runtime/support/misuse.h"
#include "host/runtime/support/per_host.h"
#include "host/runtime/values/field.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <new>

namespace host {

struct EventHandlers {
    std::map<const EventInfo*, EventHandler> byEvent;
};

namespace {

using LifeFunction = void (*)(REALobjectStruct*); ///< C type of the constructor and destructor functions

ObjectRecord& recordOf(const Object& object)
{
    if (!object) throw ProgramError("the object is nil");
    return *record<ObjectRecord>(object.get());
}

/// List the class and its superclasses, root class first.
std::vector<const ClassInfo*> lineage(const ClassInfo& info)
{
    std::vector<const ClassInfo*> chain;
    for (const auto* one = &info; one; one = one->super) chain.insert(chain.begin(), one);
    return chain;
}

void callLifeFunction(AnyFunction function, REALobjectStruct* object)
{
    CallScope scope;
    reinterpret_cast<LifeFunction>(function)(object);
    scope.throwRaised();
}

/// Run the method "Destructor" that the class `info` declares, then the destructor function of the class
/// definition. An exception is noted as a misuse, because no caller can receive the exception.
void destruct(REALobjectStruct* object, const ClassInfo& info)
{
    const auto run = [&](AnyFunction function) {
        try {
            callLifeFunction(function, object);
        } catch (const std::exception& error) {
            noteMisuse(fmt::format("the destructor of {} raised: {}", info.name, error.what()));
        }
    };
    for (const auto& method : info.methods) {
        if (sameName(method.declaration.name, "Destructor") && method.declaration.parameters.empty())
            run(method.function);
    }
    if (info.destructor) run(info.destructor);
}

void releaseFields(REALobjectStruct* object, const ClassInfo& info)
{
    for (const auto& property : info.properties) {
        if (property.getterAccess != Access::field || !property.type.isReference()) continue;
        // The field becomes nil, so a second property with the same field does not release the value again.
        release(exchangeReference(classDataOf(object, info) + property.parameter, nullptr));
    }
}

// ---- functions for counted values of kind object (KindRow) ----

void destroyObject(void* value)
{
    auto* object = static_cast<REALobjectStruct*>(value);
    if (stateOrNull<LiveValues>()) {
        const std::vector<const ClassInfo*> chain = lineage(classOf(object));
        for (auto one = chain.rbegin(); one != chain.rend(); ++one) destruct(object, **one);
        for (const auto* one : chain) releaseFields(object, *one);
    }
    delete record<ObjectRecord>(object)->handlers;
}

std::string describeObject(const void* object) { return "an object of class " + classOf(object).name; }

Cost costOfObject(const void* object, const Type& type)
{
    if (type.base != Base::object || type.isArray) return {};
    const ClassInfo& info = classOf(object);
    if (sameName(info.name, type.className)) return cost::exact;
    return isAnyObject(type) || info.isA(type.className) ? Cost(cost::converted) : Cost();
}

constexpr KindRow objectRow = {Kind::object, destroyObject, describeObject, nullptr, costOfObject};

Object constructed(const ClassInfo& info)
{
    const std::size_t size = std::max(firstDataOffset, info.dataOffset + info.dataSize);
    auto* made = static_cast<ObjectRecord*>(allocateValue(objectRow, size));
    if (!made) throw std::bad_alloc();
    made->info = &info;
    made->handlers = new EventHandlers;
    Object object(Object::adopt(reinterpret_cast<REALobjectStruct*>(made)));
    for (const auto* one : lineage(info)) {
        if (one->constructor) callLifeFunction(one->constructor, object.get());
    }
    return object;
}

const PropertyInfo& propertyOf(const Object& object, std::string_view name)
{
    const ClassInfo& info = object.classInfo();
    if (const PropertyInfo* found = info.property(name)) return *found;
    const bool isMethod = !info.methodsNamed(name).empty();
    throw ProgramError(fmt::format("{} has no property {}{}", info.name, name,
                                   isMethod ? "; call the method of this name" : ""));
}

std::vector<const MethodInfo*> methodsOf(const Object& object, std::string_view name)
{
    const ClassInfo& info = object.classInfo();
    std::vector<const MethodInfo*> found = info.methodsNamed(name);
    if (found.empty()) {
        const bool isProperty = info.property(name) != nullptr;
        throw ProgramError(fmt::format("{} has no method {}{}", info.name, name,
                                       isProperty ? "; read the property of this name" : ""));
    }
    return found;
}

/// Find the method that writes an indexed property: a setter (object, index, value), or a method with a
/// parameter that is marked "Assigns".
MethodInfo writerOf(const Object& object, std::string_view name)
{
    const std::vector<const MethodInfo*> methods = methodsOf(object, name);
    for (const auto* method : methods) {
        if (method->declaration.isAssignment() && method->declaration.parameters.size() == 2) return *method;
        if (!method->setter || method->declaration.parameters.size() != 1) continue;
        MethodInfo writer = *method;
        writer.function = method->setter;
        Parameter value;
        value.name = "value";
        value.type = method->declaration.result;
        writer.declaration.parameters.push_back(value);
        writer.declaration.result = Type();
        return writer;
    }
    throw ProgramError(fmt::format("{}.{} cannot be assigned to", object.classInfo().name, name));
}

} // namespace

Object createObject(const ClassInfo& info, const std::vector<Argument>& arguments)
{
    const std::vector<const MethodInfo*> constructors = info.methodsNamed("Constructor");
    if (constructors.empty() && !arguments.empty())
        throw ProgramError(fmt::format("{} has no constructor that takes arguments", info.name));
    const MethodInfo* constructor =
        constructors.empty() ? nullptr : &chooseOverload(constructors, arguments, info.name);
    Object object = constructed(info);
    if (constructor) callMethod(object.get(), *constructor, arguments, info.name);
    return object;
}

const EventHandler* handlerOf(REALobjectStruct* object, const EventInfo& event)
{
    const std::map<const EventInfo*, EventHandler>& handlers =
        record<ObjectRecord>(object)->handlers->byEvent;
    const auto found = handlers.find(&event);
    return found == handlers.end() ? nullptr : &found->second;
}

Object Value::object() const { return as<Object>(); }

const ClassInfo& Object::classInfo() const { return *recordOf(*this).info; }

void* Object::classData(const ClassInfo& info) const
{
    recordOf(*this); // checks that the object is not nil
    return classDataOf(get(), info);
}

Value Object::get(std::string_view name) const { return readProperty(get(), propertyOf(*this, name)); }

void Object::set(std::string_view name, const Value& value) const
{
    writeProperty(get(), propertyOf(*this, name), value);
}

Value Object::get(std::string_view name, const Value& index) const
{
    return callWith(name, {Argument(index)});
}

void Object::set(std::string_view name, const Value& index, const Value& value) const
{
    const MethodInfo writer = writerOf(*this, name);
    callMethod(get(), writer, {Argument(index), Argument(value)}, classInfo().name);
}

Value Object::callWith(std::string_view name, const std::vector<Argument>& arguments) const
{
    const std::string& owner = classInfo().name;
    return callMethod(get(), chooseOverload(methodsOf(*this, name), arguments, owner), arguments, owner);
}

void Object::on(std::string_view name, EventHandler handler) const
{
    const EventInfo* event = classInfo().event(name);
    if (!event) throw ProgramError(fmt::format("{} has no event {}", classInfo().name, name));
    std::map<const EventInfo*, EventHandler>& handlers = recordOf(*this).handlers->byEvent;
    if (handler)
        handlers[event] = std::move(handler);
    else
        handlers.erase(event);
}

} // namespace host
