// Access to services as in a plug-in: the test finds a service by name and calls it through a typed pointer.
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

/// The misuses that the current host has noted, one line each.
inline std::string misuses()
{
    std::string all;
    for (const auto& sentence : host::Host::current().misuses()) all += sentence + "\n";
    return all;
}

} // namespace test
