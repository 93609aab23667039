#include "savedweld.h"

#include "contour.h"
#include "contourtable.h"
#include "savefile.h"
#include "schema.h"
#include "techtable.h"
#include "weldgeometry.h"

#include <QFile>
#include <QTableWidget>
#include <QTextStream>

#include <cmath>

namespace {

// The console reads whatever there is, and shows zeros for the rest. Here nobody looks at the tables, so a
// file is held to its lines: six of the head, then each table with its count in front.
QString formError(const QStringList& lines)
{
    if (lines.size() < 3 || !QStringList{"XYZ", "XYZr", "Circle"}.contains(lines[1].trimmed()))
        return QStringLiteral("это не файл контура");
    int at = 6;
    for (const char* table : {"точек", "строк технологии"}) {
        bool ok = false;
        const int rows = lines.value(at).trimmed().toInt(&ok);
        if (!ok || rows < 2 || rows > SaveFile::maxRows || at + rows >= lines.size() ||
            lines[at + rows].trimmed().isEmpty())
            return QStringLiteral("файл обрезан или повреждён: не хватает %1 (строка файла %2)")
                .arg(QLatin1String(table))
                .arg(at + 1);
        at += rows + 1;
    }
    return {};
}

} // namespace

bool readWeld(const QString& file, SavedWeld* weld, QString* error)
{
    QFile source(file);
    if (!source.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("файл не читается");
        return false;
    }
    if (source.size() > SaveFile::maxBytes) {
        *error = QStringLiteral("файл больше %1 МБ, это не контур").arg(SaveFile::maxBytes >> 20);
        return false;
    }
    QTextStream stream(source.readAll());
    const QString text = stream.readAll();
    *error = formError(text.split('\n'));
    if (!error->isEmpty())
        return false;

    SaveFile saved(text);
    const SavedHead head = readHead(saved);
    QTableWidget pointCells;
    QTableWidget techCells(0, TechTable::ColumnCount);
    ContourTable points(&pointCells);
    TechTable tech(&techCells);
    points.init(schemaOf(head));
    points.setCenter(head.centerX, head.centerY);
    tech.reset(head.weldSpeed);
    points.setClosed(head.closed, true);
    points.load(saved);
    tech.load(saved);

    weld->name = saved.programName();
    weld->schema = schemaOf(head);
    WeldContour& contour = weld->tables.contour;
    contour = points.values();
    contour.schema = weld->schema.get();
    contour.nrings = int(qBound(1.0F, head.nrings, CONTOUR::maxPasses));
    contour.length = float(passLength(contour));
    tech.setWholePath(totalLength(contour));
    weld->tables.tech = tech.rows();
    return true;
}
