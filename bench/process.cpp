#include "bench/process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bench {

double processorSeconds(const Words& words)
{
    std::vector<char*> arguments;
    for (const std::string& each : words) arguments.push_back(const_cast<char*>(each.c_str()));
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t silence;
    posix_spawn_file_actions_init(&silence);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        posix_spawn_file_actions_addopen(&silence, stream, "/dev/null", O_RDWR, 0);
    pid_t process = 0;
    const int refusal = posix_spawnp(&process, arguments[0], &silence, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&silence);
    int status = 0;
    rusage usage = {};
    if (refusal != 0 || wait4(process, &status, 0, &usage) != process || status != 0) return -1;
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

bool hasSox()
{
    static const bool has = processorSeconds({"sox", "--version"}) >= 0;
    return has;
}

bool hasFfmpeg()
{
    static const bool has = processorSeconds({"ffmpeg", "-version"}) >= 0;
    return has;
}

Words join(Words words, const Words& rest)
{
    words.insert(words.end(), rest.begin(), rest.end());
    return words;
}

Words withPaths(Words words, const std::string& in, const std::string& out)
{
    for (std::string& each : words)
        if (each == "IN")
            each = in;
        else if (each == "OUT")
            each = out;
    return words;
}

} // namespace bench
