// File URLs. A `CFURLRef` points to a __CFURL.
#pragma once

#include "platform/corefoundation/object.h"

#include <CoreFoundation/CFURL.h>

#include <string>

/// A file URL; the platform's header determines the name of this type.
struct __CFURL : kvxplatform::corefoundation::Object {
    explicit __CFURL(std::string&& ofPath);

    const std::string path; ///< absolute path, without a slash at the end
};
