#include "platform/corefoundation/url.h"

#include "platform/carbon/files.h"
#include "platform/corefoundation/encoding.h"
#include "platform/corefoundation/string.h"
#include "platform/support/border.h"
#include "platform/support/file_path.h"

#include <cstring>

using namespace kvxplatform;

namespace {

void destroyURL(corefoundation::Object* object) { delete static_cast<__CFURL*>(object); }

corefoundation::Kind urlKind = {LiveCount("CFURL"), destroyURL};

/// Make a URL from the path that `find` returns.
/// Returns  null for an empty path, or if memory runs out.
template <class Find>
CFURLRef makeURL(Find find) noexcept
{
    return withinBorder(nullptr, [&] {
        std::string path = find();
        return path.empty() ? nullptr : new __CFURL(std::move(path));
    });
}

} // namespace

__CFURL::__CFURL(std::string&& ofPath) : Object(urlKind), path(std::move(ofPath)) {}

CFURLRef CFURLCreateFromFSRef(CFAllocatorRef, const FSRef* ref)
{
    if (!ref) return nullptr;
    return makeURL([&] { return carbon::pathOf(*ref).value_or(""); });
}

Boolean CFURLGetFSRef(CFURLRef url, FSRef* ref)
{
    if (!url || !ref) return false;
    return withinBorder(false, [&] {
        bool isFolder = false;
        return carbon::makeReference(url->path, *ref, isFolder) == noErr;
    });
}

// The last parameter, isDirectory, has no effect, because a folder's path has no slash at the end.
CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef, CFURLRef url, CFStringRef pathComponent,
                                               Boolean)
{
    if (!url || !pathComponent) return nullptr;
    return makeURL([&]() -> std::string {
        const std::optional<std::string> name =
            corefoundation::encode(pathComponent->units, kCFStringEncodingUTF8);
        if (!name || name->empty() || name->find('/') != name->npos || name->find('\0') != name->npos)
            return {};
        return absolutePath(url->path + '/' + *name);
    });
}

CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef, const UInt8* buffer, CFIndex bufferLength,
                                                 Boolean)
{
    if (!buffer || bufferLength <= 0) return nullptr;
    return makeURL([&] {
        return absolutePath({reinterpret_cast<const char*>(buffer), static_cast<std::size_t>(bufferLength)});
    });
}

Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean, UInt8* buffer, CFIndex maxLength)
{
    if (!url || !buffer || maxLength <= 0) return false;
    if (url->path.size() >= static_cast<std::size_t>(maxLength)) return false;
    std::memcpy(buffer, url->path.c_str(), url->path.size() + 1);
    return true;
}
