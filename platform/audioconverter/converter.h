// A converter, and what can be done with it.
#pragma once

#include "platform/pcm/buffers.h"
#include "platform/pcm/conversion.h"
#include "platform/pcm/conversion_quality.h"
#include "platform/support/handle_table.h"

#include <AudioToolbox/AudioConverter.h>

#include <atomic>
#include <memory>
#include <optional>

namespace kvxplatform::audioconverter {

/// What a caller may choose.
struct Choices {
    pcm::ConversionQuality quality;
    std::optional<pcm::ChannelMap> map; // as it was set; else by the rule for channel counts
};

struct Converter {
    Converter(const AudioStreamBasicDescription& from, const AudioStreamBasicDescription& to);
    Converter(const Converter&) = delete;
    ~Converter();

    const AudioStreamBasicDescription source, destination;
    AudioConverterRef self = nullptr;
    std::atomic<bool> isBusy{false};     // filling, or being changed
    std::atomic<bool> isDisposed{false}; // its input procedure is asked no more

    Choices choices;
    std::unique_ptr<pcm::Conversion> conversion;

    pcm::ListStorage input;        // what the input procedure gave last, where it says
    UInt32 keptFrom = 0, kept = 0; // frames of it that have not been used
    bool hasEnded = false;         // it said that nothing more comes
};

using Converters = HandleTable<Converter, 2>;

/// A converter's handle; null when there are too many. Throws std::bad_alloc. Thread [any].
AudioConverterRef add(std::unique_ptr<Converter> converter);

/// The converter behind a handle, whole for as long as this lives. Thread [any], [audio] too.
Converters::Use use(AudioConverterRef handle);

/// False for a handle that names none. A fill that runs keeps what it needs. Thread [any].
bool dispose(AudioConverterRef handle);

/// Make `out` ready for the formats. Errors as AudioConverterNew. Throws std::bad_alloc.
OSStatus prepare(Converter& out);

/// Forget the past.
void reset(Converter& converter);

OSStatus fill(Converter& converter, AudioConverterComplexInputDataProc input, void* context, UInt32& frames,
              AudioBufferList& out);

OSStatus getPropertyInfo(const Converter& converter, AudioConverterPropertyID id, UInt32* size,
                         Boolean* isWritable);
OSStatus getProperty(const Converter& converter, AudioConverterPropertyID id, UInt32& size, void* data);
OSStatus setProperty(Converter& converter, AudioConverterPropertyID id, UInt32 size, const void* data);

} // namespace kvxplatform::audioconverter
