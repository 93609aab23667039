#include "textrecorder.h"

#include <QFontMetricsF>
#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>
#include <QWidget>

namespace {

// Takes texts and drops the rest.
class TextEngine : public QPaintEngine
{
public:
    TextEngine()
        : QPaintEngine(AllFeatures)
    {}

    bool begin(QPaintDevice*) override { return true; }
    bool end() override { return true; }
    Type type() const override { return User; }
    void updateState(const QPaintEngineState&) override {}
    void drawPixmap(const QRectF&, const QPixmap&, const QRectF&) override {}
    void drawImage(const QRectF&, const QImage&, const QRectF&, Qt::ImageConversionFlags) override {}
    void drawTiledPixmap(const QRectF&, const QPixmap&, const QPointF&) override {}
    void drawPath(const QPainterPath&) override {}
    void drawPolygon(const QPointF*, int, PolygonDrawMode) override {}
    void drawPolygon(const QPoint*, int, PolygonDrawMode) override {}
    void drawRects(const QRectF*, int) override {}
    void drawRects(const QRect*, int) override {}
    void drawLines(const QLineF*, int) override {}
    void drawLines(const QLine*, int) override {}
    void drawEllipse(const QRectF&) override {}
    void drawEllipse(const QRect&) override {}
    void drawPoints(const QPointF*, int) override {}
    void drawPoints(const QPoint*, int) override {}
    void drawTextItem(const QPointF& at, const QTextItem& item) override
    {
        if (item.text().trimmed().isEmpty())
            return;
        const QTransform road = painter()->combinedTransform();
        QRectF clip(systemClip().isEmpty() ? QRect(QPoint(), QSize(1 << 14, 1 << 14))
                                           : systemClip().boundingRect());
        if (painter()->hasClipping())
            clip &= road.mapRect(painter()->clipBoundingRect());
        QColor colour = painter()->pen().color();
        colour.setAlphaF(colour.alphaF() * painter()->opacity());
        const QRectF ink = QFontMetricsF(item.font()).tightBoundingRect(item.text()).translated(at);
        texts.append({item.text(), item.font(), colour, road.mapRect(ink), clip});
    }

    QVector<PaintedText> texts;
};

// As wide and fine as the widget's own screen.
class TextDevice : public QPaintDevice
{
public:
    TextDevice(TextEngine* engine, const QWidget* widget)
        : m_engine(engine)
        , m_widget(widget)
    {}

    QPaintEngine* paintEngine() const override { return m_engine; }

protected:
    int metric(PaintDeviceMetric metric) const override
    {
        switch (metric) {
        case PdmWidth:
            return m_widget->width();
        case PdmHeight:
            return m_widget->height();
        case PdmDpiX:
        case PdmPhysicalDpiX:
            return m_widget->logicalDpiX();
        case PdmDpiY:
        case PdmPhysicalDpiY:
            return m_widget->logicalDpiY();
        case PdmDepth:
            return 32;
        default:
            return QPaintDevice::metric(metric);
        }
    }

private:
    TextEngine* m_engine;
    const QWidget* m_widget;
};

} // namespace

QVector<PaintedText> paintedTexts(QWidget* widget)
{
    TextEngine engine;
    TextDevice device(&engine, widget);
    widget->render(&device, QPoint(), QRegion(), QWidget::RenderFlags());
    return engine.texts;
}
