#include "host/runtime/classes/class_info.h"

#include "host/runtime/support/per_host.h"

#include <fmt/format.h>

namespace host {

namespace {

const std::string& nameOf(const PropertyInfo& info) { return info.name; }
const std::string& nameOf(const ConstantInfo& info) { return info.name; }
const std::string& nameOf(const EventInfo& info) { return info.declaration.name; }

std::vector<const MethodInfo*> findAll(const ClassInfo& from, std::vector<MethodInfo> ClassInfo::*list,
                                       std::string_view name)
{
    std::vector<const MethodInfo*> found;
    for (const auto* info = &from; info; info = info->super) {
        for (const auto& method : info->*list) {
            if (sameName(method.declaration.name, name)) found.push_back(&method);
        }
    }
    return found;
}

template <class Info>
const Info* findNearest(const ClassInfo& from, std::vector<Info> ClassInfo::*list, std::string_view name)
{
    for (const auto* info = &from; info; info = info->super) {
        for (const auto& member : info->*list) {
            if (sameName(nameOf(member), name)) return &member;
        }
    }
    return nullptr;
}

} // namespace

const PropertyInfo* ClassInfo::property(std::string_view member) const
{
    return findNearest(*this, &ClassInfo::properties, member);
}

const PropertyInfo* ClassInfo::sharedProperty(std::string_view member) const
{
    return findNearest(*this, &ClassInfo::sharedProperties, member);
}

const ConstantInfo* ClassInfo::constant(std::string_view member) const
{
    return findNearest(*this, &ClassInfo::constants, member);
}

const EventInfo* ClassInfo::event(std::string_view member) const
{
    return findNearest(*this, &ClassInfo::events, member);
}

std::vector<const MethodInfo*> ClassInfo::methodsNamed(std::string_view member) const
{
    return findAll(*this, &ClassInfo::methods, member);
}

std::vector<const MethodInfo*> ClassInfo::sharedMethodsNamed(std::string_view member) const
{
    return findAll(*this, &ClassInfo::sharedMethods, member);
}

bool ClassInfo::isA(std::string_view className) const
{
    for (const auto* info = this; info; info = info->super) {
        if (sameName(info->name, className)) return true;
    }
    return false;
}

const ClassInfo* findClass(std::string_view name)
{
    for (const auto& info : stateOf<ClassTable>().classes) {
        if (sameName(info->name, name)) return info.get();
    }
    return nullptr;
}

const ClassInfo& classNamed(std::string_view name)
{
    if (const ClassInfo* info = findClass(name)) return *info;
    std::string known;
    for (const auto& info : stateOf<ClassTable>().classes) known += (known.empty() ? "" : ", ") + info->name;
    throw ProgramError(fmt::format("there is no class {}; known are {}", name, known));
}

} // namespace host
