// Platform functions that older systems lack: null there. Include this instead of the header that declares
// them, so that no file makes a strong reference.
#pragma once

#include <dispatch/dispatch.h>

#pragma weak dispatch_async
