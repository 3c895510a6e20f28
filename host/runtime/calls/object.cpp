#include "host/runtime/calls/object.h"

#include "host/runtime/calls/caller.h"
#include "host/runtime/calls/events.h"
#include "host/runtime/state.h"
#include "host/runtime/support/errors.h"
#include "host/runtime/values/native.h"
#include "host/runtime/values/records.h"

#include <fmt/format.h>

#include <algorithm>
#include <new>

namespace host {

namespace {

using LifeFunction = void (*)(REALobjectStruct*);

ObjectRecord& recordOf(const Object& object)
{
    if (!object) throw ProgramError("the object is nil");
    return *record<ObjectRecord>(object.get());
}

/// From the root class to the object's own.
std::vector<const ClassInfo*> lineage(const ClassInfo& info)
{
    std::vector<const ClassInfo*> chain;
    for (const auto* one = &info; one; one = one->super) chain.insert(chain.begin(), one);
    return chain;
}

void construct(const Object& object, const ClassInfo& info)
{
    if (!info.constructor) return;
    CallScope scope;
    reinterpret_cast<LifeFunction>(info.constructor)(object.get());
    scope.finish();
}

/// The destructors of one class: the method first, then the class's own word. What they raise has nobody to
/// see it.
void destruct(REALobjectStruct* object, const ClassInfo& info)
{
    const auto run = [&](AnyFunction function) {
        try {
            CallScope scope;
            reinterpret_cast<LifeFunction>(function)(object);
            scope.finish();
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
    std::vector<HostInteger> done; // two properties may show one field
    for (const auto& property : info.properties) {
        if (property.getterAccess != Access::field || !property.type.isReference()) continue;
        if (std::find(done.begin(), done.end(), property.parameter) != done.end()) continue;
        done.push_back(property.parameter);
        auto* field = reinterpret_cast<char*>(object) + info.dataOffset + property.parameter;
        release(exchangeReference(field, nullptr));
    }
}

const PropertyInfo& needProperty(const Object& object, std::string_view name)
{
    const auto& info = object.classInfo();
    if (const auto* found = info.property(name)) return *found;
    const bool isMethod = !info.methodsNamed(name).empty();
    throw ProgramError(fmt::format("{} has no property {}{}", info.name, name,
                                   isMethod ? "; that is a method, to be called" : ""));
}

std::vector<const MethodInfo*> needMethods(const Object& object, std::string_view name)
{
    const auto& info = object.classInfo();
    auto found = info.methodsNamed(name);
    if (found.empty()) {
        const bool isProperty = info.property(name) != nullptr;
        throw ProgramError(fmt::format("{} has no method {}{}", info.name, name,
                                       isProperty ? "; that is a property, to be read" : ""));
    }
    return found;
}

/// The function that writes an indexed property: its setter, or a method whose last parameter is assigned.
MethodInfo writerOf(const Object& object, std::string_view name)
{
    const auto methods = needMethods(object, name);
    for (const auto* method : methods) {
        if (method->declaration.isAssignment() && method->declaration.parameters.size() == 2) return *method;
        if (!method->setter || method->declaration.parameters.size() != 1) continue;
        auto writer = *method;
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

Object makeObject(const ClassInfo& info)
{
    const std::size_t size =
        std::max(roundUpToAlignment(sizeof(ObjectRecord)), info.dataOffset + info.dataSize);
    auto* made = static_cast<ObjectRecord*>(allocateValue(Kind::object, size));
    if (!made) throw std::bad_alloc();
    made->info = &info;
    made->handlers = new std::map<const EventBinding*, EventHandler>();
    Object object(Object::adopt(reinterpret_cast<REALobjectStruct*>(made)));
    for (const auto* one : lineage(info)) construct(object, *one);
    return object;
}

void finishObject(REALobjectStruct* object)
{
    auto& dying = *record<ObjectRecord>(object);
    dying.isDying = true;
    auto chain = lineage(*dying.info);
    for (auto one = chain.rbegin(); one != chain.rend(); ++one) destruct(object, **one);
    for (const auto* one : chain) releaseFields(object, *one);
    delete dying.handlers;
}

const ClassInfo& Object::classInfo() const { return *recordOf(*this).info; }

void* Object::classData(const ClassInfo& info) const
{
    recordOf(*this);
    return reinterpret_cast<char*>(get()) + info.dataOffset;
}

Value Object::get(std::string_view name) const
{
    const auto& property = needProperty(*this, name);
    return readProperty(Ref::get(), ownerOf(classInfo(), property), property);
}

void Object::set(std::string_view name, const Value& value) const
{
    const auto& property = needProperty(*this, name);
    writeProperty(Ref::get(), ownerOf(classInfo(), property), property, value);
}

Value Object::get(std::string_view name, const Value& index) const
{
    return callWith(name, {Argument(index)});
}

void Object::set(std::string_view name, const Value& index, const Value& value) const
{
    const auto writer = writerOf(*this, name);
    callMethod(Ref::get(), writer, {Argument(index), Argument(value)}, classInfo().name);
}

Value Object::callWith(std::string_view name, const std::vector<Argument>& arguments) const
{
    const auto& owner = classInfo().name;
    const Object held = *this; // the call may drop the program's own reference
    return callMethod(Ref::get(), chooseOverload(needMethods(*this, name), arguments, owner), arguments,
                      owner);
}

void Object::on(std::string_view name, EventHandler handler) const
{
    const auto* event = classInfo().event(name);
    if (!event) throw ProgramError(fmt::format("{} has no event {}", classInfo().name, name));
    attachHandler(Ref::get(), *event, std::move(handler));
}

} // namespace host
