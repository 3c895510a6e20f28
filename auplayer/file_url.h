// Converts a host's folder item to a URL of the platform.
#pragma once

#include "abi/host_values.h"
#include "plugin/owned_cf.h"

namespace auplayer {

/// Return the URL of a folder item. The URL of an item that does not exist consists of the folder's URL and
/// the item's name, in the decomposed Unicode form in which the file system stores names.
/// Errors  null if the host returns no reference to the item or its folder, or if the platform makes no URL.
/// [main]
OwnedCF<CFURLRef> urlOf(REALfolderItemStruct* file);

} // namespace auplayer
