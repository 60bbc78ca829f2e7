#include "XDesktop.h"
#include "forms/frmTamarack.h"
#include "support/Screen.h"

#include <QTabBar>
#include <QTabWidget>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <sstream>

namespace {

std::string Text(const QRect& place)
{
    std::ostringstream text;
    text << place.width() << 'x' << place.height() << " at " << place.x() << ',' << place.y();
    return text.str();
}

// The program and its user on a screen of that size.
class User : public XDesktop {
public:
    using XDesktop::XDesktop;

    std::string Main() const { return WindowNow("Tamarack -- "); }

    // Every window opens as a whole on the screen.
    std::string Opened(const std::string& title) const
    {
        std::string window = Window(title);
        const QRect frame = Frame(window);
        EXPECT_TRUE(Screen().contains(frame)) << title << ": " << Text(frame);
        return window;
    }

    std::string Choose(const std::string& keys, const std::string& title) const
    {
        Press(Main(), keys);
        return Opened(title);
    }

    // Where a control lies, another copy of the form tells, which may have another font.
    void Click(const std::string& control) const
    {
        const QWidget& widget = ::Find<QWidget>("frmTamarack/" + control);
        const QWidget& form = *WindowNamed("frmTamarack");
        const auto click = [&](const QWidget& part, QPoint place) {
            const QPointF inForm = part.mapTo(&form, place);
            XDesktop::Click(Main(), inForm / form.width());
        };
        ::Click("frmTamarack/" + control);
        for (const char* strip : {"SSTMain", "SSTab1"}) {
            const auto& tabs = ::Find<QTabWidget>(strip);
            if (tabs.isAncestorOf(&widget))
                click(*tabs.tabBar(), tabs.tabBar()->tabRect(tabs.currentIndex()).center());
        }
        click(widget, widget.rect().center());
    }

    // Both have it, to two pixels, and the window keeps it.
    void ExpectMiddle(const std::string& window, QPoint middle) const
    {
        QRect wanted = Frame(window);
        wanted.moveCenter(middle);
        ExpectAt(window, wanted);
    }

    void ExpectAt(const std::string& window, const QRect& place) const
    {
        EXPECT_TRUE(StaysAt(window, place)) << Text(Frame(window)) << " and not " << Text(place);
    }
};

constexpr const char* viewerTitle = "<Filename Here>";

std::string Viewer(const User& user) { return user.Choose("alt+v Down Return", viewerTitle); }
std::string SlideShow(const User& user) { return user.Choose("alt+v Down Down Return", "Slide Show"); }
std::string Help(const User& user) { return user.Choose("alt+h Return", "Tamarack Help"); }
std::string Debug(const User& user)
{
    user.XDesktop::Click(Viewer(user), {0.5, 0.5}, "keydown ctrl click 3 keyup ctrl");
    return user.Opened("Debug Window");
}

}

TEST(Windows, ComeBackWhereTheyWere)
{
    User users[] = {User({1024, 768}), User({1920, 1080})};
    for (User& user : users)
        user.Start();
    frmTamarack copy;
    copy.SetVisible(true);
    for (User& user : users) {
        const QSize size = user.Screen().size();
        SCOPED_TRACE(size.width());
        const std::string first = user.Opened("Add News Server");
        user.ExpectMiddle(first, user.Screen().center());
        user.Press(first, "Return");
        user.Press(user.Opened("The Tamarack"), "Return"); // its list of groups is empty
        user.Opened("Tamarack -- ");

        struct Row {
            const char* what;
            std::string (*open)(const User& user);
            QRect place; // its size is that of a window whose border can be dragged
            bool isKept; // also for the next start
        };
        std::map<const char*, QRect> places;
        const std::vector<Row> rows
            = {{"slide show", SlideShow, {150, 120, -1, -1}, true}, {"viewer", Viewer, {201, 75, 400, 300}, true},
                {"help", Help, {99, 151, 640, 400}, false}, {"debug window", Debug, {120, 90, 500, 410}, false}};
        for (const Row& row : rows) {
            SCOPED_TRACE(row.what);
            std::string window = row.open(user);
            user.Move(window, row.place);
            const QRect place = places[row.what] = user.SettledFrame(window);
            EXPECT_NEAR(place.x(), row.place.x(), 2);
            user.Close(window);
            window = row.open(user);
            user.ExpectAt(window, place);
            if (row.place.width() > 0) {
                user.Maximise(window);
                EXPECT_TRUE(Until([&] { return user.Frame(window).width() == size.width(); }));
                user.Close(window);
                window = row.open(user);
                user.ExpectAt(window, place);
            }
            user.Close(window);
        }
        Help(user);
        user.Press(user.Main(), "ctrl+q");
        EXPECT_TRUE(user.HasEnded());
        EXPECT_THAT(FilesBelow(user.Temporary()), testing::IsEmpty());

        std::string groups;
        for (int group = 0; group < 50; ++group)
            groups += "alt.kites\r\n";
        MakeFile(user.ProgramFile("#!@!.news.example.com"), groups);
        user.Start();
        user.Press(user.Opened("The Tamarack"), "Return");
        user.Opened("Tamarack -- ");
        for (const Row& row : rows) {
            if (!row.isKept)
                continue;
            SCOPED_TRACE(row.what);
            const std::string window = row.open(user);
            user.ExpectAt(window, places[row.what]);
            user.Close(window);
        }

        // Dialogs over the main window, and as near to it as the screen lets them.
        const std::string main = user.Main();
        const auto dialog = [&](const char* control, const char* title) {
            SCOPED_TRACE(title);
            user.Click(control);
            std::string window = user.Opened(title);
            if (user.Screen().contains(user.Frame(main)))
                user.ExpectMiddle(window, user.Frame(main).center());
            user.Press(window, "Escape");
        };
        user.Move(main, {90, 160, -1, -1});
        user.SettledFrame(main);
        user.Click("lstSelectedGroups");
        dialog("Command4", "Set Article Pointer");
        dialog("cmdAddNewsServer", "Add News Server");
        dialog("cmdSelectDir", "Select the image destination");
        user.Move(main, {size.width() - 200, size.height() - 150, -1, -1});
        user.SettledFrame(main);
        dialog("cmdSelectDir", "Select the image destination");

        const std::string about = user.Choose("alt+h Down Return", "About ");
        user.ExpectMiddle(about, user.Screen().center());
        user.Press(about, "Return");
    }
}
