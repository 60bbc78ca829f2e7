#include "demo/support/Legibility.h"

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QHash>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QSet>
#include <QStyleOptionButton>
#include <QTabBar>
#include <QTest>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

constexpr double leastContrast = 4.5;

double Luminance(QRgb colour)
{
    const auto linear = [](int part) {
        const double share = part / 255.0;
        return share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(qRed(colour)) + 0.7152 * linear(qGreen(colour)) + 0.0722 * linear(qBlue(colour));
}

// Between the ground, which is the colour that most of it has, and what differs most from that. 1 where there is
// nothing.
double Contrast(const QImage& picture)
{
    QHash<QRgb, int> colours;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            ++colours[picture.pixel(x, y)];
    }
    QRgb ground = 0;
    int most = 0;
    for (auto colour = colours.cbegin(); colour != colours.cend(); ++colour) {
        if (colour.value() > most) {
            most = colour.value();
            ground = colour.key();
        }
    }
    double contrast = 1;
    for (auto colour = colours.cbegin(); colour != colours.cend(); ++colour) {
        const auto [darker, lighter] = std::minmax({Luminance(colour.key()), Luminance(ground)});
        contrast = std::max(contrast, (lighter + 0.05) / (darker + 0.05));
    }
    return contrast;
}

// A text in a window, with the place that it has.
struct ShownText {
    QString text;
    QRect place;
    bool wraps = false;
    bool mayBeLonger = false; // it scrolls, or a tool tip tells the rest
};

// What a widget shows by itself, in its own pixels.
std::vector<ShownText> TextsIn(const QWidget& widget)
{
    if (const auto* label = qobject_cast<const QLabel*>(&widget)) {
        const bool isElided = !label->wordWrap() && !label->toolTip().isEmpty();
        return {{label->text(), label->contentsRect(), label->wordWrap(), isElided}};
    }
    if (const auto* button = qobject_cast<const QAbstractButton*>(&widget)) {
        const bool isOption = qobject_cast<const QRadioButton*>(button) != nullptr;
        if (!isOption && qobject_cast<const QCheckBox*>(button) == nullptr)
            return {{button->text(), button->rect().adjusted(1, 1, -1, -1)}};
        QStyleOptionButton option;
        option.initFrom(button);
        const auto part = isOption ? QStyle::SE_RadioButtonContents : QStyle::SE_CheckBoxContents;
        return {{button->text(), button->style()->subElementRect(part, &option, button), true}};
    }
    if (const auto* field = qobject_cast<const QLineEdit*>(&widget)) {
        const QString text = field->text().isEmpty() ? field->placeholderText() : field->text();
        return {{text, field->rect().adjusted(3, 3, -3, -3), false, true}};
    }
    if (const auto* combo = qobject_cast<const QComboBox*>(&widget))
        return {{combo->currentText(), combo->rect().adjusted(4, 4, -combo->height(), -4), false, true}};
    if (const auto* box = qobject_cast<const QGroupBox*>(&widget))
        return {{box->title(), QRect(0, 0, box->width(), box->fontMetrics().height())}};
    if (const auto* area = qobject_cast<const QAbstractScrollArea*>(&widget))
        return {{QStringLiteral("what is in it"), area->viewport()->geometry(), false, true}};
    std::vector<ShownText> tabs;
    if (const auto* bar = qobject_cast<const QTabBar*>(&widget)) {
        for (int tab = 0; tab < bar->count(); ++tab)
            tabs.push_back({bar->tabText(tab), bar->tabRect(tab).adjusted(4, 4, -4, -4), true});
    }
    return tabs;
}

void JudgeText(const QWidget& window, const QWidget& widget, const ShownText& shown, const QImage& picture)
{
    const QFontMetrics metrics = widget.fontMetrics();
    const int flags = Qt::TextShowMnemonic | (shown.wraps ? Qt::TextWordWrap : 0);
    const QSize needed = metrics.boundingRect({0, 0, shown.place.width(), 10000}, flags, shown.text).size();
    const QByteArray name = (widget.objectName() + " \"" + shown.text.left(40) + '"').toUtf8();
    if (!shown.mayBeLonger && (needed.width() > shown.place.width() + 1 || needed.height() > shown.place.height() + 2))
        std::printf("  cut off: %s needs %d x %d, has %d x %d\n", name.constData(), needed.width(), needed.height(),
            shown.place.width(), shown.place.height());
    const qreal ratio = picture.devicePixelRatio();
    const QRect place = shown.place.translated(widget.mapTo(&window, QPoint()));
    const double contrast = Contrast(picture.copy(QRectF(place.topLeft() * ratio, place.size() * ratio).toRect()));
    // An area may be empty.
    if (contrast > 1 && contrast < leastContrast)
        std::printf("  contrast %.2f: %s\n", contrast, name.constData());
}

// Walks once through the window with the Tab key.
void JudgeFocus(QWidget& window)
{
    QWidget* const first = window.focusWidget();
    QSet<const QWidget*> reached;
    for (QWidget* focused = first; focused != nullptr && !reached.contains(focused); focused = window.focusWidget()) {
        reached.insert(focused);
        const QImage before = window.grab().toImage();
        const QByteArray name = focused->objectName().toUtf8();
        // Where Tab is a letter, Ctrl leads on.
        const auto* text = qobject_cast<const QPlainTextEdit*>(focused);
        const bool isLetter = text != nullptr && !text->tabChangesFocus() && !text->isReadOnly();
        QTest::keyClick(focused, Qt::Key_Tab, isLetter ? Qt::ControlModifier : Qt::NoModifier);
        if (window.grab().toImage() == before && window.focusWidget() != focused)
            std::printf("  focus is not seen: %s\n", name.constData());
    }
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
        const bool takesTab = widget->focusPolicy() & Qt::TabFocus && widget->isVisible() && widget->isEnabled();
        if (takesTab && widget->focusProxy() == nullptr && !reached.contains(widget))
            std::printf("  Tab does not lead to: %s\n", widget->objectName().toUtf8().constData());
    }
    std::printf("%lld controls by Tab\n", static_cast<long long>(reached.size()));
    if (first != nullptr)
        first->setFocus();
}

}

void TellWhatIsHardToSee(QWidget& window, const QImage& picture)
{
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
        if (!widget->isVisible() || !widget->isEnabled() || widget->visibleRegion().isEmpty())
            continue;
        for (const ShownText& shown : TextsIn(*widget)) {
            if (!shown.text.isEmpty())
                JudgeText(window, *widget, shown, picture);
        }
    }
    JudgeFocus(window);
}
