// Folder items: a path in the file system, whether something is there or not.
#pragma once

#include "host/runtime/values/reference.h"

#include <cstdint>
#include <string>

struct REALfolderItemStruct;

namespace host {

class FolderItem : public Ref<REALfolderItemStruct> {
public:
    using Ref::Ref;
    FolderItem(Ref<REALfolderItemStruct> ref) : Ref(std::move(ref)) {}

    /// An item for a path in UTF-8, made absolute from the current folder. Trailing slashes are dropped.
    static FolderItem at(const std::string& path);

    std::string path() const; ///< absolute; "" for nil
    std::string name() const; ///< the last component
    std::string parent() const;
};

/// How an existing path becomes a file reference of 80 bytes: 0 for success. A program that links the
/// platform gets the platform's own; without one "REALFSRefFromFolderItem" answers false. Tests put another
/// in its place; null takes that back.
using PathToReference = std::int32_t (*)(const unsigned char* path, void* reference, unsigned char* isFolder);
void setPathToReference(PathToReference function);

} // namespace host
