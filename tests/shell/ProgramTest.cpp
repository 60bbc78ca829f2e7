#include "tests/shell/ProgramTest.h"

#include <QTimer>

#include <filesystem>

namespace fs = std::filesystem;

ProgramTest::ProgramTest()
{
    fs::create_directories(destination);
    settings.SaveSetting("Servers", serverName, "1");
    settings.SaveSetting("Startup", "1", destination);
    MakeFile(ProgramFile("!@#!." + serverName), "\"\"\r\n");
}

void ProgramTest::Launch()
{
    program.reset();
    desktop.boxes.clear();
    program = std::make_unique<Program>(desktop, places);
    // The banner's two seconds are for people.
    program->MainWindow().Timer2.SetInterval(std::chrono::milliseconds(1));
    program->Start();
}

void ProgramTest::WhenUp(const std::string& window, const std::function<void()>& what)
{
    QTimer::singleShot(1, [=] {
        if (QWidget* up = WindowNamed(window); up != nullptr && up->isVisible())
            what();
        else
            WhenUp(window, what);
    });
}

void ProgramTest::Start()
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

void ProgramTest::Start(const std::vector<std::string>& groups, std::uint16_t port)
{
    std::string content;
    for (const std::string& group : groups)
        content += group + "\r\n";
    MakeFile(SelectedFile(), content);
    Start();
    TypeInto("txtPort", std::to_string(port));
}

void ProgramTest::Search()
{
    captions.clear();
    Click("cmdFindNow");
    EXPECT_EQ(CaptionOf("frmTamarack"), frmTamarack::idleCaption);
    EXPECT_TRUE(atCaption.empty()) << atCaption.begin()->first << " was not seen";
}

void ProgramTest::Forget(const std::string& pointers)
{
    fs::remove(PointerFile());
    if (!pointers.empty())
        MakeFile(PointerFile(), pointers);
    fs::remove_all(destination);
    fs::create_directories(destination);
}

void ProgramTest::AtNextYield(const std::function<void()>& what)
{
    QMetaObject::invokeMethod(qApp, what, Qt::QueuedConnection);
}

std::string PointerRecord(std::int32_t article, std::string_view group)
{
    std::string record;
    for (int shift = 0; shift < 32; shift += 8)
        record += static_cast<char>(article >> shift & 0xff);
    record += group;
    record.resize(84, ' ');
    return record;
}
