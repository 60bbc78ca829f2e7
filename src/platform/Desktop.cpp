#include "platform/Desktop.h"

#include "platform/DisplayText.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFile>
#include <QMessageBox>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>
#include <cstdlib>
#include <thread>
#include <unistd.h>

namespace {

QMessageBox::StandardButtons StandardButtons(MessageButtons buttons)
{
    switch (buttons) {
    case MessageButtons::OkCancel:
        return QMessageBox::Ok | QMessageBox::Cancel;
    case MessageButtons::YesNo:
        return QMessageBox::Yes | QMessageBox::No;
    case MessageButtons::Ok:
        break;
    }
    return QMessageBox::Ok;
}

MessageAnswer Answer(int button)
{
    switch (button) {
    case QMessageBox::Yes:
        return MessageAnswer::Yes;
    case QMessageBox::No:
        return MessageAnswer::No;
    case QMessageBox::Cancel:
        return MessageAnswer::Cancel;
    default:
        return MessageAnswer::Ok;
    }
}

}

Desktop::~Desktop() = default;

MessageAnswer Desktop::MsgBox(std::string_view text, std::string_view title, MessageButtons buttons)
{
    QMessageBox box(QApplication::activeWindow());
    box.setTextFormat(Qt::PlainText);
    box.setText(ToShow(text).replace(QLatin1String("\r\n"), QLatin1String("\n")));
    box.setWindowTitle(ToShow(title));
    box.setStandardButtons(StandardButtons(buttons));
    if (buttons == MessageButtons::YesNo)
        box.setEscapeButton(QMessageBox::No);
    // A busy pointer would tell the user to wait for somebody who waits for the user.
    box.setCursor(Qt::ArrowCursor);
    return Answer(box.exec());
}

void Desktop::Sleep(std::chrono::milliseconds duration)
{
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->isVisible())
            window->repaint();
    }
    std::this_thread::sleep_for(duration);
}

bool Desktop::ShellOpen(const std::string& address)
{
    // The toolkit only tells whether xdg-open could be started, and that ends with an error where no program opens such
    // a document. Where it goes on, it has found one, and stays until that is closed.
    const QString opener = QStandardPaths::findExecutable(QStringLiteral("xdg-open"));
    if (opener.isEmpty())
        return QDesktopServices::openUrl(QUrl(ToDisplay(address)));
    constexpr int patience = 1000;
    auto* process = new QProcess;
    process->setStandardInputFile(QProcess::nullDevice());
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    // What it opens outlives this program, however that ends.
    process->setChildProcessModifier([] { setsid(); });
    process->start(opener, {ToDisplay(address)});
    if (process->waitForStarted() && !process->waitForFinished(patience) && process->state() == QProcess::Running) {
        QObject::connect(process, &QProcess::finished, process, &QObject::deleteLater);
        return true;
    }
    const bool worked = process->error() != QProcess::FailedToStart && process->exitStatus() == QProcess::NormalExit
        && process->exitCode() == 0;
    delete process;
    return worked;
}

void Desktop::EndProgram() { std::_Exit(EXIT_SUCCESS); }

std::string AddressOfFile(const std::string& path)
{
    return QUrl::fromLocalFile(QFile::decodeName(path.c_str())).toEncoded().toStdString();
}
