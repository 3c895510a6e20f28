#include "host/runtime/state.h"

#include <fmt/format.h>

namespace host {

CallScope::CallScope()
{
    auto& now = state();
    if (now.callDepth == 0 && now.pending) {
        noteMisuse(fmt::format("an exception of class {} was raised outside any call, and nobody took it",
                               now.pending.classInfo().name));
        now.pending = Object();
    }
    outer_ = std::exchange(now.pending, Object());
    ++now.callDepth;
}

CallScope::~CallScope()
{
    auto* now = stateOrNull();
    if (!now) return;
    now->pending = std::exchange(outer_, Object());
    --now->callDepth;
}

void CallScope::finish()
{
    auto& now = state();
    if (auto thrown = std::exchange(now.handlerError, nullptr)) std::rethrow_exception(thrown);
    const auto raised = std::exchange(now.pending, Object());
    if (raised) throw asException(raised);
}

HostException asException(const Object& raised)
{
    const auto& info = raised.classInfo();
    const auto message = info.property("Message") ? raised.get("Message").text() : std::string();
    const auto number = info.property("ErrorNumber") ? raised.get("ErrorNumber").integer() : 0;
    return HostException(info.name, message, static_cast<HostInteger>(number));
}

} // namespace host
