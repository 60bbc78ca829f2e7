#include "tests/real-server/NewsClient.h"
#include "tests/real-server/RealServerTest.h"

namespace {

// One small article for each number from 1 on.
void PostTexts(InterNetNews& server, const std::string& group, int count)
{
    for (int number = 1; number <= count; ++number) {
        const std::string text = std::to_string(number);
        const std::string status = server.Post(group, "<" + text + "." + group + "@news.test>",
            "From: Ann <ann@news.test>\nSubject: Number " + text + "\nLines: 2\n", "Text " + text + "\n.dotted\n");
        ASSERT_TRUE(status.starts_with("240")) << status;
    }
}

std::string Code(const std::string& status) { return status.substr(0, 3); }

}

TEST_F(RealServerTest, WalkOverGapsToTheEnd)
{
    ASSERT_EQ(server.Start({"alt.kites"}), "");
    PostTexts(server, "alt.kites", 20);
    for (const int gone : {5, 6, 20})
        EXPECT_TRUE(server.DeleteArticle("alt.kites", gone));
    EXPECT_FALSE(server.DeleteArticle("alt.kites", 21));

    NewsClient client;
    EXPECT_EQ(Code(client.Connect(server.Port())), "200");
    EXPECT_EQ(Code(client.Command("group alt.none")), "411");
    EXPECT_EQ(client.Command("group alt.kites").substr(0, 9), "211 20 1 ");
    EXPECT_EQ(Code(client.Command("stat 5")), "423");
    EXPECT_EQ(Code(client.Command("head 20")), "423");
    EXPECT_EQ(Code(client.Command("stat 4")), "223");
    EXPECT_EQ(client.Command("next"), "223 7 <7.alt.kites@news.test> Article retrieved; request text separately");
    EXPECT_EQ(Code(client.Command("head 7")), "221");
    EXPECT_NE(client.Text().find("\r\nLines: 2\r\n"), std::string::npos);
    EXPECT_EQ(Code(client.Command("body 7")), "222");
    EXPECT_EQ(client.Text(), "Text 7\r\n.dotted\r\n");
    for (int number = 8; number <= 19; ++number)
        EXPECT_TRUE(client.Command("next").starts_with("223 " + std::to_string(number) + " ")) << number;
    EXPECT_EQ(Code(client.Command("next")), "421");
}

TEST_F(RealServerTest, Password)
{
    ASSERT_EQ(server.Start({"alt.kites"}, InterNetNews::Account{"ann", "secret"}), "");
    PostTexts(server, "alt.kites", 1);

    NewsClient client;
    EXPECT_EQ(Code(client.Connect(server.Port())), "200");
    EXPECT_EQ(Code(client.Command("group alt.kites")), "480");
    EXPECT_EQ(Code(client.Command("authinfo user ann")), "381");
    EXPECT_EQ(Code(client.Command("authinfo pass wrong")), "481");
    EXPECT_EQ(Code(client.Command("authinfo user ann")), "381");
    EXPECT_EQ(Code(client.Command("authinfo pass secret")), "281");
    EXPECT_EQ(Code(client.Command("group alt.kites")), "211");
}
