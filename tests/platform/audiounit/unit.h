// Test tools: a unit that its destructor closes, stream formats, buffer lists with memory.
#pragma once

#include <AudioUnit/AudioUnit.h>
#include <Carbon/Carbon.h>
#include <CoreAudio/CoreAudio.h>

#include <cstdint>
#include <vector>

namespace test {

class Unit {
public:
    explicit Unit(OSType subType, OSType type = 'auou') : unit(OpenDefaultComponent(type, subType)) {}
    ~Unit() { close(); }
    Unit(const Unit&) = delete;
    operator AudioUnit() const { return unit; }
    OSErr close()
    {
        const OSErr status = unit ? CloseComponent(unit) : static_cast<OSErr>(noErr);
        unit = nullptr;
        return status;
    }

    template <class T>
    OSStatus set(AudioUnitPropertyID id, AudioUnitScope scope, AudioUnitElement element, const T& value) const
    {
        return AudioUnitSetProperty(unit, id, scope, element, &value, sizeof value);
    }
    /// Get a property's value. After an error, returns zero and stores the error in `status`.
    template <class T>
    T get(AudioUnitPropertyID id, AudioUnitScope scope, AudioUnitElement element,
          OSStatus* status = nullptr) const
    {
        T value{};
        UInt32 size = sizeof value;
        const OSStatus result = AudioUnitGetProperty(unit, id, scope, element, &value, &size);
        if (status) *status = result;
        return result ? T{} : value;
    }
    OSStatus setFormat(AudioUnitScope scope, const AudioStreamBasicDescription& format,
                       AudioUnitElement element = 0) const
    {
        return set(kAudioUnitProperty_StreamFormat, scope, element, format);
    }
    OSStatus setLimit(UInt32 frames) const
    {
        return set(kAudioUnitProperty_MaximumFramesPerSlice, 0, 0, frames);
    }
    OSStatus setCallback(AURenderCallback function, void* context, AudioUnitElement bus = 0) const
    {
        return set(kAudioUnitProperty_SetRenderCallback, 1, bus, AURenderCallbackStruct{function, context});
    }

private:
    AudioUnit unit;
};

// Flags of a linear PCM format.
constexpr UInt32 isFloat = 1, isBig = 2, isSigned = 4, isPacked = 8, isHigh = 16, isNonInterleaved = 32;

/// Returns  a linear PCM format with `bits` bits per sample in `bytes` bytes (0: as few bytes as possible).
AudioStreamBasicDescription pcm(Float64 rate, UInt32 channels, UInt32 bits, UInt32 flags, UInt32 bytes = 0);

/// Returns  the format in which units work: 32-bit float, one buffer per channel.
AudioStreamBasicDescription canonical(Float64 rate, UInt32 channels);

/// Returns  the format of 32-bit float samples in one buffer.
AudioStreamBasicDescription interleaved(Float64 rate, UInt32 channels);

bool operator==(const AudioStreamBasicDescription& a, const AudioStreamBasicDescription& b);

/// A buffer list for a format, with memory filled with 0xEE.
class List {
public:
    List(const AudioStreamBasicDescription& format, UInt32 frames);
    AudioBufferList* operator->() { return &list(); }
    AudioBufferList* get() { return &list(); }
    AudioBufferList& list() { return *reinterpret_cast<AudioBufferList*>(storage.data()); }
    AudioBuffer& operator[](UInt32 buffer) { return list().mBuffers[buffer]; }
    const unsigned char* bytes(UInt32 buffer) const { return memory[buffer].data(); }
    std::vector<unsigned char>& memoryOf(UInt32 buffer) { return memory[buffer]; }
    void clearPointers(); ///< set every mData to NULL and every size to 0
    void restore();       ///< set every mData and every size back to the value after construction

private:
    std::vector<std::uint64_t> storage;
    std::vector<std::vector<unsigned char>> memory;
};

AudioTimeStamp sampleTime(Float64 frames);

} // namespace test
