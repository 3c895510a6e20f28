#include "platform/support/file_path.h"

#include "platform/support/free_deleter.h"
#include "platform/support/normal_form.h"

#include <Carbon/MacErrors.h>

#include <algorithm>
#include <cerrno>
#include <iterator>

#include <sys/stat.h>
#include <unistd.h>

namespace kvxplatform {
namespace {

/// Call `visit` with each path component (the text between two slashes), from left to right.
template <class Visit>
void eachComponent(std::string_view path, Visit visit)
{
    while (!path.empty()) {
        const std::size_t end = std::min(path.find('/'), path.size());
        if (end > 0) visit(path.substr(0, end));
        path.remove_prefix(std::min(end + 1, path.size()));
    }
}

// A dangling symbolic link counts as existing, and so does an item in a folder without search permission.
bool exists(const std::string& path)
{
    struct stat ignored;
    return lstat(path.c_str(), &ignored) == 0 || errno == EACCES;
}

std::string currentFolder()
{
    const Freed<char> folder(getcwd(nullptr, 0));
    return folder ? folder.get() : "";
}

/// Returns  the path of a folder's item by the name that the disk stores; by the given name if there is no
///          such item.
std::string componentOnDisk(const std::string& folder, std::string_view name)
{
    const std::string given = folder + '/' + std::string(name);
    if (exists(given)) return given;
    for (const CFStringNormalizationForm form : {kCFStringNormalizationFormC, kCFStringNormalizationFormD})
        if (const std::optional<std::string> other = inNormalForm(name, form))
            if (std::string found = folder + '/' + *other; exists(found)) return found;
    return given;
}

} // namespace

std::string absolutePath(std::string_view path)
{
    if (path.empty() || path.find('\0') != path.npos) return {};
    std::string whole(path);
    if (path.front() != '/') {
        const std::string folder = currentFolder();
        if (folder.empty()) return {};
        whole = folder + '/' + whole;
    }
    std::string result;
    eachComponent(whole, [&](std::string_view component) {
        if (component != ".") (result += '/') += component;
    });
    return result.empty() ? "/" : result;
}

std::string pathOnDisk(const std::string& absolute)
{
    if (exists(absolute)) return absolute;
    std::string found;
    eachComponent(absolute, [&](std::string_view component) { found = componentOnDisk(found, component); });
    return exists(found) ? found : absolute;
}

OSStatus statusOfError(int error)
{
    static constexpr struct {
        int error;
        OSStatus status;
    } rows[] = {
        // clang-format off
        {ENOENT,       fnfErr},           {ENOTDIR, fnfErr},  {ELOOP,  fnfErr},
        {EACCES,       permErr},          {EPERM,   permErr},
        {ENAMETOOLONG, errFSNameTooLong},
        {EMFILE,       tmfoErr},          {ENFILE,  tmfoErr},
        {ENOMEM,       memFullErr},       {EIO,     ioErr},
        // clang-format on
    };
    const auto* row =
        std::find_if(std::begin(rows), std::end(rows), [&](const auto& each) { return each.error == error; });
    return row == std::end(rows) ? kPOSIXErrorBase + error : row->status;
}

} // namespace kvxplatform
