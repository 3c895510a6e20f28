// Copies texts into the fixed-size fields of public records.
#pragma once

#include <cstddef>
#include <cstring>
#include <string>

namespace kvxplatform::hal {

/// Copy a text into a field, cut to the size of the field and terminated.
/// [any]
template <std::size_t size>
void copyText(char (&target)[size], const std::string& text)
{
    std::strncpy(target, text.c_str(), size - 1);
    target[size - 1] = 0;
}

} // namespace kvxplatform::hal
