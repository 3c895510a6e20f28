// Every selector that a program may ask for, with what its value is.
#pragma once

#include <CoreAudio/CoreAudio.h>

#include <vector>

namespace bench {

enum class Kind {
    word,        ///< UInt32, AudioObjectID, AudioClassID, OSStatus
    single,      ///< Float32
    real,        ///< Float64
    string,      ///< CFStringRef, the caller's
    text,        ///< characters and a zero
    words,       ///< UInt32[]
    range,       ///< AudioValueRange
    ranges,      ///< AudioValueRange[]
    format,      ///< AudioStreamBasicDescription
    formats,     ///< AudioStreamBasicDescription[]
    ranged,      ///< AudioStreamRangedDescription[]
    translation, ///< AudioValueTranslation
    record,      ///< some other record
};

struct Selector {
    AudioObjectPropertySelector code;
    Kind kind;
};

/// Those of the system object, of devices and of streams, in this order; some stand in more than one group.
extern const std::vector<Selector> systemSelectors, deviceSelectors, streamSelectors;

} // namespace bench
