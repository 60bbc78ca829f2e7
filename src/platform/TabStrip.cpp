#include "platform/TabStrip.h"

#include "platform/DisplayText.h"

#include <QStyleOptionTab>
#include <QStylePainter>
#include <QTabBar>
#include <QTabWidget>

namespace {

class EvenTabBar : public QTabBar {
public:
    EvenTabBar()
    {
        // A tab that was clicked is what the next key is meant for.
        setFocusPolicy(Qt::StrongFocus);
        setUsesScrollButtons(false);
        setElideMode(Qt::ElideNone);
    }

protected:
    const int padding = Twips::ToPixels(75);

    int TabWidth() const { return qMax(1, parentWidget()->width() / qMax(1, count())); }

    // The caption in two lines, parted at the blank nearest to its middle, if it does not fit in one.
    QString Lines(const QString& caption) const
    {
        if (fontMetrics().size(Qt::TextShowMnemonic, caption).width() <= TabWidth() - 2 * padding)
            return caption;
        const qsizetype middle = caption.size() / 2;
        const qsizetype before = caption.lastIndexOf(u' ', middle);
        const qsizetype after = caption.indexOf(u' ', middle);
        const bool takeBefore = before >= 0 && (after < 0 || middle - before <= after - middle);
        const qsizetype parting = takeBefore ? before : after;
        return parting < 0 ? caption : caption.left(parting) + u'\n' + caption.mid(parting + 1);
    }

    QSize tabSizeHint(int) const override
    {
        int lines = 1;
        for (int i = 0; i < count(); ++i)
            lines = qMax(lines, static_cast<int>(Lines(tabText(i)).count(u'\n')) + 1);
        return {TabWidth(), lines * fontMetrics().height() + 2 * padding};
    }

    QSize minimumTabSizeHint(int index) const override { return tabSizeHint(index); }

    // The style would cut a caption to its own margins. The tab in front overlaps its neighbours.
    void paintEvent(QPaintEvent*) override
    {
        for (int tab = 0; tab < count(); ++tab) {
            if (tab != currentIndex())
                PaintTab(tab);
        }
        if (currentIndex() >= 0)
            PaintTab(currentIndex());
    }

    void PaintTab(int tab)
    {
        QStylePainter painter(this);
        QStyleOptionTab option;
        initStyleOption(&option, tab);
        painter.drawControl(QStyle::CE_TabBarTabShape, option);
        const bool selected = tab == currentIndex();
        painter.drawItemText(option.rect.adjusted(0, selected ? 0 : 2, 0, 0), Qt::AlignCenter | Qt::TextShowMnemonic,
            palette(), isEnabled(), Lines(tabText(tab)), QPalette::WindowText);
        if (selected && hasFocus()) {
            QStyleOptionFocusRect focus;
            focus.initFrom(this);
            focus.rect = option.rect.adjusted(3, 3, -3, -3);
            painter.drawPrimitive(QStyle::PE_FrameFocusRect, focus);
        }
    }
};

class EvenTabs : public QTabWidget {
public:
    EvenTabs() { setTabBar(new EvenTabBar); }
};

}

TabStrip::TabStrip(
    Container& container, std::string_view name, const Place& place, std::initializer_list<std::string_view> captions)
    : Control(container, new EvenTabs, name, place)
{
    for (const std::string_view caption : captions) {
        pages.emplace_back(new QWidget);
        As<QTabWidget>().addTab(pages.back().Content(), ToDisplay(caption));
    }
}

Container& TabStrip::Page(int index) { return pages.at(static_cast<std::size_t>(index)); }

void TabStrip::SetTab(int index) { As<QTabWidget>().setCurrentIndex(index); }
