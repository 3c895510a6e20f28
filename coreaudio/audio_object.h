// Properties of any audio object, selected by address and qualifier; values are memory blocks.
// All functions: [main].
#pragma once

#include "abi/host_values.h"

namespace coreaudio {

/// The size of a property's value in bytes; 0 if the platform reports none.
std::uint32_t AudioObjectGetPropertyDataSize(REALobjectStruct* object, HostInteger inObjectID,
                                             std::uint32_t selector, std::uint32_t scope,
                                             std::uint32_t element, REALmemoryBlockStruct* qualifierData);

/// Read a property's value into `inputData`, which is also the platform's input; nil: into a new block.
/// Shape   `inputData` keeps its size; the size that the platform returned is not reported.
/// Owner   the caller receives one reference, also to `inputData`.
/// Errors  a platform error, or a property of size 0 without `inputData`: nil. No memory for the value, or
///         a size that the host cannot store: nil and "OutOfMemoryException".
REALmemoryBlockStruct* AudioObjectGetPropertyData(REALobjectStruct* object, HostInteger inObjectID,
                                                  std::uint32_t selector, std::uint32_t scope,
                                                  std::uint32_t element, REALmemoryBlockStruct* qualifierData,
                                                  REALmemoryBlockStruct* inputData);

/// Set a property to the whole of `data`.
void AudioObjectSetPropertyData(REALobjectStruct* object, HostInteger inObjectID, std::uint32_t selector,
                                std::uint32_t scope, std::uint32_t element, REALmemoryBlockStruct* data,
                                REALmemoryBlockStruct* qualifierData);

} // namespace coreaudio
