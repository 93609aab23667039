#include "weldgeometry.h"

#include "schema.h"

#include <QtMath>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

bool hasFrames(const WeldContour& contour)
{
    return !contour.schema->circle() && !contour.schema->rotate();
}

// The arc is the shorter one: its centre lies on the left of the way when turning counter-clockwise, where
// `side` is 1, and on the other with -1.
std::pair<double, double> arcCentre(double ax, double ay, double bx, double by, double r, double side)
{
    const double chord = std::hypot(bx - ax, by - ay);
    const double h = std::sqrt(std::max(0.0, r * r - chord * chord / 4));
    return {(ax + bx) / 2 - side * h * (by - ay) / chord, (ay + by) / 2 + side * h * (bx - ax) / chord};
}

double mmToTurn(double mm, double circumference)
{
    return mm / circumference * 360.0;
}

} // namespace

// Lengths

double frameLength(const WeldContour& contour, int row, const QList<float>& from, const QList<float>& to)
{
    if (row < 0 || row >= contour.rows.size())
        return 0;
    const Frame& frame = contour.rows[row].frame;
    switch (frame.type) {
    case Frame::Line:
        return contour.schema->distance(from, to);
    case Frame::Arc: {
        const PlaneColumns plane = planeColumns(frame.plane);
        const double chord = std::hypot(double(to[plane.first]) - double(from[plane.first]),
                                        double(to[plane.second]) - double(from[plane.second]));
        return arcOverChord(chord, 2 * frame.radius);
    }
    default:
        return 0;
    }
}

double besideArc(const WeldContour& contour, int row, const QList<float>& point)
{
    const Frame& frame = contour.rows[row].frame;
    const PlaneColumns plane = planeColumns(frame.plane);
    const QList<float>& a = contour.rows[row].coords;
    const QList<float>& b = contour.rows[(row + 1) % contour.rows.size()].coords;
    const auto [cx, cy] =
        arcCentre(double(a[plane.first]), double(a[plane.second]), double(b[plane.first]),
                  double(b[plane.second]), double(frame.radius), frame.direction == 1 ? 1.0 : -1.0);
    return std::fabs(std::hypot(double(point[plane.first]) - cx, double(point[plane.second]) - cy) -
                     double(frame.radius));
}

QVector<double> pointLengths(const WeldContour& contour)
{
    QVector<double> lengths;
    lengths.reserve(contour.rows.size());
    for (int i = 0; i < contour.rows.size(); ++i)
        lengths.append(i == 0 ? 0.0
                              : lengths.last() + contour.schema->distance(contour.rows[i - 1].coords,
                                                                          contour.rows[i].coords));
    return lengths;
}

double calcLength(const WeldContour& contour, int count)
{
    const QVector<double> lengths = pointLengths(contour);
    return count > 0 && !lengths.isEmpty() ? lengths[std::min(count, lengths.size()) - 1] : 0;
}

double passLength(const WeldContour& contour)
{
    const int count = contour.rows.size();
    if (count < 2)
        return 0;
    if (!hasFrames(contour))
        return contour.closed ? double(contour.schema->D()) * M_PI : calcLength(contour, count);

    double sum = 0;
    for (int i = 1; i < count; ++i)
        sum += frameLength(contour, i - 1, contour.rows[i - 1].coords, contour.rows[i].coords);
    if (!contour.closed)
        return sum;
    if (!contour.closedForward)
        return 2 * sum; // out and back
    return sum + frameLength(contour, count - 1, contour.rows.last().coords, contour.rows.first().coords);
}

double totalLength(const WeldContour& contour)
{
    return passLength(contour) * passCount(contour);
}

bool closesByFrame(const WeldContour& contour)
{
    return contour.closed && contour.closedForward;
}

int passCount(const WeldContour& contour)
{
    return contour.closed ? contour.nrings : 1;
}

// Circles

double getPolarAngle(double x, double y)
{
    if (x > 0)
        return y < 0 ? std::atan(y / x) + 2 * M_PI : std::atan(y / x);
    if (x < 0)
        return std::atan(y / x) + M_PI;
    return y > 0 ? M_PI / 2 : 3 * M_PI / 2;
}

bool Circle::exists() const
{
    return std::isfinite(diameter) && std::isfinite(centerX) && std::isfinite(centerY);
}

Circle calcCircle(double x1, double y1, double x2, double y2, double x3, double y3)
{
    const double a = std::hypot(x2 - x1, y2 - y1);
    const double b = std::hypot(x3 - x2, y3 - y2);
    const double c = std::hypot(x1 - x3, y1 - y3);
    const double p = (a + b + c) / 2;

    // The perpendicular bisectors of the sides 1-2 and 1-3 meet in the centre.
    const double area4 = 2 * ((x2 - x1) * (y3 - y1) - (y2 - y1) * (x3 - x1));
    const double s2 = (x2 - x1) * (x2 + x1) + (y2 - y1) * (y2 + y1);
    const double s3 = (x3 - x1) * (x3 + x1) + (y3 - y1) * (y3 + y1);
    return {a * b * c / (2 * std::sqrt(p * (p - a) * (p - b) * (p - c))),
            (s2 * (y3 - y1) - s3 * (y2 - y1)) / area4, (s3 * (x2 - x1) - s2 * (x3 - x1)) / area4};
}

Circle calcD(const WeldContour& contour)
{
    const int count = contour.rows.size();
    const int triples = count == 3 ? 1 : count;
    if (count < 3)
        return {};

    Circle sum;
    for (int i = 0; i < triples; ++i) {
        const QList<float>& c1 = contour.rows[i].coords;
        const QList<float>& c2 = contour.rows[(i + 1) % count].coords;
        const QList<float>& c3 = contour.rows[(i + 2) % count].coords;
        const Circle one = calcCircle(double(c1[0]), double(c1[1]), double(c2[0]), double(c2[1]),
                                      double(c3[0]), double(c3[1]));
        sum.diameter += one.diameter;
        sum.centerX += one.centerX;
        sum.centerY += one.centerY;
    }
    return {sum.diameter / triples, sum.centerX / triples, sum.centerY / triples};
}

double calcDiameter(const WeldContour& contour, int row, int plane)
{
    const int count = contour.rows.size();
    Q_ASSERT(row >= 2 && row <= count);
    const PlaneColumns columns = planeColumns(plane);
    const auto x = [&](int i) { return double(contour.rows[i % count].coords[columns.first]); };
    const auto y = [&](int i) { return double(contour.rows[i % count].coords[columns.second]); };
    return calcCircle(x(row), y(row), x(row - 1), y(row - 1), x(row - 2), y(row - 2)).diameter;
}

void recalcPointsForNewDiameter(WeldContour& contour, float oldD, float newD)
{
    const PlaneColumns plane = planeColumns(contour.schema->Aux());
    const double oldR = 0.5 * double(oldD);
    const double newR = 0.5 * double(newD);
    for (ContourRow& row : contour.rows) {
        const double dx = double(row.coords[plane.first]) - double(contour.centerX);
        const double dy = double(row.coords[plane.second]) - double(contour.centerY);
        // A point that two decimals put just outside the circle lies on its edge.
        const double r = oldR > 0 ? oldR : std::hypot(dx, dy); // a file may name no diameter
        double angle = r > 0 ? std::acos(std::clamp(dx / r, -1.0, 1.0)) : 0.0;
        if (dy < 0)
            angle = -angle;
        row.coords[plane.first] = float(double(contour.centerX) + newR * std::cos(angle));
        row.coords[plane.second] = float(double(contour.centerY) + newR * std::sin(angle));
    }
}

CircleStart circleStart(const WeldContour& contour)
{
    CircleStart start;
    const int count = contour.rows.size();
    if (count == 0)
        return start;
    if (!contour.schema->rotate()) {
        start.angle = double(contour.rows[0].coords[0]);
        return start;
    }

    const PlaneColumns plane = planeColumns(contour.schema->Aux());
    const auto dx = [&](int i) {
        return double(contour.rows[i].coords[plane.first]) - double(contour.centerX);
    };
    const auto dy = [&](int i) {
        return double(contour.rows[i].coords[plane.second]) - double(contour.centerY);
    };

    start.height = std::fabs(double(contour.rows[0].coords[plane.third]) -
                             double(contour.rows[count / 2].coords[plane.third]));
    if (const double R = double(contour.schema->R()); R > 0)
        start.angle = qRadiansToDegrees(std::acos(std::clamp(dx(0), -R, R) / R));
    if (dy(0) < 0)
        start.angle = -start.angle;
    if (start.angle < 0)
        start.angle += 360.0;

    // The sense of the turn; where 0 degrees lies between the points, the outer two decide, which then
    // stand in the opposite order.
    const int last = std::min(2, count - 1);
    const int middle = std::min(1, count - 1);
    const double a0 = getPolarAngle(dx(0), dy(0));
    const double a1 = getPolarAngle(dx(middle), dy(middle));
    const double a2 = getPolarAngle(dx(last), dy(last));
    if (a0 > a1 && a1 > a2)
        start.increasing = false;
    else if (a0 <= a1 && a1 <= a2)
        start.increasing = true;
    else
        start.increasing = a0 > a2;
    return start;
}

// Validity of the technology table

TableValidity tableValidity(const QVector<TechRow>& tech)
{
    TableValidity result;
    result.rows.fill(TableValidity::None, tech.size());
    int before = -1; // nearest row above that is not a comment
    for (int i = 0; i < tech.size(); ++i) {
        if (tech[i].comment)
            continue;
        if (before >= 0) {
            const TechRow& p = tech[before];
            const TechRow& r = tech[i];
            const bool jumps = (p.Ir != r.Ir || p.If != r.If) && p.path == r.path;
            if (jumps || tech.last().path < p.path)
                result.valid = false;
            result.rows[before] = result.valid ? TableValidity::Valid : TableValidity::Invalid;
        }
        before = i;
    }
    return result;
}

// Coordinates by path

WeldPath::WeldPath(const WeldContour& contour, Arcs arcs)
    : m_contour(contour)
    , m_arcs(arcs)
{
    m_sums.reserve(contour.rows.size());
    double sum = 0;
    for (int row = 0; row < contour.rows.size(); ++row) {
        if (row > 0)
            sum += frame(row);
        m_sums.append(sum);
    }
}

const QList<float>& WeldPath::from(int row) const
{
    return row == 0 ? m_contour.rows.last().coords : m_contour.rows[row - 1].coords;
}

const QList<float>& WeldPath::to(int row) const
{
    return m_contour.rows[row].coords;
}

// An arc counts by its arc, the closing one too: that is the way the machine runs, and the rows of the next
// pass are cut behind it.
double WeldPath::frame(int row) const
{
    if (!hasFrames(m_contour))
        return m_contour.schema->distance(from(row), to(row));
    return frameLength(m_contour, row == 0 ? m_contour.rows.size() - 1 : row - 1, from(row), to(row));
}

// Taken back by whole passes to the frame that ends at `end`. The table's two decimals may put the end of a
// frame behind it: that is still this frame and not the next pass. A backward closure is shown with its way
// back, but a pass runs, and counts, only the way out.
double WeldPath::folded(double path, double end) const
{
    double pass = double(m_contour.length);
    if (hasFrames(m_contour) && m_contour.closed && !m_contour.closedForward)
        pass /= 2;
    const double behind = path - end - samePlace;
    return pass > 0 && behind > 0 ? path - std::ceil(behind / pass) * pass : path;
}

QList<float> WeldPath::interCoords(int row, double path, const CircleStart& start) const
{
    const double s0 = row == 0 ? m_sums.last() : m_sums[row - 1];
    const double s1 = row == 0 ? double(m_contour.length) : m_sums[row];
    if (m_contour.schema->rotate())
        return onCircle(folded(path, double(m_contour.length)), start);

    // A row that goes back lies before its frame and is found on the frame's way prolonged backward: the
    // motion there takes the time that the beam counts. Only rounding puts a path behind the frame's end.
    path = std::min(s1, folded(path, s1));
    const double part = s1 != s0 ? (path - s0) / (s1 - s0) : 1.0;
    if (m_contour.schema->circle())
        return onRing(row, part);
    const Frame& frame = row == 0 ? m_contour.rows.last().frame : m_contour.rows[row - 1].frame;
    return frame.type == Frame::Arc ? onArc(row, part, s1 - path) : onLine(row, part);
}

QList<float> WeldPath::place(double path, const CircleStart& start) const
{
    const int last = m_sums.size() - 1;
    const bool closes = closesByFrame(m_contour);
    path = std::max(0.0, folded(path, closes ? double(m_contour.length) : m_sums[last]));
    const auto end = std::lower_bound(m_sums.begin() + 1, m_sums.end(), path - samePlace);
    const int row = end != m_sums.end() ? int(end - m_sums.begin()) : closes ? 0 : last;
    return interCoords(row, path, start);
}

QList<float> WeldPath::onLine(int row, double part) const
{
    const QList<float>& a = from(row);
    const QList<float>& b = to(row);
    QList<float> point;
    for (int i = 0; i < b.size(); ++i)
        point.append(float(double(a[i]) + (double(b[i]) - double(a[i])) * part));
    return point;
}

// The angle goes the short way, over 0 degrees where that is shorter. The two angles alone tell which way
// that is, on a ring that was turned around as well.
QList<float> WeldPath::onRing(int row, double part) const
{
    QList<float> point = onLine(row, part);
    const double start = double(from(row)[0]);
    double turn = double(to(row)[0]) - start;
    if (turn > 180.0)
        turn -= 360.0;
    else if (turn < -180.0)
        turn += 360.0;

    float angle = float(std::fmod(start + turn * part, 360.0));
    if (angle < 0.0f)
        angle += 360.0f;
    point[0] = angle < 360.0f ? angle : 0.0f;
    return point;
}

// `rest` is the way along the arc that still leads to its end: the end is turned back by it.
QList<float> WeldPath::onArc(int row, double part, double rest) const
{
    const Frame& frame = row == 0 ? m_contour.rows.last().frame : m_contour.rows[row - 1].frame;
    const PlaneColumns plane = planeColumns(frame.plane);
    const double ax = double(from(row)[plane.first]), ay = double(from(row)[plane.second]);
    const double bx = double(to(row)[plane.first]), by = double(to(row)[plane.second]);
    const double chord = std::hypot(bx - ax, by - ay);
    QList<float> point = onLine(row, part);
    if (!(chord > 0))
        return point;

    // Cuts of an arc are placed with its radius in whole millimetres, as in all programs of this machine: a
    // seam generated again must be cut where it was. Below one millimetre nothing would be left of it.
    const double whole = std::trunc(double(frame.radius));
    const double r = whole > 0 && m_arcs == AsCut ? whole : double(frame.radius);
    const double side = frame.direction == 1 ? 1.0 : -1.0;
    const auto [cx, cy] = arcCentre(ax, ay, bx, by, r, side);
    const double turn = -side * rest / r;
    point[plane.first] = float(cx + (bx - cx) * std::cos(turn) - (by - cy) * std::sin(turn));
    point[plane.second] = float(cy + (bx - cx) * std::sin(turn) + (by - cy) * std::cos(turn));
    return point;
}

// An open seam is a part of the circle only, so its path is measured on the whole circumference.
QList<float> WeldPath::onCircle(double path, const CircleStart& start) const
{
    const double R = double(m_contour.schema->R());
    const double circumference = m_contour.closed ? double(m_contour.length) : 2 * M_PI * R;
    const double turned = mmToTurn(path, circumference);
    double a = start.increasing ? start.angle + turned : start.angle - turned;
    if (a < 0)
        a += 360.0;

    const PlaneColumns plane = planeColumns(m_contour.schema->Aux());
    const double rad = qDegreesToRadians(a);
    const double tilt = start.height / 2 * (1 - std::cos(qDegreesToRadians(start.angle - a)));
    QList<float> point = to(0);
    point[plane.first] = float(double(m_contour.centerX) + R * std::cos(rad));
    point[plane.second] = float(double(m_contour.centerY) + R * std::sin(rad));
    point[plane.third] = float(double(point[plane.third]) + tilt);
    return point;
}

double ringRatioError(const WeldContour& contour)
{
    const double ratio = double(contour.schema->D()) * M_PI / 360;
    const double given = std::round(ratio * 100) / 100;
    return contour.schema->circle() && given > 0 ? ratio / given - 1 : 0;
}

int passesLeftOut(double stretch, double length)
{
    // The table's two decimals may put a row a little behind the end of the pass it stands at: no pass more.
    const double same = samePlaceAt(stretch);
    if (!(length > 0) || !(stretch > length + same))
        return 0;
    return int(std::min(std::ceil((stretch - same) / length) - 1, 1e9));
}
