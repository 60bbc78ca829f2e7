#include "platform/Metafile.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;

// The helper itself ends after two seconds of processor time; on a busy machine those may take longer.
constexpr auto patience = 6s;

// Beside the program, or where an installation keeps what is not for its users.
std::string HelperProgram()
{
    std::error_code error;
    const std::filesystem::path directory = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    for (const char* place : {"tamarack-metafile", "../libexec/tamarack/tamarack-metafile"}) {
        const std::filesystem::path program = directory / place;
        if (access(program.c_str(), X_OK) == 0)
            return program.string();
    }
    return {};
}

// The helper, with a file for its input, from its start to its end.
class Helper {
public:
    Helper(int input, int maxWidth, int maxHeight)
    {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0)
            return;
        answer = ends[0];
        posix_spawn_file_actions_t files;
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_adddup2(&files, input, STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&files, ends[1], STDOUT_FILENO);
        posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        std::string program = HelperProgram();
        std::string width = std::to_string(maxWidth);
        std::string height = std::to_string(maxHeight);
        char* const arguments[] = {program.data(), width.data(), height.data(), nullptr};
        if (posix_spawn(&process, program.c_str(), &files, nullptr, arguments, environ) != 0)
            process = -1;
        posix_spawn_file_actions_destroy(&files);
        close(ends[1]);
    }
    ~Helper()
    {
        if (answer >= 0)
            close(answer);
        if (process > 0) {
            kill(process, SIGKILL);
            while (waitpid(process, nullptr, 0) < 0 && errno == EINTR) { }
        }
    }
    Helper(const Helper&) = delete;
    Helper& operator=(const Helper&) = delete;

    // False if the answer ends before, or comes too late.
    [[nodiscard]] bool Read(void* bytes, std::size_t length)
    {
        if (answer < 0)
            return false;
        auto* next = static_cast<char*>(bytes);
        while (length > 0) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
            pollfd waiting{answer, POLLIN, 0};
            const int ready = left > 0 ? poll(&waiting, 1, static_cast<int>(left)) : 0;
            if (ready < 0 && errno == EINTR)
                continue;
            const ssize_t got = ready > 0 ? read(answer, next, length) : 0;
            if (got <= 0)
                return false;
            next += got;
            length -= static_cast<std::size_t>(got);
        }
        return true;
    }

private:
    using Clock = std::chrono::steady_clock;

    const Clock::time_point deadline = Clock::now() + patience;
    int answer = -1;
    pid_t process = -1;
};

}

bool IsMetafile(std::string_view head)
{
    using namespace std::string_view_literals;
    // The placeable header of a WMF; the plain one: kind 1 or 2, a header of 9 words, version 1 or 3; an EMF's.
    return head.starts_with("\xd7\xcd\xc6\x9a"sv)
        || ((head.starts_with("\1\0\x09\0"sv) || head.starts_with("\2\0\x09\0"sv))
            && (head.substr(4, 2) == "\0\1"sv || head.substr(4, 2) == "\0\3"sv))
        || (head.starts_with("\1\0\0\0"sv) && head.size() >= metafileHeadLength && head.substr(40, 4) == " EMF"sv);
}

std::optional<MetafilePicture> RenderMetafile(int descriptor, int maxWidth, int maxHeight)
{
    if (lseek(descriptor, 0, SEEK_SET) != 0)
        return std::nullopt;
    Helper helper(descriptor, maxWidth, maxHeight);
    std::array<std::uint32_t, 4> header{};
    if (!helper.Read(header.data(), sizeof header))
        return std::nullopt;
    const auto [width, height, renderedWidth, renderedHeight] = header;
    constexpr std::uint32_t longest = 1 << 26;
    if (width < 1 || height < 1 || width > longest || height > longest || renderedWidth < 1 || renderedHeight < 1
        || renderedWidth > static_cast<std::uint32_t>(maxWidth)
        || renderedHeight > static_cast<std::uint32_t>(maxHeight))
        return std::nullopt;
    MetafilePicture picture{static_cast<int>(width), static_cast<int>(height), static_cast<int>(renderedWidth),
        static_cast<int>(renderedHeight), std::vector<std::uint32_t>(std::size_t{renderedWidth} * renderedHeight)};
    if (!helper.Read(picture.pixels.data(), picture.pixels.size() * sizeof(std::uint32_t)))
        return std::nullopt;
    return picture;
}
