// A stream format, asked and told.
#pragma once

#include <CoreAudio/CoreAudio.h>

namespace auplayer {

/// The platform's record of a stream format with questions added; nothing is stored beside it.
/// Thread [any].
struct CAStreamBasicDescription : AudioStreamBasicDescription {
    bool isPCM() const { return mFormatID == kAudioFormatLinearPCM; }
    bool isInterleaved() const { return !isPCM() || !has(kAudioFormatFlagIsNonInterleaved); }
    bool isFloat() const { return isPCM() && has(kAudioFormatFlagIsFloat); }
    bool isNativeEndian() const { return !has(kAudioFormatFlagIsBigEndian); }
    bool isSignedInteger() const { return isPCM() && has(kAudioFormatFlagIsSignedInteger); }

    UInt32 numberInterleavedChannels() const { return isInterleaved() ? mChannelsPerFrame : 1; }
    UInt32 numberChannelStreams() const { return isInterleaved() ? 1 : mChannelsPerFrame; }
    UInt32 numberChannels() const { return mChannelsPerFrame; }

    /// Bytes of one sample; 0 for a format without a frame size or without channels.
    UInt32 sampleWordSize() const { return bytesAmong(numberInterleavedChannels()); }

    /// One line of text about the format.
    /// Shape   `buffer` has room for 500 bytes, whatever `size` says; a longer text is cut.
    /// Returns `buffer`.
    char* AsString(char* buffer, unsigned long size) const;

private:
    bool has(UInt32 flag) const { return (mFormatFlags & flag) != 0; }
    UInt32 bytesAmong(UInt32 samples) const { return samples ? mBytesPerFrame / samples : 0; }
};

constexpr unsigned long streamTextBytes = 500;

} // namespace auplayer
