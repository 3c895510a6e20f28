// The library in its host, and a device that the fuzz targets step.
#pragma once

#include "abi/entry_point.h"
#include "host/runtime/host.h"

#include <KVXPlatform/KVXPlatform.h>

extern "C" void REALPluginMain(REALResolver resolver);

/// The host of this process, with the library registered. It is never freed.
inline host::Host& hostWithLibrary()
{
    static host::Host* const host = [] {
        auto* created = new host::Host;
        created->enter(REALPluginMain);
        return created;
    }();
    return *host;
}

/// The stepped device of this process. The first call creates it.
inline KVXDeviceID steppedDevice(double sampleRate, std::uint32_t sliceFrames)
{
    static const KVXDeviceID device = [&] {
        KVXSimulatedDevice description = {};
        description.name = "Stepped";
        description.isStepped = 1;
        description.sampleRate = sampleRate;
        description.sliceFrames = sliceFrames;
        return KVXPlatformAddSimulatedDevice(&description);
    }();
    return device;
}
