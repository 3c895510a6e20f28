// Formats of inputs and outputs.
// All functions: [any].
#pragma once

#include "platform/audiounit/property.h"

namespace kvxplatform::audiounit {

/// Set the format of an input or output. Called with the settings lock.
/// Errors  FormatNotSupported: the unit's kind refuses it.
OSStatus setFormat(Unit& unit, ElementAddress address, const AudioStreamBasicDescription& format);

/// Whether the format is any linear PCM: takesFormat of several kinds.
bool takesLinearPCM(const Unit& unit, AudioUnitScope scope, AudioUnitElement element,
                    const AudioStreamBasicDescription& format);

} // namespace kvxplatform::audiounit
