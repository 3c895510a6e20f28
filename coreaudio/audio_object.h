// Properties of any audio object, selected by address and qualifier. The values are memory blocks.
// All functions: [main].
#pragma once

#include "abi/host_values.h"

namespace coreaudio {

/// Return the size of a property's value in bytes; 0 if the platform reports no size.
std::uint32_t AudioObjectGetPropertyDataSize(REALobjectStruct* object, HostInteger inObjectID,
                                             std::uint32_t selector, std::uint32_t scope,
                                             std::uint32_t element, REALmemoryBlockStruct* qualifierData);

/// Read a property's value into `inputData`, or into a new block if `inputData` is nil. The platform also
/// receives the bytes of `inputData` as its input.
/// Shape   the size of `inputData` does not change; the number of bytes that the platform wrote is not
///         reported.
/// Owner   the caller receives one reference to the returned block, also if that block is `inputData`.
/// Errors  nil after a platform error, or if `inputData` is nil and the property's size is 0. Nil and
///         "OutOfMemoryException" if there is no memory for the value, or if the host cannot store the
///         value's size.
REALmemoryBlockStruct* AudioObjectGetPropertyData(REALobjectStruct* object, HostInteger inObjectID,
                                                  std::uint32_t selector, std::uint32_t scope,
                                                  std::uint32_t element, REALmemoryBlockStruct* qualifierData,
                                                  REALmemoryBlockStruct* inputData);

/// Set a property to all bytes of `data`.
void AudioObjectSetPropertyData(REALobjectStruct* object, HostInteger inObjectID, std::uint32_t selector,
                                std::uint32_t scope, std::uint32_t element, REALmemoryBlockStruct* data,
                                REALmemoryBlockStruct* qualifierData);

} // namespace coreaudio
