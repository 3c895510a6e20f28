// A stream format with functions that describe the format and write it as text.
// All functions: [any].
#pragma once

#include <CoreAudio/CoreAudio.h>

namespace auplayer {

/// The platform's stream format record with functions, but without further fields.
struct CAStreamBasicDescription : AudioStreamBasicDescription {
    bool isPCM() const { return mFormatID == kAudioFormatLinearPCM; }
    bool isInterleaved() const { return !isPCM() || !has(kAudioFormatFlagIsNonInterleaved); }
    bool isFloat() const { return isPCM() && has(kAudioFormatFlagIsFloat); }
    bool isNativeEndian() const { return !has(kAudioFormatFlagIsBigEndian); }
    bool isSignedInteger() const { return isPCM() && has(kAudioFormatFlagIsSignedInteger); }

    UInt32 numberInterleavedChannels() const { return isInterleaved() ? mChannelsPerFrame : 1; }
    UInt32 numberChannelStreams() const { return isInterleaved() ? 1 : mChannelsPerFrame; }
    UInt32 numberChannels() const { return mChannelsPerFrame; }

    /// Return the bytes of one sample, or 0 if the frame size or the number of channels is 0.
    UInt32 sampleWordSize() const { return bytesAmong(numberInterleavedChannels()); }

    /// Write one line of text about the format.
    /// Shape   `buffer` must have streamTextBytes bytes; `size` is ignored. A longer text is cut.
    /// Returns `buffer`.
    char* AsString(char* buffer, unsigned long size) const;

private:
    bool has(UInt32 flag) const { return (mFormatFlags & flag) != 0; }
    UInt32 bytesAmong(UInt32 samples) const { return samples ? mBytesPerFrame / samples : 0; }
};

constexpr unsigned long streamTextBytes = 500;

} // namespace auplayer
