// Reading a property through the getter in its row, with any parameter.
#pragma once

#include "abi/class_definition.h"
#include "abi/host_values.h"

#include <cinttypes>
#include <cstdio>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>

namespace support {

/// Parameters that no row of a function getter carries, but for the first.
constexpr HostInteger anyParameter[] = {
    0, 1, -1, 4711, std::numeric_limits<HostInteger>::max(), std::numeric_limits<HostInteger>::min()};

template <class T>
T callGetter(const REALproperty& row, REALobjectStruct* object, HostInteger parameter)
{
    return reinterpret_cast<T (*)(REALobjectStruct*, HostInteger)>(row.getter)(object, parameter);
}

/// The value of a property of a numeric type, as text. The row's getter must be a function.
inline std::string valueOf(const REALproperty& row, REALobjectStruct* object, HostInteger parameter)
{
    const std::string_view type = row.type;
    char text[64];
    if (type == "Integer")
        std::snprintf(text, sizeof text, "%" PRIdPTR, callGetter<HostInteger>(row, object, parameter));
    else if (type == "UInt32")
        std::snprintf(text, sizeof text, "%" PRIu32, callGetter<std::uint32_t>(row, object, parameter));
    else if (type == "Boolean")
        return callGetter<HostBoolean>(row, object, parameter) ? "true" : "false";
    else if (type == "Single")
        std::snprintf(text, sizeof text, "%g", double{callGetter<float>(row, object, parameter)});
    else if (type == "Double")
        std::snprintf(text, sizeof text, "%g", callGetter<double>(row, object, parameter));
    else
        throw std::runtime_error(std::string("no number: ") + row.name + " as " + row.type);
    return text;
}

} // namespace support
