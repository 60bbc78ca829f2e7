#include "tests/session/ScriptedSession.h"

#include <QTest>

TEST(ReplyReceiverTest, Numbers)
{
    struct Row {
        const char *command, *reply, *numbers; // the group's first and last, and the current article
    };
    const Row rows[] = {{"group x", "211 9 2 10 x", "2 10 5"},
        {"group x", "211 3 2147483647 2147483648 x", "2147483647 12 5"}, {"group x", "211 3 12ab -7 x", "12 0 5"},
        {"group x", "211 3 7 9", "7 0 5"}, {"group x", "211 3  7 9 x", "0 7 5"}, {"group x", "211", "0 0 5"},
        {"next", "223 7 <a@b>", "1 12 7"}, {"next", "223 x8 <a@b>", "1 12 0"}, {"next", "223 /8 :9", "1 12 0"}};
    std::string script;
    for (const Row& row : rows)
        script += std::string("C: ") + row.command + "\nS: " + row.reply + "\n";
    // Of a status line in pieces the first alone is judged, and all of them pass for text.
    ScriptedSession client(script + "C: group x\nS~ 211 3 7 9\nS: 1 x\n");
    NewsSession& session = client.Session;
    ASSERT_TRUE(session.TcpConnect());
    for (const Row& row : rows) {
        session.FirstArticle = 1;
        session.LastArticle = 12;
        session.CurrentArticle = 5;
        EXPECT_EQ(client.Run(row.command), "true");
        std::ostringstream numbers;
        numbers << session.FirstArticle << " " << session.LastArticle << " " << session.CurrentArticle;
        EXPECT_EQ(numbers.str(), row.numbers) << row.reply;
    }
    EXPECT_EQ(client.Run("group x"), "true");
    EXPECT_EQ(session.LastArticle, 0);
    EXPECT_TRUE(Until([&] { return session.RecvBuffer.Text() == "211 3 7 91 x\r\n"; }));
}

TEST(ReplyReceiverTest, WhatWaitsWhileAnotherIsLoggedOrHandedOverAndWhatIsTooLong)
{
    ScriptedSession client(
        "C: body 7\nS: 222\nS: one\nX: packet\nS: two\nS: .\nC: list\nS: 215\nS: a 1 1 y\nS: .\n"
        "X: packet\nS: b 1 1 y\nS: .\nC: body 8\nS: 222\nS: some text\nX: packet\nS: and more of it");
    client.Session.DebugLog = [](const std::string&) { QTest::qWait(20); };
    client.Session.DebugOn = true;
    std::vector<std::string> lists;
    client.Session.GroupListArrived = [&](const std::string& text) {
        // The next one is there before this one has been taken.
        EXPECT_TRUE(Until([&] { return client.Session.RecvBuffer.Length() > 2; }));
        lists.push_back(text);
    };
    ASSERT_TRUE(client.Session.TcpConnect());
    EXPECT_EQ(client.Run("body 7"), "one\r\ntwo");
    client.Session.DebugOn = false; // the log would let both lists wait
    EXPECT_EQ(client.Run("list"), "old\r\ntext");
    client.Session.DebugOn = true;
    EXPECT_THAT(lists, testing::ElementsAre("\r\na 1 1 y"));
    EXPECT_EQ(client.Session.RecvBuffer.Text(), "\r\n");
    client.Session.LongestReply = 20;
    EXPECT_EQ(client.Run("body 8"), "");
    EXPECT_EQ(client.Outcome(), "closed stop");
    EXPECT_EQ(client.Status(), "Status: Reply Too Long");
    EXPECT_EQ(client.Session.RecvBuffer.Length(), 0U);
}
