#pragma once

#include "tests/shell/ProgramTest.h"

// The whole program with groups in its lists.
class CatalogueTest : public ProgramTest {
protected:
    std::string GroupFile() const { return ProgramFile("!@#!." + serverName); }

    // alt.group0, alt.group1 and so on.
    static std::vector<std::string> ManyNames(int count)
    {
        std::vector<std::string> names;
        for (int i = 0; i < count; ++i)
            names.push_back("alt.group" + std::to_string(i));
        return names;
    }

    // A server's list of these groups.
    static std::string ListOf(const std::vector<std::string>& names)
    {
        std::string text;
        for (const std::string& name : names)
            text += (text.empty() ? "" : "\r\n") + name + " 2 1 y";
        return text;
    }

    // Starts with these groups in the list of all groups.
    void StartWith(const std::vector<std::string>& names, const std::vector<std::string>& selected = {})
    {
        MakeFile(GroupFile(), '"' + ListOf(names) + "\"\r\n");
        Start(selected, 1);
        Click("cmdRefreshDisk");
    }

    static void Filter(const char* button, const std::string& terms)
    {
        TypeInto("txtNewsGroups", terms);
        if (std::string_view(button) == "cmdAndFilter")
            QTest::keyClick(&Find<QWidget>("txtNewsGroups"), Qt::Key_Return);
        else
            Click(button);
        Until([] { return PanelText("StatusBar2", 4).empty(); });
    }
};
