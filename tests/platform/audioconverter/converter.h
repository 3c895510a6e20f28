// A converter that is disposed by its destructor, and an input procedure that reads from memory.
#pragma once

#include "tests/platform/audiounit/unit.h"

#include <AudioToolbox/AudioConverter.h>

#include <vector>

namespace test {

class Converter {
public:
    Converter(const AudioStreamBasicDescription& from, const AudioStreamBasicDescription& to)
        : status(AudioConverterNew(&from, &to, &converter))
    {
    }
    ~Converter()
    {
        if (converter) AudioConverterDispose(converter);
    }
    Converter(const Converter&) = delete;
    operator AudioConverterRef() const { return converter; }
    AudioConverterRef release()
    {
        const AudioConverterRef released = converter;
        converter = nullptr;
        return released;
    }

    template <class T>
    OSStatus set(AudioConverterPropertyID id, const T& value) const
    {
        return AudioConverterSetProperty(converter, id, sizeof value, &value);
    }
    template <class T>
    T get(AudioConverterPropertyID id) const
    {
        T value{};
        UInt32 size = sizeof value;
        AudioConverterGetProperty(converter, id, &size, &value);
        return value;
    }

private:
    AudioConverterRef converter = nullptr;

public:
    const OSStatus status;
};

/// Input frames in memory. The procedure supplies up to `most` frames per call.
struct Sound {
    AudioStreamBasicDescription format;
    std::vector<std::vector<unsigned char>> buffers;
    UInt32 frames;
    UInt32 most = ~UInt32{0};
    UInt32 at = 0;

    static OSStatus procedure(AudioConverterRef, UInt32* packets, AudioBufferList* list,
                              AudioStreamPacketDescription**, void* sound);
};

/// Make an input of interleaved 32-bit float.
Sound soundOf(Float64 rate, UInt32 channels, const std::vector<float>& samples);

/// Fill `list` with up to `frames` frames. Returns the number of frames made.
UInt32 fill(AudioConverterRef converter, AudioConverterComplexInputDataProc procedure, void* context,
            UInt32 frames, List& list, OSStatus expected = noErr);

/// Get the whole output as interleaved 32-bit float, filled `atATime` frames per call.
std::vector<float> drained(AudioConverterRef converter, Sound& sound, UInt32 channels, UInt32 atATime);

} // namespace test
