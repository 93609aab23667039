#include "contour.h"

#include "consolehost.h"
#include "contourkeeper.h"
#include "programtab.h"
#include "schema.h"
#include "settings.h"
#include "site.h"
#include "storedspeed.h"
#include "ui_contour.h"
#include "usergroup.h"
#include "weldlook.h"
#include "weldstart.h"

#include <QSignalBlocker>

namespace {

constexpr int defaultContourWidth = 100;
constexpr int defaultTechWidth = 80;

std::unique_ptr<Ui::CONTOUR> formOf(CONTOUR* panel)
{
    auto form = std::make_unique<Ui::CONTOUR>();
    form->setupUi(panel);
    return form;
}

} // namespace

CONTOUR::CONTOUR(QWidget* parent)
    : QTabWidget(parent)
    , ui(formOf(this))
    , m_points(ui->twContour)
    , m_tech(ui->twTechTab)
    , m_contourDir(site().programDir().mid(site().root.length()) + QStringLiteral("/contours/"))
{
    m_programs = {new ProgramTab(1, ui->teGcode, ui->lbProgName1, this),
                  new ProgramTab(2, ui->teGcode_2, ui->lbProgName2, this),
                  new ProgramTab(3, ui->teGcode_3, ui->lbProgName3, this)};
    for (const ProgramTab* tab : m_programs) {
        connect(tab, &ProgramTab::message, this, &CONTOUR::message);
        connect(tab, &ProgramTab::command, this, &CONTOUR::command);
    }
    m_start = new WeldStart(m_programs, this);
    connect(m_start, &WeldStart::message, this, &CONTOUR::message);
    ui->frmRotate->hide();
    ui->nrings->setValue(1, 0);
    for (QPushButton* start : {ui->pbGcode, ui->pbRun, ui->pbRun_2, ui->pbRun_3})
        takeOneTouch(start, [this] { return m_machine.startUnanswered; });
    dressWeldPanel(this);
    loadSettings();
    m_rasterColumn = new FittedColumn(ui->twTechTab, TechTable::RasterCell);
    connect(ui->twContour, &QTableWidget::cellClicked, this, &CONTOUR::onContourCellClicked);
    connect(ui->twTechTab, &QTableWidget::cellClicked, this, &CONTOUR::onTechTabCellClicked);
    connect(ui->twTechTab, &QTableWidget::currentCellChanged, this, [this] { updateTechTab(); });
    updateEnables();
    updateTechTab();
    const QString kept = m_contourDir + QStringLiteral("contour");
    load(QStringLiteral("contour"), kept);
    m_keeper = new ContourKeeper(
        kept + QStringLiteral(".save"), [this] { return schema() ? contourText(m_programName) : QString(); },
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
    if (schema())
        saveColumnWidths();
    m_keeper->keep();
}

void CONTOUR::init(Schema* schema)
{
    if (m_points.schema())
        saveColumnWidths();
    m_points.init(std::unique_ptr<Schema>(schema));
    m_start->forget(); // a weld that stopped on the former contour does not go on here
    const Settings settings;
    restoreWidths(ui->twContour, settings, contourWidthKeys(m_points.axisNames()), defaultContourWidth);
    m_tech.reset(ui->weldSpeed->value());

    ui->frmRotate->setVisible(schema->rotate());
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

void CONTOUR::saveColumnWidths() const
{
    Settings settings;
    keepWidths(ui->twContour, settings, contourWidthKeys(m_points.axisNames()));
}

void CONTOUR::loadSettings()
{
    const Settings settings;
    TechDefaults defaults;
    defaults.focusOn = settings.value(QStringLiteral("Contour/FocusOn"), false).toBool();
    defaults.yokeXOn = settings.value(QStringLiteral("Contour/YokeXOn"), false).toBool();
    defaults.yokeYOn = settings.value(QStringLiteral("Contour/YokeYOn"), false).toBool();
    defaults.If = settings.number("Contour/If", defaults.If);
    defaults.Ix = settings.number("Contour/Ix", defaults.Ix);
    defaults.Iy = settings.number("Contour/Iy", defaults.Iy);
    m_tech.setDefaults(defaults);
    ui->contourSpeed->setValue(storedSpeed(settings.number("Contour/contourSpeed", 0), maxSpeed), 1);
    ui->weldSpeed->setValue(storedSpeed(settings.number("Contour/weldSpeed", 0), maxSpeed), 1);
    restoreWidths(ui->twTechTab, settings, techWidthKeys(), defaultTechWidth);
    setCurrentIndex(qBound(0, settings.value(QStringLiteral("Contour/Tab"), 0).toInt(), count() - 1));
}

void CONTOUR::saveSettings() const
{
    Settings settings;
    const TechDefaults& defaults = m_tech.defaults();
    settings.setValue(QStringLiteral("Contour/FocusOn"), defaults.focusOn);
    settings.setValue(QStringLiteral("Contour/YokeXOn"), defaults.yokeXOn);
    settings.setValue(QStringLiteral("Contour/YokeYOn"), defaults.yokeYOn);
    settings.setValue(QStringLiteral("Contour/If"), double(defaults.If));
    settings.setValue(QStringLiteral("Contour/Ix"), double(defaults.Ix));
    settings.setValue(QStringLiteral("Contour/Iy"), double(defaults.Iy));
    settings.setValue(QStringLiteral("Contour/contourSpeed"), double(ui->contourSpeed->value()));
    settings.setValue(QStringLiteral("Contour/weldSpeed"), double(ui->weldSpeed->value()));
    keepWidths(ui->twTechTab, settings, techWidthKeys());
    settings.setValue(techWidthKeys().last(), m_rasterColumn->ownWidth());
    settings.setValue(QStringLiteral("Contour/Tab"), currentIndex());
}

// --- what the machine reports ---

void CONTOUR::onDriveState(bool on)
{
    m_machine.drivesOn = on;
    updateEnables();
}

void CONTOUR::onVirtualMode(bool on)
{
    m_machine.virtualMode = on;
    updateEnables();
}

void CONTOUR::onChannel1State(unsigned int state)
{
    m_machine.channelTold(1, state);
    updateEnables();
}

void CONTOUR::onChannel2State(unsigned int state)
{
    m_machine.channelTold(2, state);
}

void CONTOUR::onChannel3State(unsigned int state)
{
    m_machine.channelTold(3, state);
}

void CONTOUR::onAxisMoving(bool moving)
{
    m_machine.axisMoving = moving;
}

void CONTOUR::onChangedPointNo(unsigned int n)
{
    if (n < static_cast<unsigned int>(m_points.rowCount())) {
        m_points.setCurrent(static_cast<int>(n));
        updateEnables();
    }
}

void CONTOUR::onCoordsChanged()
{
    updateGcode();
}

void CONTOUR::onUserChanged(int group)
{
    const bool mayEditPrograms = usergroup::maySetUp(group);
    for (int tab = indexOf(ui->channel01); tab <= indexOf(ui->channel03); ++tab)
        setTabEnabled(tab, mayEditPrograms);
    if (!mayEditPrograms)
        setCurrentIndex(0);
}

// --- enable rules ---

void CONTOUR::updateEnables()
{
    const bool still = !m_machine.runs(1);
    const bool canCorrect = m_machine.canTeach() && m_points.current() >= 0;
    const bool canDelete = still && m_points.rowCount() > 0;
    ui->pbNew->setEnabled(still);
    ui->pbIns->setEnabled(m_machine.canTeach() && schema());
    ui->pbCorr->setEnabled(canCorrect);
    ui->pbCorrNgo->setEnabled(canCorrect);
    ui->pbDel->setEnabled(canDelete);
    ui->pbInverse->setEnabled(canDelete);
    updateRing();
    updateGcode();
}

void CONTOUR::updateRing()
{
    QString text = QStringLiteral("Замкнуть\nконтур");
    if (m_points.closed() && !m_points.isXYZ())
        text = QStringLiteral("Контур\nзамкнут");
    else if (m_points.closed())
        text = m_points.closedForward() ? QStringLiteral("Замкнут\nпрямым\nходом")
                                        : QStringLiteral("Замкнут\nобратным\nходом");
    ui->pbRing->setText(text);
    ui->pbRing->setEnabled(!m_machine.runs(1) && m_points.rowCount() > 1);
    ui->frmRings->setEnabled(m_points.closed());
}

// The start buttons stay enabled wherever the machine stands: the operator places it.
void CONTOUR::updateGcode()
{
    const bool goOn = m_start->goesOn() && !m_machine.runs(1);
    const QString text = goOn ? QStringLiteral("ДАЛЕЕ") : QStringLiteral("ПУСК");
    if (ui->pbGcode->text() != text)
        ui->pbGcode->setText(text);
}
