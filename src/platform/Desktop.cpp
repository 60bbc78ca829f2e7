#include "platform/Desktop.h"

#include "platform/DisplayText.h"
#include "platform/Events.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFile>
#include <QInputDialog>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QStandardPaths>
#include <QUrl>
#include <cstdlib>
#include <thread>
#include <unistd.h>

namespace {

void Fill(QMessageBox& box, std::string_view text, std::string_view title)
{
    box.setTextFormat(Qt::PlainText);
    box.setText(ToShow(text).replace(QLatin1String("\r\n"), QLatin1String("\n")));
    box.setWindowTitle(ToShow(title));
    // A busy pointer would tell the user to wait for somebody who waits for the user.
    box.setCursor(Qt::ArrowCursor);
}

}

MessageAnswer Desktop::MsgBox(std::string_view text, std::string_view title, MessageButtons buttons)
{
    QMessageBox box(QApplication::activeWindow());
    Fill(box, text, title);
    box.setStandardButtons(buttons == MessageButtons::YesNo ? QMessageBox::Yes | QMessageBox::No
            : buttons == MessageButtons::OkCancel           ? QMessageBox::Ok | QMessageBox::Cancel
                                                            : QMessageBox::Ok);
    if (buttons == MessageButtons::YesNo)
        box.setEscapeButton(QMessageBox::No);
    const int answer = box.exec();
    return answer == QMessageBox::Yes   ? MessageAnswer::Yes
        : answer == QMessageBox::No     ? MessageAnswer::No
        : answer == QMessageBox::Cancel ? MessageAnswer::Cancel
                                        : MessageAnswer::Ok;
}

std::optional<std::string> Desktop::InputBox(std::string_view prompt, std::string_view title)
{
    bool accepted = false;
    const QString text = QInputDialog::getText(
        QApplication::activeWindow(), ToShow(title), ToShow(prompt), QLineEdit::Normal, {}, &accepted);
    return accepted ? std::optional(FromDisplay(text)) : std::nullopt;
}

bool Desktop::Ask(std::string_view text, std::string_view title, const std::function<bool()>& isWanted)
{
    if (!isWanted())
        return false;
    // Over a modal window, which would otherwise block it.
    QWidget* const modal = QApplication::activeModalWidget();
    QMessageBox box(modal != nullptr ? modal : QApplication::activeWindow());
    Fill(box, text, title);
    box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
    box.setDefaultButton(QMessageBox::No);
    box.setEscapeButton(QMessageBox::No);
    // Whoever is typing elsewhere when it comes up must not say Yes with a letter.
    box.button(QMessageBox::Yes)->setShortcut({});
    box.setWindowModality(Qt::NonModal);
    box.show();
    while (box.isVisible() && isWanted())
        WaitForEvents();
    return isWanted() && box.clickedButton() == box.button(QMessageBox::Yes);
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

bool Desktop::IsInBackground() const { return QApplication::activeWindow() == nullptr; }

void Desktop::EndProgram() { std::_Exit(EXIT_SUCCESS); }

std::string AddressOfFile(const std::string& path)
{
    return QUrl::fromLocalFile(QFile::decodeName(path.c_str())).toEncoded().toStdString();
}
