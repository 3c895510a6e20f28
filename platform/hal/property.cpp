#include "platform/hal/property.h"

#include <algorithm>

namespace kvxplatform::hal {

OSStatus putCFString(Bytes& value, const std::string& text)
{
    CFStringRef string = CFStringCreateWithCString(nullptr, text.c_str(), kCFStringEncodingUTF8);
    // The name of a hardware device may be invalid UTF-8; as Latin-1 text every byte is valid.
    if (!string) string = CFStringCreateWithCString(nullptr, text.c_str(), kCFStringEncodingISOLatin1);
    return put(value, string);
}

OSStatus putText(Bytes& value, const std::string& text)
{
    value.assign(text.c_str(), text.c_str() + text.size() + 1);
    return noErr;
}

std::vector<AudioObjectID> ofClasses(const Request& request, AudioClassID objectClass,
                                     std::vector<AudioObjectID> objects)
{
    std::vector<AudioClassID> classes(request.qualifier ? request.qualifierSize / sizeof(AudioClassID) : 0);
    if (classes.empty()) return objects;
    std::memcpy(classes.data(), request.qualifier, classes.size() * sizeof(AudioClassID));
    const auto includes = [=](AudioClassID id) { return id == objectClass || id == kAudioObjectClassID; };
    if (std::any_of(classes.begin(), classes.end(), includes)) return objects;
    return {};
}

} // namespace kvxplatform::hal
