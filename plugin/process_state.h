// Values that the library writes once, when the host loads the library, and only reads afterwards.
#pragma once

#include "abi/entry_point.h"
#include "abi/word.h"

/// Host function that looks up host services by name; null until the host calls REALPluginMain.
extern REALResolver gResolver;

/// Version of the host, for example 2013.04; 0.0 if the host does not report a version.
extern double rbversion_rbversion;

/// Class-definition layout that the host reads: 9 to 13.
extern int CurrentREALControlVersion;

/// First host version that builds a string together with its encoding and returns string data in an encoding.
constexpr double hostWithStringEncodings = 2012.0;
/// First host version that converts UTF-32 text.
constexpr double hostWithUTF32 = 2013.0;
/// First host version in which the plug-in must not read UTF-8 text from the string's structure.
constexpr double hostWithMovingBuffers = 2015.03;
/// First host version that allows access to strings and arrays through host services only.
constexpr double hostWithOpaqueRecords = 2016.0;
