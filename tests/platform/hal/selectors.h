// Every selector of the platform, with the kind of its value.
#pragma once

#include <CoreAudio/CoreAudio.h>

#include <vector>

namespace haltest {

enum class Kind {
    word,        ///< UInt32, AudioObjectID, AudioClassID, OSStatus
    single,      ///< Float32
    real,        ///< Float64
    string,      ///< CFStringRef that the caller releases
    text,        ///< characters with a terminating zero
    words,       ///< UInt32[]
    range,       ///< AudioValueRange
    ranges,      ///< AudioValueRange[]
    format,      ///< AudioStreamBasicDescription
    formats,     ///< AudioStreamBasicDescription[]
    ranged,      ///< AudioStreamRangedDescription[]
    translation, ///< AudioValueTranslation
    record,      ///< another record
};

struct Selector {
    AudioObjectPropertySelector code;
    Kind kind;
};

/// Some selectors are in more than one list.
extern const std::vector<Selector> systemSelectors, deviceSelectors, streamSelectors;

} // namespace haltest
