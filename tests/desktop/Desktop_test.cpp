#include "catalogue/GroupAddress.h"
#include "demo/sample/Encoders.h"
#include "platform/Activation.h"
#include "scan/SearchProgress.h"
#include "tests/desktop/RecordingBus.h"
#include "tests/shell/ProgramTest.h"
#include "tests/support/ScriptedServer.h"

#include <QAbstractScrollArea>
#include <QClipboard>
#include <QDropEvent>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QTest>
#include <QWindow>

#include <filesystem>

using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::StartsWith;

namespace {

using namespace std::chrono_literals;

constexpr const char* portal = "org.freedesktop.portal.Desktop";
constexpr const char* power = "org.freedesktop.PowerManagement";
constexpr const char* screenSaver = "org.freedesktop.ScreenSaver";
constexpr const char* notifications = "org.freedesktop.Notifications";

// The end of a script: an article that is not wanted, and no further one.
const std::string noMatch = "S: 221 2 <b>\nS: Subject: kites\nS: .\nC: next\nS: 421\nX: wait-close\n";

const std::string searching = "Inhibit(Tamarack, Searching news groups for attachments)";

class DesktopServicesTest : public ProgramTest {
protected:
    static RecordingBus& Bus()
    {
        static RecordingBus bus;
        return bus;
    }

    static bool HasRecorded(const std::string& what)
    {
        return std::any_of(
            Bus().record.begin(), Bus().record.end(), [&](const std::string& line) { return line.starts_with(what); });
    }

    static bool Recorded(const std::string& what)
    {
        return Until([&] { return HasRecorded(what); });
    }

    // A search of one article, held at its body until `meanwhile` has been done.
    void SearchWith(const std::function<void()>& meanwhile, const std::string& end)
    {
        ScriptedServer server("X: connect\nS: 200\nC: group alt.kites\nS: 211 9 1 9 alt.kites\nC: next\n"
                              "S: 223 2 <b>\nC: head 2\nX: pause\n"
            + end);
        server.OnPause = [&](const std::string&) { meanwhile(); };
        Start({"alt.kites"}, server.Port());
        Search();
    }

    void SetUp() override { Bus().record.clear(); }
};

// What a context menu offers, and the entry of this name chosen.
std::vector<std::string> ChooseFromMenu(const std::string& control, const std::string& entry)
{
    QWidget* widget = &Find<QWidget>(control);
    std::vector<std::string> offered;
    QMetaObject::invokeMethod(
        widget,
        [&] {
            auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            if (menu == nullptr)
                return;
            for (QAction* action : menu->actions()) {
                offered.push_back((action->isEnabled() ? "" : "-") + action->text().toStdString());
                if (action->text() == QString::fromStdString(entry))
                    menu->setActiveAction(action);
            }
            QTest::keyClick(menu, menu->activeAction() != nullptr ? Qt::Key_Return : Qt::Key_Escape);
        },
        Qt::QueuedConnection);
    const auto* area = qobject_cast<QAbstractScrollArea*>(widget);
    QWidget* target = area != nullptr ? area->viewport() : widget;
    QContextMenuEvent asked(QContextMenuEvent::Mouse, {5, 5}, target->mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(target, &asked);
    return offered;
}

// Lets something hover over a list or field, and drops it if it is taken.
bool DropOn(const std::string& control, QMimeData& content)
{
    QWidget* target = Find<QAbstractScrollArea>(control).viewport();
    QDragEnterEvent enter({5, 5}, Qt::CopyAction, &content, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &enter);
    if (!enter.isAccepted())
        return false;
    QDropEvent drop({5, 5}, Qt::CopyAction, &content, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &drop);
    return drop.isAccepted();
}

}

TEST_F(DesktopServicesTest, ASearchKeepsTheComputerAwakeToItsEnd)
{
    Bus().Offer(power);
    SearchWith([] { EXPECT_TRUE(Recorded(searching)); }, noMatch);
    EXPECT_TRUE(Recorded("UnInhibit(7)"));
    // Of two, the one that is asked first; and a stop ends it as well.
    Bus().Offer(portal);
    Bus().record.clear();
    SearchWith(
        [] {
            EXPECT_TRUE(Recorded("Inhibit(, 4, reason=Searching"));
            Click("cmdStop");
        },
        "X: wait-close\n");
    EXPECT_TRUE(Recorded("Close()"));
    EXPECT_THAT(Bus().record, Not(Contains(searching)));
    for (const char* name : {power, portal})
        Bus().Withdraw(name);
}

TEST_F(DesktopServicesTest, WhoeverKeptItAwakeHearsOfAKill)
{
    Bus().Offer(power);
    QProcess demo;
    demo.start(QStringLiteral(TAMARACK_DEMO), QStringList());
    ASSERT_TRUE(Recorded(searching));
    const QString sender = Bus().lastSender;
    EXPECT_TRUE(Bus().IsOnBus(sender));
    demo.kill();
    EXPECT_TRUE(Until([&] { return !Bus().IsOnBus(sender); }));
    demo.waitForFinished();
    Bus().Withdraw(power);
}

TEST_F(DesktopServicesTest, AShowKeepsTheScreenOn)
{
    Bus().Offer(screenSaver);
    std::filesystem::create_directories(destination);
    MakeFile(destination + "a.gif", "no picture");
    Start();
    ChooseMenu("mnuSlideShow");
    Click("Command1(0)");
    EXPECT_TRUE(Recorded("Inhibit(Tamarack, Showing pictures)"));
    EXPECT_THAT(Bus().record, Not(Contains(StartsWith("UnInhibit"))));
    Click("Command1(5)");
    EXPECT_TRUE(Recorded("UnInhibit(7)"));
    Bus().Withdraw(screenSaver);
}

TEST_F(DesktopServicesTest, TheLauncherShowsHowFarItIs)
{
    SearchWith(
        [] {
            EXPECT_TRUE(Recorded("Update(application://tamarack.desktop, progress=0.12, progress-visible=true)"))
                << testing::PrintToString(Bus().record);
        },
        noMatch);
    EXPECT_TRUE(Recorded("Update(application://tamarack.desktop, progress=0, progress-visible=false)"));
}

TEST_F(DesktopServicesTest, TheEndOfALongSearchIsToldOnce)
{
    Bus().Offer(notifications);
    Start();
    ASSERT_TRUE(Until([] { return QApplication::activeWindow() != nullptr; }));
    SearchProgress progress(program->MainWindow(), desktop);
    progress.LongSearch = 0s;
    progress.Begin();
    progress.End(""); // before somebody's eyes
    QApplication::setActiveWindow(nullptr);
    progress.LongSearch = 60s;
    progress.Begin();
    progress.End("");
    progress.LongSearch = 0s;
    const auto searchThatEnds = [&progress](const char* obstacle) {
        progress.Begin();
        progress.EnterGroup(1, 9);
        progress.Fetched(10, 1);
        progress.Fetched(10, 2);
        progress.End(obstacle);
    };
    searchThatEnds("");
    EXPECT_TRUE(Recorded("Notify(Tamarack, 0, tamarack, The search is done, 2 attachments from 1 group., "
                         "open|Open the directory"));
    // In place of the first, once that has its number.
    EXPECT_TRUE(Until([&] {
        searchThatEnds("It was stopped.");
        return HasRecorded(
            "Notify(Tamarack, 7, tamarack, The search has ended, 2 attachments from 1 group. It was stopped.");
    }));
    Bus().Press(8, QStringLiteral("open"));
    Bus().Press(7, QStringLiteral("default"));
    Bus().Press(7, QStringLiteral("open"));
    EXPECT_TRUE(Until([&] { return !desktop.opened.empty(); }));
    EXPECT_THAT(desktop.opened, ElementsAre(AddressOfFile(destination)));
    Bus().Withdraw(notifications);
}

TEST_F(DesktopServicesTest, ASecondStartRaisesTheFirstWindow)
{
    Start();
    QWidget& window = *WindowNamed("frmTamarack");
    window.showMinimized();
    Activation::ActivateFirst();
    EXPECT_TRUE(Until([&] { return !window.isMinimized() && window.isVisible(); }));

    // A message box stays in front of it.
    QMessageBox box(&window);
    box.open();
    ASSERT_TRUE(Until([&] { return QApplication::activeModalWidget() == &box; }));
    window.showMinimized();
    Activation::ActivateFirst();
    EXPECT_TRUE(Until([&] { return !window.isMinimized(); }));
    EXPECT_EQ(window.windowHandle()->transientParent(), nullptr);
}

TEST_F(DesktopServicesTest, GroupsAreDroppedIntoTheList)
{
    const struct {
        const char* text;
        std::vector<std::string> groups;
    } rows[] = {{"alt.kites", {"alt.kites"}}, {" alt.kites \r\n\nrec.boats\n", {"alt.kites", "rec.boats"}},
        {"news:alt.kites", {"alt.kites"}}, {"NEWS://127.0.0.1:563/alt.kit%65s", {"alt.kites"}},
        {"nntp://127.0.0.1/alt.kites/7002", {"alt.kites"}}, {"nntp:alt.kites", {}}, {"news:1@example.org", {}},
        {"news:*", {}}, {"news:alt.kites%0d%0Aalt.other", {}}, {"news://127.0.0.1/", {}},
        {"https://127.0.0.1/alt.kites", {}}, {" \r\n", {}}};
    for (const auto& row : rows)
        EXPECT_EQ(GroupsIn(row.text), row.groups) << row.text;

    Start();
    SelectTab("SSTMain", 3);
    QMimeData groups, nothing;
    groups.setText("news:alt.kites\nrec.boats");
    nothing.setText("mailto:somebody@example.org");
    EXPECT_FALSE(DropOn("lstSelectedGroups", nothing));
    EXPECT_TRUE(DropOn("lstSelectedGroups", groups));
    EXPECT_THAT(RowsOf("lstSelectedGroups"), ElementsAre("alt.kites", "rec.boats"));
    EXPECT_EQ(PanelText("StatusBar2", 3), "Selected: 2");
}

TEST_F(DesktopServicesTest, MenusDoWhatButtonsDo)
{
    Start({"alt.kites", "rec.boats"}, 119);
    SelectTab("SSTMain", 3);
    EXPECT_THAT(
        ChooseFromMenu("lstSelectedGroups", ""), ElementsAre("-Remove", "-Reset", "-Set Pointer", "-Copy the name"));
    ClickRow("lstSelectedGroups", 1);
    ChooseFromMenu("lstSelectedGroups", "Copy the name");
    EXPECT_EQ(QApplication::clipboard()->text(), "rec.boats");
    ChooseFromMenu("lstSelectedGroups", "Remove");
    EXPECT_THAT(RowsOf("lstSelectedGroups"), ElementsAre("alt.kites"));

    SelectTab("SSTMain", 0);
    ChooseFromMenu("txtSelectDir", "Open the directory");
    EXPECT_THAT(desktop.opened, ElementsAre(AddressOfFile(TextOf("txtSelectDir"))));
    QMimeData directory, file;
    directory.setUrls({QUrl::fromLocalFile(QString::fromStdString(folder.File("")))});
    MakeFile(folder.File("file"), "");
    file.setUrls({QUrl::fromLocalFile(QString::fromStdString(folder.File("file")))});
    EXPECT_FALSE(DropOn("txtSelectDir", file));
    EXPECT_TRUE(DropOn("txtSelectDir", directory));
    EXPECT_EQ(TextOf("txtSelectDir"), folder.File(""));
}
