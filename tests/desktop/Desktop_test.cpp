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
#include <QInputDialog>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QTest>
#include <QWindow>

#include <filesystem>

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

namespace {

using namespace std::chrono_literals;

constexpr const char* power = "org.freedesktop.PowerManagement";
constexpr const char* portal = "org.freedesktop.portal.Desktop";

class DesktopServicesTest : public ProgramTest {
protected:
    static RecordingBus& Bus()
    {
        static RecordingBus bus;
        return bus;
    }

    static bool Recorded(const std::string& what, std::chrono::milliseconds time = 10s)
    {
        const auto isThis = [&](const std::string& line) { return line.starts_with(what); };
        return Until([&] { return std::any_of(Bus().record.begin(), Bus().record.end(), isThis); }, time);
    }

    // A search of one article, held at its body until `meanwhile` has been done.
    void SearchWith(const std::function<void()>& meanwhile, const std::string& end)
    {
        ScriptedServer server("X: connect\nS: 200\nC: group alt.kites\nS: 211 9 1 9 alt.kites\nC: next\n"
                              "S: 223 2 <b>\nC: head 2\nX: pause\n"
            + end);
        server.OnPause = [&](const std::string&) { meanwhile(); };
        Start({"alt.kites"}, server.Port());
        Forget();
        Search();
        EXPECT_TRUE(Until([&] { return server.Finished(); })) << server.FirstProblem();
    }

    void SetUp() override { Bus().record.clear(); }
};

// What a context menu offers, and the entry of this name chosen.
std::vector<std::string> ChooseFromMenu(const std::string& control, const std::string& entry)
{
    auto* widget = &Find<QWidget>(control);
    if (const auto* area = qobject_cast<QAbstractScrollArea*>(widget))
        widget = area->viewport();
    std::vector<std::string> offered;
    const auto choose = [&] {
        auto& menu = dynamic_cast<QMenu&>(*QApplication::activePopupWidget());
        for (QAction* action : menu.actions()) {
            offered.push_back((action->isEnabled() ? "" : "-") + action->text().toStdString());
            if (action->text() == QString::fromStdString(entry))
                menu.setActiveAction(action);
        }
        QTest::keyClick(&menu, menu.activeAction() != nullptr ? Qt::Key_Return : Qt::Key_Escape);
    };
    QMetaObject::invokeMethod(widget, choose, Qt::QueuedConnection);
    QContextMenuEvent asked(QContextMenuEvent::Mouse, {5, 5}, widget->mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(widget, &asked);
    return offered;
}

// Lets something hover over a list or field, and drops it if it is taken.
bool DropOn(const std::string& control, QMimeData& content)
{
    QWidget* target = Find<QAbstractScrollArea>(control).viewport();
    QDragEnterEvent enter({5, 5}, Qt::CopyAction, &content, Qt::LeftButton, Qt::NoModifier);
    QDropEvent drop({5, 5}, Qt::CopyAction, &content, Qt::LeftButton, Qt::NoModifier);
    for (QDropEvent* event : {static_cast<QDropEvent*>(&enter), &drop}) {
        if (event == &enter || enter.isAccepted())
            QApplication::sendEvent(target, event);
    }
    return enter.isAccepted() && drop.isAccepted();
}

}

TEST_F(DesktopServicesTest, ASearchKeepsTheComputerAwakeAndTellsHowFarItIs)
{
    const std::string searching = "Inhibit(Tamarack, Searching news groups for attachments)";
    const std::string progress = "Update(application://tamarack.desktop, progress=";
    Bus().Offer(power);
    SearchWith([&] { EXPECT_TRUE(Recorded(searching) && Recorded(progress + "0.12, progress-visible=true)")); },
        "S: 221 2 <b>\nS: Subject: kites\nS: .\nC: next\nS: 421\nX: close\n");
    EXPECT_TRUE(Recorded("UnInhibit(7)"));
    EXPECT_TRUE(Recorded(progress + "0, progress-visible=false)"));
    // Of two, the one that is asked first; and a stop ends it as well.
    Bus().Offer(portal);
    Bus().record.clear();
    SearchWith(
        [] {
            EXPECT_TRUE(Recorded("Inhibit(, 4, reason=Searching"));
            PressAlt(Qt::Key_S);
        },
        "X: wait-close\n");
    EXPECT_TRUE(Recorded("Close()"));
    EXPECT_THAT(Bus().record, Not(Contains(searching)));
    for (const char* name : {power, portal})
        Bus().Withdraw(name);
}

TEST_F(DesktopServicesTest, AShowKeepsTheScreenOn)
{
    Bus().Offer("org.freedesktop.ScreenSaver");
    MakeFile(destination + "a.gif", "no picture");
    Start();
    ChooseMenu("mnuSlideShow");
    Click("Command1(0)");
    EXPECT_TRUE(Recorded("Inhibit(Tamarack, Showing pictures)"));
    Click("Command1(5)");
    EXPECT_TRUE(Recorded("UnInhibit(7)"));
}

TEST_F(DesktopServicesTest, TheEndOfALongSearchIsToldOnce)
{
    Bus().Offer("org.freedesktop.Notifications");
    Start();
    ASSERT_TRUE(Until([] { return QApplication::activeWindow() != nullptr; }));
    SearchProgress progress(program->MainWindow(), desktop);
    const auto search = [&progress](std::chrono::seconds longest, const char* obstacle) {
        progress.LongSearch = longest;
        progress.Begin();
        progress.EnterGroup(1, 9);
        progress.Fetched(10, 1);
        progress.Fetched(10, 2);
        progress.Fetched(10, 3);
        progress.End(obstacle);
    };
    search(0s, "before somebody's eyes");
    QApplication::setActiveWindow(nullptr);
    search(60s, "too short");
    search(0s, "");
    EXPECT_TRUE(Recorded("Notify(Tamarack, 0, tamarack, The search is done, 3 attachments from 1 group., "
                         "open|Open the directory"));
    EXPECT_THAT(Bus().record, Not(Contains(testing::HasSubstr("has ended"))));
    // In place of the first, once that has its number.
    EXPECT_TRUE(Until([&] {
        search(0s, "Stopped.");
        return Recorded("Notify(Tamarack, 7, tamarack, The search has ended, 3 attachments from 1 group. Stop", 9ms);
    }));
    const auto hasOpened = [&] { return !desktop.opened.empty(); };
    for (const auto& [note, action] : {std::pair(8U, "open"), {7U, "default"}})
        Bus().Press(note, action);
    EXPECT_FALSE(Until(hasOpened, 50ms));
    Bus().Press(7, "open");
    EXPECT_TRUE(Until(hasOpened));
    EXPECT_THAT(desktop.opened, ElementsAre(AddressOfFile(destination)));
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
    window.showMinimized();
    Activation::ActivateFirst();
    EXPECT_TRUE(Until([&] { return !window.isMinimized(); }));
    EXPECT_EQ(window.windowHandle()->transientParent(), nullptr);
}

TEST_F(DesktopServicesTest, GroupsAreDroppedIntoTheList)
{
    using Groups = std::vector<std::string>;
    for (const auto& [text, groups] : std::initializer_list<std::pair<const char*, Groups>>{
             {"alt.kites", {"alt.kites"}}, {" alt.kites \r\n\nrec.boats\n", {"alt.kites", "rec.boats"}},
             {"NEWS://127.0.0.1:563/alt.kit%65s", {"alt.kites"}}, {"nntp://127.0.0.1/alt.kites/7002", {"alt.kites"}},
             {"nntp:alt.kites", {}}, {"news:1@example.org", {}}, {"news:*", {}}, {"news:alt.kites%0d%0Aalt.other", {}},
             {"news://127.0.0.1/", {}}, {"https://127.0.0.1/alt.kites", {}}, {" \r\n", {}}})
        EXPECT_EQ(GroupsIn(text), groups) << text;
    Start();
    SelectTab("SSTMain", 3);
    QMimeData groups, nothing;
    groups.setText("news:alt.kites\nrec.boats");
    nothing.setText("mailto:somebody@example.org");
    EXPECT_FALSE(DropOn("lstSelectedGroups", nothing));
    EXPECT_TRUE(DropOn("lstSelectedGroups", groups));
    EXPECT_THAT(RowsOf("lstSelectedGroups"), ElementsAre("alt.kites", "rec.boats"));
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
    MakeFile(folder.File("file"), "");
    for (const char* name : {"file", ""}) {
        QMimeData dragged;
        dragged.setUrls({QUrl::fromLocalFile(QString::fromStdString(folder.File(name)))});
        EXPECT_EQ(DropOn("txtSelectDir", dragged), *name == '\0');
    }
    EXPECT_EQ(TextOf("txtSelectDir"), folder.File(""));
}

TEST_F(DesktopServicesTest, ADirectoryIsMadeInTheOpenOne)
{
    Start();
    ChooseMenu("mnuSlideShow");
    for (const auto& [name, end] : {std::pair("", Qt::Key_Return), {"boats", Qt::Key_Escape}, {"kites", Qt::Key_Return},
             {"a/b", Qt::Key_Return}}) {
        const std::function<void()> type = [&, name = name, end = end] {
            auto* box = dynamic_cast<QInputDialog*>(QApplication::activeModalWidget());
            if (box == nullptr)
                return QTimer::singleShot(1, type);
            QTest::keyClicks(box->focusWidget(), name);
            QTest::keyClick(box, end);
        };
        type();
        ChooseFromMenu("frmSlideShow/Dir1", "New directory...");
    }
    EXPECT_THAT(RowsOf("frmSlideShow/Dir1"), testing::Contains("kites"));
    EXPECT_FALSE(FileExists(destination + "boats"));
    ASSERT_EQ(desktop.boxes.size(), 1U);
    EXPECT_THAT(desktop.boxes[0].text, testing::EndsWith("\r\n" + destination + "kites/a/b"));
}
