// Resets the addresses of host services that the plug-in keeps, for use between tests.
#pragma once

/// Make the plug-in look up all host services again, with the function that returns the length of a string.
void forgetServices();
