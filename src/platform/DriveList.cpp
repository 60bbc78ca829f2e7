#include "platform/DriveList.h"

#include "platform/DisplayText.h"

#include <QComboBox>
#include <QFile>
#include <QSignalBlocker>
#include <QStorageInfo>
#include <QWheelEvent>
#include <algorithm>

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

std::vector<std::string> MountPoints()
{
    std::vector<std::string> points{"/"};
    for (const QStorageInfo& volume : QStorageInfo::mountedVolumes()) {
        if (HoldsFiles(volume))
            points.push_back(QFile::encodeName(volume.rootPath()).toStdString());
    }
    std::sort(points.begin(), points.end());
    points.erase(std::unique(points.begin(), points.end()), points.end());
    return points;
}

bool Holds(std::string_view mountPoint, std::string_view path)
{
    return mountPoint == "/"
        || (path.starts_with(mountPoint) && (path.size() == mountPoint.size() || path[mountPoint.size()] == '/'));
}

}

class DriveList::View : public QComboBox {
public:
    explicit View(DriveList& ownerList)
        : list(ownerList)
    {
    }

    void showPopup() override
    {
        list.LookForVolumes();
        QComboBox::showPopup();
    }

protected:
    // Keys choose without opening the list.
    void keyPressEvent(QKeyEvent* event) override
    {
        list.LookForVolumes();
        QComboBox::keyPressEvent(event);
    }
    // A wheel that happens to turn above it chooses nothing.
    void wheelEvent(QWheelEvent* event) override { event->ignore(); }

private:
    DriveList& list;
};

DriveList::DriveList(Container& container, std::string_view name, const Place& place)
    : Control(container, new View(*this), name, place)
{
    LookForVolumes();
    auto* combo = static_cast<QComboBox*>(widget);
    QObject::connect(combo, &QComboBox::currentIndexChanged, combo, [this] { Raise(Change); });
}

std::string DriveList::Drive() const
{
    return mountPoints.at(static_cast<std::size_t>(static_cast<QComboBox*>(widget)->currentIndex()));
}

void DriveList::LookForVolumes()
{
    auto* combo = static_cast<QComboBox*>(widget);
    std::vector<std::string> found = MountPoints();
    const std::string current = combo->currentIndex() < 0 ? "/" : Drive();
    const auto place = std::lower_bound(found.begin(), found.end(), current);
    const auto row = static_cast<int>(place - found.begin());
    if (place == found.end() || *place != current)
        found.insert(place, current);
    if (found == mountPoints)
        return;
    mountPoints = std::move(found);
    const QSignalBlocker quiet(combo);
    combo->clear();
    for (const std::string& mountPoint : mountPoints)
        combo->addItem(ToShow(mountPoint));
    combo->setCurrentIndex(row);
}

void DriveList::SetDrive(std::string_view path)
{
    LookForVolumes();
    // Sorted, so that the last that fits is the nearest.
    int nearest = 0;
    for (std::size_t row = 0; row < mountPoints.size(); ++row) {
        if (Holds(mountPoints[row], path))
            nearest = static_cast<int>(row);
    }
    static_cast<QComboBox*>(widget)->setCurrentIndex(nearest);
}
