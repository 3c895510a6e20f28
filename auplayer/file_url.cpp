#include "auplayer/file_url.h"

#include "plugin/services.h"

#include <Carbon/Carbon.h>

#include <iterator>

namespace auplayer {

namespace {

/// Return the URL of the item itself if `name` is null. Otherwise return the URL of the item's folder and
/// store the item's name in `name`.
OwnedCF<CFURLRef> hostReference(REALfolderItemStruct* file, HFSUniStr255* name)
{
    FSRef reference = {};
    if (!REALFSRefFromFolderItem(file, &reference, name)) return nullptr;
    return OwnedCF<CFURLRef>(CFURLCreateFromFSRef(kCFAllocatorDefault, &reference));
}

OwnedCF<CFStringRef> textOf(const HFSUniStr255& name)
{
    if (name.length == 0 || name.length > std::size(name.unicode)) return nullptr;
    return OwnedCF<CFStringRef>(CFStringCreateWithCharacters(kCFAllocatorDefault, name.unicode, name.length));
}

OwnedCF<CFMutableStringRef> decomposed(CFStringRef text)
{
    OwnedCF<CFMutableStringRef> copy(CFStringCreateMutableCopy(kCFAllocatorDefault, 0, text));
    if (copy) CFStringNormalize(copy.get(), kCFStringNormalizationFormD);
    return copy;
}

OwnedCF<CFURLRef> urlFromFolder(REALfolderItemStruct* file)
{
    HFSUniStr255 name = {};
    const OwnedCF<CFURLRef> folder = hostReference(file, &name);
    if (!folder) return nullptr;
    const OwnedCF<CFStringRef> text = textOf(name);
    if (!text) return nullptr;
    const OwnedCF<CFMutableStringRef> normal = decomposed(text.get());
    return OwnedCF<CFURLRef>(CFURLCreateCopyAppendingPathComponent(
        kCFAllocatorDefault, folder.get(), normal ? normal.get() : text.get(), false));
}

} // namespace

OwnedCF<CFURLRef> urlOf(REALfolderItemStruct* file)
{
    OwnedCF<CFURLRef> url = hostReference(file, nullptr);
    return url ? std::move(url) : urlFromFolder(file);
}

} // namespace auplayer
