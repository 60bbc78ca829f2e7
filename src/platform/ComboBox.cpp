#include "platform/ComboBox.h"

#include "platform/DisplayText.h"

#include <QComboBox>
#include <QSignalBlocker>
#include <QWheelEvent>

namespace {

QByteArray Bytes(std::string_view text) { return {text.data(), static_cast<qsizetype>(text.size())}; }

}

// The items show the rows, and have their bytes for data.
class ComboBox::View : public QComboBox {
public:
    explicit View(ComboBox& ownerBox)
        : box(ownerBox)
    {
    }

    void showPopup() override
    {
        Raise(box.BeforeUse);
        QComboBox::showPopup();
    }

protected:
    void keyPressEvent(QKeyEvent* event) override
    {
        Raise(box.BeforeUse);
        QComboBox::keyPressEvent(event);
    }
    // A wheel that happens to turn above it must not choose another server.
    void wheelEvent(QWheelEvent* event) override { event->ignore(); }

private:
    ComboBox& box;
};

ComboBox::ComboBox(
    Container& container, std::string_view name, const Place& place, std::initializer_list<std::string_view> rows)
    : Control(container, new View(*this), name, place)
{
    for (const std::string_view row : rows)
        AddItem(row);
    As<View>().setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    QObject::connect(&As<View>(), &QComboBox::currentIndexChanged, &As<View>(), [this] { Raise(Click); });
}

void ComboBox::AddItem(std::string_view text)
{
    const int current = ListIndex();
    const QSignalBlocker quiet(As<View>());
    As<View>().addItem(ToShow(text), Bytes(text));
    As<View>().setCurrentIndex(current);
}

void ComboBox::RemoveItem(int index)
{
    const int current = ListIndex();
    const QSignalBlocker quiet(As<View>());
    As<View>().removeItem(index);
    if (index == current)
        As<View>().setCurrentIndex(-1);
}

int ComboBox::ListCount() const { return As<View>().count(); }

int ComboBox::ListIndex() const { return As<View>().currentIndex(); }

void ComboBox::SetListIndex(int index)
{
    if (index >= -1 && index < ListCount())
        As<View>().setCurrentIndex(index);
}

std::string ComboBox::Text() const { return As<View>().currentData().toByteArray().toStdString(); }

bool ComboBox::SelectText(std::string_view text)
{
    const int found = As<View>().findData(Bytes(text));
    if (found < 0)
        return false;
    SetListIndex(found);
    return true;
}

void ComboBox::SetRows(const std::vector<std::string>& rows, int current)
{
    const QSignalBlocker quiet(As<View>());
    As<View>().clear();
    for (const std::string& row : rows)
        As<View>().addItem(ToShow(row), Bytes(row));
    As<View>().setCurrentIndex(current);
}
