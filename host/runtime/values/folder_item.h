// Folder items: paths of files and folders, which need not exist.
// All functions: [main].
#pragma once

#include "abi/host_values.h"
#include "host/runtime/values/reference.h"

#include <string>

namespace host {

class FolderItem : public Ref<REALfolderItemStruct> {
public:
    static constexpr Kind kind = Kind::folderItem;
    using Ref::Ref;
    FolderItem(Ref<REALfolderItemStruct> ref) : Ref(std::move(ref)) {}

    /// Make an item from a path in UTF-8. A relative path starts at the current folder; slashes at the end
    /// are removed. Throws std::bad_alloc.
    static FolderItem at(const std::string& path);

    std::string path() const;   ///< absolute path; "" if the item is nil
    std::string name() const;   ///< last component of the path
    std::string parent() const; ///< path of the enclosing folder
};

/// Write the platform's reference to the item (an FSRef of 80 bytes) to `reference`.
/// Returns  false, and writes nothing, if the item is nil, if no file or folder exists at its path, or if the
///          program does not link the platform.
bool itemReference(const FolderItem& item, void* reference);

/// Write the platform's reference to the item's parent folder to `reference`, and the item's name to `name`
/// (an HFSUniStr255: a 16-bit length and 255 UTF-16 units; the unused units become 0).
/// Returns  false, and writes nothing to `name`, if the name is empty or too long, or if itemReference()
///          would return false for the parent folder.
bool parentReference(const FolderItem& item, void* reference, void* name);

} // namespace host
