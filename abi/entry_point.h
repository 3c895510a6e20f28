// The host's entry point into the library, and the library's access to host services (functions that the host
// exports by name).
// All functions: [main].
#pragma once

extern "C" {

/// Type of the host's look-up function, which returns the address of the service `name`, or null for an
/// unknown name.
typedef void* (*REALResolver)(const char* name);

/// Type of the library's only exported function. The host calls the function once, after loading the library
/// and before creating an object of the library's classes.
typedef void (*REALPluginMainFunction)(REALResolver resolver);
}

constexpr const char* pluginMainName = "REALPluginMain";
