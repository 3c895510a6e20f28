#include "auplayer/file_url.h"

#include "plugin/services.h"

#include <Carbon/Carbon.h>

#include <iterator>

namespace auplayer {

namespace {

/// The URL of what the host's service refers to: the item itself, or, with room for a name, its folder.
Owned<CFURLRef> referredTo(REALfolderItemStruct* file, HFSUniStr255* name)
{
    FSRef reference = {};
    if (!REALFSRefFromFolderItem(file, &reference, name)) return nullptr;
    return Owned<CFURLRef>(CFURLCreateFromFSRef(kCFAllocatorDefault, &reference));
}

Owned<CFStringRef> textOf(const HFSUniStr255& name)
{
    if (name.length == 0 || name.length > std::size(name.unicode)) return nullptr;
    return Owned<CFStringRef>(CFStringCreateWithCharacters(kCFAllocatorDefault, name.unicode, name.length));
}

Owned<CFMutableStringRef> decomposed(CFStringRef text)
{
    Owned<CFMutableStringRef> copy(CFStringCreateMutableCopy(kCFAllocatorDefault, 0, text));
    if (copy) CFStringNormalize(copy.get(), kCFStringNormalizationFormD);
    return copy;
}

Owned<CFURLRef> throughItsFolder(REALfolderItemStruct* file)
{
    HFSUniStr255 name = {};
    const Owned<CFURLRef> folder = referredTo(file, &name);
    if (!folder) return nullptr;
    const Owned<CFStringRef> text = textOf(name);
    if (!text) return nullptr;
    const Owned<CFMutableStringRef> normal = decomposed(text.get());
    return Owned<CFURLRef>(CFURLCreateCopyAppendingPathComponent(kCFAllocatorDefault, folder.get(),
                                                                 normal ? normal.get() : text.get(), false));
}

} // namespace

Owned<CFURLRef> urlOf(REALfolderItemStruct* file)
{
    Owned<CFURLRef> url = referredTo(file, nullptr);
    return url ? std::move(url) : throughItsFolder(file);
}

} // namespace auplayer
