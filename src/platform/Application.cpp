#include "platform/Application.h"

#include "platform/Control.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QIcon>
#include <QPainter>
#include <QPixmap>
#include <QProxyStyle>
#include <QSessionManager>
#include <QSocketNotifier>
#include <QStyleOption>
#include <QSvgRenderer>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

// A list or text area with the keyboard focus shows so, which the toolkit leaves out. A panel draws its own edge.
class FocusStyle : public QProxyStyle {
public:
    void drawControl(
        ControlElement element, const QStyleOption* option, QPainter* painter, const QWidget* widget) const override
    {
        QProxyStyle::drawControl(element, option, painter, widget);
        if (element != CE_ShapedFrame || !option->state.testFlag(State_HasFocus)
            || qobject_cast<const QAbstractScrollArea*>(widget) == nullptr)
            return;
        painter->save();
        painter->setBrush(Qt::NoBrush);
        painter->setPen(option->palette.color(QPalette::Highlight));
        painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
        painter->restore();
    }
};

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

const std::string_view Application::version = TAMARACK_VERSION;
const int Application::major = TAMARACK_VERSION_MAJOR;
const int Application::minor = TAMARACK_VERSION_MINOR;
const std::string_view Application::companyName = "Tamarack developers";

Application::Application(int& argc, char** argv)
{
    // With a factor such as 1.5 the lines of one pixel around frames would fall between the screen's. What is left of
    // it comes as a larger font, which all places follow.
    QApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::Floor);
    application = std::make_unique<QApplication>(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Tamarack"));
    QApplication::setOrganizationName(QStringLiteral("Tamarack"));
    QApplication::setDesktopFileName(QStringLiteral("tamarack"));
    QApplication::setApplicationVersion(QStringLiteral(TAMARACK_VERSION));
    QApplication::setWindowIcon(WindowIcon());
    QApplication::setStyle(new FocusStyle);
    // The program ends when its main form is unloaded, not when nothing is on the screen for a moment.
    QApplication::setQuitOnLastWindowClosed(false);
}

Application::~Application() = default;

void Application::AtEndRequest(std::function<void()> handler)
{
    endRequested = std::move(handler);
    QObject::connect(
        application.get(), &QApplication::commitDataRequest, application.get(), [this](QSessionManager& manager) {
            manager.setRestartHint(QSessionManager::RestartNever);
            Raise(endRequested);
        });
    if (pipe2(signalPipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    signalNotifier = std::make_unique<QSocketNotifier>(signalPipe[0], QSocketNotifier::Read);
    QObject::connect(signalNotifier.get(), &QSocketNotifier::activated, signalNotifier.get(), [this] {
        char byte = 0;
        while (read(signalPipe[0], &byte, 1) > 0) { }
        Raise(endRequested);
    });
    struct sigaction action { };
    action.sa_handler = NoteSignal;
    action.sa_flags = SA_RESTART;
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        sigaction(signal, &action, nullptr);
}

int Application::Run() { return QApplication::exec(); }

void Application::Quit() { QApplication::quit(); }
