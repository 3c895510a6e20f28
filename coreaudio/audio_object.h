// Properties of any audio object, by address, with qualifiers; values are memory blocks. Thread: [main].
#pragma once

#include "abi/host_values.h"

namespace coreaudio {

/// The size of a property's value in bytes; 0 unless the platform tells one.
std::uint32_t AudioObjectGetPropertyDataSize(REALobjectStruct* object, HostInteger inObjectID,
                                             std::uint32_t selector, std::uint32_t scope,
                                             std::uint32_t element, REALmemoryBlockStruct* qualifierData);

/// A property's value. With `inputData`, which serves as input and as buffer, that same block, unresized; the
/// size that the platform wrote back is the caller's to know. Without it, a new block with a copy. Returns
/// nil on any failure, and for a property of size 0. Errors  no memory for the value, or a size beyond what
/// the host can count, announced or written back, raises "OutOfMemoryException".
REALmemoryBlockStruct* AudioObjectGetPropertyData(REALobjectStruct* object, HostInteger inObjectID,
                                                  std::uint32_t selector, std::uint32_t scope,
                                                  std::uint32_t element, REALmemoryBlockStruct* qualifierData,
                                                  REALmemoryBlockStruct* inputData);

/// Set a property to the whole of `data`.
void AudioObjectSetPropertyData(REALobjectStruct* object, HostInteger inObjectID, std::uint32_t selector,
                                std::uint32_t scope, std::uint32_t element, REALmemoryBlockStruct* data,
                                REALmemoryBlockStruct* qualifierData);

} // namespace coreaudio
