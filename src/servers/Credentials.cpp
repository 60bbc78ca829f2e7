#include "servers/Credentials.h"

namespace {

constexpr std::string_view section = "Servers2";
constexpr std::string_view userEnding = ".user";
constexpr std::string_view passwordEnding = ".pass";

}

Credentials::Credentials(frmTamarack& mainForm, Settings& newSettings)
    : MainForm(mainForm)
    , settings(newSettings)
{
    MainForm.chkUserName.Click = [this] { chkUserName_Click(); };
    MainForm.txtUserName.Change = [this] { txtUserName_Change(); };
    MainForm.txtPassword.Change = [this] { txtPassword_Change(); };
}

void Credentials::Load()
{
    MainForm.chkUserName.SetValue(Kept("").empty() ? 0 : 1);
    MainForm.txtUserName.SetText(Kept(userEnding));
    MainForm.txtPassword.SetText(Kept(passwordEnding));
}

void Credentials::Forget(const std::string& server)
{
    for (const std::string_view ending : {std::string_view(), passwordEnding, userEnding})
        settings.DeleteSetting(section, server + std::string(ending));
}

void Credentials::chkUserName_Click()
{
    const bool wanted = MainForm.chkUserName.Value() == 1;
    MainForm.txtUserName.SetEnabled(wanted);
    MainForm.txtPassword.SetEnabled(wanted);
    MainForm.lblUserName.SetEnabled(wanted);
    MainForm.lblPassword.SetEnabled(wanted);
    if (wanted) {
        if (const std::string user = Kept(userEnding); !user.empty())
            MainForm.txtUserName.SetText(user);
        if (const std::string password = Kept(passwordEnding); !password.empty())
            MainForm.txtPassword.SetText(password);
    }
    Keep("", wanted ? "Authenticate" : "");
}

void Credentials::txtUserName_Change() { Keep(userEnding, MainForm.txtUserName.Text()); }

void Credentials::txtPassword_Change() { Keep(passwordEnding, MainForm.txtPassword.Text()); }

std::string Credentials::Kept(std::string_view ending) const
{
    return settings.GetSetting(section, MainForm.cboNewsServer.Text().append(ending));
}

void Credentials::Keep(std::string_view ending, std::string_view value)
{
    if (const std::string server = MainForm.cboNewsServer.Text(); !server.empty())
        settings.SaveSetting(section, server + std::string(ending), value);
}
