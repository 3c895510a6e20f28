// The data sources of a simulated device, and their names. The current source determines the stream's
// terminal type.
#include "platform/hal/property_tables.h"

#include <iterator>

namespace kvxplatform::hal {

namespace {

struct Source {
    UInt32 code;
    bool isInput;
    const char* name;
};
constexpr Source sources[] = {
    {'spkr', false, "Simulated Speakers"},
    {'hdpn', false, "Simulated Headphones"},
    {'imic', true, "Simulated Microphone"},
};
constexpr UInt32 onlyInput = 'imic';

const Source* findSource(UInt32 code, bool isInput)
{
    for (const Source& row : sources)
        if (row.code == code && row.isInput == isInput) return &row;
    return nullptr;
}

UInt32 currentSource(const Request& r) { return r.isInput ? onlyInput : r.device->outputSource; }

OSStatus getSource(const Request& r, Bytes& value) { return put(value, currentSource(r)); }

OSStatus getSources(const Request& r, Bytes& value)
{
    std::vector<UInt32> codes;
    for (const Source& row : sources)
        if (row.isInput == r.isInput) codes.push_back(row.code);
    return putAll(value, codes);
}

OSStatus setSource(const Request& r, const Bytes& value, Consequences& consequences)
{
    const auto code = as<UInt32>(value);
    if (!findSource(code, r.isInput)) return kAudioHardwareIllegalOperationError;
    if (code == currentSource(r)) return noErr;
    r.device->outputSource = code; // only the output stores its source, because the input has just one source
    consequences.changed = {kAudioDevicePropertyDataSource};
    consequences.changedOfStream = {kAudioStreamPropertyTerminalType};
    return noErr;
}

/// Write the name of a data source to the memory that the caller's translation names.
OSStatus getSourceName(const Request& r, Bytes& value)
{
    const auto translation = as<AudioValueTranslation>(value);
    if (!translation.mInputData || translation.mInputDataSize != sizeof(UInt32) || !translation.mOutputData)
        return kAudioHardwareBadPropertySizeError;
    UInt32 code;
    std::memcpy(&code, translation.mInputData, sizeof code);
    const Source* source = findSource(code, r.isInput);
    if (!source) return kAudioHardwareIllegalOperationError;
    const char* name = source->name;
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
    {kAudioDevicePropertyDataSources,                 present, master,  many,   word,        getSources,    nullptr},
    {kAudioDevicePropertyDataSourceNameForID,         present, master,  single, translation, getSourceName, nullptr},
    {kAudioDevicePropertyDataSourceNameForIDCFString, present, master,  single, translation, getSourceName, nullptr},
};
// clang-format on

} // namespace

PropertyTable sourceProperties() { return {rows, std::size(rows)}; }

} // namespace kvxplatform::hal
