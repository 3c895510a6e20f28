// What the library learns once, when it is loaded, and only reads from then on.
#pragma once

#include "abi/entry_point.h"
#include "abi/word.h"

/// Every host service is looked up through it; null until the host has called REALPluginMain.
extern REALResolver gResolver;

/// The host's version, for example 2013.04; 0.0 when the host reports none.
extern double rbversion_rbversion;

/// The class layout that the host reads: 9 to 13.
extern int CurrentREALControlVersion;

// The versions at which services or records changed.
constexpr double hostWithStringEncodings = 2012.0; ///< strings are built with an encoding, text comes as data
constexpr double hostWithUTF32 = 2013.0;           ///< the host converts UTF-32 itself
constexpr double hostWithMovingBuffers = 2015.03;  ///< a string's record is no longer read for its UTF-8 text
constexpr double hostWithOpaqueRecords = 2016.0;   ///< strings and arrays are reached through services only
