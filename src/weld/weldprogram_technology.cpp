#include "weldprogram.h"

#include "programwriter.h"
#include "ringmove.h"
#include "schema.h"
#include "weldgeometry.h"

#include <cmath>

namespace {

// The weld channel: the beam follows the path by time alone, so every stretch of the table becomes a ramp
// or a pause that lasts as long as the motion over it.
class TechnologyBuilder
{
public:
    explicit TechnologyBuilder(const WeldTables& tables)
        : m_contour(tables.contour)
        , m_tech(tables.tech)
        , m_out(3, &m_block)
        , m_first(m_tech.value(0))
    {}

    QString build()
    {
        head();
        TechRow before = m_first;
        before.path = 0;
        for (int i = 1; i < m_tech.size(); ++i) {
            const TechRow& row = m_tech[i];
            if (row.on) {
                stretch(before, row);
                raster(row.raster);
                before = row;
            } else if (row.stop) {
                stop();
            }
        }
        for (const char* statement : {"G0 IR=0.0", "G4 F1.0", "RAX(IR)", "RAX(IW)", "M30"})
            m_out.block(statement);
        return m_out.text();
    }

private:
    void head();
    void stretch(const TechRow& before, const TechRow& row);
    void raster(const Raster& raster);
    void stop();

    const WeldContour& m_contour;
    const QVector<TechRow>& m_tech;
    int m_block = 2;
    ProgramWriter m_out;
    TechRow m_first;
    int m_variables = 0;
    int m_stopEvent = 4; // each stop takes two events
};

QString beam(float Ir)
{
    return "IR=" + ncFixed(double(Ir), 1);
}

QString focus(float If)
{
    return "IW=" + ncFixed(double(If), 0);
}

QString general(float value)
{
    return QString::number(double(value), 'g', 6);
}

void TechnologyBuilder::head()
{
    for (const QString& statement :
         {QString("GAX(IR)"), QString("GAX(IW)"), QString("G0 IR=0.0"), "G0 " + focus(m_first.If),
          QString("REV(ALL)"), QString("WAIT"), QString("G4 F0.5"), QString("SEV(3)"), QString("WAIT"),
          QString("WEV(1)"), QString("WAIT"), "G0 " + beam(m_first.Ir)})
        m_out.block(statement);
    raster(m_first.raster);
}

void TechnologyBuilder::stretch(const TechRow& before, const TechRow& row)
{
    const double speed = double(before.speed);
    const double way = std::fabs(double(row.path) - double(before.path));
    const double minutes = way / speed;
    // No stretch without length; and none at speed 0, which nothing ever passes through.
    if (!std::isfinite(minutes) || minutes == 0)
        return;

    if (row.If == before.If && row.Ir == before.Ir) {
        double pause = minutes;
        if (m_contour.schema->round() && row.Ir == 0.0f) {
            const double length = double(m_contour.length);
            pause = (way - passesLeftOut(way, length) * length) / speed;
        }
        m_out.block("G4 F" + feedText(60 * pause));
        return;
    }
    const double rate = std::hypot((double(row.Ir) - double(before.Ir)) / minutes,
                                   (double(row.If) - double(before.If)) / minutes);
    m_out.block("G90 G01 " + beam(row.Ir) + ' ' + focus(row.If) + " F" + feedText(rate));
}

void TechnologyBuilder::raster(const Raster& raster)
{
    if (raster.kind == Raster::Keep)
        return;
    m_out.wait();
    const auto set = [this](const char* name, const QString& value) {
        m_out.variable(++m_variables, QLatin1String(name), value);
    };
    if (raster.kind == Raster::On) {
        set("RASTERTYPE%", QString::number(raster.type));
        set("RASTERAMPX", general(raster.ampX));
        set("RASTERAMPY", general(raster.ampY));
        set("RASTERANGLE", QString::number(raster.angle));
        set("RASTERFREQ", QString::number(raster.freq));
        set("RASTERSHIFTX", general(raster.shiftX));
        set("RASTERSHIFTY", general(raster.shiftY));
        set("RASTERPARAM", general(raster.param));
        set("RASTERCW%", QString::number(raster.cw));
    }
    set("RASTERON%", raster.kind == Raster::On ? "1" : "0");
}

// The beam stays as it is until the motion channels come back from the operator's pause. On a ring the
// first event of the pair belongs to channels 1 and 2.
void TechnologyBuilder::stop()
{
    if (m_contour.schema->circle())
        m_out.block(QString("WEV(%1)").arg(m_stopEvent + 1));
    else
        m_out.block(QString("WREV(%1)").arg(m_stopEvent));
    m_out.block("WAIT");
    m_stopEvent += 2;
}

} // namespace

QString technologyProgram(const WeldTables& tables)
{
    return TechnologyBuilder(tables).build();
}
