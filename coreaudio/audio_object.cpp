#include "coreaudio/audio_object.h"

#include "coreaudio/core_audio.h"
#include "coreaudio/memory_block_view.h"
#include "plugin/host_exceptions.h"
#include "plugin/memory_block.h"
#include "plugin/zeroed.h"

#include <CoreAudio/CoreAudio.h>

#include <algorithm>
#include <cstdio>

namespace coreaudio {

namespace {

/// Property of an audio object, with one platform call per function.
struct Property {
    AudioObjectID object;
    AudioObjectPropertyAddress address;
    const MemoryBlockView& qualifier;

    OSStatus size(UInt32& bytes) const
    {
        return ::AudioObjectGetPropertyDataSize(object, &address, qualifier.size(), qualifier.address(),
                                                &bytes);
    }
    OSStatus read(UInt32& bytes, void* buffer) const
    {
        return ::AudioObjectGetPropertyData(object, &address, qualifier.size(), qualifier.address(), &bytes,
                                            buffer);
    }
};

REALmemoryBlockStruct* readInto(REALmemoryBlockStruct* block, const Property& property,
                                HostInteger& lasterror)
{
    const MemoryBlockView buffer(block);
    lasterror = -1;
    UInt32 size = buffer.size();
    lasterror = property.read(size, buffer.address());
    if (lasterror != noErr) return nullptr;
    REALLockObject(asObject(block)); // reference that the caller receives
    return block;
}

REALmemoryBlockStruct* readIntoNewBlock(const Property& property, HostInteger& lasterror)
{
    UInt32 announced = 0;
    lasterror = property.size(announced);
    if (lasterror != noErr || announced == 0) return nullptr;

    lasterror = -1;
    const auto buffer = allocateZeroed<char>(announced);
    if (!buffer) {
        char message[100];
        std::snprintf(message, sizeof message, "Failed to allocate %lld bytes memory for data.",
                      static_cast<long long>(announced));
        RaiseException("OutOfMemoryException", message);
        return nullptr;
    }
    UInt32 size = announced;
    lasterror = property.read(size, buffer.get());
    if (lasterror != noErr) return nullptr;
    // Limit the returned size to the buffer's size. A size that the host cannot store is not limited, so that
    // REALBuildMemoryblock raises the host exception.
    if (size < refusedBlockSize) size = std::min(size, announced);
    return REALBuildMemoryblock(buffer.get(), size);
}

} // namespace

std::uint32_t AudioObjectGetPropertyDataSize(REALobjectStruct* object, HostInteger inObjectID,
                                             std::uint32_t selector, std::uint32_t scope,
                                             std::uint32_t element, REALmemoryBlockStruct* qualifierData)
{
    HostInteger& lasterror = beginCall(object);
    const MemoryBlockView qualifier(qualifierData);
    UInt32 size = 0;
    lasterror =
        Property{static_cast<AudioObjectID>(inObjectID), {selector, scope, element}, qualifier}.size(size);
    return static_cast<std::uint32_t>(size);
}

REALmemoryBlockStruct* AudioObjectGetPropertyData(REALobjectStruct* object, HostInteger inObjectID,
                                                  std::uint32_t selector, std::uint32_t scope,
                                                  std::uint32_t element, REALmemoryBlockStruct* qualifierData,
                                                  REALmemoryBlockStruct* inputData)
{
    HostInteger& lasterror = beginCall(object);
    const MemoryBlockView qualifier(qualifierData);
    const Property property = {static_cast<AudioObjectID>(inObjectID), {selector, scope, element}, qualifier};
    return inputData ? readInto(inputData, property, lasterror) : readIntoNewBlock(property, lasterror);
}

void AudioObjectSetPropertyData(REALobjectStruct* object, HostInteger inObjectID, std::uint32_t selector,
                                std::uint32_t scope, std::uint32_t element, REALmemoryBlockStruct* data,
                                REALmemoryBlockStruct* qualifierData)
{
    HostInteger& lasterror = beginCall(object);
    const MemoryBlockView value(data);
    const MemoryBlockView qualifier(qualifierData);
    const AudioObjectPropertyAddress address = {selector, scope, element};
    lasterror =
        ::AudioObjectSetPropertyData(static_cast<AudioObjectID>(inObjectID), &address, qualifier.size(),
                                     qualifier.address(), value.size(), value.address());
}

} // namespace coreaudio
