#include "platform/Application.h"

#include <QApplication>

Application::Application(int& argc, char** argv)
    : application(std::make_unique<QApplication>(argc, argv))
{
    QApplication::setApplicationName(QStringLiteral("Tamarack"));
    QApplication::setOrganizationName(QStringLiteral("Tamarack"));
    QApplication::setDesktopFileName(QStringLiteral("tamarack"));
}

Application::~Application() = default;

int Application::Run() { return QApplication::exec(); }

void Application::Quit() { QApplication::quit(); }
