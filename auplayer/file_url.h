// From a host's folder item to the platform's URL.
#pragma once

#include "abi/host_values.h"
#include "plugin/owned_cf.h"

namespace auplayer {

/// Return the URL of a folder item. An item that does not exist yet gets its folder's URL plus its name, in
/// decomposed form as the file system stores names.
/// Errors  null if the host gives no reference, or the platform no URL.
/// [main]
OwnedCF<CFURLRef> urlOf(REALfolderItemStruct* file);

} // namespace auplayer
