// Services as a plug-in has them: asked for by name from the resolver, called through typed pointers.
#pragma once

#include "abi/class_definition.h"
#include "abi/host_values.h"
#include "host/runtime/host.h"

namespace test {

template <class Signature>
Signature* service(const char* name)
{
    return reinterpret_cast<Signature*>(host::Host::resolver()(name));
}

inline host::Options version(double v)
{
    host::Options options;
    options.version = v;
    return options;
}

/// What went wrong by the host's own account, for messages; "" for nothing.
inline std::string misuses()
{
    std::string all;
    for (const auto& sentence : host::Host::current().misuses()) all += sentence + "\n";
    return all;
}

} // namespace test
