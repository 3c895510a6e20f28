// The playlist: the files that a command plays, in order, divided into groups of one format.
// All functions: [main].
#pragma once

#include "host/kvx/files/sound_file.h"
#include "host/kvx/files/streams.h"
#include "host/kvx/terminal/progress.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace kvx {

struct PlaylistFile {
    std::string path; ///< path of the file, in the spelling of pathOnDisk()
    SoundFormat format;
};

/// Consecutive files with the same sample rate and the same number of decoded channels (1 or 2, see
/// SoundFormat::channels). One buffered player plays the files of a group without gaps.
struct FormatGroup {
    std::vector<PlaylistFile> files; ///< files of the group, at least one

    int sampleRate() const { return files.front().format.sampleRate; }
    int channels() const { return files.front().format.channels; } ///< number of decoded channels
    std::int64_t frames() const;

    /// The file that contains the frame number `frame`, counted from the start of the group. If the group has
    /// fewer frames, the last file.
    const PlaylistFile& fileAt(std::int64_t frame) const;
    std::int64_t firstFrameOf(const PlaylistFile& file) const;
};

using Playlist = std::vector<FormatGroup>;

/// Open every file and group the files by format.
/// Errors  throws Failure for the first file that cannot be read.
Playlist planPlaylist(const std::vector<std::string>& paths);

/// Open the files of a list, in which a path may also name a folder or a playlist file (see expandList()),
/// and group them by format. Standard input and pipes are read into `inputs`. A path or file that cannot be
/// read is reported as a warning and left out. After a signal, no more files are opened.
/// Errors  throws Failure if no file is left.
Playlist planPlaylist(const std::vector<std::string>& paths, bool isRecursive, SpooledInputs& inputs,
                      Progress& progress);

/// The group of the consecutive files of one format that begins with the file number `first`.
FormatGroup groupFrom(const std::vector<PlaylistFile>& files, std::size_t first);

/// The files of all groups, in order.
std::vector<PlaylistFile> filesOf(const Playlist& playlist);
std::vector<std::string> pathsOf(const Playlist& playlist);

/// Print a warning for each file with missing content.
void warnOfMissingParts(const Playlist& playlist, Progress& progress);

/// Print "Playing song.wav: 44100 Hz, stereo, 0:06.5". If only the first `channels` channels of the file
/// play, also print which ones do not, and a command that plays them.
void announce(const PlaylistFile& file, int channels, Progress& progress);

/// Reads the files of a group as one sound: of each file at most format.frames. Only one file is open at a
/// time.
class GroupReader {
public:
    explicit GroupReader(const FormatGroup& group) : group_(group) {}

    /// Decode up to `frames` frames.
    /// Shape    out[frame * group.channels() + channel].
    /// Returns  the number of decoded frames; less than `frames` only at the end of the group.
    /// Errors   throws Failure if the disk cannot be read.
    std::size_t read(float* out, std::size_t frames);

    /// Continue at the frame number `frame` of the group.
    /// Errors  throws Failure.
    void seek(std::int64_t frame);

    /// Paths of the files whose data, as far as it was read, stopped decoding before the last frame.
    const std::vector<std::string>& damagedFiles() const { return damagedFiles_; }

private:
    const FormatGroup& group_;
    std::size_t next_ = 0;
    std::int64_t left_ = 0; // number of frames of the open file that have not been read
    std::unique_ptr<SoundFile> open_;
    std::vector<std::string> damagedFiles_;
};

} // namespace kvx
