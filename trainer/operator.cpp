#include "operator.h"

#include "screen.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QListWidget>
#include <QThread>

#include <cmath>

QWidget* Operator::console()
{
    for (QWidget* top : QApplication::topLevelWidgets()) {
        if (top->findChild<QWidget*>("frameHead"))
            return top;
    }
    return nullptr;
}

void Operator::logIn()
{
    waitVisible("leLogin");
    type("su");
    tap("lePassword");
    type("46920137");
    tap("pbEnter");
    waitVisible("frameHead");
    waitFor("the whole window", [] {
        const QWidget* window = console();
        return window && window->width() == panelSize.width() && window->isFullScreen() == screenHoldsPanel();
    });
}

void Operator::waitLinks()
{
    for (const char* lamp : {"lblCNC", "lblKVS", "lblKVK", "lblELA"})
        waitColour(lamp, Qt::green);
}

void Operator::switchOn(bool virtualAxes)
{
    waitColour("lblCNC", Qt::green); // a command without a link is lost
    tap("sbDrives");
    waitEnabled("sbTrans");
    if (!virtualAxes)
        return;
    tap("sbTrans");
    waitVisible("frmVirtual");
}

void Operator::setNumber(const QString& label, const QString& number)
{
    tap(label);
    enterNumber(number);
}

void Operator::setSpeed(const QString& axis, const QString& speed)
{
    tap("speed" + axis);
    tap("lblFree");
    enterNumber(speed);
    waitText("speed" + axis, speed);
}

void Operator::waitIdle()
{
    waitText("channel1State", "бездействие", 60'000);
    waitText("channel2State", "бездействие", 60'000);
}

void Operator::moveTo(const QString& axis, const QString& coordinate)
{
    const QString wanted = QString::number(coordinate.toDouble(), 'f', 2);
    if (text("coord" + axis) == wanted)
        return; // nothing would show that such a move has been made
    tap("coord" + axis);
    tap("lblCoord");
    enterNumber(coordinate);
    waitEnabled("pbStart");
    tap("pbStart");
    waitGone("pbStart");
    waitText("coord" + axis, wanted);
    waitIdle();
}

void Operator::loadContour(const QString& name)
{
    tap("pbLoad");
    tapItem("listWidget_prog", name);
    tap("pbLoad");
    waitGone("listWidget_prog");
}

void Operator::startWeld()
{
    waitText("lblVacuumState", "Откачка камеры");
    for (const char* state : {"channel1State", "channel2State", "channel3State"}) {
        if (text(state) == "ошибка")
            tap("pbStop");
        waitText(state, "бездействие", 60'000);
    }
    if (!enabled("sbTrans"))
        switchOn(false);
    if (!visible("frmVirtual"))
        tap("sbTrans");
    waitVisible("frmVirtual");
    tapTab("contour", 1);
    waitText("pbGcode", "ПУСК");
    waitEnabled("pbGcode");
    tap("pbGcode");
}

QStringList Operator::journal()
{
    QStringList rows;
    onScreen([&] {
        const auto* list = console()->findChild<QListWidget*>("lwLog");
        for (int row = 0; row < list->count(); ++row)
            rows << list->item(row)->text();
    });
    return rows;
}

int Operator::told(const QString& text)
{
    return journal().filter(text).size();
}

void Operator::waitTold(const QString& text, int times)
{
    constexpr int limit = 30'000; // ms: a link that is down tells once it is back
    QElapsedTimer timer;
    timer.start();
    for (int now = told(text); now != times; now = told(text)) {
        expect(now < times && timer.elapsed() < limit,
               QString("\"%1\" is told %2 times, not %3").arg(text).arg(now).arg(times));
        QThread::msleep(10);
    }
}

void Operator::startRegime(const QString& button, const QString& shown)
{
    tap(button);
    tap("pbYes");
    waitText("lblVacuumState", shown);
}

void Operator::teachPoint()
{
    waitEnabled("pbIns"); // once the mode and the end of the last program have been told
    tap("pbIns");
}

void Operator::jog(const QString& button, const QString& axis, double distance)
{
    const double start = text("coord" + axis).toDouble();
    press(button);
    QElapsedTimer timer;
    timer.start();
    while (std::abs(text("coord" + axis).toDouble() - start) < distance)
        expect(timer.elapsed() < patience(), "motion of " + axis);
    release();
}
