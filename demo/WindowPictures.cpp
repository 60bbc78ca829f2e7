#include "demo/WindowPictures.h"

#include "forms/frmTamarack.h"

#include <QTest>
#include <algorithm>

namespace {

void TakeTabs(Camera& camera)
{
    const char* const tabs[] = {"1-name-and-location", "2-advanced-filtering", "3-server-setup"};
    for (int tab = 0; tab < 3; ++tab) {
        SelectTab("SSTMain", tab);
        camera.Take(tabs[tab]);
    }
    const char* const groupTabs[] = {"4-selected-groups", "5-filtered-groups", "6-all-groups"};
    SelectTab("SSTMain", 3);
    for (int tab = 0; tab < 3; ++tab) {
        SelectTab("SSTab1", tab);
        camera.Take(groupTabs[tab]);
    }
}

// A window that holds the program until it is closed.
void TakeModal(Camera& camera, const char* name, const char* window, const std::function<void()>& open)
{
    camera.TakeNext(name, window);
    open();
}

// A slide show of one group that has come round to its first pane.
void TakeSlideShow(Camera& camera, const std::string& group)
{
    ChooseMenu("mnuSlideShow");
    const std::vector<std::string> rows = RowsOf("Dir1");
    ClickRow("Dir1", static_cast<int>(std::find(rows.begin(), rows.end(), group) - rows.begin()));
    TypeInto("frmSlideShow/txtDelay", "20");
    Check("chkOptions(0)", true);
    Click("frmSlideShow/Command1(0)");
    int shown = 0;
    std::string last;
    const bool hasComeRound = Until([&] {
        const std::string pane = PanelText("frmSlideShow/StatusBar1", 2);
        shown += pane != last && pane.starts_with("Pane: ");
        last = pane;
        return shown > 6;
    });
    if (hasComeRound)
        camera.Take("9-slide-show", "frmSlideShow");
    Click("frmSlideShow/Command1(1)");
    ChooseMenu("mnuSlideShow");
}

}

void TakePicturesOfWindows(Camera& camera, UnattendedDesktop& desktop, frmTamarack& mainForm, const std::string& group)
{
    TakeTabs(camera);
    // The newest picture.
    Click("frmTamarack/Command2(0)");
    camera.Take("8-viewer", "frmShowPicture");
    TakeSlideShow(camera, group);

    TakeModal(camera, "adding-a-server", "frmNewsServer", [] { Click("cmdAddNewsServer"); });
    TakeModal(camera, "destination", "frmSelectDrive", [] { Click("cmdSelectDir"); });
    ClickRow("lstSelectedGroups", 0);
    TakeModal(camera, "set-pointer", "frmSetPointer", [] { Click("frmTamarack/Command4"); });
    TakeModal(camera, "about", "frmAbout", [] { ChooseMenu("mnuAbout"); });

    ChooseMenu("mnuHelpTopics");
    camera.Take("help", "frmHelp");
    QTest::keyClick(WindowNamed("frmHelp"), Qt::Key_Escape);

    QTest::mousePress(&Find<QWidget>("frmShowPicture/Image1"), Qt::RightButton, Qt::ControlModifier);
    camera.Take("debug", "frmDebug");
    WindowNamed("frmDebug")->close();

    mainForm.TCP1.Close();
    mainForm.TCP1.AuthoritiesFile.clear();
    desktop.whileAsked = [&] { camera.TakeNext("encryption"); };
    SelectTab("SSTMain", 0);
    Click("cmdFindNow");
}
