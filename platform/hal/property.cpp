#include "platform/hal/property.h"

#include "platform/hal/device_changes.h"
#include "platform/hal/listeners.h"

#include <algorithm>
#include <exception>

namespace kvxplatform::hal {

namespace {

struct Object {
    AudioObjectID id;
    DeviceRef device;
    bool isStream;
    bool isInput; ///< of a stream
};

/// How each interface calls an object that is not there.
struct Interface {
    OSStatus badObject;
};
constexpr Interface byAddress = {kAudioHardwareBadObjectError};
constexpr Interface ofDevices = {kAudioHardwareBadDeviceError};
constexpr Interface ofStreams = {kAudioHardwareBadStreamError};

bool findObject(AudioObjectID id, Object& object)
{
    object = {id, nullptr, false, false};
    if (id == kAudioObjectSystemObject) return true;
    if ((object.device = findDevice(id))) return true;
    const StreamRef stream = findStream(id);
    object.device = stream.device;
    object.isStream = stream.device != nullptr;
    object.isInput = stream.isInput;
    return object.isStream;
}

const Property* findIn(PropertyTable table, AudioObjectPropertySelector selector)
{
    const Property* end = table.first + table.count;
    const Property* row =
        std::find_if(table.first, end, [selector](const Property& p) { return p.selector == selector; });
    return row == end ? nullptr : row;
}

const Property* findRow(const Object& object, AudioObjectPropertySelector selector)
{
    if (!object.device) return findIn(systemProperties(), selector);
    if (object.isStream) return findIn(streamProperties(), selector);
    const Property* row = findIn(deviceProperties(), selector);
    if (!row) row = findIn(levelProperties(), selector);
    return row || !object.device->isSimulated ? row : findIn(sourceProperties(), selector);
}

bool isKnownScope(AudioObjectPropertyScope scope)
{
    return scope == kAudioObjectPropertyScopeGlobal || scope == kAudioDevicePropertyScopeInput ||
           scope == kAudioDevicePropertyScopeOutput;
}

/// A global question about one side is about the output, if there is one.
bool isInputSide(const Object& object, AudioObjectPropertyScope scope)
{
    if (object.isStream) return object.isInput;
    if (scope != kAudioObjectPropertyScopeGlobal || !object.device)
        return scope == kAudioDevicePropertyScopeInput;
    return object.device->settings.outputChannels == 0;
}

bool hasSide(const Property& row, const Request& request)
{
    switch (row.side) {
    case Side::present:
        return request.channels() > 0;
    case Side::output:
        return !request.isInput && request.channels() > 0;
    default:
        return true;
    }
}

bool hasElement(const Property& row, UInt32 channels, AudioObjectPropertyElement element)
{
    if (element == kAudioObjectPropertyElementMaster) return row.elements != Elements::channels;
    return row.elements != Elements::master && element <= channels;
}

/// A question that the table can answer. Called with the tree's lock held.
struct Question {
    OSStatus status = noErr;
    const Property* row = nullptr;
    Request request = {};
};

Question ask(const Object& object, const AudioObjectPropertyAddress& address, UInt32 qualifierSize,
             const void* qualifier)
{
    Question question;
    question.status = kAudioHardwareUnknownPropertyError;
    const Property* row = findRow(object, address.mSelector);
    if (!row || !isKnownScope(address.mScope)) return question;
    Request& request = question.request;
    request = {object.id,         object.device,    isInputSide(object, address.mScope),
               address.mSelector, address.mElement, qualifier,
               qualifierSize};
    const UInt32 channels = object.device ? request.channels() : 0;
    if (!hasSide(*row, request)) return question;
    if (!hasElement(*row, channels, address.mElement)) return question;
    question.row = row;
    question.status = noErr;
    return question;
}

/// Run `use` on the question with the tree's lock held. Hardware's rates are found out before, without it:
/// that may open the device.
template <class Use>
OSStatus answer(AudioObjectID id, const Interface& interface, const AudioObjectPropertyAddress* address,
                UInt32 qualifierSize, const void* qualifier, Use use)
{
    Object object;
    if (!findObject(id, object)) return interface.badObject;
    if (!address) return kAudioHardwareIllegalOperationError;
    if (object.device) learnRates(object.device, address->mSelector);
    const std::lock_guard<std::mutex> lock(treeLock());
    const Question question = ask(object, *address, qualifierSize, qualifier);
    return question.status == noErr ? use(*question.row, question.request) : question.status;
}

/// The size of a value: stated, or found by reading it. References are never read for their size.
OSStatus sizeOf(const Property& row, const Request& request, UInt32& size)
{
    size = row.size;
    if (row.extent == Extent::one) return noErr;
    Bytes value;
    const OSStatus status = row.get(request, value);
    size = static_cast<UInt32>(value.size());
    return status;
}

/// The whole value, or as many whole items of a list as fit.
OSStatus copyOut(const Property& row, const Bytes& value, UInt32& size, void* data)
{
    if (row.extent != Extent::many && size < value.size()) return kAudioHardwareBadPropertySizeError;
    const UInt32 fitting = std::min(size, static_cast<UInt32>(value.size()));
    size = row.extent == Extent::many ? fitting / row.size * row.size : fitting;
    if (size) std::memcpy(data, value.data(), size);
    return noErr;
}

OSStatus getValue(AudioObjectID id, const Interface& interface, const AudioObjectPropertyAddress& address,
                  UInt32 qualifierSize, const void* qualifier, UInt32* ioSize, void* data)
try {
    return answer(id, interface, &address, qualifierSize, qualifier,
                  [&](const Property& row, const Request& request) {
                      if (!ioSize || (!data && *ioSize)) return OSStatus{kAudioHardwareIllegalOperationError};
                      if (row.extent == Extent::one && *ioSize < row.size)
                          return OSStatus{kAudioHardwareBadPropertySizeError};
                      // One value may be a question as well: a format, a translation.
                      const auto* bytes = static_cast<const char*>(data);
                      Bytes value(bytes, bytes + (row.extent == Extent::one ? row.size : 0));
                      const OSStatus status = row.get(request, value);
                      return status == noErr ? copyOut(row, value, *ioSize, data) : status;
                  });
} catch (const std::exception&) {
    return kAudioHardwareUnspecifiedError;
}

OSStatus getInfo(AudioObjectID id, const Interface& interface, const AudioObjectPropertyAddress& address,
                 UInt32 qualifierSize, const void* qualifier, UInt32* outSize, Boolean* outWritable)
try {
    return answer(id, interface, &address, qualifierSize, qualifier,
                  [&](const Property& row, const Request& request) {
                      if (outWritable) *outWritable = row.set != nullptr;
                      return outSize ? sizeOf(row, request, *outSize) : OSStatus{noErr};
                  });
} catch (const std::exception&) {
    return kAudioHardwareUnspecifiedError;
}

/// Where a change is told: at the side that the property is about, however it was asked for.
AudioObjectPropertyScope placeOf(const Object& object, AudioObjectPropertySelector selector, bool isInput)
{
    const Property* row = findRow(object, selector);
    if (!row || !object.device || object.isStream || row->side == Side::none)
        return kAudioObjectPropertyScopeGlobal;
    return row->side == Side::output ? AudioObjectPropertyScope{kAudioDevicePropertyScopeOutput}
                                     : placeOfSide(*object.device, isInput);
}

/// A setting that was made, and what it makes necessary.
struct Made {
    Settings before, after; ///< of the device; alike for the system object
    bool isInput = false;
    Consequences consequences;
};

OSStatus carryOut(const Object& object, AudioObjectPropertyElement element, const Made& made)
{
    const Consequences& consequences = made.consequences;
    if (differ(made.before, made.after)) {
        if (const OSStatus status = applySettings(object.device); status != noErr) return status;
        tellChanges(*object.device, made.before, made.after);
    }
    if (consequences.hasNewLevels) applyLevels(object.device);
    for (auto selector : consequences.changed)
        postChange(object.id, selector, placeOf(object, selector, made.isInput), element);
    for (auto selector : consequences.changedOfStream)
        postChange(made.isInput ? object.device->inputStream : object.device->outputStream, selector);
    return noErr;
}

/// Have the row take the value, and note what comes of it.
OSStatus make(const Property& row, const Request& request, const Bytes& value, Made& made)
{
    made.isInput = request.isInput;
    if (!request.device) return row.set(request, value, made.consequences);
    made.before = request.device->settings;
    const OSStatus status = row.set(request, value, made.consequences);
    made.after = request.device->settings;
    return status;
}

OSStatus setValue(AudioObjectID id, const Interface& interface, const AudioObjectPropertyAddress& address,
                  UInt32 qualifierSize, const void* qualifier, UInt32 size, const void* data)
try {
    Made made;
    const OSStatus status = answer(id, interface, &address, qualifierSize, qualifier,
                                   [&](const Property& row, const Request& request) {
                                       if (!row.set) return OSStatus{kAudioHardwareUnsupportedOperationError};
                                       if (size != row.size)
                                           return OSStatus{kAudioHardwareBadPropertySizeError};
                                       if (!data) return OSStatus{kAudioHardwareIllegalOperationError};
                                       const auto* bytes = static_cast<const char*>(data);
                                       return make(row, request, Bytes(bytes, bytes + size), made);
                                   });
    if (status != noErr) return status;
    Object object;
    if (!findObject(id, object)) return noErr; // it went meanwhile
    return carryOut(object, address.mElement, made);
} catch (const std::exception&) {
    return kAudioHardwareUnspecifiedError;
}

AudioObjectPropertyAddress addressOfDevice(UInt32 channel, Boolean isInput, AudioDevicePropertyID selector)
{
    const AudioObjectPropertyScope scope =
        isInput ? AudioObjectPropertyScope{kAudioDevicePropertyScopeInput} : kAudioDevicePropertyScopeOutput;
    return {selector, scope, channel};
}

AudioObjectPropertyAddress addressOf(AudioObjectPropertySelector selector, UInt32 element = 0)
{
    return {selector, kAudioObjectPropertyScopeGlobal, element};
}

} // namespace

bool exists(AudioObjectID id)
{
    Object object;
    return findObject(id, object);
}

OSStatus putCFString(Bytes& value, const std::string& text)
{
    CFStringRef string = CFStringCreateWithCString(nullptr, text.c_str(), kCFStringEncodingUTF8);
    // Hardware may call itself by bytes that are no UTF-8; every byte is some Latin letter.
    if (!string) string = CFStringCreateWithCString(nullptr, text.c_str(), kCFStringEncodingISOLatin1);
    return put(value, string);
}

OSStatus putText(Bytes& value, const std::string& text)
{
    value.assign(text.c_str(), text.c_str() + text.size() + 1);
    return noErr;
}

std::vector<AudioObjectID> ofClasses(const Request& request, AudioClassID theirs,
                                     std::vector<AudioObjectID> objects)
{
    std::vector<AudioClassID> wanted(request.qualifier ? request.qualifierSize / sizeof(AudioClassID) : 0);
    if (wanted.empty()) return objects;
    std::memcpy(wanted.data(), request.qualifier, wanted.size() * sizeof(AudioClassID));
    const auto isTheirs = [theirs](AudioClassID id) { return id == theirs || id == kAudioObjectClassID; };
    if (std::any_of(wanted.begin(), wanted.end(), isTheirs)) return objects;
    return {};
}

} // namespace kvxplatform::hal

using namespace kvxplatform::hal;

// ---- by address ----

OSStatus AudioObjectGetPropertyDataSize(AudioObjectID id, const AudioObjectPropertyAddress* address,
                                        UInt32 qualifierSize, const void* qualifier, UInt32* outSize)
{
    if (!address || !outSize) return kAudioHardwareIllegalOperationError;
    return getInfo(id, byAddress, *address, qualifierSize, qualifier, outSize, nullptr);
}

OSStatus AudioObjectGetPropertyData(AudioObjectID id, const AudioObjectPropertyAddress* address,
                                    UInt32 qualifierSize, const void* qualifier, UInt32* ioSize, void* data)
{
    if (!address) return kAudioHardwareIllegalOperationError;
    return getValue(id, byAddress, *address, qualifierSize, qualifier, ioSize, data);
}

OSStatus AudioObjectSetPropertyData(AudioObjectID id, const AudioObjectPropertyAddress* address,
                                    UInt32 qualifierSize, const void* qualifier, UInt32 size,
                                    const void* data)
{
    if (!address) return kAudioHardwareIllegalOperationError;
    return setValue(id, byAddress, *address, qualifierSize, qualifier, size, data);
}

Boolean AudioObjectHasProperty(AudioObjectID id, const AudioObjectPropertyAddress* address)
{
    return address && getInfo(id, byAddress, *address, 0, nullptr, nullptr, nullptr) == noErr;
}

OSStatus AudioObjectIsPropertySettable(AudioObjectID id, const AudioObjectPropertyAddress* address,
                                       Boolean* outSettable)
{
    if (!address || !outSettable) return kAudioHardwareIllegalOperationError;
    return getInfo(id, byAddress, *address, 0, nullptr, nullptr, outSettable);
}

void AudioObjectShow(AudioObjectID id)
{
    Object object;
    if (!findObject(id, object))
        std::printf("AudioObjectID: %u (none)\n", static_cast<unsigned>(id));
    else
        std::printf("AudioObjectID: %u (%s)\n", static_cast<unsigned>(id),
                    !object.device    ? "system"
                    : object.isStream ? "stream"
                                      : object.device->name.c_str());
}

// ---- by target ----

OSStatus AudioHardwareGetPropertyInfo(AudioHardwarePropertyID selector, UInt32* outSize, Boolean* outWritable)
{
    return getInfo(kAudioObjectSystemObject, byAddress, addressOf(selector), 0, nullptr, outSize,
                   outWritable);
}

OSStatus AudioHardwareGetProperty(AudioHardwarePropertyID selector, UInt32* ioSize, void* data)
{
    return getValue(kAudioObjectSystemObject, byAddress, addressOf(selector), 0, nullptr, ioSize, data);
}

OSStatus AudioHardwareSetProperty(AudioHardwarePropertyID selector, UInt32 size, const void* data)
{
    return setValue(kAudioObjectSystemObject, byAddress, addressOf(selector), 0, nullptr, size, data);
}

OSStatus AudioDeviceGetPropertyInfo(AudioDeviceID device, UInt32 channel, Boolean isInput,
                                    AudioDevicePropertyID selector, UInt32* outSize, Boolean* outWritable)
{
    if (!findDevice(device)) return kAudioHardwareBadDeviceError;
    return getInfo(device, ofDevices, addressOfDevice(channel, isInput, selector), 0, nullptr, outSize,
                   outWritable);
}

OSStatus AudioDeviceGetProperty(AudioDeviceID device, UInt32 channel, Boolean isInput,
                                AudioDevicePropertyID selector, UInt32* ioSize, void* data)
{
    if (!findDevice(device)) return kAudioHardwareBadDeviceError;
    return getValue(device, ofDevices, addressOfDevice(channel, isInput, selector), 0, nullptr, ioSize, data);
}

OSStatus AudioDeviceSetProperty(AudioDeviceID device, const AudioTimeStamp*, UInt32 channel, Boolean isInput,
                                AudioDevicePropertyID selector, UInt32 size, const void* data)
{
    if (!findDevice(device)) return kAudioHardwareBadDeviceError;
    return setValue(device, ofDevices, addressOfDevice(channel, isInput, selector), 0, nullptr, size, data);
}

OSStatus AudioStreamGetPropertyInfo(AudioStreamID stream, UInt32 channel, AudioDevicePropertyID selector,
                                    UInt32* outSize, Boolean* outWritable)
{
    if (!findStream(stream).device) return kAudioHardwareBadStreamError;
    return getInfo(stream, ofStreams, addressOf(selector, channel), 0, nullptr, outSize, outWritable);
}

OSStatus AudioStreamGetProperty(AudioStreamID stream, UInt32 channel, AudioDevicePropertyID selector,
                                UInt32* ioSize, void* data)
{
    if (!findStream(stream).device) return kAudioHardwareBadStreamError;
    return getValue(stream, ofStreams, addressOf(selector, channel), 0, nullptr, ioSize, data);
}

OSStatus AudioStreamSetProperty(AudioStreamID stream, const AudioTimeStamp*, UInt32 channel,
                                AudioDevicePropertyID selector, UInt32 size, const void* data)
{
    if (!findStream(stream).device) return kAudioHardwareBadStreamError;
    return setValue(stream, ofStreams, addressOf(selector, channel), 0, nullptr, size, data);
}
