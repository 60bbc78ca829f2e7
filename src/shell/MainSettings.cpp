#include "shell/MainSettings.h"

#include "base/Files.h"
#include "base/Text.h"

#include <variant>

namespace {

constexpr std::string_view section = "Startup";
constexpr std::string_view autoLoadKey = "AutoLoad";

struct Entry {
    std::string_view key;
    std::variant<TextArea frmTamarack::*, TextBox frmTamarack::*, CheckBox frmTamarack::*, OptionButton frmTamarack::*,
        ComboBox frmTamarack::*>
        control;
};

constexpr Entry entries[] = {
    {"1", &frmTamarack::txtSelectDir},
    {"2", &frmTamarack::chkJPEGFiles},
    {"3", &frmTamarack::chkGIFFiles},
    {"4", &frmTamarack::chkBitMapFiles},
    {"5", &frmTamarack::chkMPEGFiles},
    {"6", &frmTamarack::txtNamed},
    {"7", &frmTamarack::chkSingleParts},
    {"8", &frmTamarack::chkAllArticles},
    {"9", &frmTamarack::chkAllCriteria},
    {"10", &frmTamarack::chkMaximumFiles},
    {"11", &frmTamarack::txtMaxToDownload},
    {"12", &frmTamarack::chkLimitPictures},
    {"13", &frmTamarack::txtLimitPictures},
    {"14", &frmTamarack::txtKB},
    {"15", &frmTamarack::cboSizeIs},
    {"16", &frmTamarack::chkGroupSubDir},
};

std::string Stored(const auto& field) { return field.Text(); }
std::string Stored(const CheckBox& box) { return std::to_string(box.Value()); }
std::string Stored(const OptionButton& option) { return option.Value() ? "True" : "False"; }

void Show(const std::string& stored, auto& field) { field.SetText(stored); }

void Show(const std::string& stored, CheckBox& box)
{
    if (stored == "0" || stored == "1")
        box.SetValue(stored == "1" ? 1 : 0);
}

void Show(const std::string& stored, OptionButton& option)
{
    if (stored == "True" || stored == "False")
        option.SetValue(stored == "True");
}

void Show(const std::string& stored, ComboBox& list) { (void)list.SelectText(stored); }

}

void RestoreAutoLoad(frmTamarack& MainForm, const Settings& settings)
{
    if (const std::string stored = settings.GetSetting(section, autoLoadKey); !stored.empty())
        MainForm.chkAutoLoad.SetValue(Val(stored) == 0 ? 0 : 1);
}

void RestoreMainSettings(frmTamarack& MainForm, const Settings& settings)
{
    MainForm.txtSelectDir.SetText(CurrentDirectory());
    for (const Entry& entry : entries) {
        const std::string stored = settings.GetSetting(section, entry.key);
        if (!stored.empty())
            std::visit([&](auto control) { Show(stored, MainForm.*control); }, entry.control);
    }
}

void SaveMainSettings(const frmTamarack& MainForm, Settings& settings)
{
    for (const Entry& entry : entries) {
        const auto stored = [&](auto control) { return Stored(MainForm.*control); };
        settings.SaveSetting(section, entry.key, std::visit(stored, entry.control));
    }
    settings.SaveSetting(section, autoLoadKey, std::to_string(MainForm.chkAutoLoad.Value()));
}
