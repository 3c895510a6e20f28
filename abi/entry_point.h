// How the host enters the library, and how the library asks for the host's services.
#pragma once

extern "C" {

/// The host's resolver: the address of the service of that name, or null when the host has none. [main]
typedef void* (*REALResolver)(const char* name);

/// The library's one export, called once after loading, before any object of its classes exists. [main]
typedef void (*REALPluginMainFunction)(REALResolver resolver);
}

constexpr const char* pluginMainName = "REALPluginMain";
