// Filling: what is kept is converted first, then more is asked for, until the output is full, the input ends,
// or it has none for now.
#include "platform/audioconverter/converter.h"

#include <Carbon/Carbon.h>

#include <algorithm>

namespace kvxplatform::audioconverter {
namespace {

/// Frames for which every buffer has room; `isWhole` tells whether the list is one of the format.
UInt32 roomOf(const AudioStreamBasicDescription& format, const AudioBufferList& list, bool& isWhole)
{
    isWhole = list.mNumberBuffers == pcm::buffersOf(format);
    UInt32 room = ~UInt32{0};
    for (UInt32 i = 0; isWhole && i < list.mNumberBuffers; ++i) {
        const AudioBuffer& buffer = list.mBuffers[i];
        if (!buffer.mData || buffer.mNumberChannels != pcm::channelsPerBuffer(format)) isWhole = false;
        room = std::min(room, buffer.mDataByteSize / format.mBytesPerFrame);
    }
    return room;
}

class Filling {
public:
    Filling(Converter& c, AudioConverterComplexInputDataProc procedure, void* user, AudioBufferList& list)
        : converter(c), input(procedure), context(user), out(list)
    {
    }

    OSStatus upTo(UInt32 frames)
    {
        OSStatus status = noErr;
        while (made < frames && !status) {
            if (converter.kept) {
                useKept(frames);
            } else if (converter.hasEnded) {
                made += converter.conversion->drain(out, made, frames - made);
                break;
            } else {
                status = ask(converter.conversion->framesFor(frames - made));
            }
        }
        return status;
    }

    UInt32 made = 0;

private:
    void useKept(UInt32 frames)
    {
        const auto piece = converter.conversion->convert(converter.input.list(), converter.keptFrom,
                                                         converter.kept, out, made, frames - made);
        converter.keptFrom += piece.used;
        converter.kept -= piece.used;
        made += piece.made;
    }

    OSStatus ask(UInt32 frames)
    {
        AudioBufferList& list = converter.input.list();
        const UInt32 buffers = pcm::buffersOf(converter.source);
        list.mNumberBuffers = buffers;
        for (UInt32 i = 0; i < buffers; ++i)
            list.mBuffers[i] = {pcm::channelsPerBuffer(converter.source), 0, nullptr};

        UInt32 packets = frames;
        const OSStatus status = input(converter.self, &packets, &list, nullptr, context);
        // Whoever disposes the converter may have taken back the memory, too.
        if (converter.isDisposed) return paramErr;
        converter.keptFrom = 0;
        converter.kept = packets;
        if (!packets && !status) converter.hasEnded = true;
        return status;
    }

    Converter& converter;
    const AudioConverterComplexInputDataProc input;
    void* const context;
    AudioBufferList& out;
};

} // namespace

void reset(Converter& converter)
{
    converter.conversion->reset();
    converter.kept = 0;
    converter.hasEnded = false;
}

OSStatus fill(Converter& converter, AudioConverterComplexInputDataProc input, void* context, UInt32& frames,
              AudioBufferList& out)
{
    bool isWhole = false;
    const UInt32 room = roomOf(converter.destination, out, isWhole);
    if (!isWhole) return paramErr;
    if (frames && !room) return kAudioConverterErr_InvalidOutputSize;

    Filling filling(converter, input, context, out);
    const OSStatus status = filling.upTo(std::min(frames, room));
    frames = filling.made;
    for (UInt32 i = 0; i < out.mNumberBuffers; ++i)
        out.mBuffers[i].mDataByteSize = filling.made * converter.destination.mBytesPerFrame;
    return status;
}

} // namespace kvxplatform::audioconverter
