#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// The columns of a contour row that make up a plane, and the one across it.
struct PlaneColumns
{
    int first;
    int second;
    int third;
};

// Plane 1 is XZ, 2 is YZ, anything else XY.
PlaneColumns planeColumns(int plane);

// Whether a circle has such a chord, both in mm. What a diameter is rounded by in files counts as fitting.
bool fitsDiameter(double chord, float diameter);

// Length of the shorter arc over a chord, mm; not a number where the chord does not fit.
double arcOverChord(double chord, float diameter);

// How the coordinates of a contour are read: what lies between two points, how long it is and how the
// controller is told to go there. Coordinates are in mm, those of the turning part in degrees.
//
// Operations that write program lines take the running block number, number their lines from it and leave
// it at the next free number.
class Schema
{
public:
    virtual ~Schema() = default;

    virtual QString header() const = 0; // rich text for the operator
    // Way from c1 to c2, mm. Asserts on lists of different lengths.
    virtual double distance(const QList<float>& c1, const QList<float>& c2) const = 0;
    // Whether the scheme can go from c1 to c2 at all. Asserts on lists of different lengths.
    virtual bool validDistance(const QList<float>& c1, const QList<float>& c2) const = 0;
    virtual QStringList gCodeInitChan1(int* block) const = 0;
    virtual QStringList gCodeInitChan2(int* block) const = 0;
    // Words of the move to `c`, without block number and feed. What `flag` chooses is the scheme's own.
    // Asserts on the wrong number of coordinates.
    virtual QString gCodePoint(const QList<float>& c, bool flag) const = 0;
    virtual QStringList gCodeUninitChan1(int* block) const = 0;
    virtual QStringList gCodeUninitChan2(int* block) const = 0;

    const QString& id() const { return m_id; } // as kept in contour files
    const QStringList& axisNames() const { return m_axisNames; }
    bool round() const { return m_D > 0.0f; }
    bool circle() const { return m_id == QLatin1String("Circle"); }
    bool rotate() const { return m_id == QLatin1String("XYZr"); }
    float D() const { return m_D; } // diameter, mm; negative where there is none
    float R() const { return 0.5f * m_D; }
    float P() const { return m_P; }   // number of points given at creation
    int Aux() const { return m_Aux; } // plane: 0 XY, 1 XZ, 2 YZ; -1 where it has no meaning
    void setD(float D) { m_D = D; }
    void setP(float P) { m_P = P; }
    void setAux(int Aux) { m_Aux = Aux; }

protected:
    Schema(const QString& id, float D, float P, int Aux, const QStringList& axisNames);
    Schema(const Schema&) = default;
    Schema& operator=(const Schema&) = default;

private:
    QString m_id;
    float m_D;
    float m_P;
    int m_Aux;
    QStringList m_axisNames;
};

// Straight lines of the manipulator; arcs are described by the frames of the contour. The flag of
// `gCodePoint` is ignored.
class SchemaXYZ : public Schema
{
public:
    SchemaXYZ();

    QString header() const override;
    double distance(const QList<float>& c1, const QList<float>& c2) const override;
    bool validDistance(const QList<float>& c1, const QList<float>& c2) const override;
    QStringList gCodeInitChan1(int* block) const override;
    QStringList gCodeInitChan2(int* block) const override;
    QString gCodePoint(const QList<float>& c, bool flag) const override;
    QStringList gCodeUninitChan1(int* block) const override;
    QStringList gCodeUninitChan2(int* block) const override;
};

// Arcs of one circle that the manipulator runs in a plane. The flag of `gCodePoint` chooses
// counter-clockwise.
class SchemaXYZr : public Schema
{
public:
    SchemaXYZr(float D, float P, int Aux);

    QString header() const override;
    double distance(const QList<float>& c1, const QList<float>& c2) const override; // along the shorter arc
    bool validDistance(const QList<float>& c1, const QList<float>& c2) const override;
    QStringList gCodeInitChan1(int* block) const override;
    QStringList gCodeInitChan2(int* block) const override;
    QString gCodePoint(const QList<float>& c, bool flag) const override;
    QStringList gCodeUninitChan1(int* block) const override;
    QStringList gCodeUninitChan2(int* block) const override;

private:
    double chord(const QList<float>& c1, const QList<float>& c2) const;
};

// A ring joint: the part turns about V under the beam, the manipulator follows. The flag of `gCodePoint`
// chooses the turn (channel 2) instead of the manipulator's move (channel 1).
class SchemaCircle : public Schema
{
public:
    SchemaCircle(float D, float P);

    QString header() const override;
    double distance(const QList<float>& c1,
                    const QList<float>& c2) const override; // circumference, shorter way
    bool validDistance(const QList<float>& c1, const QList<float>& c2) const override;
    QStringList gCodeInitChan1(int* block) const override;
    QStringList gCodeInitChan2(int* block) const override;
    QString gCodePoint(const QList<float>& c, bool flag) const override;
    QStringList gCodeUninitChan1(int* block) const override;
    QStringList gCodeUninitChan2(int* block) const override;
};
