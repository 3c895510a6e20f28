#include "host/runtime/calls/overload.h"

#include "host/runtime/support/errors.h"
#include "host/runtime/values/native.h"

#include <fmt/format.h>

namespace host {

namespace {

Cost costOf(const Argument& argument, const Parameter& parameter)
{
    const bool isVariable = argument.variable != nullptr;
    if (parameter.isByRef != isVariable) return {};
    if (isVariable && argument.value.isNil()) return cost::exact;
    return conversionCost(argument.value, parameter.type);
}

Cost costOf(const std::vector<Argument>& arguments, const std::vector<Parameter>& parameters)
{
    if (arguments.size() < requiredCount(parameters) || arguments.size() > parameters.size()) return {};
    int sum = 0;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const Cost one = costOf(arguments[i], parameters[i]);
        if (!one) return {};
        sum += *one;
    }
    return sum;
}

} // namespace

const MethodInfo& chooseOverload(const std::vector<const MethodInfo*>& overloads,
                                 const std::vector<Argument>& arguments, const std::string& owner)
{
    if (overloads.size() == 1) return *overloads.front();
    const MethodInfo* best = nullptr;
    Cost least;
    for (const auto* method : overloads) {
        const Cost sum = costOf(arguments, method->declaration.parameters);
        if (!sum || (least && *sum >= *least)) continue;
        best = method;
        least = sum;
    }
    if (best) return *best;
    std::string given, choices;
    for (const auto& argument : arguments) given += (given.empty() ? "" : ", ") + argument.value.describe();
    for (const auto* method : overloads) choices += "\n  " + print(method->declaration);
    throw ProgramError(fmt::format("no {} of {} takes ({}); there are:{}",
                                   overloads.front()->declaration.name, owner, given, choices));
}

} // namespace host
