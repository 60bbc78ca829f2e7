#include "platform/Certificate.h"

#include "platform/DisplayText.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QSslCertificate>
#include <QSslError>
#include <QSslSocket>

#include <algorithm>

namespace {

// One line that cannot push what stands around it out of sight.
std::string OneLine(const QString& text)
{
    constexpr qsizetype longest = 120;
    const QString line = text.simplified();
    return FromDisplay(line.size() > longest ? line.left(longest) + QChar(0x2026) : line);
}

QString Name(QStringList commonNames, const QStringList& organisations)
{
    commonNames += organisations;
    return commonNames.isEmpty() ? QStringLiteral("(no name)") : commonNames.join(QLatin1String(", "));
}

std::string Sentence(const QSslError& error)
{
    switch (error.error()) {
    case QSslError::SelfSignedCertificate:
        return "It was signed by nobody but its owner.";
    case QSslError::SelfSignedCertificateInChain:
    case QSslError::UnableToGetIssuerCertificate:
    case QSslError::UnableToGetLocalIssuerCertificate:
    case QSslError::UnableToVerifyFirstCertificate:
    case QSslError::CertificateUntrusted:
        return "It was signed by somebody whom this computer does not know.";
    case QSslError::CertificateExpired:
        return "It has expired.";
    case QSslError::CertificateNotYetValid:
        return "It is not valid yet; or the clock of this computer is wrong.";
    case QSslError::HostNameMismatch:
        return "It was made for another server.";
    default:
        return "It does not pass a check: " + OneLine(error.errorString()) + ".";
    }
}

}

Certificate::Certificate(const QSslSocket& connection, std::string serverName)
    : server(std::move(serverName))
{
    const QSslCertificate shown = connection.peerCertificate();
    if (shown.isNull())
        return;
    QStringList allNames = shown.subjectInfo(QSslCertificate::CommonName);
    for (const QString& name : shown.subjectAlternativeNames()) {
        if (!allNames.contains(name))
            allNames += name;
    }
    subject = OneLine(Name(allNames.mid(0, 1), {}));
    names = OneLine(Name(allNames, shown.subjectInfo(QSslCertificate::Organization)));
    issuer
        = OneLine(Name(shown.issuerInfo(QSslCertificate::CommonName), shown.issuerInfo(QSslCertificate::Organization)));
    const auto day = [](const QDateTime& time) { return time.toUTC().date().toString(Qt::ISODate).toStdString(); };
    validity = day(shown.effectiveDate()) + " to " + day(shown.expiryDate());
    fingerprint = shown.digest(QCryptographicHash::Sha256).toHex(':').toUpper().toStdString();
    for (const QSslError& error : connection.sslHandshakeErrors()) {
        if (std::string sentence = Sentence(error); std::find(faults.begin(), faults.end(), sentence) == faults.end())
            faults.push_back(std::move(sentence));
    }
}

std::string Certificate::Question(std::string_view trustedBefore) const
{
    std::string text;
    if (!trustedBefore.empty())
        text = "The certificate of " + server + " has changed since you trusted it.\r\n\r\n";
    text += "Tamarack cannot make sure that this server is " + server + ". About the certificate that it shows:\r\n";
    for (const std::string& fault : faults)
        text += fault + "\r\n";
    // Two lines of 16 pairs.
    const std::size_t middle = fingerprint.size() / 2 + 1;
    text += "\r\nMade for: " + names + "\r\nSigned by: " + issuer + "\r\nValid: " + validity
        + "\r\nSHA-256 fingerprint:\r\n" + fingerprint.substr(0, middle) + "\r\n" + fingerprint.substr(middle)
        + "\r\n\r\nSomebody else may be listening. Do you trust this certificate, now and from now on?";
    return text;
}
