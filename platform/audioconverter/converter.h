// A converter between two linear PCM formats, and the operations on a converter.
#pragma once

#include "platform/pcm/conversion_quality.h"
#include "platform/pcm/pulled_conversion.h"
#include "platform/support/handle_table.h"

#include <AudioToolbox/AudioConverter.h>

#include <atomic>
#include <memory>
#include <optional>

namespace kvxplatform::audioconverter {

/// The properties of a converter that a caller can set.
struct Settings {
    pcm::ConversionQuality quality;
    std::optional<pcm::ChannelMap> map; ///< channel map; if empty, the rule of pcm/channel_map.h applies
};

struct Converter {
    Converter(const AudioStreamBasicDescription& from, const AudioStreamBasicDescription& to);
    Converter(const Converter&) = delete;
    ~Converter();

    const AudioStreamBasicDescription source, destination;
    AudioConverterRef self = nullptr;
    std::atomic<bool> isBusy{false}; ///< true while a fill or a change is in progress
    /// True after disposal; a fill in progress ends after its next input.
    std::atomic<bool> isDisposed{false};

    Settings settings;
    std::unique_ptr<pcm::Conversion> conversion;
    /// Input frames that the conversion reads ahead, copied because getProperty runs without exclusive
    /// access.
    std::atomic<UInt32> lead{0};
    pcm::ListStorage inputList; ///< buffer list that the input procedure fills in
    pcm::PulledInput input;     ///< input frames, in memory that the input procedure owns
};

using Converters = HandleTable<Converter, 2>;

/// Register a converter. Returns its handle; null if the table is full. Throws std::bad_alloc.
/// [any]
AudioConverterRef add(std::unique_ptr<Converter> converter);

/// Find the converter of a handle. The converter is not freed while the result lives.
/// Neither allocates nor locks.
/// [any]
Converters::Use use(AudioConverterRef handle);

/// Withdraw a handle. The converter is freed when the last call that uses the converter ends. Returns false
/// for an unknown handle.
/// [any]
bool dispose(AudioConverterRef handle);

// The functions below need exclusive access to the converter, except getPropertyInfo and getProperty.
// Those without another annotation: [any].

/// Prepare a new converter for its formats. Throws std::bad_alloc.
/// Errors  those of AudioConverterNew.
OSStatus prepare(Converter& converter);

/// Discard unread input and filter history. Neither allocates nor locks.
void reset(Converter& converter);

/// Reset the converter to the state after prepare(). Throws std::bad_alloc, and then nothing has changed.
OSStatus renew(Converter& converter);

/// Fill the caller's buffers, as AudioConverterFillComplexBuffer does. Neither allocates nor locks.
/// [audio]
OSStatus fill(Converter& converter, AudioConverterComplexInputDataProc input, void* context, UInt32& frames,
              AudioBufferList& out);

OSStatus getPropertyInfo(const Converter& converter, AudioConverterPropertyID id, UInt32* size,
                         Boolean* isWritable);
OSStatus getProperty(const Converter& converter, AudioConverterPropertyID id, UInt32& size, void* data);

/// Set a property. A new complexity, quality or channel map resets the converter. Throws std::bad_alloc, and
/// then nothing has changed.
OSStatus setProperty(Converter& converter, AudioConverterPropertyID id, UInt32 size, const void* data);

} // namespace kvxplatform::audioconverter
