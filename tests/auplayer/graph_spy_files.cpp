// The spy's platform functions for sound files, URLs and strings.
#include "tests/auplayer/graph_spy_calls.h"

#include <Carbon/Carbon.h>

using namespace graph_spy;

#pragma GCC visibility push(default)
extern "C" {

// ---- sound files ----

OSStatus ExtAudioFileOpenURL(CFURLRef url, ExtAudioFileRef* file)
{
    const OSStatus refusal = note(__func__, static_cast<const void*>(url)).refusal;
    const bool opens = !refusal && !platform().opensNothing;
    return give(refusal, file, opens ? static_cast<ExtAudioFileRef>(make("file")) : nullptr);
}

OSStatus ExtAudioFileDispose(ExtAudioFileRef file)
{
    const Release releasing(__func__, file);
    const OSStatus refusal = note(__func__, static_cast<const void*>(file)).refusal;
    release({"audio"}); // the audio file that the extended audio file wraps
    return refusal;
}

OSStatus ExtAudioFileGetProperty(ExtAudioFileRef file, ExtAudioFilePropertyID property, UInt32* size,
                                 void* data)
{
    OSStatus refusal = note(__func__, static_cast<const void*>(file), Code{property}, InOut{size}).refusal;
    switch (property) {
    case 'ffmt':
        return giveProperty(refusal, size, data, platform().file.format);
    case '#frm':
        return giveProperty(refusal, size, data, platform().file.length);
    case 'afil':
        return giveProperty(refusal, size, data, refusal ? nullptr : make("audio"));
    default:
        return kExtAudioFileError_InvalidProperty;
    }
}

OSStatus ExtAudioFileSetProperty(ExtAudioFileRef file, ExtAudioFilePropertyID property, UInt32 size,
                                 const void* data)
{
    keepValue(data, size);
    return note(__func__, static_cast<const void*>(file), Code{property}, Bytes{size}, Value{data, size})
        .refusal;
}

OSStatus ExtAudioFileRead(ExtAudioFileRef file, UInt32* frames, AudioBufferList* list)
{
    const OSStatus refusal = note(__func__, static_cast<const void*>(file), Number{*frames},
                                  static_cast<const AudioBufferList*>(list))
                                 .refusal;
    const UInt32 read = platform().file.framesRead.value_or(*frames);
    const AudioBuffer& buffer = list->mBuffers[0];
    if (buffer.mData && platform().file.touchesBuffer) {
        const std::size_t capacity = buffer.mDataByteSize / sizeof(float);
        const std::size_t count = std::min<std::size_t>(capacity, std::size_t{read} * buffer.mNumberChannels);
        for (std::size_t i = 0; i < count; ++i) static_cast<float*>(buffer.mData)[i] = static_cast<float>(i);
    }
    return give(refusal, frames, read);
}

OSStatus AudioFileGetProperty(AudioFileID file, AudioFilePropertyID property, UInt32* size, void* data)
{
    const OSStatus refusal =
        note(__func__, static_cast<const void*>(file), Code{property}, InOut{size}).refusal;
    return giveProperty(refusal, size, data, platform().file.seconds);
}

OSStatus AudioFileClose(AudioFileID file)
{
    const Release releasing(__func__, file);
    return note(__func__, static_cast<const void*>(file)).refusal;
}

// ---- URLs and strings ----

CFURLRef CFURLCreateFromFSRef(CFAllocatorRef allocator, const FSRef* reference)
{
    const bool isRefused = note(__func__, allocator, Reference{reference}).refusal != noErr;
    return isRefused ? nullptr : static_cast<CFURLRef>(make("url"));
}

CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef allocator, CFURLRef url, CFStringRef component,
                                               Boolean isDirectory)
{
    const bool isRefused = note(__func__, allocator, static_cast<const void*>(url),
                                static_cast<const void*>(component), Number{isDirectory})
                               .refusal != noErr;
    return isRefused ? nullptr : static_cast<CFURLRef>(make("url"));
}

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef allocator, const UniChar* units, CFIndex count)
{
    const bool isRefused =
        note(__func__, allocator, Characters{units, count}, Number{static_cast<unsigned long long>(count)})
            .refusal != noErr;
    return isRefused ? nullptr : static_cast<CFStringRef>(make("string"));
}

CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef allocator, CFIndex longest, CFStringRef text)
{
    const bool isRefused = note(__func__, allocator, Number{static_cast<unsigned long long>(longest)},
                                static_cast<const void*>(text))
                               .refusal != noErr;
    return isRefused ? nullptr : static_cast<CFMutableStringRef>(make("string"));
}

void CFStringNormalize(CFMutableStringRef text, CFStringNormalizationForm form)
{
    note(__func__, static_cast<const void*>(text), Number{static_cast<unsigned long long>(form)});
}

void CFRelease(CFTypeRef object)
{
    const Release releasing(__func__, object);
    note(__func__, object);
}

} // extern "C"
#pragma GCC visibility pop
