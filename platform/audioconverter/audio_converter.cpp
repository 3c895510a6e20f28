// The exported AudioConverter functions.
#include "platform/audioconverter/converter.h"
#include "platform/support/border.h"
#include "platform/support/render_scope.h"

#include <Carbon/Carbon.h>

namespace kvxplatform::audioconverter {
namespace {

/// Exclusive access to a converter. The object is false if another call already has access, for example an
/// outer call on the same thread's stack.
class Exclusive {
public:
    explicit Exclusive(Converter& converter)
        : converter_(converter), isOwner_(!converter.isBusy.exchange(true, std::memory_order_acquire))
    {
    }
    ~Exclusive()
    {
        if (isOwner_) converter_.isBusy.store(false, std::memory_order_release);
    }
    Exclusive(const Exclusive&) = delete;
    explicit operator bool() const { return isOwner_; }

private:
    Converter& converter_;
    const bool isOwner_;
};

/// Call `body` with the converter of a handle. Returns paramErr for an unknown handle.
template <class Body>
OSStatus with(AudioConverterRef handle, Body body)
{
    return withinBorder(memFullErr, [&]() -> OSStatus {
        const Converters::Use converter = use(handle);
        return converter ? body(*converter) : paramErr;
    });
}

/// Call `body` with exclusive access to the converter of a handle. Returns OperationNotSupported if another
/// call has access.
template <class Body>
OSStatus withExclusive(AudioConverterRef handle, Body body)
{
    return with(handle, [&](Converter& converter) -> OSStatus {
        const Exclusive access(converter);
        return access ? body(converter) : kAudioConverterErr_OperationNotSupported;
    });
}

} // namespace
} // namespace kvxplatform::audioconverter

using namespace kvxplatform::audioconverter;

OSStatus AudioConverterNew(const AudioStreamBasicDescription* source,
                           const AudioStreamBasicDescription* destination, AudioConverterRef* out)
{
    if (!out) return paramErr;
    *out = nullptr;
    if (!source || !destination) return paramErr;
    return kvxplatform::withinBorder(memFullErr, [&]() -> OSStatus {
        auto converter = std::make_unique<Converter>(*source, *destination);
        if (const OSStatus status = prepare(*converter)) return status;
        *out = add(std::move(converter));
        return *out ? noErr : memFullErr;
    });
}

OSStatus AudioConverterDispose(AudioConverterRef converter) { return dispose(converter) ? noErr : paramErr; }

OSStatus AudioConverterReset(AudioConverterRef converter)
{
    return withExclusive(converter, [](Converter& c) -> OSStatus {
        if (!kvxplatform::RenderScope::isInsideAny()) return renew(c);
        reset(c);
        return noErr;
    });
}

OSStatus AudioConverterGetPropertyInfo(AudioConverterRef converter, AudioConverterPropertyID property,
                                       UInt32* size, Boolean* isWritable)
{
    return with(converter, [&](Converter& c) { return getPropertyInfo(c, property, size, isWritable); });
}

OSStatus AudioConverterGetProperty(AudioConverterRef converter, AudioConverterPropertyID property,
                                   UInt32* size, void* data)
{
    if (!size || !data) return paramErr;
    return with(converter, [&](Converter& c) { return getProperty(c, property, *size, data); });
}

OSStatus AudioConverterSetProperty(AudioConverterRef converter, AudioConverterPropertyID property,
                                   UInt32 size, const void* data)
{
    if (!data) return paramErr;
    return withExclusive(converter, [&](Converter& c) { return setProperty(c, property, size, data); });
}

OSStatus AudioConverterFillComplexBuffer(AudioConverterRef converter,
                                         AudioConverterComplexInputDataProc input, void* context,
                                         UInt32* packets, AudioBufferList* out, AudioStreamPacketDescription*)
{
    if (!input || !packets || !out) return paramErr;
    return withExclusive(converter, [&](Converter& c) { return fill(c, input, context, *packets, *out); });
}
