// Every selector of the platform, with the kind of the property's value.
#pragma once

#include <CoreAudio/CoreAudio.h>

#include <vector>

namespace haltest {

enum class Kind {
    word,        ///< one UInt32, AudioObjectID, AudioClassID or OSStatus
    single,      ///< one Float32
    real,        ///< one Float64
    string,      ///< one CFStringRef, which the caller releases
    text,        ///< characters with a terminating zero
    words,       ///< an array of UInt32
    range,       ///< one AudioValueRange
    ranges,      ///< an array of AudioValueRange
    format,      ///< one AudioStreamBasicDescription
    formats,     ///< an array of AudioStreamBasicDescription
    ranged,      ///< an array of AudioStreamRangedDescription
    translation, ///< one AudioValueTranslation
    record,      ///< another structure
};

struct Selector {
    AudioObjectPropertySelector code;
    Kind kind;
};

/// The selectors of each kind of object. Some selectors are in several of these lists.
extern const std::vector<Selector> systemSelectors, deviceSelectors, streamSelectors;

} // namespace haltest
