// A converter between two linear PCM formats, and the operations on it.
#pragma once

#include "platform/pcm/conversion_quality.h"
#include "platform/pcm/pulled_conversion.h"
#include "platform/support/handle_table.h"

#include <AudioToolbox/AudioConverter.h>

#include <atomic>
#include <memory>
#include <optional>

namespace kvxplatform::audioconverter {

/// Properties that a caller can set.
struct Settings {
    pcm::ConversionQuality quality;
    std::optional<pcm::ChannelMap> map; ///< empty: the rule of pcm/channel_map.h
};

struct Converter {
    Converter(const AudioStreamBasicDescription& from, const AudioStreamBasicDescription& to);
    Converter(const Converter&) = delete;
    ~Converter();

    const AudioStreamBasicDescription source, destination;
    AudioConverterRef self = nullptr;
    std::atomic<bool> isBusy{false};     ///< a fill or a change is in progress
    std::atomic<bool> isDisposed{false}; ///< a fill in progress ends after its next input

    Settings settings;
    std::unique_ptr<pcm::Conversion> conversion;
    pcm::PulledInput input; ///< from the input procedure, in memory of the caller
};

using Converters = HandleTable<Converter, 2>;

/// Register a converter. Returns its handle; null if the table is full. Throws std::bad_alloc.
/// [any]
AudioConverterRef add(std::unique_ptr<Converter> converter);

/// Find the converter of a handle. It is not freed while the result lives.
/// Neither allocates nor locks.
/// [any]
Converters::Use use(AudioConverterRef handle);

/// Withdraw a handle; the last use of its converter frees it. False for an unknown handle.
/// [any]
bool dispose(AudioConverterRef handle);

// The functions below need the converter to themselves, except getPropertyInfo and getProperty.

/// Prepare a new converter for its formats. Errors as AudioConverterNew. Throws std::bad_alloc.
OSStatus prepare(Converter& converter);

/// Discard input and filter history.
void reset(Converter& converter);

/// As AudioConverterFillComplexBuffer. Neither allocates nor locks.
/// [audio]
OSStatus fill(Converter& converter, AudioConverterComplexInputDataProc input, void* context, UInt32& frames,
              AudioBufferList& out);

OSStatus getPropertyInfo(const Converter& converter, AudioConverterPropertyID id, UInt32* size,
                         Boolean* isWritable);
OSStatus getProperty(const Converter& converter, AudioConverterPropertyID id, UInt32& size, void* data);

/// Setting complexity, quality or map resets the converter. Throws std::bad_alloc and then changes nothing.
OSStatus setProperty(Converter& converter, AudioConverterPropertyID id, UInt32 size, const void* data);

} // namespace kvxplatform::audioconverter
