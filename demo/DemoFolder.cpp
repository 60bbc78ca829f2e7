#include "demo/DemoFolder.h"

#include "demo/support/TemporaryFolder.h"
#include "platform/Settings.h"

#include <QFile>
#include <QStandardPaths>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

bool DemoFolder::Prepare(const SamplePostings& postings)
{
    const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    const std::string root = QFile::encodeName(data).toStdString() + "/tamarack-demo/";
    files = root + "files/";
    program = files + "program/";
    // Deep enough for a name with two steps up to land inside the folder.
    destination = files + "downloads/pictures/";
    screenshots = root + "screenshots/";

    std::error_code error;
    fs::create_directories(root, error);
    lock = std::make_unique<QLockFile>(QFile::decodeName((root + "lock").c_str()));
    if (!error && !lock->tryLock() && lock->error() == QLockFile::LockFailedError) {
        std::fprintf(stderr, "tamarack-demo: another demo is using %s\n", root.c_str());
        return false;
    }
    for (const std::string& folder : {files, screenshots}) {
        if (!error)
            fs::remove_all(folder, error);
    }
    for (const std::string& folder : {program, destination}) {
        if (!error)
            fs::create_directories(folder, error);
    }
    if (error || !WriteGroupFiles(postings)) {
        std::fprintf(stderr, "tamarack-demo: cannot write to %s: %s\n", root.c_str(), error.message().c_str());
        return false;
    }
    WriteSettings();
    return true;
}

void DemoFolder::WriteSettings() const
{
    struct Setting {
        const char* key;
        const char* value;
    };
    Settings store(Places().settingsFile);
    store.SaveSetting("Startup", "1", destination);
    for (const Setting& setting : {Setting{"2", "1"}, // JPEG, GIF and bit map files
             Setting{"3", "1"}, Setting{"4", "1"}, Setting{"5", "0"}, Setting{"6", sampleAdditionalCriteria},
             Setting{"7", "False"}, Setting{"8", "False"}, Setting{"9", "True"}, // all that match the criteria
             Setting{"10", "0"}, Setting{"12", "0"}, // no limits
             Setting{"16", "1"}, // the group's name as sub directory
             Setting{"AutoLoad", "1"}})
        store.SaveSetting("Startup", setting.key, setting.value);
    store.SaveSetting("Servers", serverName, "1");
    store.SaveSetting("Servers", "Default", serverName);
}

bool DemoFolder::WriteGroupFiles(const SamplePostings& postings) const
{
    std::string all;
    for (const SampleGroup& group : postings.groups) {
        const bool empty = group.articles.empty();
        // alt.kites 7055 7001 y   (name, last, first, status)
        all += (all.empty() ? "" : "\r\n") + group.name + " " + std::to_string(empty ? 0 : group.articles.back().number)
            + " " + std::to_string(empty ? 1 : group.articles.front().number) + " y";
    }
    std::string selected;
    for (const std::string& group : postings.groupsToSearch)
        selected += group + "\r\n";
    return MakeFile(program + "!@#!." + serverName, "\"" + all + "\"\r\n")
        && MakeFile(program + "#!@!." + serverName, selected);
}

std::vector<std::string> DemoFolder::StoredFiles() const
{
    std::vector<std::string> stored;
    for (const std::string& file : FilesBelow(files)) {
        if (!(files + file).starts_with(program))
            stored.push_back(fs::path(files + file).lexically_relative(destination).string());
    }
    return stored;
}
