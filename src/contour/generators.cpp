#include "generators.h"

#include "contour.h"
#include "weldgeometry.h"
#include "weldprogram.h"

#include <cmath>

namespace {

constexpr float sameLength = 0.001f; // mm

} // namespace

// --- LinWeld ---

LinWeld::LinWeld(const Seam& seam, CONTOUR* contour, QWidget* button)
    : PatternDialog({"LinWeld", "Линейная сварка", "Сварка", false, false, 1080, 3600, 0}, seam, contour)
{
    restore();
    present(button);
}

void LinWeld::changed(Number number)
{
    if (number == Ascend || number == Descend)
        calculatePeak();
}

// Negative where the ramps alone are longer than the seam: the setter sees by how much.
void LinWeld::calculatePeak()
{
    if (!std::isfinite(m_seam.length))
        return;
    const float left = m_seam.length - value(Ascend) - value(Descend);
    setValue(Peak, std::fabs(left) < sameLength ? 0 : left); // sums miss their length by their rounding
}

bool LinWeld::possible() const
{
    return value(Peak) >= 0;
}

bool LinWeld::create()
{
    if (!possible()) {
        emit message(QStringLiteral("[A]Ошибка! Подъем и спад вместе длиннее шва!"), true);
        return false;
    }
    writeTitle();
    writeIntervals(weldRows(pattern()));
    return true;
}

QString LinWeld::warning() const
{
    return possible() ? QString() : QStringLiteral("Подъем и спад вместе длиннее шва:\nсделайте их короче");
}

QVector<PatternView::Beam> LinWeld::beams() const
{
    return {beam(0)};
}

// --- LinTackWelds ---

LinTackWelds::LinTackWelds(const Seam& seam, CONTOUR* contour, QWidget* button)
    : PatternDialog({"LinTackWelds", "Линейные прихватки", "Прихватки", true, false, 1080, 3600, 0}, seam,
                    contour)
{
    restore();
    setValue(Period, m_seam.length / value(TackCount));
    initTacksOrder();
    present(button);
}

// The period keeps to what it was: a setter who adds a tack may want it behind the others.
void LinTackWelds::changed(Number number)
{
    if (number == TackCount)
        initTacksOrder();
}

void LinTackWelds::initTacksOrder()
{
    setOrder(linTacksOrder(count()));
}

bool LinTackWelds::create()
{
    const auto rows = linTackRows(pattern(), value(Period), tacksOrder(orderText()));
    if (!rows) {
        emit message(QStringLiteral("[A]Ошибка! Расчетная длина прихватки больше периода прихватки!"), true);
        return false;
    }
    writeTitle();
    for (const PatternRow& row : *rows)
        m_contour->addLinearTackPoint(row.path, row.Ir, row.speed);
    return true;
}

QVector<PatternView::Beam> LinTackWelds::beams() const
{
    const double period = double(value(Period));
    const double gap = std::fmax(0.0, period - double(pattern().length()));
    QVector<PatternView::Beam> tacks;
    for (const int tack : tacksOrder(orderText()))
        tacks << beam(tack * period + 0.5 * gap);
    return tacks;
}

bool LinTackWelds::possible() const
{
    return linTackRows(pattern(), value(Period), {}).has_value();
}

// What the programs of these tacks alone would make of them.
QString LinTackWelds::warning() const
{
    const auto tacks = linTackRows(pattern(), value(Period), tacksOrder(orderText()));
    WeldTables tables{m_seam.contour, {}};
    if (!tacks || !tables.contour.schema)
        return {};
    const auto add = [&tables](const PatternRow& tack) {
        TechRow row;
        row.path = tack.path;
        row.Ir = tack.Ir;
        row.speed = tack.speed;
        tables.tech.append(row);
    };
    add({0, 0, value(WeldSpeed)});
    for (const PatternRow& row : *tacks)
        add(row);
    add({float(totalLength(tables.contour)), 0, value(MoveSpeed)});
    if (programLines(tables) > maxProgramLines)
        return {};

    WeldStage stage;
    switch (contourPrograms(tables, stage).doubt.kind) {
    case WeldDoubt::OutOfStep:
        return QStringLiteral("На этом шве машина не вернётся назад:\nнаберите порядок по возрастанию");
    case WeldDoubt::OffSeam:
        return QStringLiteral("Шов не прямой, назад машина пойдёт мимо:\nнаберите порядок по возрастанию");
    case WeldDoubt::SpeedKept:
        return QStringLiteral("Поперёк X скорость не меняется:\nсделайте V перехода равной V сварки");
    default:
        break;
    }
    return {};
}

// --- CircleWeld ---

CircleWeld::CircleWeld(const Seam& seam, CONTOUR* contour, QWidget* button)
    : PatternDialog({"CircleWeld", "Круговая сварка", "Сварка", false, true, 10'000, 10'000, 3600}, seam,
                    contour)
{
    restore();
    present(button);
}

bool CircleWeld::create()
{
    writeTitle();
    writeIntervals(weldRows(pattern(), unit()));
    return true;
}

QVector<PatternView::Beam> CircleWeld::beams() const
{
    return {beam(0)};
}

// --- CircleTackWelds ---

CircleTackWelds::CircleTackWelds(const Seam& seam, CONTOUR* contour, QWidget* button)
    : PatternDialog({"CircleTackWelds", "Круговые прихватки", "Прихватки", true, true, 10'000, 10'000, 90},
                    seam, contour)
{
    restore();
    updatePeriod();
    initTacksOrder();
    present(button);
}

void CircleTackWelds::changed(Number number)
{
    if (number != TackCount)
        return;
    updatePeriod();
    initTacksOrder();
}

void CircleTackWelds::unitSwitched()
{
    updatePeriod();
}

// What is shown follows the seam's own length; what is laid, the circumference.
void CircleTackWelds::updatePeriod()
{
    const double part = double(m_seam.length) / count();
    setValue(Period, float(part / unit()));
}

double CircleTackWelds::period() const
{
    return degreeLength(m_seam.D) * 360 / unit() / count();
}

void CircleTackWelds::initTacksOrder()
{
    setOrder(circleTacksOrder(count()));
}

// The title is written before the pattern is refused: a row that says where one is missing.
bool CircleTackWelds::create()
{
    writeTitle();
    const auto rows = circleTackRows(pattern(), count(), period(), tacksOrder(orderText()), unit());
    if (!rows)
        return false;
    writeIntervals(*rows);
    return true;
}

QVector<PatternView::Beam> CircleTackWelds::beams() const
{
    QVector<PatternView::Beam> tacks;
    for (const int tack : tacksOrder(orderText()))
        tacks << beam(tack % count() * period());
    return tacks;
}

bool CircleTackWelds::possible() const
{
    return circleTackRows(pattern(), count(), period(), {}, unit()).has_value();
}
