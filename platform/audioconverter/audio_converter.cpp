// The public calls: find the converter, let nothing be thrown across the border.
#include "platform/audioconverter/converter.h"

#include <Carbon/Carbon.h>

#include <new>

namespace kvxplatform::audioconverter {
namespace {

/// Keeps a second call out while one is filling or changing a converter, be it from the input procedure.
class Turn {
public:
    explicit Turn(Converter& c) : converter(c), isOurs(!c.isBusy.exchange(true, std::memory_order_acquire)) {}
    ~Turn()
    {
        if (isOurs) converter.isBusy.store(false, std::memory_order_release);
    }
    Turn(const Turn&) = delete;
    explicit operator bool() const { return isOurs; }

private:
    Converter& converter;
    const bool isOurs;
};

/// `call` over the converter behind a handle, alone.
template <class Call>
OSStatus alone(AudioConverterRef handle, Call call)
{
    const Converters::Use converter = use(handle);
    if (!converter) return paramErr;
    const Turn turn(*converter);
    if (!turn) return kAudioConverterErr_OperationNotSupported;
    try {
        return call(*converter);
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}

OSStatus create(const AudioStreamBasicDescription& source, const AudioStreamBasicDescription& destination,
                AudioConverterRef& out)
{
    try {
        auto converter = std::make_unique<Converter>(source, destination);
        if (const OSStatus status = prepare(*converter)) return status;
        out = add(std::move(converter));
        return out ? noErr : memFullErr;
    } catch (...) {
        return memFullErr;
    }
}

} // namespace
} // namespace kvxplatform::audioconverter

namespace audioconverter = kvxplatform::audioconverter;
using audioconverter::Converter;

OSStatus AudioConverterNew(const AudioStreamBasicDescription* source,
                           const AudioStreamBasicDescription* destination, AudioConverterRef* out)
{
    if (!out) return paramErr;
    *out = nullptr;
    return source && destination ? audioconverter::create(*source, *destination, *out) : paramErr;
}

OSStatus AudioConverterDispose(AudioConverterRef converter)
{
    return audioconverter::dispose(converter) ? noErr : paramErr;
}

OSStatus AudioConverterReset(AudioConverterRef converter)
{
    return audioconverter::alone(converter, [](Converter& c) {
        audioconverter::reset(c);
        return noErr;
    });
}

OSStatus AudioConverterGetPropertyInfo(AudioConverterRef converter, AudioConverterPropertyID property,
                                       UInt32* size, Boolean* isWritable)
{
    const auto found = audioconverter::use(converter);
    return found ? audioconverter::getPropertyInfo(*found, property, size, isWritable) : paramErr;
}

OSStatus AudioConverterGetProperty(AudioConverterRef converter, AudioConverterPropertyID property,
                                   UInt32* size, void* data)
{
    const auto found = audioconverter::use(converter);
    if (!found || !size || !data) return paramErr;
    try {
        return audioconverter::getProperty(*found, property, *size, data);
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}

OSStatus AudioConverterSetProperty(AudioConverterRef converter, AudioConverterPropertyID property,
                                   UInt32 size, const void* data)
{
    if (!data) return paramErr;
    return audioconverter::alone(
        converter, [&](Converter& c) { return audioconverter::setProperty(c, property, size, data); });
}

OSStatus AudioConverterFillComplexBuffer(AudioConverterRef converter,
                                         AudioConverterComplexInputDataProc input, void* context,
                                         UInt32* packets, AudioBufferList* out, AudioStreamPacketDescription*)
{
    if (!input || !packets || !out) return paramErr;
    return audioconverter::alone(
        converter, [&](Converter& c) { return audioconverter::fill(c, input, context, *packets, *out); });
}
