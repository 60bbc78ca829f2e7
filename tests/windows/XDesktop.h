#pragma once

#include "support/TemporaryFolder.h"

#include <QPointF>
#include <QProcess>
#include <QRect>

// A screen that nobody sees (Xvfb) under a window manager (openbox), and the real program on it, worked with mouse and
// keyboard from outside. Windows are known by the window manager's numbers. Throws std::runtime_error, which fails the
// test, where one of the tools is missing or does not do what it is there for, and where a window does not come or go.
class XDesktop {
public:
    explicit XDesktop(QSize size, int dotsPerInch = 96);
    ~XDesktop();

    QRect Screen() const { return {QPoint(), size}; }

    // Starts the program, as one that is installed and keeps its files and settings here. One runs at a time.
    void Start();
    bool HasEnded() { return program.waitForFinished() && program.exitCode() == 0; }
    std::string ProgramFile(std::string_view name) const { return folder.File("home/Tamarack/" + std::string(name)); }
    std::string Temporary() const { return folder.File("temporary/"); }

    // The window whose title begins so; when it has come up and stands still, or empty if there is none now.
    std::string Window(const std::string& title) const;
    std::string WindowNow(const std::string& title) const;

    // With the frame that the window manager has put around it.
    QRect Frame(const std::string& window) const;
    // The same, when it has not changed for a moment.
    QRect SettledFrame(const std::string& window) const;
    // It comes to that place, to two pixels, and stays there.
    bool StaysAt(const std::string& window, const QRect& frame) const;

    void Move(const std::string& window, const QRect& place) const;
    void Maximise(const std::string& window) const;
    // As with its close button, which the program may take its time to follow.
    void Close(const std::string& window) const;

    // Keys one after the other, as xdotool names them.
    void Press(const std::string& window, const std::string& keys) const;
    // So far from the corner within the window's frame, in both directions as a part of its width.
    void Click(const std::string& window, QPointF place, const std::string& action = "click 1") const;

private:
    std::string Run(const std::string& command) const;
    QRect Client(const std::string& window) const;

    const QSize size;
    TemporaryFolder folder;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    QProcess server;
    QProcess windowManager;
    QProcess program;
};
