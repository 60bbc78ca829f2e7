#include "XDesktop.h"

#include "support/Screen.h"

#include <QTest>
#include <array>
#include <filesystem>
#include <sstream>

namespace fs = std::filesystem;

namespace {

// The four numbers behind these labels, in their order.
std::array<int, 4> Numbers(const std::string& text, const std::array<const char*, 4>& labels)
{
    std::array<int, 4> numbers{};
    std::size_t place = 0;
    for (std::size_t i = 0; i < labels.size(); ++i) {
        place = text.find(labels[i], place);
        if (place == std::string::npos)
            return {};
        place += std::string_view(labels[i]).size();
        numbers[i] = std::atoi(text.c_str() + place);
    }
    return numbers;
}

}

XDesktop::XDesktop(QSize newSize, int dotsPerInch)
    : size(newSize)
{
    fs::create_directories(Temporary());
    server.setStandardErrorFile(QProcess::nullDevice());
    server.startCommand(QStringLiteral("Xvfb -displayfd 1 -screen 0 %1x%2x24 -dpi %3 -nolisten tcp -noreset")
                            .arg(size.width())
                            .arg(size.height())
                            .arg(dotsPerInch));
    if (!server.waitForReadyRead(10000))
        throw std::runtime_error("Xvfb does not start: " + server.errorString().toStdString());
    environment.insert("DISPLAY", ':' + QString::fromLatin1(server.readLine()).trimmed());
    environment.insert("QT_QPA_PLATFORM", "xcb");
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME"})
        environment.insert(name, QString::fromStdString(folder.File("home")));
    environment.insert("TMPDIR", QString::fromStdString(Temporary()));

    windowManager.setProcessEnvironment(environment);
    windowManager.setStandardErrorFile(QProcess::nullDevice());
    windowManager.startCommand("openbox --sm-disable");
    if (!Until([this] { return Run("wmctrl -m").find("Openbox") != std::string::npos; }))
        throw std::runtime_error("openbox does not start: " + windowManager.errorString().toStdString());

    const fs::path built = TAMARACK_PROGRAM;
    for (const char* directory : {"bin", "share/tamarack"})
        fs::create_directories(folder.File(directory));
    fs::copy_file(built, folder.File("bin/tamarack"));
    fs::copy_file(built.parent_path() / "Tamarack.hlp", folder.File("share/tamarack/Tamarack.hlp"));
    program.setProcessEnvironment(environment);
    program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
}

XDesktop::~XDesktop()
{
    for (QProcess* process : {&program, &windowManager, &server}) {
        process->kill();
        process->waitForFinished();
    }
}

void XDesktop::Start() { program.start(QString::fromStdString(folder.File("bin/tamarack")), {}); }

std::string XDesktop::Run(const std::string& command) const
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.startCommand(QString::fromStdString(command));
    if (!process.waitForFinished(10000))
        throw std::runtime_error(command + ": " + process.errorString().toStdString());
    return process.readAllStandardOutput().toStdString();
}

std::string XDesktop::WindowNow(const std::string& title) const
{
    // 0x00600006  0 host Tamarack Help
    std::istringstream rows(Run("wmctrl -l"));
    for (std::string row; std::getline(rows, row);) {
        std::istringstream fields(row);
        std::string window, desktop, host, rest;
        fields >> window >> desktop >> host >> std::ws;
        if (std::getline(fields, rest) && rest.starts_with(title))
            return window;
    }
    return {};
}

std::string XDesktop::Window(const std::string& title) const
{
    std::string window;
    if (!Until([&] { return !(window = WindowNow(title)).empty(); }))
        throw std::runtime_error("There is no window " + title);
    SettledFrame(window);
    return window;
}

QRect XDesktop::Client(const std::string& window) const
{
    const auto [x, y, width, height] = Numbers(
        Run("xwininfo -id " + window), {"Absolute upper-left X:", "Absolute upper-left Y:", "Width:", "Height:"});
    return {x, y, width, height};
}

QRect XDesktop::Frame(const std::string& window) const
{
    // _NET_FRAME_EXTENTS(CARDINAL) = 1, 1, 20, 5
    const auto [left, right, top, bottom]
        = Numbers(Run("xprop -id " + window + " _NET_FRAME_EXTENTS"), {"=", ",", ",", ","});
    return Client(window).marginsAdded({left, top, right, bottom});
}

QRect XDesktop::SettledFrame(const std::string& window) const
{
    QRect before;
    QRect now = Frame(window);
    do {
        before = now;
        QTest::qWait(30);
        now = Frame(window);
    } while (now != before);
    return now;
}

bool XDesktop::StaysAt(const std::string& window, const QRect& frame) const
{
    const auto isThere = [&](const QRect& now) {
        constexpr int tolerance = 2;
        const QPoint off[] = {now.topLeft() - frame.topLeft(), now.bottomRight() - frame.bottomRight()};
        return std::all_of(std::begin(off), std::end(off),
            [](QPoint by) { return std::abs(by.x()) <= tolerance && std::abs(by.y()) <= tolerance; });
    };
    return Until([&] { return isThere(Frame(window)); }, std::chrono::seconds(3)) && isThere(SettledFrame(window));
}

void XDesktop::Move(const std::string& window, const QRect& place) const
{
    std::ostringstream command;
    command << "wmctrl -ir " << window << " -e 0," << place.x() << ',' << place.y() << ',' << place.width() << ','
            << place.height();
    Run(command.str());
}

void XDesktop::Maximise(const std::string& window) const
{
    Run("wmctrl -ir " + window + " -b add,maximized_vert,maximized_horz");
}

void XDesktop::Close(const std::string& window) const
{
    Run("wmctrl -ic " + window);
    if (!Until([&] { return Run("wmctrl -l").find(window) == std::string::npos; }))
        throw std::runtime_error(window + " does not close");
}

void XDesktop::Press(const std::string& window, const std::string& keys) const
{
    Run("xdotool windowactivate --sync " + window + " key " + keys);
}

void XDesktop::Click(const std::string& window, QPointF place, const std::string& action) const
{
    const QPoint pixels = (place * Client(window).width()).toPoint();
    std::ostringstream command;
    command << "xdotool windowactivate --sync " << window << " mousemove --window " << window << ' ' << pixels.x()
            << ' ' << pixels.y() << ' ' << action;
    Run(command.str());
}
