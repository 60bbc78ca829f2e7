#include "tests/real-server/InterNetNews.h"

#include "demo/sample/ShortPort.h"

#include <arpa/inet.h>
#include <crypt.h>
#include <fcntl.h>
#include <grp.h>
#include <netinet/in.h>
#include <pwd.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <thread>

namespace {

const std::string programs = "/usr/lib/news/bin/";

bool WriteWhole(const char* file, const std::string& text)
{
    const int descriptor = open(file, O_WRONLY);
    const bool written = write(descriptor, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    close(descriptor);
    return written;
}

// The server runs as nobody but the user "news", whatever its configuration says. Root becomes that user. Anybody else
// takes a user namespace in which he bears that name himself, and his own files are that user's files.
class NewsUser {
public:
    NewsUser()
    {
        // Looked up here, since a forked child should not.
        if (const passwd* entry = getpwnam("news")) {
            user = entry->pw_uid;
            group = entry->pw_gid;
            known = true;
        }
        userMap = std::to_string(user) + " " + std::to_string(geteuid()) + " 1";
        groupMap = std::to_string(group) + " " + std::to_string(getegid()) + " 1";
    }

    bool Become() const
    {
        if (!known)
            return false;
        if (geteuid() == 0)
            return setgroups(0, nullptr) == 0 && setgid(group) == 0 && setuid(user) == 0;
        // The child of a process without core dumps may not open these files of its own.
        return prctl(PR_SET_DUMPABLE, 1) == 0 && unshare(CLONE_NEWUSER) == 0
            && WriteWhole("/proc/self/setgroups", "deny") && WriteWhole("/proc/self/uid_map", userMap)
            && WriteWhole("/proc/self/gid_map", groupMap);
    }

    void Own(const std::filesystem::path& directory) const
    {
        if (geteuid() != 0)
            return;
        (void)!chown(directory.c_str(), user, group);
        for (const auto& entry : std::filesystem::recursive_directory_iterator(directory))
            (void)!lchown(entry.path().c_str(), user, group);
    }

private:
    bool known = false;
    uid_t user = 0;
    gid_t group = 0;
    std::string userMap;
    std::string groupMap;
};

bool IsFree(std::uint16_t port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool free = bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    close(descriptor);
    return free;
}

bool EndsWell(pid_t child)
{
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::string ServerSettings(const std::string& root, int port)
{
    std::string text = "domain: news.test\n"
                       "pathhost: news.test\n"
                       "bindaddress: 127.0.0.1\n"
                       "port: "
        + std::to_string(port)
        + "\n"
          "runasuser: news\n"
          "runasgroup: news\n"
          "mta: \"/bin/true %s\"\n"
          "hismethod: hisv6\n"
          "enableoverview: true\n"
          "ovmethod: tradindexed\n"
          "wireformat: true\n"
          "maxartsize: 0\n"
          "localmaxartsize: 0\n"
          // A busy machine is no reason to turn a test away.
          "nnrpdloadlimit: 0\n"
          "initialtimeout: 120\n"
          "pathnews: /usr/lib/news\n";
    for (const auto& [key, folder] :
        {std::pair{"pathdb", "db"}, std::pair{"pathetc", "etc"}, std::pair{"pathrun", "run"},
            std::pair{"pathlog", "log"}, std::pair{"pathtmp", "tmp"}, std::pair{"pathfilter", "etc/filter"},
            std::pair{"pathspool", "spool"}, std::pair{"patharticles", "spool/articles"},
            std::pair{"pathoverview", "spool/overview"}, std::pair{"pathincoming", "spool/incoming"},
            std::pair{"pathoutgoing", "spool/outgoing"}, std::pair{"patharchive", "spool/archive"}})
        text.append(key).append(": ").append(root).append(folder).append("\n");
    return text;
}

std::string Readers(const std::string& root, bool passwordDemanded)
{
    if (!passwordDemanded)
        return "auth \"open\" { hosts: \"127.0.0.1\" default: \"<localhost>\" }\n"
               "access \"open\" { users: \"<localhost>\" newsgroups: \"*\" access: RPA }\n";
    return "auth \"closed\" { hosts: \"127.0.0.1\" auth: \"ckpasswd -f " + root
        + "etc/accounts\" }\n"
          "access \"closed\" { users: \"*\" newsgroups: \"*\" access: RPA }\n";
}

}

std::string InterNetNews::Obstacle()
{
    if (access((programs + "innd").c_str(), X_OK) != 0)
        return "the Debian package inn2 is not installed";
    const NewsUser news;
    const pid_t trial = fork();
    if (trial == 0)
        _exit(news.Become() ? 0 : 1);
    if (!EndsWell(trial))
        return "this user can neither become the user news nor open a user namespace";
    return {};
}

InterNetNews::~InterNetNews() { Stop(); }

std::string InterNetNews::Start(const std::vector<std::string>& groups, const std::optional<Account>& account)
{
    login = account;
    if (const std::string trouble = Prepare(groups); !trouble.empty())
        return trouble;

    // Somebody else may take the port between the look at it and the server's start.
    for (int attempt = 0; attempt < 5; ++attempt) {
        if (Launch())
            return {};
        Stop();
    }
    return "the server does not come up; it says: " + ContentOf(root.File("log/output"));
}

std::string InterNetNews::Prepare(const std::vector<std::string>& groups)
{
    std::string active = "control 0000000000 0000000001 n\n"
                         "control.cancel 0000000000 0000000001 n\n"
                         "junk 0000000000 0000000001 n\n";
    for (const std::string& group : groups)
        active += group + " 0000000000 0000000001 y\n";

    bool written = MakeFile(root.File("db/active"), active)
        && MakeFile(root.File("etc/storage.conf"), "method tradspool { newsgroups: * class: 0 }\n")
        && MakeFile(root.File("etc/newsfeeds"), "ME:*,!junk,!control*::\n")
        // No peers: one that is listed here would get the side of the server that other servers talk to.
        && MakeFile(root.File("etc/incoming.conf"), "streaming: true\n")
        && MakeFile(root.File("etc/readers.conf"), Readers(root.Path(), login.has_value()));
    for (const char* empty : {"db/history", "db/active.times", "db/newsgroups", "log/output"})
        written = written && MakeFile(root.File(empty), "");
    if (login) {
        const char* hash = crypt(login->password.c_str(), "$6$tamarack$");
        written = written && hash && MakeFile(root.File("etc/accounts"), login->name + ":" + hash + "\n");
    }
    written = written && MakeFile(root.File("etc/inn.conf"), ServerSettings(root.Path(), 0));
    std::error_code failure;
    for (const char* folder : {"run", "tmp", "spool/articles", "spool/overview", "spool/outgoing", "spool/archive",
             "spool/incoming/tmp", "spool/incoming/bad"})
        std::filesystem::create_directories(root.File(folder), failure);
    if (!written || failure)
        return "the configuration cannot be written to " + root.Path();
    NewsUser().Own(root.Path());

    // By itself it makes room for six million articles, 140 MB.
    if (!EndsWell(Spawn({programs + "makedbz", "-i", "-o", "-s", "20000"})))
        return "no history: " + ContentOf(root.File("log/output"));
    return {};
}

bool InterNetNews::Launch()
{
    port = ListenOnShortPort(IsFree);
    if (port == 0 || !MakeFile(root.File("etc/inn.conf"), ServerSettings(root.Path(), port)))
        return false;
    server = Spawn({programs + "innd", "-f"});
    using namespace std::chrono_literals;
    const auto deadline = std::chrono::steady_clock::now() + 30s;
    while (std::chrono::steady_clock::now() < deadline) {
        if (Answers())
            return true;
        if (waitpid(server, nullptr, WNOHANG) != 0) {
            server = -1;
            return false;
        }
        std::this_thread::sleep_for(20ms);
    }
    return false;
}

bool InterNetNews::Answers()
{
    if (!poster.Connect(port).starts_with("200 "))
        return false;
    return !login
        || (poster.Command("authinfo user " + login->name).starts_with("381 ")
            && poster.Command("authinfo pass " + login->password).starts_with("281 "));
}

void InterNetNews::Stop()
{
    poster.Disconnect();
    if (server <= 0)
        return;
    // It heeds a milder signal only when its next connection comes, and nothing that it holds is to be kept.
    kill(server, SIGKILL);
    waitpid(server, nullptr, 0);
    server = -1;
}

// Starts one of the server's programs as the user that it insists on. All its paths follow the file that INNCONF names.
pid_t InterNetNews::Spawn(const std::vector<std::string>& command) const
{
    const NewsUser news;
    const std::string directory = root.File("db");
    const std::string output = root.File("log/output");
    std::string configuration = "INNCONF=" + root.File("etc/inn.conf");
    std::string path = "PATH=/usr/bin:/bin";
    char* environment[] = {configuration.data(), path.data(), nullptr};
    std::vector<char*> arguments;
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);

    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child != 0)
        return child;
    const int log = open(output.c_str(), O_WRONLY | O_APPEND);
    const int nothing = open("/dev/null", O_RDONLY);
    if (!news.Become() || chdir(directory.c_str()) != 0 || dup2(nothing, 0) < 0 || dup2(log, 1) < 0 || dup2(log, 2) < 0)
        _exit(126);
    (void)close_range(3, ~0U, 0);
    // A test that breaks off takes its server with it.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() == parent)
        execve(arguments.front(), arguments.data(), environment);
    _exit(127);
}

std::string InterNetNews::Post(
    std::string_view groups, std::string_view messageId, std::string_view headers, std::string_view body)
{
    const std::string status = poster.Command("post");
    if (!status.starts_with("340 "))
        return status;
    std::string article = "Newsgroups: " + std::string(groups) + "\nMessage-ID: " + std::string(messageId) + "\n";
    article.append(headers);
    if (!headers.ends_with('\n'))
        article += '\n';
    article.append("\n").append(body);
    return poster.SendText(article);
}

bool InterNetNews::DeleteArticle(std::string_view group, int number)
{
    // spool/articles/alt/kites/17
    std::string folder(group);
    std::replace(folder.begin(), folder.end(), '.', '/');
    std::error_code failure;
    return std::filesystem::remove(root.File("spool/articles/" + folder + "/") + std::to_string(number), failure);
}
