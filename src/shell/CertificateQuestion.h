#pragma once

#include "forms/frmTamarack.h"
#include "platform/Desktop.h"
#include "platform/Settings.h"

class NewsSession;

// "Connection Security": asks the user about the certificate of a server that the system does not trust. The
// certificates that they have trusted are kept in the settings section "Certificates": the server's name, and the
// fingerprint. ServerList forgets them with their server.
class CertificateQuestion {
public:
    CertificateQuestion(frmTamarack& mainForm, NewsSession& session, Settings& settings, Desktop& desktop);

private:
    bool Accept(const Certificate& certificate, const std::function<bool()>& isWanted);

    NewsSession& Session;
    Settings& settings;
    Desktop& desktop;
};
