#include "shell/MainSettings.h"

#include "base/Files.h"
#include "base/Text.h"

#include <functional>

namespace {

constexpr std::string_view section = "Startup";
constexpr std::string_view autoLoadKey = "AutoLoad";

// How the value of one control is brought back and kept.
struct Entry {
    std::string_view key;
    std::function<void(const std::string&)> restore;
    std::function<std::string()> value;
};

Entry CheckBoxEntry(std::string_view key, CheckBox& box)
{
    return {key,
        [&box](const std::string& value) {
            if (value == "0" || value == "1")
                box.SetValue(value == "1" ? 1 : 0);
        },
        [&box] { return std::to_string(box.Value()); }};
}

Entry OptionEntry(std::string_view key, OptionButton& option)
{
    return {key,
        [&option](const std::string& value) {
            if (value == "True" || value == "False")
                option.SetValue(value == "True");
        },
        [&option] { return std::string(option.Value() ? "True" : "False"); }};
}

template <class Field> Entry TextEntry(std::string_view key, Field& field)
{
    return {key, [&field](const std::string& value) { field.SetText(value); }, [&field] { return field.Text(); }};
}

Entry RowEntry(std::string_view key, ComboBox& list)
{
    return {key, [&list](const std::string& value) { (void)list.SelectText(value); }, [&list] { return list.Text(); }};
}

std::vector<Entry> Entries(frmTamarack& MainForm)
{
    return {
        TextEntry("1", MainForm.txtSelectDir),
        CheckBoxEntry("2", MainForm.chkJPEGFiles),
        CheckBoxEntry("3", MainForm.chkGIFFiles),
        CheckBoxEntry("4", MainForm.chkBitMapFiles),
        CheckBoxEntry("5", MainForm.chkMPEGFiles),
        TextEntry("6", MainForm.txtNamed),
        OptionEntry("7", MainForm.chkSingleParts),
        OptionEntry("8", MainForm.chkAllArticles),
        OptionEntry("9", MainForm.chkAllCriteria),
        CheckBoxEntry("10", MainForm.chkMaximumFiles),
        TextEntry("11", MainForm.txtMaxToDownload),
        CheckBoxEntry("12", MainForm.chkLimitPictures),
        TextEntry("13", MainForm.txtLimitPictures),
        TextEntry("14", MainForm.txtKB),
        RowEntry("15", MainForm.cboSizeIs),
        CheckBoxEntry("16", MainForm.chkGroupSubDir),
    };
}

}

MainSettings::MainSettings(frmTamarack& mainForm, Settings& newSettings)
    : MainForm(mainForm)
    , settings(newSettings)
{
}

void MainSettings::RestoreAutoLoad()
{
    const std::string stored = settings.GetSetting(section, autoLoadKey);
    if (!stored.empty())
        MainForm.chkAutoLoad.SetValue(Val(stored) == 0 ? 0 : 1);
}

void MainSettings::Restore()
{
    MainForm.txtSelectDir.SetText(CurrentDirectory());
    for (const Entry& entry : Entries(MainForm)) {
        const std::string stored = settings.GetSetting(section, entry.key);
        if (!stored.empty())
            entry.restore(stored);
    }
}

void MainSettings::Save()
{
    for (const Entry& entry : Entries(MainForm))
        settings.SaveSetting(section, entry.key, entry.value());
    settings.SaveSetting(section, autoLoadKey, std::to_string(MainForm.chkAutoLoad.Value()));
}
