// Stream formats of a unit's inputs and outputs.
// All functions: [any].
#pragma once

#include "platform/audiounit/property.h"

namespace kvxplatform::audiounit {

/// Set the format of an input or output. The caller holds the `settings` lock.
/// Errors  FormatNotSupported: the unit kind does not accept the format.
OSStatus setFormat(Unit& unit, ElementAddress address, const AudioStreamBasicDescription& format);

/// Whether the format is any linear PCM format. Several unit kinds use this function as their takesFormat.
bool takesLinearPCM(const Unit& unit, AudioUnitScope scope, AudioUnitElement element,
                    const AudioStreamBasicDescription& format);

} // namespace kvxplatform::audiounit
