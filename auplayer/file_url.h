// From a host's folder item to a path of the platform.
#pragma once

#include "abi/host_values.h"
#include "auplayer/owned_platform_object.h"

namespace auplayer {

/// Where a folder item is. An item that does not exist yet is reached through its folder, by its name in
/// decomposed form, as the file system keeps names.
/// Errors  null: the host has no reference, or the platform no path.
/// Thread  [main].
Owned<CFURLRef> urlOf(REALfolderItemStruct* file);

} // namespace auplayer
