// Resets the addresses of host services that the plug-in keeps, for use between tests.
#pragma once

/// Clear the plug-in's caches of host services and of the string-length function, so that it looks all of
/// them up again.
void forgetServices();
