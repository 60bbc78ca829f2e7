#include "platform/Process.h"

#include "platform/DisplayText.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLibraryInfo>
#include <cstdio>
#include <cstdlib>
#include <pwd.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

void ForbidCoreDumps()
{
    const rlimit none{0, 0};
    (void)setrlimit(RLIMIT_CORE, &none);
    (void)prctl(PR_SET_DUMPABLE, 0); // the limit does not hold for a system that pipes its dumps to a program
}

void FindHome()
{
    const char* const home = std::getenv("HOME");
    if (home != nullptr && *home == '/')
        return;
    const passwd* user = getpwuid(geteuid());
    // Somebody without a home directory has none that others could foresee either.
    setenv("HOME", user != nullptr && *user->pw_dir == '/' ? user->pw_dir : "/", 1);
}

// When the application is made, the toolkit works out its list of directories once more, that of the executable at its
// end, and repeats on it whatever had been removed from the first list. So that directory has to be on the first list:
// one way leads there. QT_PLUGIN_PATH as the user has it is removed likewise.
void KeepPluginsToTheToolkit()
{
    constexpr const char* variable = "QT_PLUGIN_PATH";
    const bool wasSet = qEnvironmentVariableIsSet(variable);
    const QByteArray before = qgetenv(variable);
    const QString beside = QFileInfo(QFileInfo(QStringLiteral("/proc/self/exe")).canonicalFilePath()).path();
    qputenv(variable, QFile::encodeName(beside) + ':' + before);
    QCoreApplication::setLibraryPaths({QLibraryInfo::path(QLibraryInfo::PluginsPath)});
    if (wasSet)
        qputenv(variable, before);
    else
        qunsetenv(variable);
    qunsetenv("QT_QPA_PLATFORM_PLUGIN_PATH");
}

void Report(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    const QString text = ToShow(qFormatLogMessage(type, context, message).toStdString());
    std::fprintf(stderr, "%s\n", QString(text).replace(u'\r', QChar::ReplacementCharacter).toLocal8Bit().constData());
}

}

void PrepareProcess()
{
    ForbidCoreDumps();
    FindHome();
    KeepPluginsToTheToolkit();
    qInstallMessageHandler(Report);
}
