// What is to be played: files in order, gathered into runs of one format. A run needs one player and has no
// gaps.
#pragma once

#include "host/kvx/files/sound_file.h"
#include "host/kvx/terminal/progress.h"

#include <memory>
#include <string>
#include <vector>

namespace kvx {

struct ProgrammeFile {
    std::string path; ///< as the disk spells it
    SoundFormat format;
};

/// Neighbouring files of one sample rate and channel count.
struct Run {
    std::vector<ProgrammeFile> files; ///< at least one

    int sampleRate() const { return files.front().format.sampleRate; }
    int channels() const { return files.front().format.channels; }
    std::int64_t frames() const;

    /// The file that sounds at `frame`, counted from the start of the run; the last one from there on.
    const ProgrammeFile& fileAt(std::int64_t frame) const;
    std::int64_t firstFrameOf(const ProgrammeFile& file) const;
};

/// Open every file and gather them. Throws Failure for the first that is unfit, before the first sound.
std::vector<Run> planProgramme(const std::vector<std::string>& paths);

/// The files of all runs, in order.
std::vector<ProgrammeFile> filesOf(const std::vector<Run>& runs);

std::vector<std::string> pathsOf(const std::vector<Run>& runs);

/// Warn of each file that plays in part.
void warnOfMissingParts(const std::vector<Run>& runs, Progress& progress);

/// "Playing song.wav: 44100 Hz, stereo, 0:06.5"
std::string printAnnouncement(const ProgrammeFile& file);

/// "mono", "stereo", "6 channels"
std::string printChannels(int channels);

/// Reads a run from its first frame to its last, one file open at a time.
class RunReader {
public:
    explicit RunReader(const Run& run) : run_(run) {}

    /// As SoundFile::read, across the seams between files. Returns fewer frames than requested at the run's
    /// end only.
    std::size_t read(float* out, std::size_t frames);

    /// Files so far whose data stopped decoding before their last frame.
    const std::vector<std::string>& damagedFiles() const { return damagedFiles_; }

private:
    const Run& run_;
    std::size_t next_ = 0;
    std::unique_ptr<SoundFile> open_;
    std::vector<std::string> damagedFiles_;
};

} // namespace kvx
