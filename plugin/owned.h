// References to host values that we hold, dropped on every way out.
#pragma once

#include "plugin/services.h"

#include <memory>

struct DropReference {
    void operator()(REALstringStruct* text) const { REALUnlockString(text); }
    void operator()(REALobjectStruct* object) const { REALUnlockObject(object); }
    void operator()(REALmemoryBlockStruct* block) const { REALUnlockObject(asObject(block)); }
};

using OwnedString = std::unique_ptr<REALstringStruct, DropReference>;
using OwnedObject = std::unique_ptr<REALobjectStruct, DropReference>;
using OwnedMemoryBlock = std::unique_ptr<REALmemoryBlockStruct, DropReference>;
