#include "asklength.h"
#include "confirm.h"
#include "contour.h"
#include "numpad.h"
#include "schema.h"
#include "touchmenu.h"
#include "ui_contour.h"

namespace {

constexpr int confirmTimeout = 10; // s

// A slip on the keypad may not fill the memory with points.
constexpr float maxRingPoints = 10'000;

const QString newProgramName = QStringLiteral("Программа сварки");

std::optional<float> askDiameter(CONTOUR* panel) // mm
{
    return askLength(QStringLiteral("Диаметр, мм"), panel, 0,
                     [panel](const QString& line) { emit panel->message(line, true); });
}

bool askNumber(CONTOUR* panel, const QString& title, PoLabel* label, int decimals, float minimum,
               float maximum)
{
    Numpad numpad(title, panel, label->value(), decimals == 0, true, false);
    if (numpad.exec() != QDialog::Accepted)
        return false;
    label->setValue(qBound(minimum, static_cast<float>(numpad.value()), maximum), decimals);
    return true;
}

} // namespace

// --- a new contour ---

void CONTOUR::on_pbNew_clicked()
{
    bool made = false;
    switch (
        touchMenu(ui->pbNew, QStringLiteral("Схема сварки"),
                  {QStringLiteral("Смешаная интерполяция     "), QStringLiteral("Круговая интерполяция     "),
                   QStringLiteral("Кольцевой стык     ")})) {
    case 0:
        init(new SchemaXYZ);
        emit message(QStringLiteral("[I]Новый контур 'Смешаная интерполяция XYZ' создан"), false);
        made = true;
        break;
    case 1:
        made = newRound();
        break;
    case 2:
        made = newRing();
        break;
    default:
        break;
    }
    if (made)
        setProgramName(newProgramName);
}

bool CONTOUR::newRound()
{
    const auto diameter = askDiameter(this);
    if (!diameter)
        return false;
    init(new SchemaXYZr(*diameter, 0, 0));
    updatePlane(0);
    emit message(QStringLiteral("[I]Новый контур 'Круговая интерполяция' создан"), false);
    return true;
}

bool CONTOUR::newRing()
{
    const auto diameter = askDiameter(this);
    if (!diameter)
        return false;
    Numpad points(QStringLiteral("Кол-во точек"), this, 1, true, true, false);
    if (points.exec() != QDialog::Accepted)
        return false;
    const int n = static_cast<int>(qBound(1.0f, static_cast<float>(points.value()), maxRingPoints));
    emit message(QStringLiteral("[I]Новый контур 'Кольцевой стык' создан"), false);
    init(new SchemaCircle(*diameter, static_cast<float>(n)));
    m_points.layRing(n, coords());
    updateAfterEdit();
    return true;
}

// --- points ---

void CONTOUR::on_pbIns_clicked()
{
    emit message(QStringLiteral("[I]Нажата кнопка 'Вставить точку' панели Контур"), false);
    if (!m_points.teach(coords()))
        return;
    updateD();
    updateAfterEdit();
}

void CONTOUR::on_pbCorr_clicked()
{
    const int choice =
        touchMenu(ui->pbCorr, QStringLiteral("Сдвиг"),
                  {QStringLiteral("... текущей точки     "), QStringLiteral("... всего контура     ")});
    if (choice < 0 || m_points.current() < 0)
        return;
    if (choice == 0) {
        m_points.moveCurrentTo(coords());
        emit message(QStringLiteral("[I]Нажата кнопка 'Сдвиг точки' панели Контур"), false);
    } else {
        Confirm confirm(QStringLiteral("Подтверждение"), QStringLiteral("Выполнить сдвиг всего контура?"),
                        ui->pbCorr, confirmTimeout);
        if (confirm.exec() != QDialog::Accepted || m_points.current() < 0)
            return;
        m_points.moveAllTo(coords());
        emit message(QStringLiteral("[I]Нажата кнопка 'Сдвиг всего контура' панели Контур"), false);
    }
    updateD();
    updateAfterEdit();
}

void CONTOUR::on_pbCorrNgo_clicked()
{
    emit message(QStringLiteral("[I]Нажата кнопка 'Сдвинуть и перейти' панели Контур"), false);
    if (m_points.current() < 0)
        return;
    m_points.moveCurrentTo(coords());
    updateD();
    updateAfterEdit();
    int next = m_points.current() + 1;
    if (next > m_points.last())
        next = m_points.closed() ? 0 : m_points.last();
    onContourCellClicked(next, 0);
}

void CONTOUR::on_pbDel_clicked()
{
    Confirm confirm(QStringLiteral("Подтверждение"), QStringLiteral("Удалить текущую точку из контура?"),
                    ui->pbDel, confirmTimeout);
    if (confirm.exec() != QDialog::Accepted || m_points.current() < 0)
        return;
    emit message(QStringLiteral("[I]Нажата кнопка 'Удалить точку' панели Контур"), false);
    m_points.removeCurrent();
    updateD();
    updateAfterEdit();
}

void CONTOUR::on_pbRing_clicked()
{
    emit message(QStringLiteral("[I]Нажата кнопка 'Замкнуть контур' панели Контур"), false);
    bool forward = true;
    if (!m_points.closed() && m_points.isXYZ()) {
        const int choice =
            touchMenu(ui->pbRing, QStringLiteral("Замыкание контура"),
                      {QStringLiteral("Прямым ходом     "), QStringLiteral("Обратным ходом     ")});
        if (choice < 0)
            return;
        forward = choice == 0;
    }
    m_points.setClosed(!m_points.closed(), forward);
    updateAfterEdit();
}

void CONTOUR::on_pbInverse_clicked()
{
    emit message(QStringLiteral("[I]Нажата кнопка 'Инверсия' панели Контур"), false);
    m_points.invert();
    updateAfterEdit();
}

// --- numbers ---

void CONTOUR::on_nrings_clicked()
{
    if (!askNumber(this, QStringLiteral("Число проходов"), ui->nrings, 0, 1, maxPasses))
        return;
    emit message(
        QStringLiteral("[I]Задано новое число проходов по контуру - %1").arg(double(ui->nrings->value())),
        false);
    updateLength();
    updateValidDistance();
}

void CONTOUR::on_contourSpeed_clicked()
{
    if (!askNumber(this, QStringLiteral("Скорость, мм/мин"), ui->contourSpeed, 1, 0, maxSpeed))
        return;
    emit message(QStringLiteral("[I]Задана новая скорость перехода по контуру - %1 мм/мин")
                     .arg(double(ui->contourSpeed->value())),
                 false);
}

void CONTOUR::on_weldSpeed_clicked()
{
    if (!askNumber(this, QStringLiteral("Скорость сварки, мм/мин"), ui->weldSpeed, 1, 0, maxSpeed))
        return;
    emit message(
        QStringLiteral("[I]Задана новая скорость сварки - %1 мм/мин").arg(double(ui->weldSpeed->value())),
        false);
    setParamValueInTable(TechTable::Speed, ui->weldSpeed->value(),
                         TechTable::numbers[TechTable::Speed].decimals);
    edited(); // also where all rows have it already
}
