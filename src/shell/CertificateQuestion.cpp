#include "shell/CertificateQuestion.h"

#include "servers/ServerList.h"

void BindCertificateQuestion(frmTamarack& MainForm, const NewsSession& Session, Settings& settings, Desktop& desktop)
{
    MainForm.TCP1.AcceptCertificate = [&](const Certificate& certificate, const std::function<bool()>& isWanted) {
        const std::string& server = certificate.Server();
        const std::string trusted = settings.GetSetting(ServerList::certificateSection, server);
        if (trusted == certificate.Fingerprint())
            return true;
        // A stop ends the attempt, and the question with it. The handshake may come to its end behind that.
        const auto isAwaited = [&] { return isWanted() && !Session.StopFlag && Session.InUse(); };
        if (!desktop.Ask(certificate.Question(trusted), "Connection Security", isAwaited))
            return false;
        settings.SaveSetting(ServerList::certificateSection, server, certificate.Fingerprint());
        return true;
    };
}
