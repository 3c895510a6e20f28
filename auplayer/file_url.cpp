#include "auplayer/file_url.h"

#include "plugin/services.h"

#include <Carbon/Carbon.h>

#include <iterator>

namespace auplayer {

namespace {

/// The URL of the item itself, or, if `name` is not null, of its folder; the item's name is stored in `name`.
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
