#include "platform/DriveList.h"

#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>
#include <algorithm>
#include <set>

namespace {

// What the kernel shows as files about itself is no place to store anything. Disks and network shares have a device; of
// the rest only what somebody mounted where people look for disks counts.
bool HoldsFiles(const QStorageInfo& volume)
{
    const QByteArray device = volume.device();
    const QString place = volume.rootPath();
    // A container's runtime mounts single files, too.
    return QFileInfo(place).isDir()
        && (device.startsWith("/dev/") || device.contains(':') || device.startsWith("//")
            || place.startsWith(QLatin1String("/media/")) || place.startsWith(QLatin1String("/mnt/"))
            || place.startsWith(QLatin1String("/run/media/")));
}

std::set<std::string> MountPoints()
{
    std::set<std::string> points{"/"};
    for (const QStorageInfo& volume : QStorageInfo::mountedVolumes()) {
        if (HoldsFiles(volume))
            points.insert(QFile::encodeName(volume.rootPath()).toStdString());
    }
    return points;
}

bool Holds(std::string_view mountPoint, std::string_view path)
{
    return mountPoint == "/"
        || (path.starts_with(mountPoint) && (path.size() == mountPoint.size() || path[mountPoint.size()] == '/'));
}

}

DriveList::DriveList(Container& container, std::string_view name, const Place& place)
    : ComboBox(container, name, place)
{
    LookForVolumes();
    BeforeUse = [this] { LookForVolumes(); };
}

void DriveList::LookForVolumes()
{
    std::set<std::string> sorted = MountPoints();
    const auto current = sorted.insert(ListIndex() < 0 ? "/" : Text()).first;
    const std::vector<std::string> found(sorted.begin(), sorted.end());
    if (found == mountPoints)
        return;
    SetRows(found, static_cast<int>(std::distance(sorted.begin(), current)));
    mountPoints = found;
}

void DriveList::SetDrive(std::string_view path)
{
    LookForVolumes();
    // Sorted, so that the last that fits is the nearest.
    const auto nearest = std::find_if(
        mountPoints.rbegin(), mountPoints.rend(), [&](const std::string& point) { return Holds(point, path); });
    SetListIndex(static_cast<int>(mountPoints.rend() - nearest) - 1);
}
