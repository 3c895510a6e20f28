#include "host/runtime/classes/class_info.h"

#include <algorithm>

namespace host {

namespace {

template <class Info>
const Info* find(const ClassInfo& from, std::vector<Info> ClassInfo::*list, std::string_view name)
{
    for (const auto* info = &from; info; info = info->super) {
        for (const auto& member : info->*list) {
            if (sameName(member.name, name)) return &member;
        }
    }
    return nullptr;
}

std::vector<const MethodInfo*> findMethods(const ClassInfo& from, std::vector<MethodInfo> ClassInfo::*list,
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

} // namespace

const PropertyInfo* ClassInfo::property(std::string_view member) const
{
    return find(*this, &ClassInfo::properties, member);
}

const PropertyInfo* ClassInfo::sharedProperty(std::string_view member) const
{
    return find(*this, &ClassInfo::sharedProperties, member);
}

const ConstantInfo* ClassInfo::constant(std::string_view member) const
{
    return find(*this, &ClassInfo::constants, member);
}

const EventInfo* ClassInfo::event(std::string_view member) const
{
    for (const auto* info = this; info; info = info->super) {
        for (const auto& candidate : info->events) {
            if (sameName(candidate.declaration.name, member)) return &candidate;
        }
    }
    return nullptr;
}

std::vector<const MethodInfo*> ClassInfo::methodsNamed(std::string_view member) const
{
    return findMethods(*this, &ClassInfo::methods, member);
}

std::vector<const MethodInfo*> ClassInfo::sharedMethodsNamed(std::string_view member) const
{
    return findMethods(*this, &ClassInfo::sharedMethods, member);
}

bool ClassInfo::isA(std::string_view className) const
{
    for (const auto* info = this; info; info = info->super) {
        if (sameName(info->name, className)) return true;
    }
    return false;
}

} // namespace host
