// How the host enters the library, and how the library finds the host's services.
// All functions: [main].
#pragma once

extern "C" {

/// The host's resolver. Returns the address of the service `name`, or null for an unknown name.
typedef void* (*REALResolver)(const char* name);

/// The library's only export. The host calls it once, after loading the library and before it creates an
/// object of the library's classes.
typedef void (*REALPluginMainFunction)(REALResolver resolver);
}

constexpr const char* pluginMainName = "REALPluginMain";
