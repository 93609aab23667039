#include "gui.h"

#include "lockview.h"
#include "requiredpause.h"
#include "statebutton.h"
#include "ui_gui.h"
#include "widgets.h"

void Gui::addLock(const QString& key, bool perm, const QString& textLocked, const QString& textFree)
{
    const auto i = m_locks.find(key);
    Q_ASSERT(i == m_locks.end());
    m_locks.insert(i, key, new Lock(perm, textLocked, textFree));
}

void Gui::initLocks()
{
    addLock(QStringLiteral("LOCK:LockDrives"), false, QStringLiteral("Нет вакуума или дверь не открыта"),
            QStringLiteral("Есть вакуум или дверь открыта"));
    addLock(QStringLiteral("LOCK:LockSpiral"), false, QStringLiteral("Недостаточное давление в камере"),
            QStringLiteral("Давление в камере в норме"));
    addLock(QStringLiteral("LOCK:LockPult"), false, QStringLiteral("Приводы не включены"),
            QStringLiteral("Приводы включены"));
    addLock(QStringLiteral("LOCK:LockShutdown"), false, QStringLiteral("Вакуумная система не остановлена"),
            QStringLiteral("Вакуумная система остановлена"));
}

void Gui::initStateButtons()
{
    const auto init = [this](StateButton* button, const QString& title, bool oneWay, const QString& textOn,
                             const QString& textOff, const char* key) {
        button->init(title, oneWay, textOn, textOff, QString(), QString(), QStringLiteral("[ошибка]"), true);
        if (!key)
            return;
        Lock* guard = lock(QLatin1String(key));
        button->setLock(true, guard);
        button->addLock(true, guard);
    };
    const QString on = QStringLiteral("[включены]");
    const QString off = QStringLiteral("[выключены]");
    init(ui->sbDrives, QStringLiteral("Приводы"), false, on, off, "LOCK:LockDrives");
    init(ui->sbTrans, QStringLiteral("Виртуальные\nоси"), false, on, off, nullptr);
    init(ui->sbShutdown, QStringLiteral("Выключение\nсистемы"), true, QString(), QString(),
         "LOCK:LockShutdown");
    init(ui->sbLightSpiral, QString(), false, QString(), QString(), "LOCK:LockSpiral");
    init(ui->sbDistPult, QString(), false, QString(), QString(), "LOCK:LockPult");
    RequiredPause::actsAlways(ui->pbStop);
}

void Gui::changedDrivesLock(bool on)
{
    lock(QStringLiteral("LOCK:LockDrives"))->setState(on);
}

void Gui::onChangedSpiralLock(bool on)
{
    lock(QStringLiteral("LOCK:LockSpiral"))->setState(on);
}

void Gui::onChangedShutdownLock(bool on)
{
    lock(QStringLiteral("LOCK:LockShutdown"))->setState(on);
}

void Gui::onChangedDrivesState(bool state)
{
    m_drivesOn = state;
    lock(QStringLiteral("LOCK:LockPult"))->setState(!state);
    updateTrans();
}

// The mode may change only with drives on and channel 1 idle.
void Gui::updateTrans()
{
    ui->sbTrans->setEnabled(m_drivesOn && m_channel1State == 1);
}

void Gui::onChangedTransOn(bool value)
{
    ui->sbTrans->setState(value);
    for (QWidget* widget : {static_cast<QWidget*>(ui->frmA), static_cast<QWidget*>(ui->frmB),
                            static_cast<QWidget*>(ui->frmC), static_cast<QWidget*>(ui->pbInfoA),
                            static_cast<QWidget*>(ui->pbInfoB), static_cast<QWidget*>(ui->pbInfoC)})
        widget->setVisible(!value);
    ui->frmVirtual->setVisible(value);
    if (value) {
        ui->frmD->setGeometry(QRect(QPoint(0, 185), QPoint(449, 259)));
        ui->pbInfoD->setGeometry(QRect(QPoint(385, 195), QPoint(439, 249)));
        ui->frameManip->setGeometry(QRect(QPoint(10, 80), QPoint(459, 604)));
    } else {
        ui->frmD->setGeometry(QRect(QPoint(0, 425), QPoint(449, 499)));
        ui->pbInfoD->setGeometry(QRect(QPoint(385, 435), QPoint(439, 489)));
        ui->frameManip->setGeometry(QRect(QPoint(10, 80), QPoint(459, 579)));
    }
    for (VirtualAxis* axis : m_virtual)
        axis->modeChanged();
}

void Gui::showSecondLXAxis(bool state)
{
    ui->frmLX2->setVisible(state);
    ui->pbInfoLX2->setVisible(state);
    emit signalSecondXPanelShow(state);
}

void Gui::showSecondUAxis(bool state)
{
    ui->frmU2->setVisible(state);
    ui->pbInfoU2->setVisible(state);
    emit signalSecondUPanelShow(state);
}

void Gui::onAccessChanged(bool value)
{
    setEnabled(value);
    if (value) {
        if (m_blockLabel) {
            m_blockLabel->releaseKeyboard();
            delete m_blockLabel;
            m_blockLabel = nullptr;
        }
        return;
    }
    if (m_blockLabel)
        return;
    m_blockLabel = new QLabel(QStringLiteral("Панель управления заблокирована"), this);
    QFont font = m_blockLabel->font();
    font.setPixelSize(30);
    font.setBold(true);
    m_blockLabel->setFont(font);
    m_blockLabel->setAlignment(Qt::AlignCenter);
    m_blockLabel->setFrameStyle(QFrame::Panel | QFrame::Raised);
    m_blockLabel->setLineWidth(3);
    QPalette colours = m_blockLabel->palette();
    colours.setColor(QPalette::Window, Qt::red);
    colours.setColor(QPalette::WindowText, Qt::white);
    m_blockLabel->setPalette(colours);
    m_blockLabel->setAutoFillBackground(true);
    m_blockLabel->setGeometry(QRect(QPoint(600, 460), QPoint(1319, 739)));
    m_blockLabel->show();
    m_blockLabel->grabKeyboard();
}

void Gui::onSu(bool su)
{
    QPalette colours = palette();
    colours.setColor(QPalette::Window, su ? QColor(Qt::darkRed) : QColor(255, 255, 192));
    setPalette(colours);
}
