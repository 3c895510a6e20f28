// Reset of the function addresses that the service wrappers keep, for use between tests.
#pragma once

/// Make all service wrappers and the string-length wrapper look up their functions again.
void forgetServices();
