// Where a file is, as callers hold it: `CFURLRef` points to one of these.
#pragma once

#include "platform/corefoundation/object.h"

#include <CoreFoundation/CFURL.h>

#include <string>

/// The platform's name for it.
struct __CFURL : kvxplatform::corefoundation::Object {
    explicit __CFURL(std::string&& ofPath);

    const std::string path; // from the root, without a slash at the end
};
