#include "platform/Application.h"

#include <QApplication>
#include <QIcon>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

namespace {

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

}

Application::Application(int& argc, char** argv)
    : application(std::make_unique<QApplication>(argc, argv))
{
    QApplication::setApplicationName(QStringLiteral("Tamarack"));
    QApplication::setOrganizationName(QStringLiteral("Tamarack"));
    QApplication::setDesktopFileName(QStringLiteral("tamarack"));
    QApplication::setWindowIcon(WindowIcon());
    // The program ends when its main form is unloaded, not when nothing is on the screen for a moment.
    QApplication::setQuitOnLastWindowClosed(false);
}

Application::~Application() = default;

int Application::Run() { return QApplication::exec(); }

void Application::Quit() { QApplication::quit(); }
