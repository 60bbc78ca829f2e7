#include "benchmarks/ProgramInFolder.h"

#include "catalogue/PointerFile.h"
#include "catalogue/ServerFiles.h"
#include "demo/support/Screen.h"

#include <filesystem>

ProgramInFolder::ProgramInFolder(int port, const std::string& groupName, Wire wire)
    : group(groupName)
{
    const std::string host = "127.0.0.1";
    const ProgramPlaces places{folder.File("program/"), folder.File("settings.ini")};
    std::filesystem::create_directories(destination);
    MakeFile(places.appDir + ServerFiles::groupPrefix + host, "\"\"\r\n");
    MakeFile(places.appDir + ServerFiles::selectedPrefix + host, group + "\r\n");
    (void)PointerFile(places.appDir + ServerFiles::pointerPrefix + host).Write(1, group, 1);
    Settings settings(places.settingsFile);
    settings.SaveSetting("Servers", host, "1");
    settings.SaveSetting("Startup", "1", destination);

    program = std::make_unique<Program>(desktop, places);
    Socket& TCP1 = program->MainWindow().TCP1;
    if (wire == Wire::Encrypted)
        TCP1.SecurePorts = {port};
    TCP1.AcceptCertificate = [](const Certificate&, const std::function<bool()>&) { return true; };
    program->Start();
    (void)Until([] { return IsVisible("frmTamarack"); });
    TypeInto("txtPort", std::to_string(port));
}

bool ProgramInFolder::Search(std::size_t attachments)
{
    Click("cmdFindNow");
    return desktop.boxes == 0 && PanelText("StatusBar1", 2) == "Items: " + std::to_string(attachments);
}
