// References to host values that we hold, dropped on every way out.
//
// A host that throws while a reference is dropped keeps the value: there is nothing left to undo, and the way
// out may be that of another exception.
#pragma once

#include "plugin/services.h"

#include <memory>

struct DropReference {
    void operator()(REALstringStruct* text) const noexcept { drop(REALUnlockString, text); }
    void operator()(REALobjectStruct* object) const noexcept { drop(REALUnlockObject, object); }
    void operator()(REALmemoryBlockStruct* block) const noexcept { drop(REALUnlockObject, asObject(block)); }

    /// Give back what one host service handed out by another.
    template <class Service, class Value>
    static void drop(Service& service, Value* value) noexcept
    {
        try {
            service(value);
        } catch (...) {
        }
    }
};

using OwnedString = std::unique_ptr<REALstringStruct, DropReference>;
using OwnedObject = std::unique_ptr<REALobjectStruct, DropReference>;
using OwnedMemoryBlock = std::unique_ptr<REALmemoryBlockStruct, DropReference>;
