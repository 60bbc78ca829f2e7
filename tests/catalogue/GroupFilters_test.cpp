#include "tests/catalogue/CatalogueTest.h"

namespace {

const char* const filters[] = {"cmdAndFilter", "cmdOrFilter"};

class GroupFiltersTest : public CatalogueTest {
protected:
    // Filters, and has something done as soon as a group has been found.
    static void FilterAndMeanwhile(const char* button, const char* terms, const std::function<void()>& what)
    {
        Filter("cmdAndFilter", "none");
        TypeInto("txtNewsGroups", terms);
        QTimer user;
        QObject::connect(&user, &QTimer::timeout, [&] {
            if (PanelText("StatusBar2", 2) == "Filtered: 0")
                return;
            user.stop();
            what();
        });
        user.start(0);
        Click(button);
        EXPECT_FALSE(user.isActive());
    }
};

}

TEST_F(GroupFiltersTest, WhatTheyKeep)
{
    struct Row {
        const char* terms;
        std::vector<std::string> withAll, withAny;
    };
    StartWith({"alt.pictures", "alt.kites", "rec.pictures", "Alt.x", "comp.os"});
    for (const Row& row :
        {Row{" alt ; pictures ;", {"alt.pictures"}, {"alt.kites", "alt.pictures", "alt.pictures", "rec.pictures"}},
            Row{";;x;", {"Alt.x"}, {"Alt.x"}}, Row{"ALT", {}, {}}, Row{" ; ;", {}, {}}}) {
        for (const char* button : filters) {
            const std::vector<std::string>& hits = button == filters[0] ? row.withAll : row.withAny;
            Filter(button, row.terms);
            EXPECT_TRUE(Until([&] { return RowsOf("lstFilteredGroups") == hits; })) << row.terms;
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
        for (const std::string interruption : {"cmdStop", "cmdRefreshDisk", ""}) {
            SCOPED_TRACE(button + interruption);
            const bool leave = interruption.empty(); // for another server
            FilterAndMeanwhile(
                button, "alt;group", [&] { leave ? ChooseEntry("cboNewsServer", "localhost") : Click(interruption); });
            EXPECT_LT(RowsOf("lstFilteredGroups").size(), leave ? 1U : 2000U);
            EXPECT_EQ(IsEnabled("cmdSavePicks"), !leave);
            EXPECT_EQ(WindowNamed("frmTamarack")->cursor().shape(), Qt::ArrowCursor);
            ChooseEntry("cboNewsServer", serverName);
        }
        // Stopped at once, they leave list and count as they are.
        Filter("cmdAndFilter", "alt;group1;9");
        ASSERT_TRUE(Until([] { return RowsOf("lstFilteredGroups").size() == 291; }));
        AtNextYield([] { Click("cmdStop"); });
        Click(button);
        EXPECT_EQ(RowsOf("lstFilteredGroups").size(), 291U);
        EXPECT_EQ(PanelText("StatusBar2", 2), "Filtered: 291");
    }
}
