#include "base/Files.h"
#include "picture-reader/Protocol.h"
#include "platform/Bitmap.h"
#include "platform/Events.h"

#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QPointer>
#include <QScreen>
#include <QSocketNotifier>
#include <QTimer>
#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <poll.h>
#include <spawn.h>
#include <string>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

// Pictures of strangers are read by a program of its own, tamarack-picture, which has no rights: whatever a file makes
// of it, it can do no more than give other pixels, or none. One is kept for metafiles and one for all other pictures;
// each is started when it is first needed, and anew when it has died.

namespace {

using namespace std::chrono_literals;

struct HelpersPicture {
    QSize size; // its own
    QImage pixels; // reduced to the size that was asked for, if it is larger
};

// A start takes some hundredths of a second, more where there are many fonts, and nobody has a hand in that.
constexpr auto longestStart = 10s;
constexpr auto longestReading = 2500ms;

// What is there within this time is taken at once, which is nearly every picture.
constexpr auto withoutEvents = 50ms;

// A picture that is asked for while events are let through, and so on.
constexpr int mostWaits = 4;

// Where an installation keeps what is not for its users, or beside the program. A download may come to lie beside it.
std::string HelperProgram()
{
    for (const char* place : {"../libexec/tamarack/tamarack-picture", "tamarack-picture"}) {
        const std::string program = ExecutableDirectory() + place;
        if (access(program.c_str(), X_OK) == 0)
            return program;
    }
    return {};
}

bool IsReadable(int descriptor, std::chrono::milliseconds time)
{
    pollfd waiting{descriptor, POLLIN, 0};
    int ready = 0;
    do
        ready = poll(&waiting, 1, static_cast<int>(time.count()));
    while (ready < 0 && errno == EINTR);
    return ready > 0;
}

class Helper {
public:
    Helper(bool newForMetafiles, std::size_t newRoom)
        : forMetafiles(newForMetafiles)
        , room(newRoom)
    {
        memory = Descriptor(memfd_create("tamarack-picture", MFD_CLOEXEC | MFD_ALLOW_SEALING));
        // Nobody can take away the end of it while it is read here.
        if (!memory.IsOpen() || ftruncate(memory.Number(), static_cast<off_t>(room)) != 0
            || fcntl(memory.Number(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) != 0)
            return;
        if (shared.open(memory.Number(), QIODevice::ReadOnly))
            pixels = shared.map(0, static_cast<qint64>(room));
        int ends[2];
        if (pixels == nullptr || socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
            return;
        socket = Descriptor(ends[0]);
        const Descriptor itsEnd(ends[1]);
        Start(itsEnd);
    }
    ~Helper()
    {
        // The number of one that is gone may be another's by now.
        if (process > 0 && waitpid(process, nullptr, WNOHANG) == 0) {
            kill(process, SIGKILL);
            while (waitpid(process, nullptr, 0) < 0 && errno == EINTR) { }
        }
    }

    bool Serves(bool metafiles, std::size_t bytes) const { return forMetafiles == metafiles && room >= bytes; }

    // One that has nothing to do says nothing: it has ended, or has been led astray.
    bool IsIdle() const { return !IsReadable(socket.Number(), 0s); }

    bool HasStarted()
    {
        PictureAnswer answer{};
        return process > 0 && Await(longestStart) && Receive(answer);
    }

    bool IsNew() const { return isNew; }

    std::optional<HelpersPicture> Read(int file, const PictureRequest& request)
    {
        isNew = false;
        PictureAnswer answer{};
        if (!Send(file, request) || !Await(longestReading) || !Receive(answer))
            return std::nullopt;
        if (answer.pixelWidth == 0)
            return HelpersPicture{};
        if (!IsPossible(answer, request))
            return std::nullopt;
        const QSize size(static_cast<int>(answer.pixelWidth), static_cast<int>(answer.pixelHeight));
        // A copy, since the helper can still write there.
        const QImage itsPixels(pixels, size.width(), size.height(), 4 * size.width(),
            answer.hasAlpha != 0 ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
        return HelpersPicture{{static_cast<int>(answer.width), static_cast<int>(answer.height)}, itsPixels.copy()};
    }

private:
    // Waits for a message or an end. False if there is none in time; the helper is killed then, whatever the thread is
    // doing for an event that it has let through.
    bool Await(std::chrono::milliseconds time)
    {
        static int waits = 0;
        if (IsReadable(socket.Number(), withoutEvents))
            return true;
        const std::chrono::milliseconds rest = time - withoutEvents;
        if (waits >= mostWaits)
            return IsReadable(socket.Number(), rest);
        ++waits;
        bool answered = false;
        bool late = false;
        QSocketNotifier message(socket.Number(), QSocketNotifier::Read);
        QObject::connect(&message, &QSocketNotifier::activated, &message, [&] {
            message.setEnabled(false);
            answered = !late;
        });
        QTimer::singleShot(rest, Qt::PreciseTimer, &message, [&] {
            late = !answered;
            if (late)
                kill(process, SIGKILL);
        });
        while (!answered && !late)
            WaitForEvents();
        --waits;
        return answered;
    }

    void Start(const Descriptor& itsEnd)
    {
        std::string program = HelperProgram();
        std::string fonts = "fonts";
        char* const arguments[] = {program.data(), forMetafiles ? fonts.data() : nullptr, nullptr};
        char* const environment[] = {nullptr};
        posix_spawn_file_actions_t files;
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_adddup2(&files, itsEnd.Number(), requestDescriptor);
        posix_spawn_file_actions_adddup2(&files, memory.Number(), pixelDescriptor);
        for (const int output : {STDOUT_FILENO, STDERR_FILENO})
            posix_spawn_file_actions_addopen(&files, output, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addclosefrom_np(&files, pixelDescriptor + 1);
        if (posix_spawn(&process, program.c_str(), &files, nullptr, arguments, environment) != 0)
            process = -1;
        posix_spawn_file_actions_destroy(&files);
    }

    bool Send(int file, PictureRequest request) const
    {
        if (lseek(file, 0, SEEK_SET) != 0) // another helper may have begun with it
            return false;
        iovec part{&request, sizeof request};
        alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof file)> control{};
        msghdr message{};
        message.msg_iov = &part;
        message.msg_iovlen = 1;
        message.msg_control = control.data();
        message.msg_controllen = control.size();
        cmsghdr* const header = CMSG_FIRSTHDR(&message);
        header->cmsg_level = SOL_SOCKET;
        header->cmsg_type = SCM_RIGHTS;
        header->cmsg_len = CMSG_LEN(sizeof file);
        std::memcpy(CMSG_DATA(header), &file, sizeof file);
        return sendmsg(socket.Number(), &message, MSG_NOSIGNAL | MSG_DONTWAIT) == sizeof request;
    }

    bool Receive(PictureAnswer& answer) const
    {
        return recv(socket.Number(), &answer, sizeof answer, MSG_DONTWAIT | MSG_TRUNC) == sizeof answer;
    }

    const bool forMetafiles;
    const std::size_t room;
    Descriptor memory;
    QFile shared; // the memory once more, which maps it
    Descriptor socket;
    pid_t process = -1;
    bool isNew = true;
    const uchar* pixels = nullptr;
};

// Those that have nothing to do: one of either kind, and what was started while they had.
std::vector<std::unique_ptr<Helper>>& IdleHelpers()
{
    static std::vector<std::unique_ptr<Helper>> helpers;
    return helpers;
}

// Where no more pictures come, none is waited for.
void EndIdleHelpersLater()
{
    static QPointer<QTimer> rest;
    if (!rest) {
        rest = new QTimer(QCoreApplication::instance());
        rest->setSingleShot(true);
        rest->setInterval(30s);
        QObject::connect(rest, &QTimer::timeout, [] { IdleHelpers().clear(); });
    }
    rest->start();
}

std::unique_ptr<Helper> TakeHelper(bool forMetafiles, std::size_t room)
{
    auto& idle = IdleHelpers();
    std::erase_if(idle, [](const auto& helper) { return !helper->IsIdle(); });
    const auto found = std::find_if(
        idle.begin(), idle.end(), [=](const auto& helper) { return helper->Serves(forMetafiles, room); });
    if (found == idle.end()) {
        auto helper = std::make_unique<Helper>(forMetafiles, room);
        return helper->HasStarted() ? std::move(helper) : nullptr;
    }
    auto helper = std::move(*found);
    idle.erase(found);
    return helper;
}

// More pixels than the screen has cannot be seen.
QSize MostUseful()
{
    const QScreen* screen = QGuiApplication::primaryScreen();
    return (QSizeF(screen->size()) * screen->devicePixelRatio()).toSize().expandedTo({1, 1});
}

PictureFormat FormatOfFile(int descriptor)
{
    std::array<char, formatHeadLength> head{};
    struct stat status { };
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))
        return PictureFormat::None;
    const ssize_t length = pread(descriptor, head.data(), head.size(), 0);
    return FormatOf({head.data(), static_cast<std::size_t>(length < 0 ? 0 : length)});
}

}

Bitmap Bitmap::FromFile(const std::string& path)
{
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    const PictureFormat format = FormatOfFile(file.Number());
    if (format == PictureFormat::None)
        return {};
    const QSize most = MostUseful();
    const PictureRequest request{
        format, static_cast<std::uint32_t>(most.width()), static_cast<std::uint32_t>(most.height())};
    for (;;) {
        auto helper = TakeHelper(IsMetafile(format), BytesFor(request.maxWidth, request.maxHeight));
        if (!helper)
            return {};
        const bool isNew = helper->IsNew();
        if (const auto picture = helper->Read(file.Number(), request)) {
            IdleHelpers().push_back(std::move(helper));
            EndIdleHelpersLater();
            return picture->pixels.isNull() ? Bitmap() : Bitmap(picture->pixels, picture->size);
        }
        // One that has not answered goes, and whatever it still does with it. If it has ended, that may be the doing of
        // an earlier picture, or have come just now, because there were none for a while.
        if (isNew || helper->IsIdle())
            return {};
    }
}
