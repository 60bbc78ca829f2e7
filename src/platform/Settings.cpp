#include "platform/Settings.h"

#include "platform/DisplayText.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <QSettings>
#include <sys/stat.h>

namespace {

// What is made as long as the result lives is for its owner alone, from its first byte on.
auto OwnerAlone()
{
    return qScopeGuard([before = umask(S_IRWXG | S_IRWXO)] { umask(before); });
}

// An empty key would name its whole section.
const QString emptyKey = QStringLiteral("%");

// A slash of either kind would part a key into groups. A percent sign followed by its code stands for it.
QString StoreKey(std::string_view section, std::string_view key)
{
    QString escaped = ToDisplay(key);
    escaped.replace(u'%', QLatin1String("%25"))
        .replace(u'/', QLatin1String("%2F"))
        .replace(u'\\', QLatin1String("%5C"));
    return ToDisplay(section) + u'/' + (escaped.isEmpty() ? emptyKey : escaped);
}

std::string FromStoreKey(QString key)
{
    if (key == emptyKey)
        return {};
    key.replace(QLatin1String("%5C"), QLatin1String("\\")).replace(QLatin1String("%2F"), QLatin1String("/"));
    return FromDisplay(key.replace(QLatin1String("%25"), QLatin1String("%")));
}

// Text is kept as text, for those who read the file; bytes that are none are kept as bytes.
QVariant StoreValue(std::string_view value)
{
    const QString text = ToDisplay(value);
    if (FromDisplay(text) == value)
        return text;
    return QByteArray(value.data(), static_cast<qsizetype>(value.size()));
}

}

// The toolkit writes the file anew, with the rights of the one that is there, and if that has been deleted meanwhile
// with those that any new file gets. What it could not write at once it writes later, by itself.
class OwnersStore : public QSettings {
public:
    using QSettings::QSettings;

    void Narrow() { (void)QFile::setPermissions(fileName(), QFile::ReadOwner | QFile::WriteOwner); }

    void Write()
    {
        const auto rights = OwnerAlone();
        Narrow();
        sync();
    }

protected:
    bool event(QEvent* event) override
    {
        const auto rights = OwnerAlone();
        Narrow();
        return QSettings::event(event);
    }
};

Settings::Settings(const std::string& fileName)
{
    const QString path = QFile::decodeName(fileName.c_str());
    QDir().mkpath(QFileInfo(path).path());
    if (QFile file(path); !file.exists())
        (void)file.open(QIODevice::NewOnly | QIODevice::WriteOnly, QFile::ReadOwner | QFile::WriteOwner);
    store = std::make_unique<OwnersStore>(path, QSettings::IniFormat);
    store->Narrow();
}

Settings::~Settings()
{
    const auto rights = OwnerAlone();
    store.reset();
}

std::string Settings::UserFileName()
{
    const QSettings user(
        QSettings::IniFormat, QSettings::UserScope, QStringLiteral("Tamarack"), QStringLiteral("Tamarack"));
    return QFile::encodeName(user.fileName()).toStdString();
}

std::string Settings::GetSetting(std::string_view section, std::string_view key) const
{
    const QVariant value = store->value(StoreKey(section, key));
    if (value.typeId() == QMetaType::QByteArray)
        return value.toByteArray().toStdString();
    // Commas in a file that somebody wrote by hand make a list of one text.
    return FromDisplay(value.toStringList().join(u','));
}

void Settings::SaveSetting(std::string_view section, std::string_view key, std::string_view value)
{
    store->setValue(StoreKey(section, key), StoreValue(value));
    store->Write();
}

void Settings::DeleteSetting(std::string_view section, std::string_view key)
{
    store->remove(StoreKey(section, key));
    store->Write();
}

std::vector<std::string> Settings::GetAllSettings(std::string_view section) const
{
    store->beginGroup(ToDisplay(section));
    const QStringList found = store->childKeys();
    store->endGroup();
    std::vector<std::string> keys;
    for (const QString& key : found)
        keys.push_back(FromStoreKey(key));
    return keys;
}
