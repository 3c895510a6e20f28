// Fills the caller's buffers with input frames that the caller's input procedure supplies.
#include "platform/audioconverter/converter.h"

#include <Carbon/Carbon.h>

#include <algorithm>

namespace kvxplatform::audioconverter {

void reset(Converter& converter)
{
    converter.conversion->reset();
    converter.input.reset();
}

OSStatus fill(Converter& converter, AudioConverterComplexInputDataProc procedure, void* context,
              UInt32& frames, AudioBufferList& out)
{
    const std::optional<UInt32> capacity = pcm::capacityOf(converter.destination, out);
    if (!capacity) return paramErr;
    if (frames && !*capacity) return kAudioConverterErr_InvalidOutputSize;

    const auto pull = [&](UInt32 missing) -> OSStatus {
        AudioBufferList& list = converter.inputList.list();
        list.mNumberBuffers = pcm::buffersOf(converter.source);
        for (UInt32 i = 0; i < list.mNumberBuffers; ++i)
            list.mBuffers[i] = {pcm::channelsPerBuffer(converter.source), 0, nullptr};

        UInt32 packets = missing;
        const OSStatus status = procedure(converter.self, &packets, &list, nullptr, context);
        // If the procedure has disposed the converter, the input memory may be freed too.
        if (converter.isDisposed) return paramErr;
        converter.input.first = 0;
        converter.input.count = packets;
        if (!packets && !status) converter.input.hasEnded = true;
        return status;
    };
    UInt32 made = 0;
    const OSStatus status = pcm::convertPulled(*converter.conversion, converter.input, out,
                                               std::min(frames, *capacity), made, pull);
    frames = made;
    for (UInt32 i = 0; i < out.mNumberBuffers; ++i)
        out.mBuffers[i].mDataByteSize = made * converter.destination.mBytesPerFrame;
    return status;
}

} // namespace kvxplatform::audioconverter
