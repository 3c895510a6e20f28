// Owned references to host values.
// All functions: [main].
#pragma once

#include "plugin/release.h"
#include "plugin/services.h"

#include <memory>

inline void unlockMemoryBlock(REALmemoryBlockStruct* block) { REALUnlockObject(asObject(block)); }

using OwnedString = std::unique_ptr<REALstringStruct, Releases<REALUnlockString>>;
using OwnedObject = std::unique_ptr<REALobjectStruct, Releases<REALUnlockObject>>;
using OwnedMemoryBlock = std::unique_ptr<REALmemoryBlockStruct, Releases<unlockMemoryBlock>>;
