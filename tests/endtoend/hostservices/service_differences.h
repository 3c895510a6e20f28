// What becomes of the scenario on a host that lacks a service.
#pragma once

#include <string>
#include <vector>

namespace endtoend {

/// The hosts that differ in which services the library asks for, by the first version of each; the versions
/// in between are like the one before them.
enum Era { before2012, from2012, from2013, from2015, from2016, eras };

Era eraOf(double version);

/// How often the scenario calls a service on a complete host. A service without a row is not called: nothing
/// that is in the library needs it.
struct ServiceUse {
    const char* service;
    std::size_t calls[eras];
};
const std::vector<ServiceUse>& serviceUses();

/// The result of some steps without a service.
struct ServiceDifference {
    enum Kind { instead, besides }; ///< of the usual result, or behind it

    const char* service;
    Era first, last; ///< the hosts where it is so
    Kind kind;
    const char* result;
    std::vector<const char*> steps;
};
const std::vector<ServiceDifference>& serviceDifferences();

/// Services that are called, though no step shows it when they are missing.
struct UnseenService {
    const char* service;
    const char* why;
};
const std::vector<UnseenService>& unseenServices();

} // namespace endtoend
