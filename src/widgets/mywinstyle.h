#pragma once

#include <QPainterPath>
#include <QPixmap>
#include <QProxyStyle>

#include <array>

// The look of the console: the Windows style with rounded buttons. The shading of a button is an image
// laid over the colour that its palette holds, so that a colour set by a state stays visible.
// Disabled, only what can be touched looks so: labels tell the state of the machine in words and pictures,
// and keep their colours when nobody may touch them.
// Needs the application object; owns its pixmaps.
class MyWinStyle : public QProxyStyle
{
    Q_OBJECT

public:
    MyWinStyle();

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget = nullptr) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget = nullptr) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption* option = nullptr,
                    const QWidget* widget = nullptr) const override;
    int styleHint(StyleHint hint, const QStyleOption* option = nullptr, const QWidget* widget = nullptr,
                  QStyleHintReturn* data = nullptr) const override;

    QPixmap generatedIconPixmap(QIcon::Mode mode, const QPixmap& pixmap,
                                const QStyleOption* option) const override;

    using QProxyStyle::polish;
    void polish(QPalette& palette) override; // what is disabled stays legible in the dialogs, too
    void polish(QWidget* widget) override;   // gives a push button its colours, alarm buttons by object name

    // The outline of a button that fills `rect`.
    static QPainterPath getRoundRect(const QRect& rect);

    // Sets the face of a button in all colour groups; the disabled one is washed out.
    static void setFace(QPalette& palette, const QColor& face);

    // The face of a button at rest: red for the alarm buttons, which are known by their object names.
    static QColor restFace(const QWidget* button);

private:
    using NineSlice = std::array<QPixmap, 9>; // row by row from the top left

    static NineSlice loadSlices(const QString& state); // "up" or "down"
    void drawBevel(QPainter* painter, const QRect& rect, const NineSlice& slices, const QColor& face) const;

    NineSlice m_up;
    NineSlice m_down;
};
