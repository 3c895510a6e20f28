// File URLs: `CFURLRef` points to a __CFURL.
#pragma once

#include "platform/corefoundation/object.h"

#include <CoreFoundation/CFURL.h>

#include <string>

/// The platform's name of the type.
struct __CFURL : kvxplatform::corefoundation::Object {
    explicit __CFURL(std::string&& ofPath);

    const std::string path; ///< absolute, without a slash at the end
};
