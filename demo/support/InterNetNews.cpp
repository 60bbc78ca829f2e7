#include "demo/support/InterNetNews.h"

#include "demo/sample/Encoders.h"
#include "demo/sample/Loopback.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;

const QString script = NEWS_SERVER_SCRIPT;

std::uint16_t FreePort()
{
    const int place = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const std::uint16_t port = ListenOnLoopback(place);
    close(place);
    return port;
}

}

std::string InterNetNews::Obstacle()
{
    QProcess check;
    check.start(script, {"--check"});
    check.waitForFinished();
    const std::string said = check.readAllStandardOutput().trimmed().toStdString();
    return check.exitStatus() == QProcess::NormalExit && check.exitCode() == 0 ? "" : "no news server: " + said;
}

InterNetNews::~InterNetNews()
{
    // It heeds a milder signal only when its next connection comes, and nothing that it holds is to be kept.
    for (QProcess* process : {&encryptedServer, &server}) {
        process->kill();
        process->waitForFinished();
    }
}

std::string InterNetNews::Start(const std::vector<std::string>& groups, const std::optional<Account>& account)
{
    port = FreePort();
    MakeFile(root.File("cert.pem"), identity.Certificate());
    MakeFile(root.File("key.pem"), identity.Key());
    const std::string folder = root.Path().substr(0, root.Path().size() - 1);
    QStringList arguments{QString::fromStdString(folder), QString::number(port)};
    if (account)
        arguments << QString::fromStdString(account->name) << QString::fromStdString(account->password);
    server.setProcessChannelMode(QProcess::MergedChannels);
    server.start(script, arguments);
    for (const std::string& group : groups)
        server.write((group + "\n").c_str());
    server.closeWriteChannel();
    const auto deadline = std::chrono::steady_clock::now() + 30s;
    while (server.state() != QProcess::NotRunning && std::chrono::steady_clock::now() < deadline) {
        server.waitForFinished(20);
        poster.emplace(port);
        if (!poster->IsConnected())
            continue;
        if (account) {
            poster->Command("authinfo user " + account->name);
            poster->Command("authinfo pass " + account->password);
        }
        return {};
    }
    return "the server does not come up: " + server.readAll().toStdString();
}

std::string InterNetNews::StartEncrypted()
{
    securePort = FreePort();
    encryptedServer.setProcessChannelMode(QProcess::MergedChannels);
    encryptedServer.start(script,
        {"--encrypted", QString::fromStdString(root.Path().substr(0, root.Path().size() - 1)),
            QString::number(securePort)});
    const auto deadline = std::chrono::steady_clock::now() + 30s;
    while (!encryptedServer.waitForFinished(20) && std::chrono::steady_clock::now() < deadline) {
        if (NewsClient(securePort, Wire::Encrypted).IsConnected())
            return {};
    }
    return "the server takes no encrypted connections: " + encryptedServer.readAll().toStdString();
}

std::string InterNetNews::Post(std::string_view group, std::string_view subject, std::string_view body)
{
    std::string article = "From: Ann <ann@news.test>\r\nNewsgroups: ";
    article.append(group).append("\r\nSubject: ").append(subject).append("\r\n\r\n").append(body);
    if (const std::string_view status = poster->Command("post"); !status.starts_with("340 "))
        return std::string(status);
    return std::string(poster->Command(DotStuff(article) + "."));
}

bool InterNetNews::DeleteArticle(std::string_view group, int number)
{
    // spool/articles/alt/kites/17
    std::string folder(group);
    std::replace(folder.begin(), folder.end(), '.', '/');
    std::error_code failure;
    return std::filesystem::remove(root.File("spool/articles/" + folder + "/") + std::to_string(number), failure);
}
