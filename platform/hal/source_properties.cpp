// Data sources: each side of a simulated device has one, and it can be named.
#include "platform/hal/property.h"

#include <iterator>

namespace kvxplatform::hal {

namespace {

struct SourceName {
    UInt32 source;
    const char* name;
};
constexpr SourceName sourceNames[] = {{'spkr', "Simulated Speakers"}, {'imic', "Simulated Microphone"}};

const char* nameOfSource(UInt32 source)
{
    for (const SourceName& row : sourceNames)
        if (row.source == source) return row.name;
    return nullptr;
}

OSStatus getSource(const Request& r, Bytes& value) { return put(value, r.device->dataSource); }

// There is nothing else to choose.
OSStatus setSource(const Request& r, const Bytes& value, Consequences&)
{
    const bool isOurs = as<UInt32>(value) == r.device->dataSource;
    return isOurs ? OSStatus{noErr} : OSStatus{kAudioHardwareIllegalOperationError};
}

/// A translation from a source to its name, in the caller's memory.
OSStatus getSourceName(const Request& r, Bytes& value)
{
    const auto translation = as<AudioValueTranslation>(value);
    if (!translation.mInputData || translation.mInputDataSize != sizeof(UInt32) || !translation.mOutputData)
        return kAudioHardwareBadPropertySizeError;
    UInt32 source;
    std::memcpy(&source, translation.mInputData, sizeof source);
    const char* name = nameOfSource(source);
    if (source != r.device->dataSource || !name) return kAudioHardwareIllegalOperationError;
    if (r.selector == kAudioDevicePropertyDataSourceNameForIDCFString) {
        if (translation.mOutputDataSize != sizeof(CFStringRef)) return kAudioHardwareBadPropertySizeError;
        CFStringRef string = CFStringCreateWithCString(nullptr, name, kCFStringEncodingUTF8);
        std::memcpy(translation.mOutputData, &string, sizeof string);
        return noErr;
    }
    if (translation.mOutputDataSize <= std::strlen(name)) return kAudioHardwareBadPropertySizeError;
    std::strcpy(static_cast<char*>(translation.mOutputData), name);
    return noErr;
}

constexpr Side present = Side::present;
constexpr Elements master = Elements::master;
constexpr Extent single = Extent::one, many = Extent::many;
constexpr UInt32 word = sizeof(UInt32), translation = sizeof(AudioValueTranslation);

// clang-format off
constexpr Property rows[] = {
    // selector                                       side     elements extent  size         get            set
    {kAudioDevicePropertyDataSource,                  present, master,  single, word,        getSource,     setSource},
    {kAudioDevicePropertyDataSources,                 present, master,  many,   word,        getSource,     nullptr},
    {kAudioDevicePropertyDataSourceNameForID,         present, master,  single, translation, getSourceName, nullptr},
    {kAudioDevicePropertyDataSourceNameForIDCFString, present, master,  single, translation, getSourceName, nullptr},
};
// clang-format on

} // namespace

PropertyTable sourceProperties() { return {rows, std::size(rows)}; }

} // namespace kvxplatform::hal
