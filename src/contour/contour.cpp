#include "contour.h"

#include "consolehost.h"
#include "contourkeeper.h"
#include "drivecomm.h"
#include "programtab.h"
#include "schema.h"
#include "site.h"
#include "storedspeed.h"
#include "ui_contour.h"

#include <QHeaderView>
#include <QSettings>
#include <QSignalBlocker>
#include <QStyledItemDelegate>

#include <cmath>

namespace {

const QString settingsFile = QStringLiteral("/home/oper/bin/settings.ini");

struct TechWidth
{
    int column;
    const char* key;
};
constexpr TechWidth techWidths[] = {
    {0, "Contour/Width_S"},  {1, "Contour/Width_Ir"},   {2, "Contour/Width_If"}, {3, "Contour/Width_Ix"},
    {4, "Contour/Width_Iy"}, {5, "Contour/Width_Rate"}, {6, "Contour/Width_TR"},
};

constexpr int defaultContourWidth = 100;
constexpr int defaultTechWidth = 80;
constexpr int rasterColumn = 6;
constexpr int leastLetters = 16; // px

const char* const tabLook =
    "QTabBar::tab { min-width: 60px; height: 48px; padding: 0px 9px; margin-right: 2px; background: #d3d8e4;"
    " color: black; border: 1px solid #8792ac; border-bottom: none; border-top-left-radius: 6px;"
    " border-top-right-radius: 6px; }"
    "QTabBar::tab:selected { background: #3c4a6b; color: white; }"
    "QTabBar::tab:disabled { background: #e6e6e6; color: #8c8c8c; }";

const char* const tableLook =
    "QTableWidget { font-size: 13pt; gridline-color: #a9b2c6;"
    " background: white; color: black; selection-background-color: #00d6ff; selection-color: black; }"
    "QHeaderView { background: #e9ecf3; border: none; }"
    "QHeaderView::section { background: #d3d8e4; color: black; padding: 0px 1px; border: none;"
    " border-right: 1px solid #8792ac; border-bottom: 1px solid #8792ac; }"
    "QPlainTextEdit { background: white; color: black; }"
    "QScrollBar:vertical { width: 34px; background: #dfe3ec; border: none; }"
    "QScrollBar::handle:vertical { background: #8792ac; min-height: 60px; border-radius: 6px; margin: 2px "
    "4px; }"
    "QScrollBar:horizontal { height: 34px; background: #dfe3ec; border: none; }"
    "QScrollBar::handle:horizontal { background: #8792ac; min-width: 60px; border-radius: 6px; margin: 4px "
    "2px; }"
    "QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; border: none; background: none; }"
    "QScrollBar::add-page, QScrollBar::sub-page { background: none; }";

// Numbers stand with their points below one another and never lose a digit: what does not fit its column
// is drawn narrower.
class CellDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        bool isNumber = false;
        option->text.toFloat(&isNumber);
        if (!(option->displayAlignment & Qt::AlignVertical_Mask))
            option->displayAlignment |= Qt::AlignVCenter;
        if (!isNumber) {
            makeLegible(option);
            return;
        }
        option->displayAlignment = Qt::AlignRight | Qt::AlignVCenter;
        const int room = option->rect.width() - 8;
        const int needed = QFontMetrics(option->font).horizontalAdvance(option->text);
        if (room > 0 && needed > room) {
            option->font.setStretch(qMax(50, 100 * room / needed));
            option->fontMetrics = QFontMetrics(option->font);
        }
    }

private:
    // What describes a frame or a raster in small letters is drawn as large as the room in its cell allows
    // and never too small for a look from the machine: rather narrower than cut off.
    static void makeLegible(QStyleOptionViewItem* option)
    {
        const QSize room = option->rect.size() - QSize(8, 0);
        if (room.width() <= 0 || QFontInfo(option->font).pixelSize() >= leastLetters)
            return;
        option->font.setPixelSize(leastLetters);
        for (int stretch = 100; stretch >= 50; stretch -= 5) {
            option->font.setStretch(stretch);
            option->fontMetrics = QFontMetrics(option->font);
            const QRect needed =
                option->fontMetrics.boundingRect(QRect(QPoint(), room), Qt::TextWordWrap, option->text);
            if (needed.width() <= room.width() && needed.height() <= room.height())
                break;
        }
    }
};

// A number from the settings file, which anyone may have edited.
float storedNumber(const QSettings& settings, const char* key, float fallback)
{
    const float number = settings.value(QLatin1String(key), fallback).toFloat();
    return std::isfinite(number) ? number : fallback;
}

// A stored width that would hide the column, or push the others off the screen, is not taken over.
int sensibleWidth(const QVariant& stored, int fallback)
{
    const int width = stored.toInt();
    return width >= 40 && width <= 1000 ? width : fallback;
}

} // namespace

CONTOUR::CONTOUR(QWidget* parent)
    : QTabWidget(parent)
    , ui(std::make_unique<Ui::CONTOUR>())
    , m_contourDir(site().programDir().mid(site().root.length()) + QStringLiteral("/contours/"))
{
    ui->setupUi(this);
    m_programs = {new ProgramTab(1, ui->teGcode, ui->lbProgName1, this),
                  new ProgramTab(2, ui->teGcode_2, ui->lbProgName2, this),
                  new ProgramTab(3, ui->teGcode_3, ui->lbProgName3, this)};
    for (const ProgramTab* tab : m_programs) {
        connect(tab, &ProgramTab::message, this, &CONTOUR::message);
        connect(tab, &ProgramTab::command, this, &CONTOUR::command);
    }
    ui->frmRotate->hide();
    ui->nrings->setValue(1, 0);
    dress();
    loadSettings();
    const QHeaderView* header = ui->twTechTab->horizontalHeader();
    connect(header, &QHeaderView::geometriesChanged, this, &CONTOUR::fitRasterColumn);
    connect(header, &QHeaderView::sectionResized, this, [this](int column, int, int width) {
        if (m_fitting)
            return;
        if (column == rasterColumn)
            m_rasterWidth = width;
        fitRasterColumn();
    });
    fitRasterColumn();
    connect(ui->twContour, &QTableWidget::cellClicked, this, &CONTOUR::onContourCellClicked);
    connect(ui->twTechTab, &QTableWidget::cellClicked, this, &CONTOUR::onTechTabCellClicked);
    connect(ui->twTechTab, &QTableWidget::currentCellChanged, this, [this] { updateTechTab(); });
    updateEnables();
    updateTechTab();
    const QString kept = m_contourDir + QStringLiteral("contour");
    load(QStringLiteral("contour"), kept);
    m_keeper = new ContourKeeper(
        kept + QStringLiteral(".save"), [this] { return m_schema ? contourText(m_programName) : QString(); },
        this);
    m_keeper->taken();
    m_keeper->watch(ui->twContour->model());
    m_keeper->watch(ui->twTechTab->model());
    connect(m_keeper, &ContourKeeper::message, this, &CONTOUR::message);
}

CONTOUR::~CONTOUR()
{
    // The window above is half gone: nobody may hear of this.
    const QSignalBlocker quiet(this);
    keepForNextStart();
}

void CONTOUR::keepForNextStart()
{
    saveSettings();
    if (m_schema)
        saveColumnWidths();
    m_keeper->keep();
}

void CONTOUR::dress()
{
    for (QPushButton* start : {ui->pbGcode, ui->pbRun, ui->pbRun_2, ui->pbRun_3})
        takeOneTouch(start, [this] { return m_startUnanswered; });
    tabBar()->setFocusPolicy(Qt::NoFocus);
    tabBar()->setStyleSheet(QLatin1String(tabLook));
    for (QAbstractScrollArea* area : findChildren<QAbstractScrollArea*>()) {
        if (!qobject_cast<QHeaderView*>(area))
            area->setStyleSheet(QLatin1String(tableLook));
    }
    for (QTableWidget* table : {ui->twContour, ui->twTechTab}) {
        table->setItemDelegate(new CellDelegate(table));
        QPalette palette = table->palette();
        palette.setColor(QPalette::AlternateBase, QColor(0xe3, 0xe8, 0xf4));
        table->setPalette(palette);
        QFont font = table->font();
        font.setPointSize(12);
        font.setStretch(QFont::SemiCondensed);
        table->horizontalHeader()->setFont(font);
    }
}

// The raster column takes the room that the others leave, but never less than its own width.
void CONTOUR::fitRasterColumn()
{
    QHeaderView* header = ui->twTechTab->horizontalHeader();
    int others = 0;
    for (int column = 0; column < rasterColumn; ++column)
        others += header->sectionSize(column); // 0 for a hidden one
    const int room = ui->twTechTab->viewport()->width() - others;
    const int width = qMax(room, m_rasterWidth);
    if (header->sectionSize(rasterColumn) == width)
        return;
    m_fitting = true;
    header->resizeSection(rasterColumn, width);
    m_fitting = false;
}

void CONTOUR::init(Schema* schema)
{
    if (m_schema)
        saveColumnWidths();
    m_schema.reset(schema);
    Q_ASSERT(m_schema);
    m_weld = WeldStage(); // a weld that stopped on the former contour does not go on here

    m_closed = false;
    m_moveForward = true;

    QStringList headers = m_schema->axisNames();
    const int axes = headers.size();
    if (isXYZ())
        headers << QStringLiteral("Параметры");
    ui->twContour->clear();
    ui->twContour->setRowCount(0);
    ui->twContour->setColumnCount(headers.size());
    ui->twContour->setHorizontalHeaderLabels(headers);
    ui->twContour->horizontalHeader()->setStretchLastSection(isXYZ());
    QSettings settings(site().path(settingsFile), QSettings::IniFormat);
    for (int column = 0; column < axes; ++column) {
        const QVariant stored = settings.value(widthKey(headers[column]), defaultContourWidth);
        ui->twContour->setColumnWidth(column, sensibleWidth(stored, defaultContourWidth));
    }
    setCurrentPoint(-1);
    resetTechTable();

    ui->frmRotate->setVisible(m_schema->rotate());
    updateHeader();
    // Not so "Вставить точку": it needs the drives as well, and follows their rule with the other buttons.
    ui->pbTemplate->setEnabled(true);
    ui->pbSave->setEnabled(true);
    ui->pbSave_2->setEnabled(true);
    updateAfterEdit();
    updateTechTab();
}

// The rows tell of their changes themselves.
void CONTOUR::edited()
{
    if (m_keeper)
        m_keeper->edited();
}

bool CONTOUR::isXYZ() const
{
    return m_schema && !m_schema->circle() && !m_schema->rotate();
}

ConsoleHost* CONTOUR::host() const
{
    return ConsoleHost::of(this);
}

void CONTOUR::setProgramName(const QString& name)
{
    m_programName = name;
    edited();
    if (ConsoleHost* window = host())
        window->setProgramName(name, m_testMode);
}

// --- settings ---

QString CONTOUR::widthKey(const QString& axis) const
{
    return QStringLiteral("Contour/Width_%1_%2").arg(m_schema->axisNames().join(QString()), axis);
}

void CONTOUR::saveColumnWidths() const
{
    QSettings settings(site().path(settingsFile), QSettings::IniFormat);
    const QStringList names = m_schema->axisNames();
    for (int column = 0; column < names.size(); ++column)
        settings.setValue(widthKey(names[column]), ui->twContour->columnWidth(column));
}

void CONTOUR::loadSettings()
{
    const QSettings settings(site().path(settingsFile), QSettings::IniFormat);
    m_focusOn = settings.value(QStringLiteral("Contour/FocusOn"), false).toBool();
    m_yokeXOn = settings.value(QStringLiteral("Contour/YokeXOn"), false).toBool();
    m_yokeYOn = settings.value(QStringLiteral("Contour/YokeYOn"), false).toBool();
    m_defaultIf = storedNumber(settings, "Contour/If", 700);
    m_defaultIx = storedNumber(settings, "Contour/Ix", 0);
    m_defaultIy = storedNumber(settings, "Contour/Iy", 0);
    ui->contourSpeed->setValue(storedSpeed(storedNumber(settings, "Contour/contourSpeed", 0), maxSpeed), 1);
    ui->weldSpeed->setValue(storedSpeed(storedNumber(settings, "Contour/weldSpeed", 0), maxSpeed), 1);
    for (const TechWidth& width : techWidths) {
        const QVariant stored = settings.value(QLatin1String(width.key), defaultTechWidth);
        ui->twTechTab->setColumnWidth(width.column, sensibleWidth(stored, defaultTechWidth));
    }
    m_rasterWidth = ui->twTechTab->columnWidth(rasterColumn);
    ui->twTechTab->setColumnHidden(2, !m_focusOn);
    ui->twTechTab->setColumnHidden(3, !m_yokeXOn);
    ui->twTechTab->setColumnHidden(4, !m_yokeYOn);
    setCurrentIndex(qBound(0, settings.value(QStringLiteral("Contour/Tab"), 0).toInt(), count() - 1));
}

void CONTOUR::saveSettings() const
{
    QSettings settings(site().path(settingsFile), QSettings::IniFormat);
    settings.setValue(QStringLiteral("Contour/FocusOn"), m_focusOn);
    settings.setValue(QStringLiteral("Contour/YokeXOn"), m_yokeXOn);
    settings.setValue(QStringLiteral("Contour/YokeYOn"), m_yokeYOn);
    settings.setValue(QStringLiteral("Contour/If"), double(m_defaultIf));
    settings.setValue(QStringLiteral("Contour/Ix"), double(m_defaultIx));
    settings.setValue(QStringLiteral("Contour/Iy"), double(m_defaultIy));
    settings.setValue(QStringLiteral("Contour/contourSpeed"), double(ui->contourSpeed->value()));
    settings.setValue(QStringLiteral("Contour/weldSpeed"), double(ui->weldSpeed->value()));
    for (const TechWidth& width : techWidths) {
        if (width.column == rasterColumn)
            settings.setValue(QLatin1String(width.key), m_rasterWidth);
        else if (!ui->twTechTab->isColumnHidden(width.column))
            settings.setValue(QLatin1String(width.key), ui->twTechTab->columnWidth(width.column));
    }
    settings.setValue(QStringLiteral("Contour/Tab"), currentIndex());
}

// --- what the machine reports ---

void CONTOUR::onDriveState(bool on)
{
    m_driveOn = on;
    updateEnables();
}

void CONTOUR::onVirtualMode(bool on)
{
    m_virtualMode = on;
    updateEnables();
}

void CONTOUR::onChannel1State(unsigned int state)
{
    m_ch1State = state;
    m_startUnanswered = false;
    updateEnables();
}

void CONTOUR::onChannel2State(unsigned int state)
{
    m_ch2State = state;
    m_startUnanswered = false;
}

void CONTOUR::onChannel3State(unsigned int state)
{
    m_ch3State = state;
    m_startUnanswered = false;
}

void CONTOUR::onAxisMoving(bool moving)
{
    m_axisMoving = moving;
}

void CONTOUR::onChangedPointNo(unsigned int n)
{
    if (n < static_cast<unsigned int>(ui->twContour->rowCount())) {
        setCurrentPoint(static_cast<int>(n));
        updateEnables();
    }
}

void CONTOUR::onCoordsChanged()
{
    updateGcode();
}

void CONTOUR::onUserChanged(int group)
{
    // After a cancelled change of user the group is -1, and the wider rights stay as elsewhere in the
    // console.
    const bool mayEditPrograms = group < 2;
    for (int tab = indexOf(ui->channel01); tab <= indexOf(ui->channel03); ++tab)
        setTabEnabled(tab, mayEditPrograms);
    if (!mayEditPrograms)
        setCurrentIndex(0);
}

// --- enable rules ---

void CONTOUR::updateEnables()
{
    updateNew();
    updateIns();
    updateCorr();
    updateCorrNgo();
    updateDel();
    updateRing();
    updateGcode();
}

bool CONTOUR::channel1Runs() const
{
    return m_ch1State == DriveStatus::channelRuns;
}

void CONTOUR::updateNew()
{
    ui->pbNew->setEnabled(!channel1Runs());
}

void CONTOUR::updateIns()
{
    ui->pbIns->setEnabled(!channel1Runs() && m_driveOn && m_virtualMode && m_schema);
}

void CONTOUR::updateCorr()
{
    ui->pbCorr->setEnabled(!channel1Runs() && m_driveOn && m_virtualMode && m_currentPoint >= 0);
}

void CONTOUR::updateCorrNgo()
{
    ui->pbCorrNgo->setEnabled(!channel1Runs() && m_driveOn && m_virtualMode && m_currentPoint >= 0);
}

void CONTOUR::updateDel()
{
    const bool enabled = !channel1Runs() && ui->twContour->rowCount() > 0;
    ui->pbDel->setEnabled(enabled);
    ui->pbInverse->setEnabled(enabled);
}

void CONTOUR::updateRing()
{
    QString text = QStringLiteral("Замкнуть\nконтур");
    if (m_closed && !isXYZ())
        text = QStringLiteral("Контур\nзамкнут");
    else if (m_closed)
        text = m_closedForward ? QStringLiteral("Замкнут\nпрямым\nходом")
                               : QStringLiteral("Замкнут\nобратным\nходом");
    ui->pbRing->setText(text);
    ui->pbRing->setEnabled(!channel1Runs() && ui->twContour->rowCount() > 1);
    ui->frmRings->setEnabled(m_closed);
}

// The start buttons stay enabled wherever the machine stands: the operator places it.
void CONTOUR::updateGcode()
{
    const bool goOn = m_weld.stopsSeen >= m_weld.stage && !channel1Runs();
    const QString text = goOn ? QStringLiteral("ДАЛЕЕ") : QStringLiteral("ПУСК");
    if (ui->pbGcode->text() != text)
        ui->pbGcode->setText(text);
}
