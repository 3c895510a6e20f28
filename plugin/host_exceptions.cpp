#include "plugin/host_exceptions.h"

#include "plugin/new_string.h"
#include "plugin/zeroed.h"

#include <cstdio>
#include <cstring>
#include <new>
#include <stdexcept>
#include <typeinfo>

namespace {

constexpr char fallbackClass[] = "RuntimeException";
// Size of the message buffer with the terminator; a longer message is truncated.
constexpr int rangeTextBytes = 205;

/// Convert the message to a host string. If the host throws during the conversion, a second host exception
/// reports the failure; the second exception has no message, so the recursion ends.
OwnedString exceptionText(const char* message)
{
    static bool isBuilding = false;
    if (!message || !*message || isBuilding) return nullptr;
    struct Building {
        Building() { isBuilding = true; }
        ~Building() { isBuilding = false; }
    } const building;
    return translateExceptions([message] {
        return newString(message, static_cast<HostInteger>(std::strlen(message)), encodingASCII);
    });
}

} // namespace

void RaiseException(const char* className, const char* message, unsigned long, int)
{
    const OwnedString text = exceptionText(message);
    OwnedObject exception(REALnewInstance(className));
    if (!exception) exception.reset(REALnewInstance(fallbackClass));
    if (!exception) return;
    REALSetPropValueString(exception.get(), "Message", text.get());
    REALSetPropValueInteger(exception.get(), "ErrorNumber", 0);
    REALRaiseException(exception.get());
}

void RaiseOutOfBoundsException(long long value, long long lower, long long count, const char* parameter,
                               const char* qualifier)
{
    const auto text = allocateZeroed<char>(rangeTextBytes);
    if (!text) {
        RaiseException("OutOfBoundsException", "Out of Bounds");
        return;
    }
    // The format has two qualifiers after the parameter's name; if both are empty, the message has two
    // spaces.
    const char* format = value < 0
                             ? "Parameter %s %s%s is too small. Range is %lld to %lld, but value is %lld."
                             : "Parameter %s %s%s is too big. Range is %lld to %lld, but value is %lld.";
    std::snprintf(text.get(), rangeTextBytes, format, parameter, qualifier, "", lower, count - 1, value);
    RaiseException("OutOfBoundsException", text.get());
}

void RaiseHandledException()
{
    const auto outOfBounds = [](const std::exception& e) {
        RaiseException("OutOfBoundsException", e.what());
    };
    try {
        throw;
    } catch (const std::bad_alloc&) {
        RaiseException("OutOfMemoryException", "Failed to allocate memory.");
    } catch (const std::range_error& e) {
        outOfBounds(e);
    } catch (const std::out_of_range& e) {
        outOfBounds(e);
    } catch (const std::overflow_error& e) {
        outOfBounds(e);
    } catch (const std::underflow_error& e) {
        outOfBounds(e);
    } catch (const std::logic_error& e) {
        // This handler precedes that of bad_cast because an exception may derive from both.
        RaiseException(fallbackClass, e.what());
    } catch (const std::runtime_error& e) {
        RaiseException(fallbackClass, e.what());
    } catch (const std::bad_cast& e) {
        RaiseException("IllegalCastException", e.what());
    } catch (const std::exception& e) {
        RaiseException(fallbackClass, e.what());
    } catch (...) {
        RaiseException(fallbackClass, "Sorry, but there was an unnamed C++ Exception.");
    }
}
