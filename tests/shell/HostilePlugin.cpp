#include <QObject>
#include <cstdlib>
#include <fstream>

// A plugin for a desktop's theme, "cat", that leaves a mark where it is made.
class HostilePlugin : public QObject {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.qt-project.Qt.QPA.QPlatformThemeFactoryInterface.5.1" FILE "HostilePlugin.json")

public:
    HostilePlugin() { std::ofstream(std::getenv("TAMARACK_HOSTILE_MARK")) << "ran"; }
};

#include "HostilePlugin.moc"
