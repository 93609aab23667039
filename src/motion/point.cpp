#include "point.h"

#include "axisprogram.h"
#include "drivecomm.h"
#include "filemanager.h"
#include "filewriter.h"
#include "framed.h"
#include "programfile.h"
#include "programwriter.h"
#include "settings.h"
#include "site.h"
#include "ui_point.h"

#include <QFile>
#include <QHeaderView>
#include <QTextStream>

#include <cmath>
#include <iterator>

namespace {

struct Row
{
    const char* axis;
    const char* speed; // units a minute
    int channel;
};

// The channel follows from the row alone: U1 goes out on channel 1, though its row of the window belongs to
// channel 2. So it must stay: the points of this installation have always been approached that way.
constexpr Row rows[] = {{"LX", "1200", 1}, {"LY", "1200", 1}, {"A", "180", 1}, {"B", "180", 1},
                        {"C", "360", 1},   {"D", "360", 1},   {"U1", "60", 1}, {"V", "360", 2}};
constexpr int rowCount = int(std::size(rows));

enum Column { Name, Coord };

constexpr int decimals = 2;
constexpr qint64 longestFile = 64 * 1024; // bytes; what lies beyond is not read

// The controller opens the program under the same path.
const QString programPath = QStringLiteral("/programs/_point.npg");
const QString pointDir = QStringLiteral("/points/");
const QString pointExt = QStringLiteral(".point");

struct Width
{
    Column column;
    const char* key;
    int usual; // px
};
constexpr Width widths[] = {{Name, "Point/Width_name", 120}, {Coord, "Point/Width_coord", 244}};
constexpr int headerHeight = 44; // px; the rows share the rest of the table

} // namespace

Point::Point(DriveTCPthread* drive, const QList<float>& coords, QWidget* parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::Point>())
    , m_drive(drive)
{
    m_ui->setupUi(this);
    const Settings settings;
    for (const Width& width : widths)
        m_ui->twPoint->setColumnWidth(width.column, settings.columnWidth(width.key, width.usual));
    m_ui->twPoint->verticalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    m_ui->twPoint->horizontalHeader()->setFixedHeight(headerHeight);
    m_ui->twPoint->setRowCount(rowCount);
    for (int row = 0; row < rowCount; ++row)
        setRow(row, QLatin1String(rows[row].axis), coords.value(row));
    // The selection follows a finger that slides over the table, too.
    connect(m_ui->twPoint, &QTableWidget::cellClicked, this, &Point::onTableCellClicked);
    connect(m_ui->twPoint, &QTableWidget::currentCellChanged, this, &Point::onTableCellClicked);

    frameBelow(parent, QStringLiteral("Координаты точки"), this);
}

QStringList Point::axes()
{
    QStringList names;
    for (const Row& row : rows)
        names << QLatin1String(row.axis);
    return names;
}

Point::~Point()
{
    Settings settings;
    for (const Width& width : widths)
        settings.setValue(QLatin1String(width.key), m_ui->twPoint->columnWidth(width.column));
}

void Point::setRow(int row, const QString& axis, float coord)
{
    auto* name = new QTableWidgetItem(axis);
    name->setTextAlignment(Qt::AlignCenter);
    m_ui->twPoint->setItem(row, Name, name);
    auto* number = new QTableWidgetItem(QString::number(double(coord), 'f', decimals));
    number->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_ui->twPoint->setItem(row, Coord, number);
}

void Point::onTableCellClicked(int row, int)
{
    if (row < 0 || row >= rowCount)
        return;
    m_row = row;
    m_ui->twPoint->selectRow(row);
}

void Point::on_pbOpenFile_clicked()
{
    FileManager files(this, pointDir, pointExt, true);
    if (files.exec() == QDialog::Accepted)
        loadFile(pointDir, files.name());
}

void Point::on_pbSaveFile_clicked()
{
    FileManager files(this, pointDir, pointExt, false);
    if (files.exec() == QDialog::Accepted)
        saveFile(pointDir, files.name());
}

void Point::loadFile(const QString& dir, const QString& name)
{
    QFile file(site().path(dir + name + pointExt));
    if (!file.open(QIODevice::ReadOnly))
        return;
    QTextStream stream(file.read(longestFile));
    for (int row = 0; row < rowCount; ++row) {
        QString axis;
        float coord = 0;
        stream >> axis >> coord;
        setRow(row, axis, std::isfinite(coord) ? coord : 0); // the stream takes "nan" for a number
    }
    const QLabel* label = m_ui->lblPosition;
    m_ui->lblPosition->setText(
        label->fontMetrics().elidedText(QStringLiteral("Точка ") + name, Qt::ElideMiddle, label->width()));
    emit message(QStringLiteral("[I]Выполнена загрузка точки из файла %1.point").arg(name), true);
}

void Point::saveFile(const QString& dir, const QString& name)
{
    QString text;
    for (int row = 0; row < rowCount; ++row)
        text += QLatin1String(rows[row].axis) + ' ' + m_ui->twPoint->item(row, Coord)->text() + '\n';
    if (const auto trouble = writeFile(dir + name + pointExt, text.toLocal8Bit())) {
        emit message(trouble->line, true);
        return;
    }
    emit message(QStringLiteral("[I]Положение механической системы сохранено в файле %1.point").arg(name),
                 true);
}

void Point::on_pbGoToPoint_clicked()
{
    if (m_row < 0)
        return;
    const Row& row = rows[m_row];
    const QString axis = QLatin1String(row.axis); // not the cell: a file may have spoiled it
    const float coord = m_ui->twPoint->item(m_row, Coord)->text().toFloat();
    if (const auto trouble = writeProgramFile(programPath, axisProgram(row.channel, axis, true,
                                                                       ncFixed(double(coord), decimals),
                                                                       QLatin1String(row.speed)))) {
        emit message(*trouble, true);
        return;
    }
    m_drive->command(startCommand(row.channel, programPath));
    emit message(QStringLiteral("[C]Запущено перемещение в точку %1 по оси %2").arg(double(coord)).arg(axis),
                 true);
}

void Point::on_pbStopGoPoint_clicked()
{
    m_drive->command(QStringLiteral("STOP_PRG"));
}
