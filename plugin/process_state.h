// Values that are written once, when the host loads the library, and only read afterwards.
#pragma once

#include "abi/entry_point.h"
#include "abi/word.h"

/// Looks up host services; null before the host calls REALPluginMain.
extern REALResolver gResolver;

/// The host's version, for example 2013.04; 0.0 if the host does not report one.
extern double rbversion_rbversion;

/// The layout of class definitions that the host reads: 9 to 13.
extern int CurrentREALControlVersion;

// Host versions that changed services or records.
constexpr double hostWithStringEncodings = 2012.0; ///< strings are built with an encoding and read as data
constexpr double hostWithUTF32 = 2013.0;           ///< the host converts UTF-32
constexpr double hostWithMovingBuffers = 2015.03;  ///< UTF-8 text is no longer read from a string's record
constexpr double hostWithOpaqueRecords = 2016.0;   ///< strings and arrays are accessed by services only
