#include "platform/carbon/files.h"

#include "platform/support/border.h"
#include "platform/support/file_path.h"

#include <Carbon/MacErrors.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <unordered_map>
#include <vector>

#include <sys/stat.h>

namespace kvxplatform::carbon {
namespace {

/// The bytes of a file reference. The hash of the path makes references from other programs invalid.
struct ReferenceBytes {
    char signature[8];
    std::uint64_t hash;
    std::uint32_t number;
    std::uint8_t zero[60];
};
static_assert(sizeof(ReferenceBytes) == sizeof(FSRef), "the record fills a reference");

constexpr char ourSignature[8] = {'K', 'V', 'X', 'F', 'S', 'R', 'e', 'f'};

std::uint64_t hashOf(const std::string& path)
{
    std::uint64_t hash = 14695981039346656037u; // initial value of the FNV-1a hash
    for (const char each : path) hash = (hash ^ static_cast<std::uint8_t>(each)) * 1099511628211u;
    return hash;
}

ReferenceBytes bytesOf(const std::string& path, std::uint32_t number)
{
    ReferenceBytes bytes = {};
    std::memcpy(bytes.signature, ourSignature, sizeof ourSignature);
    bytes.hash = hashOf(path);
    bytes.number = number;
    return bytes;
}

struct Paths {
    std::mutex lock;
    std::unordered_map<std::string, std::uint32_t> numbers;
    std::vector<const std::string*> byNumber; ///< by number; points to keys of `numbers`
};

// The table is never destroyed, because references are valid until the process exits.
Paths& paths()
{
    static Paths& all = *new Paths;
    return all;
}

std::uint32_t numberOf(const std::string& path)
{
    Paths& all = paths();
    const std::lock_guard<std::mutex> guard(all.lock);
    const auto known = all.numbers.find(path);
    if (known != all.numbers.end()) return known->second;
    all.byNumber.reserve(all.byNumber.size() + 1); // so push_back cannot fail after the emplace
    const auto number = static_cast<std::uint32_t>(all.byNumber.size());
    all.byNumber.push_back(&all.numbers.emplace(path, number).first->first);
    return number;
}

/// The status for a path that names no item. It distinguishes a missing parent folder.
OSStatus reasonFor(int error, const std::string& path)
{
    const OSStatus status = statusOfError(error);
    if (status != fnfErr) return status;
    struct stat folder;
    const std::string parent = path.substr(0, path.rfind('/') + 1);
    return stat(parent.c_str(), &folder) == 0 && S_ISDIR(folder.st_mode) ? fnfErr : dirNFErr;
}

} // namespace

OSStatus makeReference(std::string_view path, FSRef& ref, bool& isFolder)
{
    const std::string absolute = absolutePath(path);
    if (absolute.empty()) return paramErr;
    const std::string found = pathOnDisk(absolute);
    struct stat item;
    if (stat(found.c_str(), &item) != 0) return reasonFor(errno, found);
    const ReferenceBytes bytes = bytesOf(found, numberOf(found));
    std::memcpy(&ref, &bytes, sizeof ref);
    isFolder = S_ISDIR(item.st_mode);
    return noErr;
}

std::optional<std::string> pathOf(const FSRef& ref)
{
    ReferenceBytes bytes;
    std::memcpy(&bytes, &ref, sizeof bytes);
    std::string path;
    {
        Paths& all = paths();
        const std::lock_guard<std::mutex> guard(all.lock);
        if (bytes.number >= all.byNumber.size()) return {};
        path = *all.byNumber[bytes.number];
    }
    const ReferenceBytes ours = bytesOf(path, bytes.number);
    if (std::memcmp(&ours, &bytes, sizeof ours) != 0) return {};
    return path;
}

} // namespace kvxplatform::carbon

using namespace kvxplatform;

OSStatus FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean* isDirectory)
{
    if (!path || !ref) return paramErr;
    return withinBorder(memFullErr, [&] {
        bool isFolder = false;
        const OSStatus status = carbon::makeReference(reinterpret_cast<const char*>(path), *ref, isFolder);
        if (status == noErr && isDirectory) *isDirectory = isFolder;
        return status;
    });
}

OSStatus FSRefMakePath(const FSRef* ref, UInt8* path, UInt32 pathBufferSize)
{
    if (!ref || !path) return paramErr;
    return withinBorder(memFullErr, [&]() -> OSStatus {
        const std::optional<std::string> found = carbon::pathOf(*ref);
        if (!found) return errFSBadFSRef;
        if (found->size() >= pathBufferSize) return errFSNameTooLong;
        std::memcpy(path, found->c_str(), found->size() + 1);
        return noErr;
    });
}

CFStringRef FSCreateStringFromHFSUniStr(CFAllocatorRef alloc, const HFSUniStr255* uniStr)
{
    if (!uniStr || uniStr->length > 255) return nullptr;
    return CFStringCreateWithCharacters(alloc, uniStr->unicode, uniStr->length);
}
