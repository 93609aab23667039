#include "kvs.h"

#include "confirm.h"
#include "eldlg.h"
#include "numpad.h"
#include "statebutton.h"
#include "ui_kvs.h"
#include "usergroup.h"
#include "vacuumdialogs.h"
#include "widgets.h"

#include <QAction>

namespace {

constexpr int askSeconds = 5;         // an unanswered question counts as no
constexpr double setupCode = 305'729; // opens the setup regime

constexpr StateButton* Ui_KVS::*buttons[regime::Count] = {
    &Ui_KVS::sbVacAdjust,  &Ui_KVS::sbVacManual,  &Ui_KVS::sbVacPrepare,  &Ui_KVS::sbVacForepump,
    &Ui_KVS::sbVacPumping, &Ui_KVS::sbVacFilling, &Ui_KVS::sbVacShutdown,
};

// On its button a regime's name stands in two lines.
QString title(regime::Number number)
{
    QString lines = regime::name(number);
    const int first = lines.indexOf(QLatin1Char(' '));
    return first < 0 ? lines : lines.replace(first, 1, QLatin1Char('\n'));
}

constexpr int doorClosedY = 90;
constexpr int doorOpenY = 340;
constexpr int doorMovingY = 215;
constexpr int doorPressedX = 42;
constexpr int doorReleasedX = 30;

} // namespace

void KVS::initStateButtons()
{
    for (unsigned int number = 0; number < regime::Count; ++number)
        (ui.get()->*buttons[number])
            ->init(title(regime::Number(number)), false, QString(), QString(), QString(), QString(),
                   QStringLiteral("[ошибка]"), true);

    Lock* const user = lock(QStringLiteral("REGIME:LockUser"));
    ui->sbVacAdjust->setLock(true, user);
    ui->sbVacAdjust->addLock(true, user);
    // The lock that decides is never set: whether the door stands in the way of pumping is the controller's
    // to say. The reasons are kept up to date behind it.
    for (StateButton* pumping : {ui->sbVacForepump, ui->sbVacPumping}) {
        pumping->setLock(true, lock(QStringLiteral("REGIME:LockPump")));
        pumping->addLock(true, lock(QStringLiteral("REGIME:LockDoorPress")));
        pumping->addLock(true, lock(QStringLiteral("REGIME:LockDoorState")));
    }
}

void KVS::changedMode(unsigned int value)
{
    for (unsigned int number = 0; number < regime::Count; ++number)
        (ui.get()->*buttons[number])->setState(number == value);
}

void KVS::on_sbVacAdjust_clicked()
{
    Numpad numpad(QStringLiteral("Пароль"), ui->sbVacAdjust, 0, true, true, true);
    const bool right = numpad.exec() == QDialog::Accepted && numpad.value() == setupCode;
    emit message((right ? QStringLiteral("[I]Введён правильный пароль для перехода в режим '%1'")
                        : QStringLiteral("[W]Введён неправильный пароль для перехода в режим '%1'"))
                     .arg(regime::name(regime::Setup)),
                 true);
    if (right)
        enterRegime(regime::Setup);
}

void KVS::on_sbVacManual_clicked()
{
    enterRegime(regime::Manual);
}

void KVS::on_sbVacPrepare_clicked()
{
    startAlgorithm(regime::Prepare);
}

void KVS::on_sbVacForepump_clicked()
{
    startAlgorithm(regime::Forepump);
}

void KVS::on_sbVacPumping_clicked()
{
    startAlgorithm(regime::Pumping);
}

void KVS::on_sbVacFilling_clicked()
{
    startAlgorithm(regime::Filling);
}

void KVS::on_sbVacShutdown_clicked()
{
    startAlgorithm(regime::Shutdown);
}

// The journal tells the regime when the controller reports it, not when it is asked for.
void KVS::startAlgorithm(regime::Number number)
{
    Confirm confirm(QStringLiteral("Подтверждение"),
                    QStringLiteral("Запустить автоматический алгоритм '%1'?").arg(regime::name(number)),
                    ui.get()->*buttons[number], askSeconds);
    if (confirm.exec() == QDialog::Accepted)
        enterRegime(number);
}

void KVS::enterRegime(regime::Number number)
{
    m_kvk.command(QStringLiteral("ALG(%1)").arg(number));
}

void KVS::onUserChanged(int rights)
{
    lock(QStringLiteral("REGIME:LockUser"))->setState(!usergroup::maySetUp(rights));
}

// The door is closed by the motion controller and pressed by the chamber controller; each of them moves the
// picture along a way of its own.
void KVS::onDoorStateChanged(unsigned int state)
{
    m_doorY = state == 0 ? doorClosedY : state == 1 ? doorOpenY : doorMovingY;
    ui->Door->move(m_doorX, m_doorY);
    lock(QStringLiteral("REGIME:LockDoorState"))->setState(state != 0);
}

void KVS::onDoorPressChanged(int state)
{
    m_doorX = state == 0 ? doorPressedX : doorReleasedX;
    ui->Door->move(m_doorX, m_doorY);
    // Against the words of this lock, which call it pressed: the sense is the wire's and has always been so.
    lock(QStringLiteral("REGIME:LockDoorPress"))->setState(state != 1);
    switch (state) {
    case 0:
        return emit message(QStringLiteral("[I]Дверь камеры прижата"), true);
    case 1:
        return emit message(QStringLiteral("[I]Дверь камеры отжата"), true);
    case 2:
        return emit message(QStringLiteral("[I]Дверь камеры прижимается"), true);
    case 3:
        return emit message(QStringLiteral("[I]Дверь камеры отжимается"), true);
    default:
        emit message(QStringLiteral("[W]Ошибка прижима/отжима двери!"), true);
    }
}

// The action is on no menu; its shortcut works as long as the panel is on screen.
void KVS::initHiding()
{
    auto* const hide = new QAction(QStringLiteral("Скрыть"), this);
    hide->setObjectName(QStringLiteral("actHide"));
    hide->setToolTip(QStringLiteral("Скрыть диалоги"));
    hide->setShortcut(QKeySequence(QStringLiteral("Ctrl+H")));
    connect(hide, &QAction::triggered, this, &KVS::hideByKeys);
    addAction(hide);
}

void KVS::hideByKeys()
{
    emit message(
        QStringLiteral("[I]Нажата комбинация клавиш для скрытия диалогов элементов вакуумной системы"),
        false);
    hideDialogs();
}

void KVS::initDialogs()
{
    m_dialogs = makeVacuumDialogs({&m_kvs, &m_kvk, [this](const QString& name) { return element(name); },
                                   [this](const QString& key) { return lock(key); },
                                   [this](const QString& key) { return reasons(key); }},
                                  this);
}

void KVS::showDialog(const char* device)
{
    m_dialogs[QLatin1String(device)]->showDlg();
}

void KVS::hideDialogs()
{
    for (DeviceDlg* dialog : qAsConst(m_dialogs))
        dialog->hide();
}
