#include "host/kvx/name_on_disk.h"

#include <utf8proc.h>

#include <cstdlib>
#include <filesystem>
#include <memory>

namespace kvx {
namespace {

namespace fs = std::filesystem;

// A link to nowhere is there, too; what cannot be asked about is not.
bool isThere(const fs::path& path)
{
    std::error_code ignored;
    return fs::exists(fs::symlink_status(path, ignored));
}

// Empty for what is no UTF-8.
std::string inForm(const std::string& name, int form)
{
    utf8proc_uint8_t* text = nullptr;
    const auto length = utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(name.data()),
                                     static_cast<utf8proc_ssize_t>(name.size()), &text,
                                     static_cast<utf8proc_option_t>(form | UTF8PROC_STABLE));
    const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owner(text, std::free);
    return length > 0 ? std::string(reinterpret_cast<const char*>(text), std::size_t(length)) : "";
}

fs::path partOnDisk(const fs::path& folder, const std::string& part)
{
    if (isThere(folder / part)) return folder / part;
    for (int form : {UTF8PROC_COMPOSE, UTF8PROC_DECOMPOSE})
        if (const std::string other = inForm(part, form); !other.empty() && isThere(folder / other))
            return folder / other;
    return folder / part;
}

} // namespace

std::string nameOnDisk(const std::string& path)
{
    if (isThere(path)) return path;
    fs::path found;
    for (const fs::path& part : fs::path(path)) found = partOnDisk(found, part.string());
    return isThere(found) ? found.string() : path;
}

} // namespace kvx
