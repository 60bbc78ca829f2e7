#include "scan/SearchCriteria.h"

SearchCriteria::SearchCriteria(frmTamarack& mainForm, Desktop& newDesktop)
    : MainForm(mainForm)
    , desktop(newDesktop)
{
    for (CheckBox* fileType :
        {&MainForm.chkJPEGFiles, &MainForm.chkGIFFiles, &MainForm.chkBitMapFiles, &MainForm.chkMPEGFiles})
        fileType->Click = [this] { BuildFilePatterns(); };
    MainForm.txtNamed.Change = [this] { BuildFilePatterns(); };
    MainForm.chkMaximumFiles.Click = [this] { chkMaximumFiles_Click(); };
    MainForm.chkLimitPictures.Click = [this] { chkLimitPictures_Click(); };
    MainForm.chkAllArticles.Click = [this] { WarnOfMultiPartMessages(); };
    MainForm.chkAllCriteria.Click = [this] { WarnOfMultiPartMessages(); };
}

void SearchCriteria::BuildFilePatterns()
{
    std::string patterns;
    const auto add = [&patterns](const CheckBox& fileType, std::string_view extension) {
        if (fileType.Value() != 1)
            return;
        if (!patterns.empty())
            patterns += ';';
        patterns += extension;
    };
    add(MainForm.chkJPEGFiles, ".jpg");
    add(MainForm.chkBitMapFiles, ".bmp");
    add(MainForm.chkMPEGFiles, ".mpg");
    add(MainForm.chkGIFFiles, ".gif");
    const std::string& named = MainForm.txtNamed.Text();
    if (!named.empty() && !patterns.empty())
        patterns += ';';
    FilePatterns = patterns + named;
}

void SearchCriteria::chkMaximumFiles_Click()
{
    const bool limited = MainForm.chkMaximumFiles.Value() == 1;
    MainForm.txtMaxToDownload.SetEnabled(limited);
    MainForm.udMaxToDownload.SetEnabled(limited);
}

void SearchCriteria::chkLimitPictures_Click()
{
    const bool limited = MainForm.chkLimitPictures.Value() == 1;
    MainForm.txtLimitPictures.SetEnabled(limited);
    MainForm.udLimitPictures.SetEnabled(limited);
    MainForm.lblPerNewsGroup.SetEnabled(limited);
}

// Not at start-up, when the stored choice is brought back behind the scenes.
void SearchCriteria::WarnOfMultiPartMessages()
{
    if (MainForm.Visible() && !MainForm.chkSingleParts.Value())
        desktop.MsgBox("Currently the Tamarack is not able to\r\n"
                       "decode multi-part messages.  Therefore,\r\n"
                       "some attachments might not view correclty.",
            "Warning");
}
