/* Umbrella header: components, sound components, files, memory, time, status codes. C. */
#ifndef CARBON_CARBON_H
#define CARBON_CARBON_H

#include <Carbon/Components.h>
#include <Carbon/DriverServices.h>
#include <Carbon/Files.h>
#include <Carbon/MacErrors.h>
#include <Carbon/MacMemory.h>
#include <Carbon/MixedMode.h>
#include <Carbon/Multiprocessing.h>
#include <Carbon/OSUtils.h>
#include <Carbon/Sound.h>
#include <Carbon/TextUtils.h>
#include <Carbon/TypeNames.h>
#include <CoreFoundation/CoreFoundation.h>
#include <MacTypes.h>

#endif
