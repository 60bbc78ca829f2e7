#pragma once

#include "platform/Settings.h"
#include "session/NewsSession.h"

// "Connection Security": asks the user about the certificate of a server that the system does not trust. The
// certificates that they have trusted are kept in the settings section "Certificates": the server's name, and the
// fingerprint. ServerList forgets them with their server. All of these live as long as the socket of the main form.
void BindCertificateQuestion(frmTamarack& MainForm, const NewsSession& Session, Settings& settings, Desktop& desktop);
