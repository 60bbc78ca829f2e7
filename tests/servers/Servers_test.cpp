#include "tests/shell/ProgramTest.h"

#include <QLineEdit>
#include <QTest>
#include <QTextBrowser>

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

class ServersTest : public ProgramTest {
protected:
    ServersTest()
    {
        settings.SaveSetting("Servers", "localhost", "1");
        settings.SaveSetting("Servers2", serverName, "Authenticate");
        settings.SaveSetting("Servers2", serverName + ".user", "ann");
        settings.SaveSetting("Servers2", serverName + ".pass", "se;cret,1");
    }

    static void ExpectCredentials(bool wanted, const char* user, const char* password)
    {
        EXPECT_EQ(IsChecked("chkUserName"), wanted);
        for (const char* name : {"lblUserName", "txtUserName", "lblPassword", "txtPassword"})
            EXPECT_EQ(IsEnabled(name), wanted) << name;
        EXPECT_EQ(TextOf("txtUserName"), user);
        EXPECT_EQ(TextOf("txtPassword"), password);
    }

    static void ExpectCountsAgree()
    {
        const auto count = [](const char* list) { return std::to_string(RowsOf(list).size()); };
        EXPECT_TRUE(Until([=] { return PanelText("StatusBar2", 1) == "Total: " + count("lstAllGroups"); }));
        EXPECT_TRUE(Until([=] { return PanelText("StatusBar2", 2) == "Filtered: " + count("lstFilteredGroups"); }));
        EXPECT_TRUE(Until([=] { return PanelText("StatusBar2", 3) == "Selected: " + count("lstSelectedGroups"); }));
    }

    // Puts something into every list.
    static void FillLists()
    {
        Click("cmdRefreshDisk");
        TypeInto("txtNewsGroups", "alt");
        Click("cmdOrFilter");
        DoubleClickRow("lstAllGroups", 0);
        ExpectCountsAgree();
    }

    // Works the dialog that a click on "Add News Server..." opens.
    static void Add(const std::function<void()>& work)
    {
        WhenUp("frmNewsServer", work);
        Click("cmdAddNewsServer");
    }

    std::string Kept(const std::string& key) { return settings.GetSetting("Servers2", key); }
};

}

TEST_F(ServersTest, TheDefaultOrTheFirstIsSelected)
{
    for (const auto& [preselected, selected] :
        {std::pair("", "127.0.0.1"), {" localhost ", "localhost"}, {"elsewhere", "127.0.0.1"}}) {
        settings.SaveSetting("Servers", "Default", preselected);
        Start();
        EXPECT_EQ(TextOf("cboNewsServer"), selected) << preselected;
    }
    ChooseEntry("cboNewsServer", "localhost");
    Click("Command1");
    EXPECT_EQ(settings.GetSetting("Servers", "Default"), "localhost");
}

TEST_F(ServersTest, EachServerHasCredentialsOfItsOwn)
{
    Start();
    ChooseEntry("cboNewsServer", "localhost");
    ExpectCredentials(false, "", "");
    Check("chkUserName", true);
    TypeInto("txtUserName", "twenty letters and one");
    TypeInto("txtPassword", "p=%2F\\\xC3\xA9");
    ChooseEntry("cboNewsServer", serverName);
    ExpectCredentials(true, "ann", "se;cret,1");
    ChooseEntry("cboNewsServer", "localhost");
    ExpectCredentials(true, "twenty letters and o", "p=%2F\\\xC3\xA9");
    EXPECT_EQ(Kept(serverName + ".pass") + Kept("localhost.pass"), "se;cret,1p=%2F\\\xC3\xA9");

    // The keys outlive the check mark, which brings them back, and an empty password is kept like any other.
    Check("chkUserName", false);
    EXPECT_EQ(Kept("localhost"), "");
    ExpectCredentials(false, "twenty letters and o", "p=%2F\\\xC3\xA9");
    settings.SaveSetting("Servers2", "localhost.user", "bob");
    settings.SaveSetting("Servers2", "localhost.pass", "kite");
    Check("chkUserName", true);
    EXPECT_EQ(Kept("localhost"), "Authenticate");
    ExpectCredentials(true, "bob", "kite");
    TypeInto("txtPassword", "");
    EXPECT_EQ(Kept("localhost.user") + Kept("localhost.pass"), "bob");
}

TEST_F(ServersTest, AnotherServerEndsTheSessionAndBringsItsGroups)
{
    MakeFile(SelectedFile("localhost"), "alt.cats\r\n");
    SampleServer server({GroupOf("alt.kites", 1, {}), GroupOf("alt.cats", 1, {})});
    Start({"alt.kites"}, server.Port());
    Check("chkUserName", false);
    Search();
    ChooseEntry("cboNewsServer", "localhost");
    EXPECT_THAT(RowsOf("lstSelectedGroups"), ElementsAre("alt.cats"));
    server.ClearLog();
    Search();
    EXPECT_EQ(server.ConnectionCount(), 2U);
    EXPECT_EQ(server.Log().at(0).argument, "alt.cats");
    // So does the end of a server, and of the last one.
    for (int servers = 2; servers > 0; --servers) {
        Click("cmdDeleteServer");
        TypeInto("txtManual", "alt.kites");
        Click("Command3");
        Click("cmdFindNow");
    }
    EXPECT_EQ(desktop.boxes.back().title, "No ISP Selected");
    EXPECT_EQ(server.CommandCount("group"), 3U);
}

TEST_F(ServersTest, AddingAServer)
{
    Start({"alt.kites"}, 119);
    MakeFile(ProgramFile("!@#!." + serverName), "\"alt.kites 1 1 y\r\nalt.boats 1 1 y\"\r\n");
    Add([] {
        TypeInto("txtNewsServer", "  ");
        QTest::keyClick(&Find<QWidget>("txtNewsServer"), Qt::Key_Return);
    });
    EXPECT_EQ(RowsOf("cboNewsServer").size(), 2U);
    FillLists();
    const std::string longName(250, 'n');
    Add([&] {
        EXPECT_TRUE(Until([] { return Find<QLineEdit>("txtNewsServer").hasSelectedText(); }));
        QTest::keyClicks(&Find<QWidget>("txtNewsServer"), " n/w ");
        Click("cmdSave");
        EXPECT_EQ(TextOf("txtNewsServer"), " n/w ");
        TypeInto("txtNewsServer", longName + "n");
        Click("cmdSave");
        Click("cmdFreeList");
        EXPECT_FALSE(IsVisible("frmHelp"));
        // Without a program that opens it, the page is shown here.
        desktop.hasOpener = false;
        Click("cmdFreeList");
        EXPECT_EQ(Find<QTextBrowser>("page").documentTitle(), "How to find a news server");
        TypeInto("txtNewsServer", " " + longName + " ");
        Click("cmdSave");
    });
    ExpectCountsAgree();
    EXPECT_THAT(desktop.BoxTitles(), ElementsAre("File write error", "File write error", "The Tamarack"));
    EXPECT_THAT(desktop.opened, testing::Each(testing::EndsWith("/help/find-a-server.html")));
    EXPECT_EQ(TextOf("cboNewsServer"), longName);
    EXPECT_THAT(RowsOf("lstSelectedGroups"), IsEmpty());
    EXPECT_EQ(settings.GetSetting("Servers", longName), "1");
    EXPECT_EQ(settings.GetSetting("Servers", "Default"), longName);
}

TEST_F(ServersTest, DeletingAServer)
{
    const std::vector<std::string> prefixes{"!@#!.", "@!!#.", "#!@!."};
    for (const std::string& prefix : prefixes)
        MakeFile(ProgramFile(prefix + serverName), "\"alt.kites 1 1 y\r\nalt.boats 1 1 y\"\r\n");
    MakeFile(ProgramFile("!@#!.localhost"), "\"alt.cats 1 1 y\"\r\n");
    MakeFile(SelectedFile("localhost"), "alt.cats\r\n");
    settings.SaveSetting("Servers2", "localhost.user", "bob");
    Start();
    desktop.answers = {MessageAnswer::No};
    Click("cmdDeleteServer");
    EXPECT_EQ(RowsOf("cboNewsServer").size(), 2U);
    FillLists();
    Click("cmdDeleteServer");
    ExpectCountsAgree();
    for (const std::string& prefix : prefixes)
        EXPECT_THAT(FilesBelow(ProgramFile("")), Not(Contains(prefix + serverName)));
    EXPECT_THAT(settings.GetAllSettings("Servers2"), Not(Contains(testing::StartsWith(serverName))));
    EXPECT_THAT(settings.GetAllSettings("Servers"), ElementsAre("Default", "localhost"));
    EXPECT_EQ(settings.GetSetting("Servers", "Default"), "localhost");
    ExpectCredentials(false, "bob", "");
    EXPECT_THAT(RowsOf("lstSelectedGroups"), ElementsAre("alt.cats"));

    FillLists();
    Click("cmdDeleteServer");
    EXPECT_THAT(RowsOf("cboNewsServer"), IsEmpty());
    ExpectCountsAgree();
    ExpectCredentials(false, "", "");
    EXPECT_THAT(settings.GetAllSettings("Servers2"), IsEmpty());
    Click("cmdDeleteServer");
    EXPECT_EQ(desktop.boxes.size(), 3U) << "there is none to delete";
}

TEST_F(ServersTest, TheFirstStartAsksForAServer)
{
    for (const std::string& name : settings.GetAllSettings("Servers"))
        settings.DeleteSetting("Servers", name);
    desktop.answers = {MessageAnswer::Ok, MessageAnswer::Cancel};
    const auto cancel = [] { QTest::keyClick(&Find<QWidget>("txtNewsServer"), Qt::Key_Escape); };
    WhenUp("frmNewsServer", [=] {
        cancel();
        WhenUp("frmNewsServer", cancel);
    });
    Launch();
    EXPECT_EQ(desktop.programEnds, 1);
    EXPECT_FALSE(IsVisible("frmTamarack"));
    EXPECT_THAT(desktop.BoxTitles(), ElementsAre("Error", "Error"));

    // A server of this name is lost among the settings' own, so that the next start asks again.
    for (int start = 0; start < 2; ++start) {
        WhenUp("frmNewsServer", [] {
            TypeInto("txtNewsServer", "Default");
            Click("cmdSave");
        });
        Start();
        EXPECT_EQ(TextOf("cboNewsServer"), "Default");
    }
}
