#include "host/runtime/values/folder_item.h"

#include "abi/host_values.h"
#include "host/runtime/values/text_encoding.h"

#include <Carbon/Files.h>

#include <cstring>
#include <filesystem>

// FSPathMakeRef is null in a program that does not link the platform.
#pragma weak FSPathMakeRef

namespace host {

namespace {

struct FolderItemRecord {
    std::string path;
};

void destroyItem(void* item) { record<FolderItemRecord>(item)->~FolderItemRecord(); }

std::string printItem(const void* item) { return record<FolderItemRecord>(item)->path; }

Cost costOfItem(const void*, const Type& type)
{
    if (type.isArray) return {};
    if (type.base == Base::folderItem) return cost::exact;
    return isAnyObject(type) ? Cost(cost::converted) : Cost();
}

constexpr KindRow itemRow = {Kind::folderItem, destroyItem, nullptr, printItem, costOfItem};

bool makeReference(const std::string& path, void* reference)
{
    if (!&FSPathMakeRef) return false;
    const auto* bytes = reinterpret_cast<const UInt8*>(path.c_str());
    return FSPathMakeRef(bytes, static_cast<FSRef*>(reference), nullptr) == 0;
}

} // namespace

FolderItem FolderItem::at(const std::string& path)
{
    std::error_code ignored;
    std::string absolute = std::filesystem::absolute(path, ignored).lexically_normal().string();
    while (absolute.size() > 1 && absolute.back() == '/') absolute.pop_back();
    auto* item = makeValue<FolderItemRecord>(itemRow);
    if (!item) throw std::bad_alloc();
    item->path = std::move(absolute);
    return FolderItem(adopt(reinterpret_cast<REALfolderItemStruct*>(item)));
}

std::string FolderItem::path() const { return get() ? record<FolderItemRecord>(get())->path : ""; }

std::string FolderItem::name() const { return std::filesystem::path(path()).filename().string(); }

std::string FolderItem::parent() const { return std::filesystem::path(path()).parent_path().string(); }

bool itemReference(const FolderItem& item, void* reference)
{
    return item && makeReference(item.path(), reference);
}

bool parentReference(const FolderItem& item, void* reference, void* name)
{
    if (!item) return false;
    const std::optional<std::string> units = convertText(item.name(), encodingUTF8, encodingUTF16);
    HFSUniStr255 itemName = {};
    if (units->empty() || units->size() > sizeof itemName.unicode || !makeReference(item.parent(), reference))
        return false;
    itemName.length = static_cast<UInt16>(units->size() / sizeof(UniChar));
    std::memcpy(itemName.unicode, units->data(), units->size());
    std::memcpy(name, &itemName, sizeof itemName);
    return true;
}

} // namespace host
