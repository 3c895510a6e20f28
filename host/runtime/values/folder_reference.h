// File references of folder items, as "REALFSRefFromFolderItem" gives them.
#pragma once

#include "host/runtime/values/folder_item.h"

namespace host {

/// Fill the 80 bytes at `reference` for the item itself. False if nothing is there, or without a platform.
bool itemReference(const FolderItem& item, void* reference);

/// Fill `reference` for the folder that holds the item, and the 512 bytes at `name` (a 16-bit length and up
/// to 255 UTF-16 units) with its name, zeros behind it. False likewise, or if the name is empty or longer;
/// nothing is written to `name` then.
bool parentReference(const FolderItem& item, void* reference, void* name);

} // namespace host
