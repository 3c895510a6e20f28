#include "platform/carbon/files.h"

#include "platform/support/file_path.h"

#include <Carbon/MacErrors.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <new>
#include <unordered_map>
#include <vector>

#include <sys/stat.h>

namespace kvxplatform::carbon {
namespace {

/// A reference's bytes. The path's own hash is among them, so that bytes that merely look like a reference,
/// or are another program's, do not mean a path by accident.
struct Inside {
    char mark[8];
    std::uint64_t hash;
    std::uint32_t number;
    std::uint8_t zero[60];
};
static_assert(sizeof(Inside) == sizeof(FSRef), "a reference is full");

constexpr char ourMark[8] = {'K', 'V', 'X', 'F', 'S', 'R', 'e', 'f'};

std::uint64_t hashOf(const std::string& path)
{
    std::uint64_t hash = 14695981039346656037u; // FNV-1a
    for (const char each : path) hash = (hash ^ static_cast<std::uint8_t>(each)) * 1099511628211u;
    return hash;
}

Inside insideOf(const std::string& path, std::uint32_t number)
{
    Inside inside = {};
    std::memcpy(inside.mark, ourMark, sizeof ourMark);
    inside.hash = hashOf(path);
    inside.number = number;
    return inside;
}

struct Paths {
    std::mutex lock;
    std::unordered_map<std::string, std::uint32_t> numbers;
    std::vector<const std::string*> byNumber; // the keys above, which never move
};

// Never destroyed: references outlive everything.
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
    all.byNumber.reserve(all.byNumber.size() + 1); // so that what follows fails whole or not at all
    const auto number = static_cast<std::uint32_t>(all.byNumber.size());
    all.byNumber.push_back(&all.numbers.emplace(path, number).first->first);
    return number;
}

/// Why there is nothing at `path`.
OSStatus reasonFor(int error, const std::string& path)
{
    const OSStatus status = statusOfError(error);
    if (status != fnfErr) return status;
    struct stat folder;
    const std::string above = path.substr(0, path.rfind('/') + 1);
    return stat(above.c_str(), &folder) == 0 && S_ISDIR(folder.st_mode) ? fnfErr : dirNFErr;
}

} // namespace

OSStatus makeReference(std::string_view path, FSRef& ref, bool& isFolder)
{
    const std::string absolute = absolutePath(path);
    if (absolute.empty()) return paramErr;
    const std::string found = pathOnDisk(absolute);
    struct stat item;
    if (stat(found.c_str(), &item) != 0) return reasonFor(errno, found);
    const Inside inside = insideOf(found, numberOf(found));
    std::memcpy(&ref, &inside, sizeof ref);
    isFolder = S_ISDIR(item.st_mode);
    return noErr;
}

std::optional<std::string> pathOf(const FSRef& ref)
{
    Inside inside;
    std::memcpy(&inside, &ref, sizeof inside);
    std::string path;
    {
        Paths& all = paths();
        const std::lock_guard<std::mutex> guard(all.lock);
        if (inside.number >= all.byNumber.size()) return {};
        path = *all.byNumber[inside.number];
    }
    const Inside ours = insideOf(path, inside.number);
    if (std::memcmp(&ours, &inside, sizeof ours) != 0) return {};
    return path;
}

} // namespace kvxplatform::carbon

using namespace kvxplatform;

OSStatus FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean* isDirectory)
{
    if (!path || !ref) return paramErr;
    try {
        bool isFolder = false;
        const OSStatus status = carbon::makeReference(reinterpret_cast<const char*>(path), *ref, isFolder);
        if (status == noErr && isDirectory) *isDirectory = isFolder;
        return status;
    } catch (const std::exception&) {
        return memFullErr;
    }
}

OSStatus FSRefMakePath(const FSRef* ref, UInt8* path, UInt32 pathBufferSize)
{
    if (!ref || !path) return paramErr;
    try {
        const auto found = carbon::pathOf(*ref);
        if (!found) return errFSBadFSRef;
        if (found->size() >= pathBufferSize) return errFSNameTooLong;
        std::memcpy(path, found->c_str(), found->size() + 1);
        return noErr;
    } catch (const std::exception&) {
        return memFullErr;
    }
}

CFStringRef FSCreateStringFromHFSUniStr(CFAllocatorRef alloc, const HFSUniStr255* uniStr)
{
    if (!uniStr || uniStr->length > 255) return nullptr;
    return CFStringCreateWithCharacters(alloc, uniStr->unicode, uniStr->length);
}
