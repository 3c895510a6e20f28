#include "host/kvx/files/file_details.h"

#include <sndfile.h>

#include <memory>

namespace kvx {
namespace {

// clang-format off
constexpr struct {
    int subtype;
    int bits;
} bitDepths[] = {
    {SF_FORMAT_PCM_S8,   8}, {SF_FORMAT_PCM_U8,  8}, {SF_FORMAT_PCM_16, 16}, {SF_FORMAT_PCM_24, 24},
    {SF_FORMAT_PCM_32,  32}, {SF_FORMAT_FLOAT,  32}, {SF_FORMAT_DOUBLE, 64},
    {SF_FORMAT_ALAC_16, 16}, {SF_FORMAT_ALAC_20, 20}, {SF_FORMAT_ALAC_24, 24}, {SF_FORMAT_ALAC_32, 32},
};

constexpr struct {
    int string;
    const char* name;
} tagNames[] = {
    {SF_STR_TITLE,   "title"},   {SF_STR_ARTIST,      "artist"},       {SF_STR_ALBUM,     "album"},
    {SF_STR_DATE,    "date"},    {SF_STR_TRACKNUMBER, "track number"}, {SF_STR_GENRE,     "genre"},
    {SF_STR_COMMENT, "comment"}, {SF_STR_COPYRIGHT,   "copyright"},    {SF_STR_LICENSE,   "license"},
    {SF_STR_SOFTWARE, "software"},
};
// clang-format on

/// libsndfile's name for the container or the codec in a format; `mask` selects which.
std::string nameOf(int format, int mask)
{
    SF_FORMAT_INFO info = {};
    info.format = format & mask;
    return sf_command(nullptr, SFC_GET_FORMAT_INFO, &info, sizeof info) == 0 && info.name ? info.name : "";
}

} // namespace

FileDetails readFileDetails(const std::string& path)
{
    SF_INFO info = {};
    const std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> file(sf_open(path.c_str(), SFM_READ, &info), sf_close);
    if (!file) return {};
    FileDetails details;
    details.container = nameOf(info.format, SF_FORMAT_TYPEMASK);
    details.codec = nameOf(info.format, SF_FORMAT_SUBMASK);
    for (const auto& each : bitDepths)
        if (each.subtype == (info.format & SF_FORMAT_SUBMASK)) details.bitDepth = each.bits;
    for (const auto& each : tagNames)
        if (const char* text = sf_get_string(file.get(), each.string))
            details.tags.push_back({each.name, text});
    return details;
}

} // namespace kvx
