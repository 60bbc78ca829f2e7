#include "demo/support/Screen.h"
#include "demo/support/TemporaryFolder.h"
#include "forms/frmTamarack.h"

#include <QProcess>
#include <QRegularExpression>
#include <QTest>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

// The four numbers behind these labels, in their order.
QList<int> Numbers(const std::string& text, std::initializer_list<const char*> labels)
{
    QList<int> numbers;
    std::size_t place = 0;
    for (const char* label : labels) {
        place = text.find(label, place);
        numbers << (place != std::string::npos ? std::atoi(text.c_str() + (place += strlen(label))) : 0);
    }
    return numbers;
}

// The real program under a window manager (openbox) on a screen that nobody sees (Xvfb), worked with mouse and keyboard
// from outside. Windows are known by their numbers, and what tells the place of one counts its frame in. What a tool
// or a window does not do throws std::runtime_error, which fails the test.
class XScreen {
public:
    const QRect room;

    explicit XScreen(QSize size, int dotsPerInch = 96)
        : room({}, size)
    {
        server.setStandardErrorFile(QProcess::nullDevice());
        server.startCommand(QStringLiteral("Xvfb -displayfd 1 -screen 0 %1x%2x24 -nolisten tcp -noreset")
                                .arg(size.width())
                                .arg(size.height()));
        if (!server.waitForReadyRead(10000))
            throw std::runtime_error("Xvfb does not start: " + server.errorString().toStdString());
        environment.insert("DISPLAY", ':' + QString::fromLatin1(server.readLine()).trimmed());
        environment.insert("QT_QPA_PLATFORM", "xcb");
        for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME"})
            environment.insert(name, QString::fromStdString(folder.File("home")));
        environment.insert("TMPDIR", QString::fromStdString(temporary));
        fs::create_directories(temporary);
        Run("xprop -root -f RESOURCE_MANAGER 8s -set RESOURCE_MANAGER \"Xft.dpi:\t" + std::to_string(dotsPerInch)
            + "\"");
        windowManager.setProcessEnvironment(environment);
        windowManager.setStandardErrorFile(QProcess::nullDevice());
        windowManager.startCommand("openbox --sm-disable");
        if (!Until([this] { return Run("wmctrl -m").find("Openbox") != std::string::npos; }))
            throw std::runtime_error("openbox does not start: " + windowManager.errorString().toStdString());

        // Installed, it keeps nothing beside itself.
        const fs::path built = TAMARACK_PROGRAM;
        for (const char* directory : {"bin", "share/tamarack"})
            fs::create_directories(folder.File(directory));
        fs::copy_file(built, folder.File("bin/tamarack"));
        fs::copy_file(built.parent_path() / "Tamarack.hlp", folder.File("share/tamarack/Tamarack.hlp"));
        program.setProcessEnvironment(environment);
        program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        Start();
    }

    ~XScreen()
    {
        for (QProcess* process : {&program, &windowManager, &server}) {
            process->kill();
            process->waitForFinished();
        }
    }

    void Start() { program.start(QString::fromStdString(folder.File("bin/tamarack")), {}); }
    bool HasEnded() { return program.waitForFinished() && program.exitCode() == 0; }

    // The window whose title begins so, or nothing.
    std::string Window(const std::string& title) const
    {
        // 0x00600006  0 host Tamarack Help
        const QRegularExpression row(
            "(0x\\w+) +\\S+ \\S+ " + QRegularExpression::escape(QString::fromStdString(title)));
        return row.match(QString::fromStdString(Run("wmctrl -l"))).captured(1).toStdString();
    }
    std::string Main() const { return Window("Tamarack -- "); }

    // Waits for it to come up. Every window does so as a whole on the screen.
    std::string Opened(const std::string& title) const
    {
        std::string window;
        if (!Until([&] { return !(window = Window(title)).empty(); }))
            throw std::runtime_error("There is no window " + title);
        EXPECT_TRUE(room.contains(Settled(window))) << title;
        return window;
    }

    QRect Client(const std::string& window) const
    {
        const QList<int> is = Numbers(
            Run("xwininfo -id " + window), {"Absolute upper-left X:", "Absolute upper-left Y:", "Width:", "Height:"});
        return {is[0], is[1], is[2], is[3]};
    }

    QRect Place(const std::string& window) const
    {
        // _NET_FRAME_EXTENTS(CARDINAL) = 1, 1, 20, 5
        const QList<int> edges
            = Numbers(Run("xprop -id " + window + " _NET_FRAME_EXTENTS"), {"=", ",", ",", ","}); // left, right, ...
        return Client(window).marginsAdded({edges[0], edges[2], edges[1], edges[3]});
    }

    // The same, when it has not changed for a moment.
    QRect Settled(const std::string& window) const
    {
        QRect before;
        for (QRect now = Place(window); now != before; now = Place(window)) {
            before = now;
            QTest::qWait(30);
        }
        return before;
    }

    // The window comes to that place, to two pixels, and stays there.
    void ExpectAt(const std::string& window, const QRect& place) const
    {
        const auto isThere = [&](const QRect& now) {
            return (now.topLeft() - place.topLeft()).manhattanLength() <= 2
                && (now.bottomRight() - place.bottomRight()).manhattanLength() <= 2;
        };
        EXPECT_TRUE(Until([&] { return isThere(Place(window)); }, std::chrono::seconds(3)) && isThere(Settled(window)));
    }

    void ExpectMiddle(const std::string& window, QPoint middle) const
    {
        QRect wanted = Place(window);
        wanted.moveCenter(middle);
        ExpectAt(window, wanted);
    }

    QRect Move(const std::string& window, const QRect& to) const
    {
        const auto place = QStringLiteral("0,%1,%2,%3,%4").arg(to.x()).arg(to.y()).arg(to.width()).arg(to.height());
        Run("wmctrl -ir " + window + " -e " + place.toStdString());
        return Settled(window);
    }

    void SetMaximised(const std::string& window, bool maximised) const
    {
        Run("wmctrl -ir " + window + (maximised ? " -b add" : " -b remove") + ",maximized_vert,maximized_horz");
        EXPECT_TRUE(Until([&] { return (Place(window).width() == room.width()) == maximised; }));
    }

    void Minimise(const std::string& window) const { Run("xdotool windowminimize --sync " + window); }

    void Close(const std::string& window) const
    {
        Run("wmctrl -ic " + window);
        if (!Until([&] { return Run("wmctrl -l").find(window) == std::string::npos; }))
            throw std::runtime_error(window + " does not close");
    }

    // Keys and other doings, as xdotool names them.
    void Do(const std::string& window, const std::string& what) const
    {
        Run("xdotool windowactivate --sync " + window + ' ' + what);
    }

    // So far from the corner of what is within the frame, as parts of the window's width.
    void Click(const std::string& window, QPointF place, const std::string& how = "click 1") const
    {
        const QPoint at = (place * Client(window).width()).toPoint();
        Do(window,
            "mousemove --window " + window + ' ' + std::to_string(at.x()) + ' ' + std::to_string(at.y()) + ' ' + how);
    }

    // Where it lies on the main window, another one in this process tells.
    void Click(const std::string& control) const
    {
        const QWidget& widget = Find<QWidget>(control);
        Click(Main(), QPointF(widget.mapTo(widget.window(), widget.rect().center())) / widget.window()->width());
    }

    std::string Choose(const std::string& keys, const std::string& title) const
    {
        Do(Main(), "key " + keys);
        return Opened(title);
    }

    TemporaryFolder folder;
    const std::string temporary = folder.File("temporary/");

private:
    std::string Run(const std::string& command) const
    {
        QProcess process;
        process.setProcessEnvironment(environment);
        process.startCommand(QString::fromStdString(command));
        if (!process.waitForFinished(10000))
            throw std::runtime_error(command + ": " + process.errorString().toStdString());
        return process.readAllStandardOutput().toStdString();
    }

    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    QProcess server, windowManager, program;
};

std::string Viewer(const XScreen& screen) { return screen.Choose("alt+v Down Return", "<Filename Here>"); }
std::string SlideShow(const XScreen& screen) { return screen.Choose("alt+v Down Down Return", "Slide Show"); }
std::string Help(const XScreen& screen) { return screen.Choose("alt+h Return", "Tamarack Help"); }
std::string Debug(const XScreen& screen)
{
    screen.Click(Viewer(screen), {0.5, 0.5}, "keydown ctrl click 3 keyup ctrl");
    return screen.Opened("Debug Window");
}

struct Row {
    const char* what;
    std::string (*open)(const XScreen& screen);
    QRect place; // with its size for a window whose border can be dragged
};

// The first two come back at the next start as well.
const Row windows[] = {{"slide show", SlideShow, {150, 120, -1, -1}}, {"viewer", Viewer, {201, 75, 400, 300}},
    {"help", Help, {99, 151, 640, 400}}, {"debug window", Debug, {120, 90, 500, 410}}};

// A new user's start: no server is known, and then no group.
void StartAnew(const XScreen& screen)
{
    const std::string first = screen.Opened("Add News Server");
    screen.ExpectMiddle(first, screen.room.center());
    screen.Do(first, "key Return");
    screen.Do(screen.Opened("The Tamarack"), "key Return");
    screen.Opened("Tamarack -- ");
}

}

TEST(Windows, ComeBackWhereTheyWere)
{
    frmTamarack copy;
    copy.SetVisible(true);
    XScreen screen({1024, 768});
    StartAnew(screen);
    std::vector<QRect> places;
    for (const auto& [what, open, to] : windows) {
        SCOPED_TRACE(what);
        std::string window = open(screen);
        const QRect place = places.emplace_back(screen.Move(window, to));
        EXPECT_NEAR(place.x(), to.x(), 2);
        const auto expectBack = [&, open = open] {
            screen.Close(window);
            window = open(screen);
            screen.ExpectAt(window, place);
        };
        expectBack();
        if (to.width() > 0) {
            for (int time = 0; time < 3; ++time) {
                screen.SetMaximised(window, true);
                screen.SetMaximised(window, false);
                screen.ExpectAt(window, place);
            }
            screen.SetMaximised(window, true);
            expectBack();
        }
        screen.Minimise(window);
        expectBack();
        screen.Close(window);
    }
    Help(screen);
    screen.Do(screen.Main(), "key ctrl+q");
    EXPECT_TRUE(screen.HasEnded());
    EXPECT_THAT(FilesBelow(screen.temporary), testing::IsEmpty());

    screen.Start();
    screen.Do(screen.Opened("The Tamarack"), "key Return");
    const std::string main = screen.Opened("Tamarack -- ");
    for (std::size_t kept : {0, 1})
        screen.ExpectAt(windows[kept].open(screen), places[kept]);

    // Dialogs over the main window, and as near to it as the screen lets them.
    for (const QPoint& corner : {QPoint(90, 60), QPoint(824, 618)}) {
        const QRect place = screen.Move(main, {corner, QSize(-1, -1)});
        EXPECT_EQ(screen.room.contains(place), corner.x() == 90);
        screen.Click("cmdSelectDir");
        const std::string dialog = screen.Opened("Select the image destination");
        if (corner.x() == 90)
            screen.ExpectMiddle(dialog, place.center());
        screen.Do(dialog, "key Escape");
    }
    screen.ExpectMiddle(screen.Choose("alt+h Down Return", "About "), screen.room.center());
}

TEST(Windows, FitASmallScreenOfManyDots)
{
    const XScreen screen({1280, 900}, 192);
    StartAnew(screen);
    for (const Row& row : windows)
        screen.Close(row.open(screen));
    screen.Do(screen.Choose("alt+h Down Return", "About "), "key Return");
    const int height = screen.Place(screen.Main()).height();
    screen.Do(screen.Main(), "key alt+v Return"); // the strip of previews
    EXPECT_TRUE(Until([&] { return screen.Place(screen.Main()).height() > height; }));
    screen.Opened("Tamarack -- ");
}
