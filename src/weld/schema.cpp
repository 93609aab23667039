#include "schema.h"

#include "programwriter.h"

#include <QtMath>

#include <algorithm>
#include <cmath>

namespace {

// Files keep a diameter with six digits. A chord that is the diameter itself must not miss it by that
// rounding: without its length a frame would lose its cuts.
constexpr double sixDigits = 5e-6;

QStringList numbered(int* block, std::initializer_list<QString> statements)
{
    QStringList lines;
    for (const QString& statement : statements)
        lines.append(ncBlock(block, statement));
    return lines;
}

QString word(const char* letters, float value)
{
    return QLatin1String(letters) + ncFixed(double(value), 2);
}

QString manipulatorMove(float x, float y, float z)
{
    return "G01 " + word("x=", x) + word(" y=", y) + word(" z=", z);
}

} // namespace

PlaneColumns planeColumns(int plane)
{
    switch (plane) {
    case 1:
        return {0, 2, 1};
    case 2:
        return {1, 2, 0};
    default:
        return {0, 1, 2};
    }
}

bool fitsDiameter(double chord, float diameter)
{
    return chord <= double(diameter) * (1 + sixDigits);
}

double arcOverChord(double chord, float diameter)
{
    const double part = chord / double(diameter);
    return double(diameter) * std::asin(fitsDiameter(chord, diameter) ? std::min(part, 1.0) : part);
}

Schema::Schema(const QString& id, float D, float P, int Aux, const QStringList& axisNames)
    : m_id(id)
    , m_D(D)
    , m_P(P)
    , m_Aux(Aux)
    , m_axisNames(axisNames)
{}

// Straight lines

SchemaXYZ::SchemaXYZ()
    : Schema("XYZ", -1.0f, -1.0f, -1, {"LX", "LY", "Z"})
{}

QString SchemaXYZ::header() const
{
    return "<b>Линейная интерполяция</b>";
}

double SchemaXYZ::distance(const QList<float>& c1, const QList<float>& c2) const
{
    Q_ASSERT(c1.size() == c2.size());
    double sum = 0;
    for (int i = 0; i < c1.size(); ++i) {
        const double d = double(c1[i]) - double(c2[i]);
        sum += d * d;
    }
    return std::sqrt(sum);
}

bool SchemaXYZ::validDistance(const QList<float>& c1, const QList<float>& c2) const
{
    Q_ASSERT(c1.size() == c2.size());
    return true;
}

QStringList SchemaXYZ::gCodeInitChan1(int* block) const
{
    return numbered(block, {"COORD(1)", "G4 F0.2", "COORD(2)"});
}

QStringList SchemaXYZ::gCodeInitChan2(int* block) const
{
    return numbered(block, {"G4 F0.2"});
}

QString SchemaXYZ::gCodePoint(const QList<float>& c, bool) const
{
    Q_ASSERT(c.size() == 3);
    return manipulatorMove(c[0], c[1], c[2]);
}

QStringList SchemaXYZ::gCodeUninitChan1(int* block) const
{
    return numbered(block, {"G4 F0.2", "COORD(0,2)"});
}

QStringList SchemaXYZ::gCodeUninitChan2(int* block) const
{
    return numbered(block, {"G4 F0.2"});
}

// Arcs of one circle

SchemaXYZr::SchemaXYZr(float D, float P, int Aux)
    : Schema("XYZr", D, P, Aux, {"LX", "LY", "Z"})
{}

QString SchemaXYZr::header() const
{
    return QString("<b>Круговая интерполяция</b><pre>D=%1</>").arg(double(D()));
}

double SchemaXYZr::chord(const QList<float>& c1, const QList<float>& c2) const
{
    const PlaneColumns plane = planeColumns(Aux());
    return std::hypot(double(c1[plane.first]) - double(c2[plane.first]),
                      double(c1[plane.second]) - double(c2[plane.second]));
}

double SchemaXYZr::distance(const QList<float>& c1, const QList<float>& c2) const
{
    Q_ASSERT(c1.size() == c2.size());
    return arcOverChord(chord(c1, c2), D());
}

bool SchemaXYZr::validDistance(const QList<float>& c1, const QList<float>& c2) const
{
    Q_ASSERT(c1.size() == c2.size());
    return fitsDiameter(chord(c1, c2), D());
}

QStringList SchemaXYZr::gCodeInitChan1(int* block) const
{
    const QString plane = Aux() == 1 ? "G18" : Aux() == 2 ? "G19" : "G17";
    return numbered(block, {"COORD(2)", plane});
}

QStringList SchemaXYZr::gCodeInitChan2(int* block) const
{
    return numbered(block, {"G4 F0.2"});
}

QString SchemaXYZr::gCodePoint(const QList<float>& c, bool flag) const
{
    Q_ASSERT(c.size() == 3);
    const QString turn = flag ? "G03 " : "G02 ";
    const QString radius = word(" R", R());
    switch (Aux()) {
    case 0:
        return turn + word("x=", c[0]) + word(" y=", c[1]) + radius + word(" z=", c[2]);
    case 1:
        return turn + word("x=", c[0]) + word(" z=", c[2]) + radius + word(" y=", c[1]);
    default:
        return turn + word("y=", c[1]) + word(" z=", c[2]) + radius + word(" x=", c[0]);
    }
}

QStringList SchemaXYZr::gCodeUninitChan1(int* block) const
{
    return numbered(block, {"G16", "COORD(0,2)"});
}

QStringList SchemaXYZr::gCodeUninitChan2(int* block) const
{
    return numbered(block, {"G4 F0.2"});
}

// Ring joint

SchemaCircle::SchemaCircle(float D, float P)
    : Schema("Circle", D, P, -1, {"V", "LX", "LY", "Z"})
{}

QString SchemaCircle::header() const
{
    return QString("<b>Кольцевой стык</b><pre>D=%1</>").arg(double(D()));
}

double SchemaCircle::distance(const QList<float>& c1, const QList<float>& c2) const
{
    Q_ASSERT(c1.size() == c2.size());
    double a = std::fabs(double(c1[0]) - double(c2[0]));
    if (a > 180.0)
        a = 360.0 - a;
    return a * (double(D()) * M_PI / 360.0);
}

bool SchemaCircle::validDistance(const QList<float>& c1, const QList<float>& c2) const
{
    Q_ASSERT(c1.size() == c2.size());
    return true;
}

QStringList SchemaCircle::gCodeInitChan1(int* block) const
{
    return numbered(block, {"COORD(1)", "G4 F0.2", "COORD(2)"});
}

// The ratio lets the controller read feeds of V as mm/min on the circumference.
QStringList SchemaCircle::gCodeInitChan2(int* block) const
{
    return numbered(block, {"ARF(V=" + ncFixed(double(D()) * M_PI / 360.0, 2) + ')'});
}

QString SchemaCircle::gCodePoint(const QList<float>& c, bool flag) const
{
    Q_ASSERT(c.size() == 4);
    return flag ? "G01 " + word("V=", c[0]) : manipulatorMove(c[1], c[2], c[3]);
}

QStringList SchemaCircle::gCodeUninitChan1(int* block) const
{
    return numbered(block, {"G4 F0.2", "COORD(0,2)"});
}

QStringList SchemaCircle::gCodeUninitChan2(int* block) const
{
    return numbered(block, {"ARF()"});
}
