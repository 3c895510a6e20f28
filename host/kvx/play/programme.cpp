#include "host/kvx/play/programme.h"

#include "host/kvx/files/file_failure.h"

#include <fmt/format.h>

#include <filesystem>

namespace kvx {

std::int64_t Run::frames() const
{
    std::int64_t sum = 0;
    for (const ProgrammeFile& file : files) sum += file.format.frames;
    return sum;
}

const ProgrammeFile& Run::fileAt(std::int64_t frame) const
{
    for (const ProgrammeFile& file : files) {
        if (frame < file.format.frames) return file;
        frame -= file.format.frames;
    }
    return files.back();
}

std::int64_t Run::firstFrameOf(const ProgrammeFile& wanted) const
{
    std::int64_t first = 0;
    for (const ProgrammeFile& file : files) {
        if (&file == &wanted) break;
        first += file.format.frames;
    }
    return first;
}

std::vector<Run> planProgramme(const std::vector<std::string>& paths)
{
    std::vector<Run> runs;
    for (const std::string& path : paths) {
        const SoundFile file(path);
        const SoundFormat& format = file.format();
        const bool fits = !runs.empty() && runs.back().sampleRate() == format.sampleRate &&
                          runs.back().channels() == format.channels;
        if (!fits) runs.emplace_back();
        runs.back().files.push_back({file.path(), format});
    }
    return runs;
}

std::vector<ProgrammeFile> filesOf(const std::vector<Run>& runs)
{
    std::vector<ProgrammeFile> files;
    for (const Run& run : runs) files.insert(files.end(), run.files.begin(), run.files.end());
    return files;
}

std::vector<std::string> pathsOf(const std::vector<Run>& runs)
{
    std::vector<std::string> paths;
    for (const ProgrammeFile& file : filesOf(runs)) paths.push_back(file.path);
    return paths;
}

void warnOfMissingParts(const std::vector<Run>& runs, Progress& progress)
{
    for (const ProgrammeFile& file : filesOf(runs))
        for (const std::string& line : missingParts(file.path, file.format)) progress.warn(line);
}

std::string printChannels(int channels)
{
    return channels == 1 ? "mono" : channels == 2 ? "stereo" : fmt::format("{} channels", channels);
}

std::string printAnnouncement(const ProgrammeFile& file)
{
    const SoundFormat& format = file.format;
    return fmt::format("Playing {}: {} Hz, {}, {}", std::filesystem::path(file.path).filename().string(),
                       format.sampleRate, printChannels(format.fileChannels), printTime(format.duration()));
}

std::size_t RunReader::read(float* out, std::size_t frames)
{
    std::size_t done = 0;
    while (done < frames) {
        if (!open_) {
            if (next_ == run_.files.size()) break;
            open_ = std::make_unique<SoundFile>(run_.files[next_++].path);
        }
        const std::size_t got = open_->read(out + done * std::size_t(run_.channels()), frames - done);
        done += got;
        if (done == frames) break;
        if (open_->isDamaged()) damagedFiles_.push_back(open_->path());
        open_.reset(); // at its end
    }
    return done;
}

} // namespace kvx
