#include "platform/audiounit/element_format.h"

#include "platform/pcm/linear_pcm.h"

namespace kvxplatform::audiounit {

OSStatus setFormat(Unit& unit, ElementAddress address, const AudioStreamBasicDescription& format)
{
    const bool isTaken = unit.kind.takesFormat
                             ? unit.kind.takesFormat(unit, address.scope, address.element, format)
                             : pcm::isCanonical(format);
    if (!isTaken) return kAudioUnitErr_FormatNotSupported;
    Element& element = unit.scopes[address.scope].elements[address.element];
    element.format = format;
    element.channels = format.mChannelsPerFrame;
    return noErr;
}

bool takesLinearPCM(const Unit&, AudioUnitScope, AudioUnitElement, const AudioStreamBasicDescription& format)
{
    return pcm::isLinearPCM(format);
}

} // namespace kvxplatform::audiounit
