#include "plant/ncgeometry.h"

#include <cmath>

namespace plant {

double NcArc::length() const
{
    return radius * std::abs(sweep);
}

QPointF NcArc::at(double part) const
{
    const double angle = from + sweep * part;
    return center + radius * QPointF(std::cos(angle), std::sin(angle));
}

NcArc arcByRadius(QPointF a, QPointF b, double r, bool clockwise, QString* error)
{
    const QPointF chord = b - a;
    const double c = std::hypot(chord.x(), chord.y());
    NcArc arc;
    arc.center = a;
    if (c <= 0)
        return arc;

    arc.radius = std::abs(r);
    if (c > 2 * arc.radius) {
        if (c > 2 * arc.radius + halfCircleTolerance) {
            *error = QStringLiteral("points %1 mm apart on a circle of radius %2 mm")
                         .arg(c, 0, 'f', 3)
                         .arg(arc.radius, 0, 'f', 3);
            return arc;
        }
        arc.radius = c / 2;
    }

    const double half = std::asin(std::min(1.0, c / 2 / arc.radius));
    const double height = std::sqrt(std::max(0.0, arc.radius * arc.radius - c * c / 4));
    // Seen along the chord, the centre of a short counter-clockwise arc lies to the left.
    const bool left = clockwise == (r < 0);
    const QPointF normal = QPointF(-chord.y(), chord.x()) / c;
    arc.center = (a + b) / 2 + (left ? height : -height) * normal;
    arc.from = std::atan2(a.y() - arc.center.y(), a.x() - arc.center.x());
    const double size = r < 0 ? 2 * M_PI - 2 * half : 2 * half;
    arc.sweep = clockwise ? -size : size;
    return arc;
}

} // namespace plant
