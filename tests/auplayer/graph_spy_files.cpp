// The spy's platform functions for sound files, URLs and strings.
#include "tests/auplayer/graph_spy_text.h"

#include <Carbon/Carbon.h>

using namespace graph_spy;

#pragma GCC visibility push(default)
extern "C" {

// ---- sound files ----

OSStatus ExtAudioFileOpenURL(CFURLRef url, ExtAudioFileRef* file)
{
    const OSStatus status = spy::record(__func__, url).status;
    if (!status && platform().opensNothing) return spy::give(status, file, ExtAudioFileRef{});
    return spy::giveNew(status, "file", file);
}

OSStatus ExtAudioFileDispose(ExtAudioFileRef file)
{
    const spy::Release releasing(__func__, file);
    const OSStatus status = spy::record(__func__, file).status;
    spy::releaseAll("audio"); // the audio file that the extended audio file wraps
    return status;
}

OSStatus ExtAudioFileGetProperty(ExtAudioFileRef file, ExtAudioFilePropertyID property, UInt32* size,
                                 void* data)
{
    OSStatus status = spy::record(__func__, file, Code{property}, InOut{size}).status;
    switch (property) {
    case 'ffmt':
        return spy::giveProperty(status, paramErr, size, data, platform().file.format);
    case '#frm':
        return spy::giveProperty(status, paramErr, size, data, platform().file.length);
    case 'afil':
        return spy::giveProperty(status, paramErr, size, data, status ? nullptr : spy::make("audio"));
    default:
        return kExtAudioFileError_InvalidProperty;
    }
}

OSStatus ExtAudioFileSetProperty(ExtAudioFileRef file, ExtAudioFilePropertyID property, UInt32 size,
                                 const void* data)
{
    spy::keepValue(data, size);
    return spy::record(__func__, file, Code{property}, Bytes{size}, Value{data, size}).status;
}

OSStatus ExtAudioFileRead(ExtAudioFileRef file, UInt32* frames, AudioBufferList* list)
{
    const OSStatus status = spy::record(__func__, file, *frames, list).status;
    const UInt32 read = platform().file.framesRead.value_or(*frames);
    const AudioBuffer& buffer = list->mBuffers[0];
    if (buffer.mData && platform().file.touchesBuffer) {
        const std::size_t capacity = buffer.mDataByteSize / sizeof(float);
        const std::size_t count = std::min<std::size_t>(capacity, std::size_t{read} * buffer.mNumberChannels);
        for (std::size_t i = 0; i < count; ++i) static_cast<float*>(buffer.mData)[i] = static_cast<float>(i);
    }
    return spy::give(status, frames, read);
}

OSStatus AudioFileGetProperty(AudioFileID file, AudioFilePropertyID property, UInt32* size, void* data)
{
    const OSStatus status = spy::record(__func__, file, Code{property}, InOut{size}).status;
    return spy::giveProperty(status, paramErr, size, data, platform().file.seconds);
}

OSStatus AudioFileClose(AudioFileID file)
{
    const spy::Release releasing(__func__, file);
    return spy::record(__func__, file).status;
}

// ---- URLs and strings ----

CFURLRef CFURLCreateFromFSRef(CFAllocatorRef allocator, const FSRef* reference)
{
    const bool isRefused = spy::record(__func__, allocator, Reference{reference}).status != noErr;
    return isRefused ? nullptr : static_cast<CFURLRef>(spy::make("url"));
}

CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef allocator, CFURLRef url, CFStringRef component,
                                               Boolean isDirectory)
{
    const bool isRefused = spy::record(__func__, allocator, url, component, isDirectory).status != noErr;
    return isRefused ? nullptr : static_cast<CFURLRef>(spy::make("url"));
}

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef allocator, const UniChar* units, CFIndex count)
{
    const bool isRefused = spy::record(__func__, allocator, Characters{units, count}, count).status != noErr;
    return isRefused ? nullptr : static_cast<CFStringRef>(spy::make("string"));
}

CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef allocator, CFIndex longest, CFStringRef text)
{
    const bool isRefused = spy::record(__func__, allocator, longest, text).status != noErr;
    return isRefused ? nullptr : static_cast<CFMutableStringRef>(spy::make("string"));
}

void CFStringNormalize(CFMutableStringRef text, CFStringNormalizationForm form)
{
    spy::record(__func__, text, form);
}

void CFRelease(CFTypeRef object)
{
    const spy::Release releasing(__func__, object);
    spy::record(__func__, object);
}

} // extern "C"
#pragma GCC visibility pop
