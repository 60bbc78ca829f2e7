#include "platform/LegibleStyle.h"

#include <QAbstractScrollArea>
#include <QPainter>
#include <QProxyStyle>
#include <QPushButton>
#include <QStyleOption>

namespace {

class LegibleStyle : public QProxyStyle {
public:
    void polish(QPalette& palette) override
    {
        QProxyStyle::polish(palette);
        for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
            QColor hint = palette.color(group, QPalette::Text);
            hint.setAlphaF(0.67F);
            palette.setColor(group, QPalette::PlaceholderText, hint);
        }
        if (IsBlack(palette)) {
            for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
                palette.setColor(QPalette::Disabled, role, Qt::gray);
        }
    }

    using QProxyStyle::polish;

    void drawControl(
        ControlElement element, const QStyleOption* option, QPainter* painter, const QWidget* widget) const override
    {
        if (element == CE_PushButtonLabel && qobject_cast<const QPushButton*>(widget) != nullptr) {
            QStyleOptionButton label(*static_cast<const QStyleOptionButton*>(option));
            if (label.fontMetrics.size(Qt::TextShowMnemonic, label.text).width() > label.rect.width())
                label.rect = widget->rect();
            QProxyStyle::drawControl(element, &label, painter, widget);
            return;
        }
        if (element == CE_ItemViewItem && widget != nullptr && widget->isActiveWindow()
            && !option->state.testFlag(State_Selected)) {
            QStyleOptionViewItem row(*static_cast<const QStyleOptionViewItem*>(option));
            row.state |= State_Active;
            QProxyStyle::drawControl(element, &row, painter, widget);
            return;
        }
        QProxyStyle::drawControl(element, option, painter, widget);
        if (element != CE_ShapedFrame)
            return;
        const bool isArea = qobject_cast<const QAbstractScrollArea*>(widget) != nullptr;
        if (isArea && option->state.testFlag(State_HasFocus))
            DrawEdge(option, QPalette::Highlight, painter);
        else if (isArea && IsBlack(option->palette))
            DrawEdge(option, QPalette::WindowText, painter);
    }

    void drawPrimitive(
        PrimitiveElement element, const QStyleOption* option, QPainter* painter, const QWidget* widget) const override
    {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        if (!IsBlack(option->palette))
            return;
        if (element == PE_IndicatorCheckBox || element == PE_PanelLineEdit || element == PE_PanelButtonCommand
            || element == PE_PanelButtonTool || element == PE_FrameTabWidget)
            DrawEdge(option, QPalette::WindowText, painter);
        else if (element == PE_IndicatorRadioButton)
            DrawEdge(option, QPalette::WindowText, painter, option->rect.width() / 2.0);
    }

    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
        const QWidget* widget) const override
    {
        QProxyStyle::drawComplexControl(control, option, painter, widget);
        if (control == CC_ComboBox && IsBlack(option->palette))
            DrawEdge(option, QPalette::WindowText, painter);
        if (control == CC_ToolButton && option->state.testFlag(State_HasFocus)
            && baseStyle()->name().startsWith(QLatin1String("adwaita")))
            DrawEdge(option, QPalette::Highlight, painter);
    }

private:
    static bool IsBlack(const QPalette& palette) { return palette.color(QPalette::Window).lightness() < 16; }

    static void DrawEdge(
        const QStyleOption* option, QPalette::ColorRole colour, QPainter* painter, double roundness = 0)
    {
        painter->save();
        painter->setBrush(Qt::NoBrush);
        painter->setPen(option->palette.color(colour));
        painter->drawRoundedRect(option->rect.adjusted(0, 0, -1, -1), roundness, roundness);
        painter->restore();
    }
};

}

QStyle* MakeLegibleStyle() { return new LegibleStyle; }
