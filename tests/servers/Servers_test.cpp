#include "program-test/ProgramTest.h"

using testing::ElementsAre;

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

    std::string Kept(const std::string& key) { return settings.GetSetting("Servers2", key); }
};

}

TEST_F(ServersTest, TheDefaultOrTheFirstIsSelected)
{
    struct Row {
        const char* preselected;
        const char* selected;
    };
    for (const Row& row : {Row{"", "127.0.0.1"}, Row{" localhost ", "localhost"}, Row{"elsewhere", "127.0.0.1"}}) {
        SCOPED_TRACE(row.preselected);
        settings.SaveSetting("Servers", "Default", row.preselected);
        Start();
        EXPECT_THAT(RowsOf("cboNewsServer"), ElementsAre("127.0.0.1", "localhost"));
        EXPECT_EQ(TextOf("cboNewsServer"), row.selected);
        EXPECT_EQ(TextOf("txtPort"), "119");
    }
    ChooseEntry("cboNewsServer", "localhost");
    Click("Command1");
    EXPECT_EQ(settings.GetSetting("Servers", "Default"), "localhost");
}

TEST_F(ServersTest, EachServerHasCredentialsOfItsOwn)
{
    Start();
    ExpectCredentials(true, "ann", "se;cret,1");
    ChooseEntry("cboNewsServer", "localhost");
    ExpectCredentials(false, "", "");
    Check("chkUserName", true);
    TypeInto("txtUserName", "twenty letters and one");
    TypeInto("txtPassword", "p=%2F\\\xC3\xA9");
    ChooseEntry("cboNewsServer", serverName);
    ExpectCredentials(true, "ann", "se;cret,1");
    ChooseEntry("cboNewsServer", "localhost");
    ExpectCredentials(true, "twenty letters and o", "p=%2F\\\xC3\xA9");
    EXPECT_EQ(Kept(serverName), "Authenticate");
    EXPECT_EQ(Kept(serverName + ".user"), "ann");
    EXPECT_EQ(Kept(serverName + ".pass"), "se;cret,1");
    EXPECT_EQ(Kept("localhost.pass"), "p=%2F\\\xC3\xA9");

    // The keys outlive the check mark, and an empty password is kept like any other.
    Check("chkUserName", false);
    EXPECT_EQ(Kept("localhost"), "");
    EXPECT_EQ(Kept("localhost.user"), "twenty letters and o");
    ExpectCredentials(false, "twenty letters and o", "p=%2F\\\xC3\xA9");
    Check("chkUserName", true);
    EXPECT_EQ(Kept("localhost"), "Authenticate");
    TypeInto("txtPassword", "");
    EXPECT_EQ(Kept("localhost.pass"), "");
    ChooseEntry("cboNewsServer", serverName);
    ChooseEntry("cboNewsServer", "localhost");
    ExpectCredentials(true, "twenty letters and o", "");
}

TEST_F(ServersTest, AnotherServerEndsTheSessionAndBringsItsGroups)
{
    MakeFile(SelectedFile("localhost"), "alt.cats\r\n");
    SampleServer server({GroupOf("alt.kites", 1, {}), GroupOf("alt.boats", 1, {}), GroupOf("alt.cats", 1, {})});
    Start({"alt.kites", "alt.boats"}, server.Port());
    Check("chkUserName", false);
    Search();
    Search();
    EXPECT_EQ(server.ConnectionCount(), 1U);
    ChooseEntry("cboNewsServer", "localhost");
    EXPECT_THAT(RowsOf("lstSelectedGroups"), ElementsAre("alt.cats"));
    EXPECT_EQ(PanelText("StatusBar2", 3), "Selected: 1");
    server.ClearLog();
    Search();
    EXPECT_EQ(server.ConnectionCount(), 2U);
    ASSERT_EQ(server.CommandCount("group"), 1U);
    EXPECT_EQ(server.Log().front().argument, "alt.cats");
}
