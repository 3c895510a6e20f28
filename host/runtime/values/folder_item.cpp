#include "host/runtime/values/folder_item.h"

#include "abi/host_values.h"
#include "host/runtime/values/folder_reference.h"
#include "host/runtime/values/records.h"
#include "host/runtime/values/text_encoding.h"

#include <Carbon/Files.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <new>

// A program without a platform under it links none; the function is then null.
#pragma weak FSPathMakeRef

namespace host {

namespace {

std::int32_t askPlatform(const unsigned char* path, void* reference, unsigned char* isFolder)
{
    return FSPathMakeRef(path, static_cast<FSRef*>(reference), isFolder);
}

PathToReference chosenPathToReference = nullptr;

PathToReference pathToReference()
{
    if (chosenPathToReference) return chosenPathToReference;
    return &FSPathMakeRef ? askPlatform : nullptr;
}

bool refer(const std::string& path, void* reference)
{
    const PathToReference function = pathToReference();
    const auto* bytes = reinterpret_cast<const unsigned char*>(path.c_str());
    return function && function(bytes, reference, nullptr) == 0;
}

const std::string& pathOf(const FolderItem& item)
{
    static const std::string none;
    return item ? record<FolderItemRecord>(item.get())->path : none;
}

} // namespace

void setPathToReference(PathToReference function) { chosenPathToReference = function; }

FolderItem FolderItem::at(const std::string& path)
{
    std::error_code ignored;
    auto absolute = std::filesystem::absolute(path, ignored).lexically_normal().string();
    while (absolute.size() > 1 && absolute.back() == '/') absolute.pop_back();
    auto* made = makeValue<FolderItemRecord>(Kind::folderItem);
    if (!made) throw std::bad_alloc();
    made->path = std::move(absolute);
    return FolderItem(adopt(reinterpret_cast<REALfolderItemStruct*>(made)));
}

std::string FolderItem::path() const { return pathOf(*this); }

std::string FolderItem::name() const { return std::filesystem::path(pathOf(*this)).filename().string(); }

std::string FolderItem::parent() const { return std::filesystem::path(pathOf(*this)).parent_path().string(); }

bool itemReference(const FolderItem& item, void* reference) { return item && refer(item.path(), reference); }

bool parentReference(const FolderItem& item, void* reference, void* name)
{
    if (!item) return false;
    const auto units = convertText(item.name(), encodingUTF8, encodingUTF16);
    HFSUniStr255 itemName = {};
    if (units->empty() || units->size() > sizeof itemName.unicode || !refer(item.parent(), reference))
        return false;
    itemName.length = static_cast<UInt16>(units->size() / sizeof(UniChar));
    std::memcpy(itemName.unicode, units->data(), units->size());
    std::memcpy(name, &itemName, sizeof itemName);
    return true;
}

} // namespace host
