// The plug-in library, registered in a host, and a simulated device that renders only in KVXPlatformStep().
#pragma once

#include "abi/entry_point.h"
#include "host/runtime/host.h"

#include <KVXPlatform/KVXPlatform.h>

extern "C" void REALPluginMain(REALResolver resolver);

/// The host of this process, which has registered the library. The first call makes the host.
inline host::Host& hostWithLibrary()
{
    static host::Host* const host = [] {
        auto* created = new host::Host;
        created->enter(REALPluginMain);
        return created;
    }();
    return *host;
}

/// The device of this process that renders only in KVXPlatformStep(). The first call makes the device with
/// `sampleRate` and `sliceFrames`; later calls ignore both.
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
