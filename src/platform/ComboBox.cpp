#include "platform/ComboBox.h"

#include "platform/DisplayText.h"

#include <QComboBox>
#include <QSignalBlocker>
#include <QWheelEvent>
#include <algorithm>

namespace {

class ChoiceBox : public QComboBox {
protected:
    // A wheel that happens to turn above it must not choose another server.
    void wheelEvent(QWheelEvent* event) override { event->ignore(); }
};

}

ComboBox::ComboBox(Container& container, std::string_view name, const Place& place,
    std::initializer_list<std::string_view> initialRows)
    : Control(container, new ChoiceBox, name, place)
{
    for (const std::string_view row : initialRows)
        AddItem(row);
    auto* combo = static_cast<QComboBox*>(widget);
    combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    QObject::connect(combo, &QComboBox::currentIndexChanged, combo, [this] { Raise(Click); });
}

void ComboBox::AddItem(std::string_view text)
{
    auto* combo = static_cast<QComboBox*>(widget);
    const int current = combo->currentIndex();
    const QSignalBlocker quiet(combo);
    rows.emplace_back(text);
    combo->addItem(ToShow(text));
    combo->setCurrentIndex(current);
}

void ComboBox::RemoveItem(int index)
{
    if (index < 0 || index >= ListCount())
        return;
    auto* combo = static_cast<QComboBox*>(widget);
    const int current = combo->currentIndex();
    const QSignalBlocker quiet(combo);
    rows.erase(rows.begin() + index);
    combo->removeItem(index);
    combo->setCurrentIndex(index == current ? -1 : index < current ? current - 1 : current);
}

int ComboBox::ListIndex() const { return static_cast<QComboBox*>(widget)->currentIndex(); }

void ComboBox::SetListIndex(int index)
{
    if (index >= -1 && index < ListCount())
        static_cast<QComboBox*>(widget)->setCurrentIndex(index);
}

std::string ComboBox::Text() const { return ListIndex() < 0 ? std::string() : List(ListIndex()); }

bool ComboBox::SelectText(std::string_view text)
{
    const auto found = std::find(rows.begin(), rows.end(), text);
    if (found == rows.end())
        return false;
    SetListIndex(static_cast<int>(found - rows.begin()));
    return true;
}
