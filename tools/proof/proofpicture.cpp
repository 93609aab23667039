#include "proofpicture.h"

#include "paper.h"
#include "schema.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QtMath>

#include <algorithm>
#include <cmath>
#include <functional>
#include <tuple>

namespace {

using Sample = ProofRun::Sample;

// Red is for findings alone, so that the beam goes from light blue to dark.
const QColor noBeam(150, 150, 150);
const QColor findingColor(200, 0, 0);
const QColor rowColor(90, 90, 90);
const QColor stopColor(230, 140, 0);
const QColor cursorColor(0, 130, 60);

QColor beamColor(double share)
{
    return QColor::fromHslF(0.6, 0.9, 0.72 - 0.5 * std::clamp(share, 0.0, 1.0));
}

// Two coordinates of the seam with their names.
struct View
{
    QString title;
    std::function<QPointF(const Sample&)> point;
};

QVector<View> views(const Proof& proof)
{
    const Schema& schema = *proof.weld.tables.contour.schema;
    if (schema.circle()) {
        const double R = double(schema.R());
        return {{QStringLiteral("Деталь с торца, мм"),
                 [R](const Sample& s) {
                     const double turn = qDegreesToRadians(s.at[3]);
                     return QPointF(R * std::cos(turn), R * std::sin(turn));
                 }},
                {QStringLiteral("Развёртка: V, ° — Z, мм"),
                 [](const Sample& s) { return QPointF(s.at[3], s.at[2]); }}};
    }
    // The plane with the widest ways shows most of it.
    double least[3] = {1e9, 1e9, 1e9}, most[3] = {-1e9, -1e9, -1e9};
    for (const Sample& s : proof.run.samples) {
        for (std::size_t i = 0; i < 3; ++i) {
            least[i] = std::min(least[i], s.at[i]);
            most[i] = std::max(most[i], s.at[i]);
        }
    }
    std::size_t narrow = 2;
    for (std::size_t i = 0; i < 3; ++i) {
        if (most[i] - least[i] < most[narrow] - least[narrow] - 1e-6)
            narrow = i;
    }
    static const char* const names[] = {"LX", "LY", "Z"};
    const auto view = [](std::size_t a, std::size_t b) {
        return View{QStringLiteral("%1 — %2, мм").arg(QLatin1String(names[a]), QLatin1String(names[b])),
                    [a, b](const Sample& s) { return QPointF(s.at[a], s.at[b]); }};
    };
    const std::size_t first = narrow == 0 ? 1 : 0, second = narrow == 2 ? 1 : 2;
    return {view(first, second), view(first, narrow)};
}

class Picture
{
public:
    Picture(QPainter* painter, const Proof& proof, double unit, int cursor)
        : m_p(*painter)
        , m_proof(proof)
        , m_samples(proof.run.samples)
        , m_unit(unit)
        , m_cursor(cursor)
    {
        for (const Sample& s : m_samples) {
            m_mostIr = std::max(m_mostIr, s.Ir);
            m_longest = std::max(m_longest, s.path);
        }
    }

    void paint(const QRectF& area)
    {
        QFont font = m_p.font();
        font.setPixelSize(std::max(1, int(16 * m_unit)));
        m_p.setFont(font);
        m_p.setPen(Qt::black);
        const double line = 24 * m_unit;
        m_p.drawText(area, Qt::AlignLeft | Qt::AlignTop, m_proof.weld.name);
        if (m_samples.isEmpty())
            return;
        // Upright on paper the views stand above one another, and the legend needs two lines.
        const bool upright = area.width() < 1200 * m_unit;
        const double seams = area.height() * (upright ? 0.64 : 0.52);
        const QVector<View> both = views(m_proof);
        const double words = upright ? 2 * line : line;
        const QRectF room(area.left(), area.top() + line, area.width(), seams - line - words);
        const double split = upright ? room.height() * 0.56 : room.width() * 0.6;
        seam(upright ? room.adjusted(0, 0, 0, split - room.height() - line / 3)
                     : room.adjusted(0, 0, split - room.width() - line, -line / 3),
             both[0]);
        seam(upright ? room.adjusted(0, split, 0, -line / 3) : room.adjusted(split, 0, 0, -line / 3),
             both[1]);
        legend({area.left(), area.top() + seams - words, area.width(), line});
        const double height = (area.height() - seams - line) / 3;
        const std::tuple<QString, double Sample::*> curves[] = {
            {QStringLiteral("Ток, мА"), &Sample::Ir},
            {QStringLiteral("Фокус, мА"), &Sample::If},
            {QStringLiteral("Скорость, мм/мин"), &Sample::feed}};
        double top = area.top() + seams + line / 2;
        for (const auto& [title, value] : curves) {
            curve({area.left(), top, area.width(), height - line / 3}, title, value);
            top += height;
        }
        m_p.setPen(Qt::black);
        m_p.drawText(QRectF(area.left(), area.bottom() - line, area.width(), line), Qt::AlignRight,
                     QStringLiteral("путь, мм: 0 … %1").arg(m_longest, 0, 'f', 2));
    }

private:
    void seam(const QRectF& area, const View& view)
    {
        QRectF seen;
        for (const Sample& s : m_samples)
            seen |= QRectF(view.point(s) - QPointF(0.5, 0.5), QSizeF(1, 1));
        const QRectF inner = area.adjusted(30 * m_unit, 30 * m_unit, -30 * m_unit, -20 * m_unit);
        const double scale = std::min(inner.width() / seen.width(), inner.height() / seen.height());
        const auto at = [&](const Sample& s) {
            const QPointF off = view.point(s) - seen.center();
            return inner.center() + QPointF(off.x(), -off.y()) * scale;
        };
        m_p.setPen(Qt::black);
        m_p.drawText(area, Qt::AlignLeft | Qt::AlignTop, view.title);
        m_p.setPen(QPen(QColor(210, 210, 210), m_unit));
        m_p.drawRect(area.adjusted(0, 22 * m_unit, 0, 0));
        for (int i = 1; i < m_samples.size(); ++i) {
            const Sample& s = m_samples[i];
            const double share = m_mostIr > 0 ? s.Ir / m_mostIr : 0;
            const bool on = s.Ir > 0.5;
            if (on && std::fabs(m_samples[i].at[3] - m_samples[i - 1].at[3]) > 180)
                continue; // over 0 degrees the unrolled view jumps
            m_p.setPen(QPen(on ? beamColor(share) : noBeam, (on ? 2 + 6 * share : 1) * m_unit, Qt::SolidLine,
                            Qt::RoundCap));
            m_p.drawLine(at(m_samples[i - 1]), at(s));
        }
        const auto place = [&](double path) { return at(m_samples[nearest(path)]); };
        rows(place);
        findings(place);
        if (m_cursor >= 0)
            mark(at(m_samples[std::min(m_cursor, m_samples.size() - 1)]), {}, cursorColor);
    }

    template <typename Place>
    void rows(const Place& place)
    {
        const QVector<TechRow>& tech = m_proof.weld.tables.tech;
        double path = 0, marked = -1e9;
        for (int i = 0; i < tech.size(); ++i) {
            path = tech[i].on ? double(tech[i].path) : path;
            if (tech[i].stop) {
                m_p.setPen(QPen(stopColor, 3 * m_unit));
                m_p.drawRect(QRectF(place(path) - QPointF(8, 8) * m_unit, QSizeF(16, 16) * m_unit));
            } else if (tech[i].on && std::fabs(path - marked) > m_longest / 40) {
                marked = path;
                m_p.setPen(QPen(rowColor, 2 * m_unit));
                m_p.drawEllipse(place(path), 4 * m_unit, 4 * m_unit);
                m_p.drawText(place(path) + QPointF(10, 18) * m_unit, QString::number(i + 1));
            }
        }
    }

    template <typename Place>
    void findings(const Place& place)
    {
        constexpr int shown = 40;
        const auto all = m_proof.findings();
        QVector<QPointF> taken;
        for (int i = 0; i < std::min(shown, all.size()); ++i) {
            QPointF point = place(all[i].first) + QPointF(-20, -20) * m_unit; // what lies there stays seen
            while (std::any_of(taken.begin(), taken.end(), [&](const QPointF& other) {
                return std::hypot(other.x() - point.x(), other.y() - point.y()) < 22 * m_unit;
            }))
                point += QPointF(24, 0) * m_unit; // two of one place stand beside one another
            taken.append(point);
            mark(point, QString::number(i + 1), findingColor);
        }
    }

    void mark(const QPointF& point, const QString& text, const QColor& color)
    {
        m_p.setPen(Qt::NoPen);
        m_p.setBrush(color);
        m_p.drawEllipse(point, 11 * m_unit, 11 * m_unit);
        m_p.setBrush(Qt::NoBrush);
        m_p.setPen(Qt::white);
        m_p.drawText(QRectF(point - QPointF(20, 12) * m_unit, QSizeF(40, 24) * m_unit), Qt::AlignCenter,
                     text);
    }

    void legend(const QRectF& area)
    {
        const std::pair<QColor, QString> words[] = {
            {noBeam, QStringLiteral("без луча")},
            {beamColor(0.2), QStringLiteral("малый ток")},
            {beamColor(1), QStringLiteral("ток %1 мА").arg(m_mostIr, 0, 'f', 1)},
            {rowColor, QStringLiteral("○ строка технологии")},
            {stopColor, QStringLiteral("□ останов")},
            {findingColor, QStringLiteral("● замечание с номером")}};
        QPointF at(area.left(), area.center().y());
        for (const auto& [color, text] : words) {
            const double width = m_p.fontMetrics().horizontalAdvance(text);
            if (at.x() + 26 * m_unit + width > area.right())
                at = QPointF(area.left(), at.y() + area.height());
            m_p.setPen(QPen(color, 5 * m_unit));
            m_p.drawLine(at, at + QPointF(20 * m_unit, 0));
            m_p.setPen(Qt::black);
            m_p.drawText(
                QRectF(at.x() + 26 * m_unit, at.y() - area.height() / 2, width + m_unit, area.height()),
                Qt::AlignVCenter, text);
            at.rx() += 46 * m_unit + width;
        }
    }

    void curve(const QRectF& area, const QString& title, double Sample::*value)
    {
        double most = 1;
        for (const Sample& s : m_samples)
            most = std::max(most, s.*value);
        const double full = most * 1.1;
        const double top = area.top() + 22 * m_unit;
        const auto at = [&](const Sample& s) {
            return QPointF(area.left() + area.width() * (m_longest > 0 ? s.path / m_longest : 0),
                           area.bottom() - (area.bottom() - top) * (s.*value) / full);
        };
        m_p.setPen(Qt::black);
        m_p.drawText(area, Qt::AlignLeft | Qt::AlignTop,
                     title + QStringLiteral(" (до %1)").arg(most, 0, 'f', 1));
        m_p.setPen(QPen(QColor(210, 210, 210), m_unit));
        m_p.drawRect(QRectF(area.left(), top, area.width(), area.bottom() - top));
        QPolygonF line;
        for (const Sample& s : m_samples)
            line.append(at(s));
        m_p.setPen(QPen(beamColor(1), 1.5 * m_unit));
        m_p.drawPolyline(line);
        if (m_cursor >= 0) {
            const double x = at(m_samples[std::min(m_cursor, m_samples.size() - 1)]).x();
            m_p.setPen(QPen(cursorColor, 2 * m_unit));
            m_p.drawLine(QPointF(x, top), QPointF(x, area.bottom()));
        }
    }

    int nearest(double path) const
    {
        int best = 0;
        for (int i = 1; i < m_samples.size(); ++i) {
            if (std::fabs(m_samples[i].path - path) < std::fabs(m_samples[best].path - path))
                best = i;
        }
        return best;
    }

    QPainter& m_p;
    const Proof& m_proof;
    const QVector<Sample>& m_samples;
    const double m_unit; // of the picture 1600 wide
    const int m_cursor;
    double m_mostIr = 0, m_longest = 0;
};

bool write(const QString& file, const QByteArray& bytes)
{
    QFile target(file);
    return target.open(QIODevice::WriteOnly) && target.write(bytes) == bytes.size() && target.flush();
}

} // namespace

void paintProof(QPainter* painter, const QRectF& area, const Proof& proof, int cursor)
{
    painter->setRenderHint(QPainter::Antialiasing);
    // Letters stay legible: 16 px on a narrow window, 9 pt on paper.
    const double letters = 9 * painter->device()->logicalDpiY() / 72.0;
    Picture(painter, proof, std::max({1.0, area.width() / 1600, letters / 16}), cursor).paint(area);
}

bool writeProofPng(const QString& file, const Proof& proof)
{
    QImage image(1640, 1240, QImage::Format_RGB32);
    image.fill(Qt::white);
    {
        QPainter painter(&image);
        paintProof(&painter, QRectF(image.rect()).adjusted(20, 20, -20, -20), proof);
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    return buffer.open(QIODevice::WriteOnly) && image.save(&buffer, "PNG") && write(file, bytes);
}

bool writeProofPdf(const QString& file, const Proof& proof)
{
    Paper paper(proof.weld.name);
    paper.picture(225, [&](QPainter* painter, const QRectF& area) { paintProof(painter, area, proof); });
    paper.text(proofHtml(proof));
    QString why;
    return paper.write(file, &why);
}
