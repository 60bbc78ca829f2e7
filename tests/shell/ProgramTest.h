#pragma once

#include "demo/sample/SampleServer.h"
#include "demo/support/Screen.h"
#include "demo/support/TemporaryFolder.h"
#include "platform/Settings.h"
#include "shell/Program.h"
#include "tests/support/TestDesktop.h"

#include <QTest>
#include <QTimer>

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>

// The whole program, on a folder of its own, with its user before it. One news server, on this machine, is known.
class ProgramTest : public testing::Test {
protected:
    ProgramTest()
    {
        std::filesystem::create_directories(destination);
        settings.SaveSetting("Servers", serverName, "1");
        settings.SaveSetting("Startup", "1", destination);
        MakeFile(ProgramFile("!@#!." + serverName), "\"\"\r\n");
    }

    // Starts the program, once more if it is there already, wherever that leads to.
    void Launch()
    {
        program.reset();
        desktop.boxes.clear();
        program = std::make_unique<Program>(desktop, places);
        program->MainWindow().Timer2.SetInterval(std::chrono::milliseconds(1)); // the banner's time is for people
        program->Start();
    }

    // The same, to the main form.
    void Start()
    {
        Launch();
        ASSERT_TRUE(Until([] { return IsVisible("frmTamarack"); }));
        QWidget* const window = WindowNamed("frmTamarack");
        QObject::connect(window, &QWidget::windowTitleChanged, window, [this](const QString& title) {
            captions.push_back(title.toStdString());
            if (const auto step = atCaption.extract(captions.back()))
                step.mapped()();
        });
    }

    // With these selected groups and this port.
    void Start(const std::vector<std::string>& groups, std::uint16_t port)
    {
        std::string content;
        for (const std::string& group : groups)
            content += group + "\r\n";
        MakeFile(SelectedFile(), content);
        Start();
        TypeInto("txtPort", std::to_string(port));
    }

    // Has something done as soon as a window is up; for a modal one, which holds the caller.
    static void WhenUp(const std::string& window, const std::function<void()>& what)
    {
        QTimer::singleShot(1, [=] {
            if (QWidget* up = WindowNamed(window); up != nullptr && up->isVisible())
                what();
            else
                WhenUp(window, what);
        });
    }

    // Has something done when the thread next lets events through.
    static void AtNextYield(const std::function<void()>& what)
    {
        QMetaObject::invokeMethod(qApp, what, Qt::QueuedConnection);
    }

    // Presses "Find Now" and comes back when the search is over. `captions` are then those of this search.
    void Search()
    {
        captions.clear();
        Click("cmdFindNow");
        EXPECT_EQ(CaptionOf("frmTamarack"), frmTamarack::idleCaption);
        EXPECT_EQ(QApplication::overrideCursor(), nullptr);
        EXPECT_TRUE(atCaption.empty()) << atCaption.begin()->first << " was not seen";
    }

    // On the main form.
    static void PressAlt(Qt::Key key)
    {
        QWidget* const window = WindowNamed("frmTamarack");
        window->activateWindow();
        ASSERT_TRUE(Until([&] { return window->isActiveWindow(); }));
        QTest::keyClick(window, key, Qt::AltModifier);
    }

    // Makes the next search begin with this pointer file, none if it is empty, and an empty destination.
    void Forget(const std::string& pointers = {})
    {
        std::filesystem::remove(PointerFile());
        if (!pointers.empty())
            MakeFile(PointerFile(), pointers);
        std::filesystem::remove_all(destination);
        std::filesystem::create_directories(destination);
    }

    std::string ProgramFile(std::string_view name) const { return folder.File("program/" + std::string(name)); }
    std::string SelectedFile(const std::string& server = serverName) const { return ProgramFile("#!@!." + server); }
    std::string PointerFile() const { return ProgramFile("@!!#." + serverName); }

    inline static const std::string serverName = "127.0.0.1";

    TemporaryFolder folder;
    const std::string destination = folder.File("pictures/");
    Settings settings{folder.File("settings.ini")};
    ProgramPlaces places{ProgramFile(""), folder.File("settings.ini")};
    TestDesktop desktop;
    std::unique_ptr<Program> program;
    std::vector<std::string> captions; // of the main form, in their order
    std::map<std::string, std::function<void()>> atCaption; // called once, as soon as the caption is set
};

// A record of the pointer file: the number, least significant byte first, and the name in 80 characters.
inline std::string PointerRecord(std::int32_t article, std::string_view group)
{
    std::string record;
    for (int shift = 0; shift < 32; shift += 8)
        record += static_cast<char>(article >> shift & 0xff);
    record += group;
    record.resize(84, ' ');
    return record;
}
