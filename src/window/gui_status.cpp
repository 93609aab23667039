#include "gui.h"

#include "contour.h"
#include "pressureunit.h"
#include "regime.h"
#include "ui_gui.h"
#include "widgets.h"

namespace {

const QColor kRest(189, 255, 180); // valid and at rest
const QColor kActive(0, 255, 128); // running

void setColours(QLabel* label, const QColor& window, const QColor& text)
{
    QPalette colours = label->palette();
    colours.setColor(QPalette::Window, window);
    colours.setColor(QPalette::WindowText, text);
    label->setPalette(colours);
    label->setAutoFillBackground(true);
}

void setWindowColour(QLabel* label, const QColor& window)
{
    setColours(label, window, label->palette().color(QPalette::Active, QPalette::WindowText));
}

void showConnection(QLabel* label, bool connected)
{
    if (connected)
        setColours(label, QColor(Qt::green), Qt::black);
    else
        setColours(label, QColor(Qt::red), Qt::white);
}

struct ChannelState
{
    const char* text;
    const char* line; // journal, %1 is the channel; null for none
};

// By the state word; 0 stands for everything unknown.
const ChannelState kChannelStates[] = {
    {"неопределено\n(%1)", "[A]Канал %1: состояние неопределено - ошибка связи"},
    {"бездействие", "[I]Канал %1: бездействие"},
    {"готов", "[I]Канал %1: готовность"},
    {"выполнение", "[C]Канал %1: выполнение автоматической программы"},
    {"резервное", nullptr},
    {"резервное", nullptr},
    {"ошибка", "[A]Канал %1: ошибка в канале"},
    {"резервное", nullptr},
    {"сброс", "[I]Канал %1: сброс состояния канала"},
    {"загрузка\nпрограммы", "[I]Канал %1: загрузка программы"},
    {"cancel distance to go\nPreparation", nullptr},
    {"cancel distance to go\nRunning", nullptr},
    {"готовность", "[I]Канал %1: готовность к старту программы"},
    {"ожидание\nпродолжения", "[I]Канал %1: готовность к продолжению программы"},
};

constexpr uint kAbnormalEnd = 0xFFFFFFFF; // reported in the place of a regime

QString regimeText(uint number)
{
    switch (number) {
    case regime::Setup:
        return QStringLiteral("Режим наладки");
    case regime::Manual:
        return QStringLiteral("Ручной режим");
    case kAbnormalEnd:
        return QStringLiteral("Аварийное завершение");
    }
    return number < regime::Count ? regime::name(regime::Number(number)) : QStringLiteral("Wrong mode");
}

QString regimeLine(regime::Number number)
{
    switch (number) {
    case regime::Setup:
        return QStringLiteral("[I]Выполнено переключение в Наладочный режим работы вакуумной системы");
    case regime::Manual:
        return QStringLiteral("[I]Выполнено переключение в Ручной режим работы вакуумной системы");
    default:
        return QStringLiteral("[I]Запущен алгоритм '%1' вакуумной системы").arg(regime::name(number));
    }
}

template <typename T, std::size_t N>
constexpr uint count(const T (&)[N])
{
    return uint(N);
}

void drawChannelState(Gui* gui, int channel, PoLabel* label, uint state)
{
    const bool known = state > 0 && state < count(kChannelStates);
    const ChannelState& shown = kChannelStates[known ? state : 0];
    const QString text = QString::fromUtf8(shown.text);
    label->setText(known ? text : text.arg(state));
    setWindowColour(label, state == DriveStatus::channelRuns ? kActive : kRest);
    if (shown.line)
        gui->prgMessage(QString::fromUtf8(shown.line).arg(channel), true);
}

void drawChannelMode(PoLabel* label, uint mode)
{
    switch (mode) {
    case 1:
        label->setText(QStringLiteral("ручной"));
        break;
    case 4:
        label->setText(QStringLiteral("MDI"));
        break;
    case 5:
        label->setText(QStringLiteral("автомат"));
        break;
    case 14:
        label->setText(QStringLiteral("WCS"));
        break;
    default:
        label->setText(QString::number(mode));
    }
}

} // namespace

void Gui::onChangedCNCConnected(bool connected)
{
    showConnection(ui->lblCNC, connected);
}

void Gui::onChangedKVSConnected(bool connected)
{
    showConnection(ui->lblKVS, connected);
}

void Gui::onChangedKVKConnected(bool connected)
{
    showConnection(ui->lblKVK, connected);
}

void Gui::onChangedELAConnected(bool connected)
{
    showConnection(ui->lblELA, connected);
}

void Gui::onChangedChannelState1(uint state)
{
    drawChannelState(this, 1, ui->channel1State, state);
    m_interlocks->setChannel1State(state);
}

void Gui::onChangedChannelState2(uint state)
{
    drawChannelState(this, 2, ui->channel2State, state);
}

void Gui::onChangedChannelState3(uint state)
{
    drawChannelState(this, 3, ui->channel3State, state);
}

void Gui::onChangedChannelMode1(uint mode)
{
    drawChannelMode(ui->channel1Mode, mode);
}

void Gui::onChangedChannelMode2(uint mode)
{
    drawChannelMode(ui->channel2Mode, mode);
}

void Gui::onChangedChannelMode3(uint mode)
{
    drawChannelMode(ui->channel3Mode, mode);
}

void Gui::onChangedStateVirtual(uint value)
{
    for (VirtualAxis* axis : {m_x, m_z, m_phi})
        axis->setState(value);
}

void Gui::VirtualAxisStateChanged(uint state)
{
    for (VirtualAxis* axis : {m_x, m_z, m_phi})
        axis->showState(state);
}

void Gui::changedMode(uint value)
{
    ui->lblVacuumState->setText(regimeText(value));
    if (value == regime::Setup)
        setColours(ui->lblVacuumState, QColor(255, 128, 128), Qt::white);
    else
        setColours(ui->lblVacuumState, kRest, Qt::black);
    if (value < regime::Count)
        prgMessage(regimeLine(regime::Number(value)), true);
}

void Gui::changedModeTime(uint value)
{
    m_modeTime = value;
    const auto two = [](uint number) { return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0')); };
    ui->lblVacuumTime->setText(
        QStringLiteral("%1:%2:%3").arg(two(value / 3600), two(value / 60 % 60), two(value % 60)));
    setWindowColour(ui->lblVacuumTime, value ? kActive : kRest);
}

void Gui::changedModeState(uint state)
{
    switch (state) {
    case 1:
        ui->lblVacuumActive->setText(QStringLiteral("Выполняется"));
        setWindowColour(ui->lblVacuumActive, kActive);
        break;
    case 2:
        ui->lblVacuumActive->setText(QStringLiteral("Выполнен"));
        setWindowColour(ui->lblVacuumActive, kActive);
        prgMessage(
            QStringLiteral("[I]Автоматический алгоритм выполнен, время выполнения - %1 минут %2 секунд")
                .arg(m_modeTime / 60)
                .arg(m_modeTime % 60),
            true);
        break;
    default:
        ui->lblVacuumActive->setText(QStringLiteral("Не запущен"));
        setWindowColour(ui->lblVacuumActive, kRest);
    }
}

void Gui::onChangedChamberPressure(double value)
{
    ui->VacuumChamber->setValue(float(value), 5);
}

void Gui::onChangedGunPressure(float value)
{
    ui->VacuumGun->setValue(value, 5);
}

void Gui::onChangedChamberValid(bool valid)
{
    setWindowColour(ui->VacuumChamber, valid ? kRest : invalidGround);
}

void Gui::onChangedGunValid(int valid)
{
    setWindowColour(ui->VacuumGun, valid ? kRest : invalidGround);
}

void Gui::onChangedPressUnit(bool unit)
{
    const float chamber = ui->VacuumChamber->value();
    const float gun = ui->VacuumGun->value();
    for (PoLabel* label : {ui->VacuumChamber, ui->VacuumGun})
        label->setCoeff(pressureScale(unit));
    ui->lblVacuumChamber->setText(QStringLiteral("Камера, ") + pressureUnit(unit));
    ui->lblVacuumGun->setText(QStringLiteral("Пушка, ") + pressureUnit(unit));
    if (ui->VacuumChamber->told())
        onChangedChamberPressure(double(chamber));
    if (ui->VacuumGun->told())
        onChangedGunPressure(gun);
}

// The vacuum panel may ask for it; the console leaves the decision to the operator.
void Gui::onTurnSystemOff(bool) {}

void Gui::setProgramName(const QString& path, bool withoutCurrent)
{
    const QStringList parts = path.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    m_programName = parts.isEmpty() ? QString() : parts.last();
    ui->lblContour->setText(withoutCurrent ? m_programName + QStringLiteral(" (без управления током)")
                                           : m_programName);
    setWindowColour(ui->lblContour, QColor(withoutCurrent ? Qt::red : Qt::blue));
}
