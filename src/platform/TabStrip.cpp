#include "platform/TabStrip.h"

#include "platform/DisplayText.h"

#include <QPainter>
#include <QStyleOptionTab>
#include <QStylePainter>
#include <QTabBar>
#include <QTabWidget>

namespace {

class EvenTabBar : public QTabBar {
public:
    explicit EvenTabBar(QTabWidget& ownerTabs)
        : tabs(ownerTabs)
    {
        // A tab that was clicked is what the next key is meant for.
        setFocusPolicy(Qt::StrongFocus);
        setUsesScrollButtons(false);
        setExpanding(false);
        setElideMode(Qt::ElideNone);
    }

protected:
    const int padding = Twips::ToPixels(75);

    int TabWidth() const { return qMax(1, tabs.width() / qMax(1, count())); }

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

    void paintEvent(QPaintEvent*) override
    {
        QStylePainter painter(this);
        const auto paintTab = [&](int index) {
            QStyleOptionTab option;
            initStyleOption(&option, index);
            painter.drawControl(QStyle::CE_TabBarTabShape, option);
            option.text = Lines(tabText(index));
            const bool selected = index == currentIndex();
            painter.save();
            painter.setPen(palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::WindowText));
            const QRect textArea = option.rect.adjusted(0, selected ? 0 : 2, 0, 0);
            painter.drawText(textArea, Qt::AlignCenter | Qt::TextShowMnemonic, option.text);
            painter.restore();
            if (selected && hasFocus()) {
                QStyleOptionFocusRect focus;
                focus.initFrom(this);
                focus.rect = option.rect.adjusted(3, 3, -3, -3);
                painter.drawPrimitive(QStyle::PE_FrameFocusRect, focus);
            }
        };
        for (int i = 0; i < count(); ++i) {
            if (i != currentIndex())
                paintTab(i);
        }
        if (currentIndex() >= 0)
            paintTab(currentIndex());
    }

private:
    QTabWidget& tabs;
};

class EvenTabs : public QTabWidget {
public:
    EvenTabs()
    {
        setTabBar(new EvenTabBar(*this));
        setDocumentMode(false);
    }
};

}

class TabStrip::PageContent : public Container {
public:
    PageContent() { content = new QWidget; }
};

TabStrip::TabStrip(
    Container& container, std::string_view name, const Place& place, std::initializer_list<std::string_view> captions)
    : Control(container, new EvenTabs, name, place)
{
    auto* tabs = static_cast<QTabWidget*>(widget);
    for (const std::string_view caption : captions) {
        pages.push_back(std::make_unique<PageContent>());
        tabs->addTab(pages.back()->Content(), ToDisplay(caption));
    }
}

TabStrip::~TabStrip() = default;

Container& TabStrip::Page(int index) { return *pages.at(static_cast<std::size_t>(index)); }

void TabStrip::SetTab(int index) { static_cast<QTabWidget*>(widget)->setCurrentIndex(index); }
