#pragma once

#include <QDBusConnection>

// The bus of the person's desktop session. For platform/ alone.

// Not connected where there is none. None is started for the purpose, as the library would do where it finds a display.
QDBusConnection SessionBus();
