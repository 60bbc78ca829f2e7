#include "demo/support/Camera.h"

#include "demo/support/Legibility.h"

#include <QImage>
#include <QMessageBox>
#include <QStyle>
#include <QTest>
#include <QTimer>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <system_error>

Camera::Camera(const std::string& newDirectory)
    : directory(newDirectory)
{
    std::error_code error;
    std::filesystem::create_directories(directory, error);
}

void Camera::Take(std::string_view name, QWidget& window)
{
    const std::string path = directory + std::string(name) + ".png";
    // Some styles pale what is in a window that is not in use, or take their time over a change.
    window.activateWindow();
    (void)Until([&] { return window.isActiveWindow(); }, std::chrono::seconds(1));
    QTest::qWait(2 * window.style()->styleHint(QStyle::SH_Widget_Animation_Duration));
    const QImage picture = window.grab().toImage();
    const bool isWritten = picture.save(QString::fromStdString(path));
    written += isWritten;
    std::printf("%s %s\n", isWritten ? "screenshot" : "CANNOT WRITE", path.c_str());
    TellWhatIsHardToSee(window, picture);
}

void Camera::Take(std::string_view name, std::string_view window) { Take(name, Find<QWidget>(window)); }

void Camera::TakeNext(std::string_view name, std::string_view window)
{
    // Behind the event that brings it up, and once its desktop has had time to place it.
    QTimer::singleShot(0, qApp, [this, name = std::string(name), window = std::string(window)] {
        const auto found = [&]() -> QWidget* {
            if (!window.empty())
                return WindowNamed(window);
            for (QWidget* candidate : QApplication::topLevelWidgets()) {
                if (qobject_cast<QMessageBox*>(candidate) != nullptr && candidate->isVisible())
                    return candidate;
            }
            return nullptr;
        };
        if (!Until([&] { return found() != nullptr && found()->isVisible(); })) {
            // Whatever came in its place would wait for ever.
            QApplication::closeAllWindows();
            return;
        }
        QTest::qWait(100);
        Take(name, *found());
        QTest::keyClick(found(), Qt::Key_Escape);
    });
}
