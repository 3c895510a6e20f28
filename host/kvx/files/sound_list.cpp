#include "host/kvx/files/sound_list.h"

#include "host/kvx/files/sound_file.h"
#include "host/kvx/files/streams.h"
#include "host/kvx/text/failure.h"
#include "host/kvx/text/number_text.h"

#include <fmt/core.h>
#include <utf8proc.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <string_view>

namespace kvx {
namespace {

namespace fs = std::filesystem;

// The extensions that libsndfile lists for the formats that it recognises by their content, and others in use
// for the same formats.
constexpr std::initializer_list<const char*> extensions = {
    "wav",   "wave", "bwf",  "aif", "aiff", "aifc", "caf", "flac", "ogg",  "oga", "opus", "mp3",
    "mp2",   "m1a",  "mpga", "au",  "snd",  "paf",  "iff", "svx",  "nist", "sph", "voc",  "sf",
    "ircam", "w64",  "rf64", "mat", "pvf",  "xi",   "htk", "sds",  "avr",  "wve", "mpc",
};
constexpr const char* playlistExtensions[] = {"m3u", "m3u8", "pls"};

std::string lowerCase(std::string_view text)
{
    std::string lower(text);
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return lower;
}

std::string extensionOf(const fs::path& path)
{
    const std::string extension = path.extension().string();
    return extension.empty() ? "" : lowerCase(extension).substr(1);
}

template <class Table>
bool holds(const Table& table, const std::string& text)
{
    return std::find(std::begin(table), std::end(table), text) != std::end(table);
}

Failure unreadable(const std::string& path, const std::error_code& error)
{
    return Failure(
        fmt::format("{} cannot be read: {}; change its permissions or copy it", path, error.message()));
}

// ---- folders ----

std::vector<fs::directory_entry> sortedEntries(const fs::path& folder)
{
    std::error_code error;
    std::vector<fs::directory_entry> entries;
    for (fs::directory_iterator each(folder, error), end; !error && each != end; each.increment(error))
        entries.push_back(*each);
    if (error) throw unreadable(folder.string(), error);
    std::sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) {
        return strverscmp(a.path().filename().c_str(), b.path().filename().c_str()) < 0;
    });
    return entries;
}

void addSoundFiles(const fs::path& folder, bool isRecursive, const ReportFailure& report,
                   std::vector<std::string>& paths)
{
    for (const fs::directory_entry& entry : sortedEntries(folder)) {
        // An entry that disappears while this function reads it is neither file nor folder.
        std::error_code gone;
        if (entry.path().filename().string().front() == '.') continue;
        if (entry.is_regular_file(gone) && holds(extensions, extensionOf(entry.path())))
            paths.push_back(entry.path().string());
        else if (isRecursive && entry.is_directory(gone) && !entry.is_symlink(gone))
            try {
                addSoundFiles(entry.path(), isRecursive, report, paths);
            } catch (const Failure& failure) {
                report(failure);
            }
    }
}

// ---- playlist files ----

bool isUrl(std::string_view text)
{
    const auto end = text.find("://");
    return end != text.npos && end > 1 &&
           std::all_of(text.begin(), text.begin() + std::ptrdiff_t(end), [](char c) {
               return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                      c == '+' || c == '-' || c == '.';
           });
}

bool isUtf8(std::string_view text)
{
    while (!text.empty()) {
        utf8proc_int32_t ignored = 0;
        const auto length = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                             static_cast<utf8proc_ssize_t>(text.size()), &ignored);
        if (length <= 0) return false;
        text.remove_prefix(static_cast<std::size_t>(length));
    }
    return true;
}

std::string utf8OfLatin1(std::string_view text)
{
    std::string utf8;
    for (const char each : text) {
        const auto byte = static_cast<unsigned char>(each);
        if (byte >= 0x80) utf8 += static_cast<char>(0xC0 | byte >> 6);
        utf8 += static_cast<char>(byte >= 0x80 ? 0x80 | (byte & 0x3F) : byte);
    }
    return utf8;
}

/// The path in the URL of a file, such as file:///music/a%20b.wav; nullopt for any other text.
std::optional<std::string> pathOfFileUrl(std::string_view text)
{
    constexpr std::string_view scheme = "file://";
    if (lowerCase(text.substr(0, scheme.size())) != scheme) return std::nullopt;
    text.remove_prefix(std::min(text.find('/', scheme.size()), text.size())); // a host may precede the path
    std::string path;
    while (!text.empty()) {
        unsigned code = 0;
        const char* const end = text.data() + std::min<std::size_t>(text.size(), 3);
        const bool isEscape =
            text[0] == '%' && text.size() >= 3 && std::from_chars(text.data() + 1, end, code, 16).ptr == end;
        path += isEscape ? static_cast<char>(code) : text[0];
        text.remove_prefix(isEscape ? 3 : 1);
    }
    return path;
}

/// The path of an entry, or its URL. Text that is not UTF-8 is Latin-1, unless it is the name of a file.
std::string pathOfEntry(std::string_view entry, const fs::path& folder)
{
    if (const auto path = pathOfFileUrl(entry)) return *path;
    if (isUrl(entry)) return std::string(entry);
    if (entry == standardStream) return (folder / "./-").string(); // a file, and not standard input
    std::error_code ignored;
    const fs::path path = folder / entry;
    if (isUtf8(entry) || fs::exists(path, ignored)) return path.string();
    return (folder / utf8OfLatin1(entry)).string();
}

/// Divide a text into its lines, without empty lines and without blanks at both ends.
std::vector<std::string_view> linesOf(std::string_view text)
{
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF", blanks = " \t";
    constexpr std::string_view lineEnds("\r\n\0", 3); // no name of a file contains a zero byte
    if (text.substr(0, byteOrderMark.size()) == byteOrderMark) text.remove_prefix(byteOrderMark.size());
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const auto end = std::min(text.find_first_of(lineEnds), text.size() - 1) + 1;
        std::string_view line = text.substr(0, text.find_first_of(lineEnds));
        text.remove_prefix(end);
        line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
        line = line.substr(0, line.find_last_not_of(blanks) + 1);
        if (!line.empty()) lines.push_back(line);
    }
    return lines;
}

/// Each line is an entry, except comments, such as #EXTINF.
std::vector<std::string_view> entriesOfM3u(const std::vector<std::string_view>& lines)
{
    std::vector<std::string_view> entries;
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(entries),
                 [](std::string_view line) { return line.front() != '#'; });
    return entries;
}

/// The values of File1=…, File2=… and so on, in the order of the numbers.
std::vector<std::string_view> entriesOfPls(const std::vector<std::string_view>& lines)
{
    constexpr std::string_view key = "file";
    std::map<std::uint32_t, std::string_view> byNumber;
    for (const std::string_view line : lines) {
        const auto equals = line.find('=');
        if (equals == line.npos || lowerCase(line.substr(0, key.size())) != key) continue;
        const auto number = readDecimal<std::uint32_t>(line.substr(key.size(), equals - key.size()));
        if (number && equals + 1 < line.size()) byNumber.emplace(*number, line.substr(equals + 1));
    }
    std::vector<std::string_view> entries;
    for (const auto& [number, entry] : byNumber) entries.push_back(entry);
    return entries;
}

std::string contentOf(const std::string& path)
{
    constexpr std::uintmax_t mostBytes = 16 << 20;
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) throw Failure(path + " does not exist; check the name and the folder");
    if (!fs::is_regular_file(status) || fs::file_size(path, error) > mostBytes)
        throw Failure(
            fmt::format("{} is not a playlist; name a file of up to 16 MiB with one path per line", path));
    std::ifstream in(path, std::ios::binary);
    if (!in) throw unreadable(path, std::error_code(errno, std::generic_category()));
    return {std::istreambuf_iterator<char>(in), {}};
}

std::vector<std::string> filesOfPlaylist(const std::string& path)
{
    const std::string content = contentOf(path);
    const std::vector<std::string_view> lines = linesOf(content);
    std::vector<std::string> paths;
    for (const std::string_view entry :
         extensionOf(path) == "pls" ? entriesOfPls(lines) : entriesOfM3u(lines))
        paths.push_back(pathOfEntry(entry, fs::path(path).parent_path()));
    if (paths.empty()) throw Failure(path + " names no files; write one path per line into it");
    return paths;
}

} // namespace

bool isPlaylistFile(const std::string& path) { return holds(playlistExtensions, extensionOf(path)); }

std::initializer_list<const char*> soundFileExtensions() { return extensions; }

std::vector<std::string> expandList(const std::string& path, bool isRecursive, const ReportFailure& report)
{
    const std::string found = pathOnDisk(path);
    std::error_code ignored;
    if (fs::is_directory(found, ignored)) {
        std::vector<std::string> paths;
        addSoundFiles(found, isRecursive, report, paths);
        if (paths.empty())
            throw Failure(fmt::format("{} has no sound files; {}", path,
                                      isRecursive
                                          ? "name another folder"
                                          : "name another folder, or also search its folders with -r"));
        return paths;
    }
    if (isPlaylistFile(found)) return filesOfPlaylist(found);
    return {path};
}

void refuseNestedLists(const std::string& path)
{
    if (isUrl(path)) throw Failure(path + " is a URL; save it as a file, and name the file");
    if (isPlaylistFile(path))
        throw Failure(path + " is a playlist in a playlist; name it in the command, or list its files");
}

} // namespace kvx
