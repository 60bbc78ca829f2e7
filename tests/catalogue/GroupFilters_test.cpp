#include "tests/catalogue/CatalogueTest.h"

#include <QTimer>

using testing::ElementsAre;

namespace {

const char* const filters[] = {"cmdAndFilter", "cmdOrFilter"};

class GroupFiltersTest : public CatalogueTest {
protected:
    // Filters, and has something done as soon as a group has been found.
    static void FilterAndMeanwhile(const char* button, const char* terms, const std::function<void()>& what)
    {
        Filter("cmdAndFilter", "none");
        TypeInto("txtNewsGroups", terms);
        bool done = false;
        QTimer user;
        QObject::connect(&user, &QTimer::timeout, [&] {
            if (!done && PanelText("StatusBar2", 2) != "Filtered: 0") {
                done = true;
                what();
            }
        });
        user.start(0);
        Click(button);
        EXPECT_TRUE(done);
    }
};

}

TEST_F(GroupFiltersTest, WhatTheyKeep)
{
    struct Row {
        const char* terms;
        std::vector<std::string> withAll;
        std::vector<std::string> withAny;
    };
    StartWith({"alt.pictures", "alt.kites", "rec.pictures", "Alt.x", "comp.os"});
    for (const Row& row :
        {Row{" alt ; pictures ;", {"alt.pictures"}, {"alt.kites", "alt.pictures", "alt.pictures", "rec.pictures"}},
            Row{";;x;", {"Alt.x"}, {"Alt.x"}}, Row{"ALT", {}, {}}, Row{" ; ;", {}, {}}}) {
        SCOPED_TRACE(row.terms);
        for (const bool all : {true, false}) {
            const std::vector<std::string>& hits = all ? row.withAll : row.withAny;
            Filter(all ? "cmdAndFilter" : "cmdOrFilter", row.terms);
            EXPECT_TRUE(Until([&] { return RowsOf("lstFilteredGroups") == hits; }));
            EXPECT_EQ(PanelText("StatusBar2", 2), "Filtered: " + std::to_string(hits.size()));
            EXPECT_EQ(IsEnabled("cmdSavePicks"), !hits.empty());
        }
    }
}

TEST_F(GroupFiltersTest, EndOnAStopAndWhenTheirListChanges)
{
    settings.SaveSetting("Servers", "localhost", "1");
    settings.SaveSetting("Servers", "Default", serverName);
    settings.SaveSetting("Startup", "AutoLoad", "0");
    StartWith(ManyNames(2000));
    for (const char* button : filters) {
        for (const char* interruption : {"cmdStop", "cmdRefreshDisk", "another server"}) {
            SCOPED_TRACE(std::string(button) + " " + interruption);
            const bool leave = interruption[0] == 'a';
            FilterAndMeanwhile(button, "alt;group", [&] {
                if (leave)
                    ChooseEntry("cboNewsServer", "localhost");
                else
                    Click(interruption);
            });
            EXPECT_LT(RowsOf("lstFilteredGroups").size(), leave ? 1U : 2000U);
            EXPECT_EQ(IsEnabled("cmdSavePicks"), !leave);
            EXPECT_EQ(WindowNamed("frmTamarack")->cursor().shape(), Qt::ArrowCursor);
            ChooseEntry("cboNewsServer", serverName);
        }
    }
}

TEST_F(GroupFiltersTest, ASecondPressReplacesTheResultOfTheFirst)
{
    StartWith(ManyNames(600));
    for (const char* first : filters) {
        for (const char* second : filters) {
            for (const auto& [terms, hits] : {std::pair("group", 600U), {"none", 0U}}) {
                SCOPED_TRACE(std::string(first) + " " + second + " " + terms);
                FilterAndMeanwhile(first, "alt", [&, terms = terms] {
                    TypeInto("txtNewsGroups", terms);
                    Click(second);
                    // Nothing of the first run may change this.
                    program->MainWindow().StatusBar2.Panels(4).SetText("inner run's");
                });
                EXPECT_EQ(PanelText("StatusBar2", 4), "inner run's");
                EXPECT_EQ(PanelText("StatusBar2", 2), "Filtered: " + std::to_string(hits));
                EXPECT_TRUE(Until([&, hits = hits] { return RowsOf("lstFilteredGroups").size() == hits; }));
                EXPECT_EQ(IsEnabled("cmdSavePicks"), hits > 0);
            }
        }
    }
}

TEST_F(GroupFiltersTest, StoppedAtOnceTheyLeaveListAndCountAsTheyAre)
{
    StartWith({"alt.a", "alt.b", "alt.c"});
    for (const char* button : filters) {
        SCOPED_TRACE(button);
        Filter("cmdAndFilter", "alt");
        ASSERT_TRUE(Until([] { return RowsOf("lstFilteredGroups").size() == 3; }));
        DoubleClickRow("lstFilteredGroups", 0);
        AtNextYield([] { Click("cmdStop"); });
        Click(button);
        EXPECT_THAT(RowsOf("lstFilteredGroups"), ElementsAre("alt.b", "alt.c"));
        EXPECT_EQ(PanelText("StatusBar2", 2), "Filtered: 2");
    }
}
