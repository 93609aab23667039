#include "fixedmove.h"

#include "axisprogram.h"
#include "drivecomm.h"
#include "framed.h"
#include "numpad.h"
#include "programfile.h"
#include "settings.h"
#include "ui_fixedmove.h"

#include <QTextStream>

#include <cmath>

namespace {

constexpr int decimals = 2;
constexpr unsigned int channelReady = 1;

// The controller opens the program under the same path.
const QString programPath = QStringLiteral("/programs/_fixed.npg");

// In the stream's form: six significant digits.
QString streamed(float value)
{
    QString text;
    QTextStream(&text) << value;
    return text;
}

} // namespace

FixedMove::FixedMove(const QString& name, const QString& unit, DriveTCPthread* drive, int speed, int channel,
                     QWidget* parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::FixedMove>())
    , m_name(name)
    , m_unit(unit)
    , m_drive(drive)
    , m_speed(speed)
    , m_channel(channel)
{
    m_ui->setupUi(this);
    m_ui->lblUnit->setText(unit);

    const Settings settings;
    const bool absolute = settings.value(m_name + QStringLiteral("/FM_Absolute"), true).toBool();
    (absolute ? m_ui->rbAbsolute : m_ui->rbRelative)->setChecked(true);
    setCoord(0);
    setCoord(settings.value(m_name + QStringLiteral("/FM_Coord"), 0).toDouble());

    frameBelow(parent, QStringLiteral("Фикс. перемещение - ось ") + name, this);
}

FixedMove::~FixedMove()
{
    Settings settings;
    settings.setValue(m_name + QStringLiteral("/FM_Absolute"), m_ui->rbAbsolute->isChecked());
    settings.setValue(m_name + QStringLiteral("/FM_Coord"), double(m_ui->lblCoord->value()));
    emit message(QStringLiteral("[I]Закрыто окно фиксированного перемещения по оси ") + m_name, false);
}

void FixedMove::onDriveState(bool on)
{
    m_ui->pbStart->setEnabled(on);
}

void FixedMove::onChannelState(unsigned int state)
{
    m_ui->pbStart->setEnabled(state == channelReady);
}

void FixedMove::on_lblCoord_clicked()
{
    Numpad numpad(QStringLiteral("Координата"), m_ui->lblCoord, 0, false, false, false);
    if (numpad.exec() == QDialog::Accepted)
        setCoord(numpad.value());
}

void FixedMove::setCoord(double value)
{
    // What is no number, or none in single precision, must not reach a program.
    if (std::isfinite(float(value)))
        m_ui->lblCoord->setValue(float(value), decimals);
}

void FixedMove::on_pbStart_clicked()
{
    const bool absolute = m_ui->rbAbsolute->isChecked();
    const auto trouble = writeProgramFile(programPath, axisProgram(m_channel, m_name, absolute,
                                                                   streamed(m_ui->lblCoord->value()),
                                                                   QString::number(m_speed)));
    if (!trouble)
        m_drive->command(startCommand(m_channel, programPath));

    const double value = double(m_ui->lblCoord->value());
    // The journal tells of the press, also when the program could not be written.
    if (absolute)
        emit message(QStringLiteral("[C]Запущено фиксированное перемещение по оси %1 в координату %2")
                         .arg(m_name)
                         .arg(value),
                     true);
    else
        emit message(QStringLiteral("[C]Запущено фиксированное перемещение по оси %1 на %2 %3")
                         .arg(m_name)
                         .arg(value)
                         .arg(m_unit),
                     true);
    if (trouble)
        emit message(*trouble, true);
    reject();
}
