#include "host/kvx/files/file_failure.h"

#include "host/kvx/text/codes.h"

#include <AudioToolbox/AudioToolbox.h>
#include <Carbon/Carbon.h>
#include <KVXPlatform/KVXPlatform.h>

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <sys/stat.h>

namespace kvx {
namespace {

#define READABLE_TYPES                                                                                       \
    "; kvx plays WAV, AIFF, CAF, FLAC, Ogg Vorbis, Opus, MP3 and whatever else libsndfile reads"

// What follows the path. Each row names the problem and the next step.
constexpr struct {
    OSStatus status;
    const char* text;
} facts[] = {
    {fnfErr, " does not exist; check the name and the folder"},
    {dirNFErr, " does not exist; check the name and the folder"},
    {errFSNameTooLong, " has too long a name; check the name and the folder"},
    {permErr, " may not be read; change its permissions or copy it"},
    {tmfoErr, " cannot be opened: too many files are open; raise the limit with `ulimit -n`"},
    {memFullErr, " cannot be opened: there is not enough memory; close other programs"},
    {ioErr, " cannot be read from its disk; check the disk, or get the file again"},
    {kAudioFileUnsupportedFileTypeError, " cannot be decoded (it is no sound file)" READABLE_TYPES},
    {kAudioFileInvalidFileError, " cannot be decoded (it is damaged, or no sound file)" READABLE_TYPES},
};

// The platform refuses all of these as damaged files. Null: the item itself shows nothing wrong.
const char* problemOfItem(const std::string& path)
{
    struct stat item = {};
    if (stat(path.c_str(), &item) != 0) return nullptr; // the status tells more
    if (S_ISDIR(item.st_mode)) return " is a folder; name the sound files in it";
    if (!S_ISREG(item.st_mode)) return " is not a plain file; copy it into a file first";
    if (item.st_size == 0) return " is empty; get the file again";
    return nullptr;
}

} // namespace

Failure fileFailure(const std::string& path, std::int32_t status)
{
    if (const char* problem = problemOfItem(path)) return Failure(path + problem);
    const auto* fact = std::find_if(std::begin(facts), std::end(facts),
                                    [status](const auto& each) { return each.status == status; });
    if (fact != std::end(facts)) return Failure(path + fact->text);
    if (status == kAudioFileUnsupportedDataFormatError)
        return Failure(
            fmt::format("{} has a coding, sample rate or number of channels that kvx does not play; "
                        "convert it to WAV, of {} to {} Hz and up to {} channels",
                        path, int{KVXLowestFileRate}, int{KVXHighestFileRate}, int{KVXMostFileChannels}));
    return Failure(fmt::format("{} cannot be read: {}; get the file again", path, printStatus(status)));
}

std::vector<std::string> missingParts(const std::string& path, const SoundFormat& format)
{
    std::vector<std::string> lines;
    if (format.isCutShort && format.statedFrames > format.frames)
        lines.push_back(
            fmt::format("{} is cut short: it holds {} of the {} frames that its header states; get "
                        "the file again",
                        path, format.frames, format.statedFrames));
    else if (format.isCutShort)
        lines.push_back(fmt::format(
            "{} is cut short: it ends before the length that its header states; get the file again", path));
    if (format.omittedStreams > 0)
        lines.push_back(fmt::format("{} plays in part: {} of its chained streams cannot be decoded or {} "
                                    "another sample rate or number of channels; split it into files",
                                    path, format.omittedStreams,
                                    format.omittedStreams == 1 ? "has" : "have"));
    return lines;
}

std::string damagedPart(const std::string& path)
{
    return fmt::format("{} is damaged: not all of its frames decode; get the file again", path);
}

} // namespace kvx
