#include "trselect.h"

#include "framed.h"
#include "numpad.h"
#include "touchmenu.h"
#include "ui_trselect.h"
#include "widgets.h"

#include <QCursor>
#include <QMouseEvent>

#include <cmath>

// One adjustable number: the object names of its buttons are the label's with "Minus" and "Plus".
struct TRSelect::Parameter
{
    const char* name;
    const char* padTitle;
    float minimum;
    float maximum;
    float step;
    int decimals;
};

const TRSelect::Parameter TRSelect::parameters[] = {
    {"TRamplX", "Амплитуда X, %", -100, 100, 0.1f, 2},
    {"TRamplY", "Амплитуда Y, %", -100, 100, 0.1f, 2},
    {"TRangle", "Угол", 0, 360, 1, 0},
    {"TRfreq", "Частота, Гц", 0, 1000, 1, 1},
    {"TRshiftX", "Смещение X, %", -100, 100, 0.1f, 2},
    {"TRshiftY", "Смещение Y, %", -100, 100, 0.1f, 2},
    {"TRparam0", "Доп. парам.", -100, 100, 1, 0},
};

namespace {

enum Index { AmpX, AmpY, Angle, Freq, ShiftX, ShiftY, Param };

} // namespace

TRSelect::TRSelect(QWidget* parent)
    : QDialog(parent)
    , ui(std::make_unique<Ui::TRSelect>())
{
    ui->setupUi(this);
    for (const Parameter& parameter : parameters) {
        const QString name = QLatin1String(parameter.name);
        const auto step = [this, &parameter](float by) { setValue(parameter, value(parameter) + by); };
        connect(findChild<QPushButton*>(name + QStringLiteral("Minus")), &QPushButton::clicked, this,
                [step, &parameter] { step(-parameter.step); });
        connect(findChild<QPushButton*>(name + QStringLiteral("Plus")), &QPushButton::clicked, this,
                [step, &parameter] { step(parameter.step); });
        if (auto* touchable = qobject_cast<PoLabel*>(label(parameter)))
            connect(touchable, &PoLabel::clicked, this, [this, &parameter] { ask(parameter); });
    }
    setRaster(Raster());
    const QPoint at = QCursor::pos();
    frameAt(at, QStringLiteral("Технологическая развертка"), this, parent);
}

TRSelect::~TRSelect() = default;

QStringList TRSelect::typeNames()
{
    return {QStringLiteral("Точка"),       QStringLiteral("Эллипсы"),
            QStringLiteral("Окружности"),  QStringLiteral("Синус"),
            QStringLiteral("Восьмёрка"),   QStringLiteral("Прямоугольник"),
            QStringLiteral("Прямая"),      QStringLiteral("Ромб"),
            QStringLiteral("Пила"),        QStringLiteral("Расщепление"),
            QStringLiteral("Треугольник"), QStringLiteral("Звезда"),
            QStringLiteral("Звезда №2"),   QStringLiteral("Треугольник фокуса"),
            QStringLiteral("Из файла"),    QStringLiteral("Спираль"),
            QStringLiteral("Калибровка"),  QStringLiteral("Окружности №2")};
}

QString TRSelect::summary(const Raster& raster)
{
    const auto pair = [](float x, float y) {
        return QString::number(double(x), 'f', 2) + QLatin1Char('x') + QString::number(double(y), 'f', 2);
    };
    return QStringList{typeNames().value(raster.type),     pair(raster.ampX, raster.ampY),
                       QString::number(raster.angle),      QString::number(raster.freq),
                       pair(raster.shiftX, raster.shiftY), QString::number(double(raster.param)),
                       QString::number(raster.cw)}
        .join(QStringLiteral("; "));
}

void TRSelect::setRaster(const Raster& raster)
{
    const Raster shown = raster.kind == Raster::On ? raster : Raster();
    setType(shown.type);
    setAmpX(shown.ampX);
    setAmpY(shown.ampY);
    setValue(parameters[Angle], static_cast<float>(shown.angle));
    setValue(parameters[Freq], static_cast<float>(shown.freq));
    setShiftX(shown.shiftX);
    setShiftY(shown.shiftY);
    setValue(parameters[Param], shown.param);
    ui->pbTRrotation->setChecked(shown.cw != 0);
}

Raster TRSelect::raster() const
{
    Raster raster;
    raster.type = m_type;
    raster.ampX = ampX();
    raster.ampY = ampY();
    raster.angle = qRound(value(parameters[Angle]));
    raster.freq = qRound(value(parameters[Freq]));
    raster.shiftX = shiftX();
    raster.shiftY = shiftY();
    raster.param = value(parameters[Param]);
    raster.cw = ui->pbTRrotation->isChecked() ? 1 : 0;
    return raster;
}

void TRSelect::setType(int type)
{
    m_type = type;
    ui->TRtype->setText(typeNames().value(type));
}

void TRSelect::setAmpX(float value)
{
    setValue(parameters[AmpX], value);
}

void TRSelect::setAmpY(float value)
{
    setValue(parameters[AmpY], value);
}

void TRSelect::setShiftX(float value)
{
    setValue(parameters[ShiftX], value);
}

void TRSelect::setShiftY(float value)
{
    setValue(parameters[ShiftY], value);
}

float TRSelect::ampX() const
{
    return value(parameters[AmpX]);
}

float TRSelect::ampY() const
{
    return value(parameters[AmpY]);
}

float TRSelect::shiftX() const
{
    return value(parameters[ShiftX]);
}

float TRSelect::shiftY() const
{
    return value(parameters[ShiftY]);
}

QLabel* TRSelect::label(const Parameter& parameter) const
{
    return findChild<QLabel*>(QLatin1String(parameter.name));
}

float TRSelect::value(const Parameter& parameter) const
{
    if (const auto* number = qobject_cast<const PoLabel*>(label(parameter)))
        return number->value();
    return label(parameter)->text().toFloat();
}

void TRSelect::setValue(const Parameter& parameter, float value)
{
    const float bounded = std::isfinite(value) ? qBound(parameter.minimum, value, parameter.maximum) : 0;
    if (auto* number = qobject_cast<PoLabel*>(label(parameter)))
        number->setValue(bounded, parameter.decimals);
    else
        label(parameter)->setText(QString::number(double(bounded), 'f', parameter.decimals));
}

void TRSelect::ask(const Parameter& parameter)
{
    Numpad numpad(QString::fromUtf8(parameter.padTitle), this, value(parameter), parameter.decimals == 0,
                  parameter.minimum >= 0, false);
    if (numpad.exec() == QDialog::Accepted)
        setValue(parameter, static_cast<float>(numpad.value()));
}

// The plain labels do not report a touch of their own.
void TRSelect::mousePressEvent(QMouseEvent* event)
{
    const QWidget* touched = childAt(event->pos());
    for (const Parameter& parameter : parameters) {
        const QLabel* plain = label(parameter);
        if (touched == plain && !qobject_cast<const PoLabel*>(plain)) {
            ask(parameter);
            return;
        }
    }
    QDialog::mousePressEvent(event);
}

void TRSelect::on_TRtype_clicked()
{
    QStringList entries = typeNames();
    for (QString& entry : entries)
        entry += QStringLiteral("      ");
    const int chosen = touchMenu(ui->TRtype, QStringLiteral("Тип развертки"), entries);
    if (chosen >= 0)
        setType(chosen);
}

void TRSelect::on_pbOn_clicked()
{
    finish(On);
}

void TRSelect::on_pbOff_clicked()
{
    finish(Off);
}

void TRSelect::on_pbClear_clicked()
{
    finish(Leave);
}

void TRSelect::finish(Choice choice)
{
    m_choice = choice;
    accept();
}
