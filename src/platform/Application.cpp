#include "platform/Application.h"

#include "platform/LegibleStyle.h"
#include "platform/Process.h"
#include "platform/Screen.h"

#include <QApplication>
#include <QFontInfo>
#include <QIcon>
#include <QPainter>
#include <QPixmap>
#include <QScreen>
#include <QSessionManager>
#include <QSocketNotifier>
#include <QSvgRenderer>
#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

bool LargestWindowFits()
{
    // In twips, the client area of the help, which is the largest window in both directions; and what a desktop puts
    // around a window at most, in pixels.
    constexpr double width = 9600;
    constexpr double height = 7200;
    constexpr QSize frame(10, 40);
    const QList<QScreen*> screens = QApplication::screens();
    return std::all_of(screens.begin(), screens.end(), [&](const QScreen* screen) {
        const QSize room = screen->availableGeometry().size() - frame;
        return Twips::ToPixels(width) <= room.width() && Twips::ToPixels(height) <= room.height();
    });
}

// All places grow with the font. One that is too large for a screen, as with 192 dots per inch on a small one, would
// leave buttons out of reach.
void FitFontToScreens()
{
    constexpr double smallest = 6;
    constexpr double step = 0.5;
    QFont font = QApplication::font();
    for (double points = QFontInfo(font).pointSizeF(); points > smallest && !LargestWindowFits(); points -= step) {
        font.setPointSizeF(points - step);
        QApplication::setFont(font);
    }
}

QIcon WindowIcon()
{
    QSvgRenderer drawing(QStringLiteral(":/artwork/tamarack.svg"));
    QIcon icon;
    for (const int side : {16, 32, 48, 64, 128}) {
        QPixmap face(side, side);
        face.fill(Qt::transparent);
        QPainter painter(&face);
        drawing.render(&painter);
        icon.addPixmap(face);
    }
    return icon;
}

// A signal's handler may do next to nothing: it writes a byte into this pipe, and the other end is an event.
int signalPipe[2] = {-1, -1};

void NoteSignal(int)
{
    const int saved = errno;
    (void)!write(signalPipe[1], "", 1);
    errno = saved;
}

}

const int Application::major = TAMARACK_VERSION_MAJOR;
const int Application::minor = TAMARACK_VERSION_MINOR;
const std::string_view Application::companyName = "Tamarack developers";

Application::Application(int& argc, char** argv)
{
    PrepareProcess();
    // With a factor such as 1.5 the lines of one pixel around frames would fall between the screen's. What is left of
    // it comes as a larger font, which all places follow.
    QApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::Floor);
    application = std::make_unique<QApplication>(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Tamarack"));
    QApplication::setDesktopFileName(QStringLiteral("tamarack"));
    QApplication::setApplicationVersion(QStringLiteral(TAMARACK_VERSION));
    QApplication::setWindowIcon(WindowIcon());
    QApplication::setStyle(MakeLegibleStyle());
    FitFontToScreens();
    // The program ends when its main form is unloaded, not when nothing is on the screen for a moment.
    QApplication::setQuitOnLastWindowClosed(false);
}

Application::~Application() = default;

void Application::AtEndRequest(std::function<void()> handler)
{
    QObject::connect(
        application.get(), &QApplication::commitDataRequest, application.get(), [handler](QSessionManager& manager) {
            manager.setRestartHint(QSessionManager::RestartNever);
            handler();
        });
    if (pipe2(signalPipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    auto* arrival = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, application.get());
    QObject::connect(arrival, &QSocketNotifier::activated, arrival, [handler] {
        char byte = 0;
        while (read(signalPipe[0], &byte, 1) > 0) { }
        handler();
    });
    struct sigaction action { };
    action.sa_handler = NoteSignal;
    action.sa_flags = SA_RESTART;
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        sigaction(signal, &action, nullptr);
}

int Application::Run() { return QApplication::exec(); }
