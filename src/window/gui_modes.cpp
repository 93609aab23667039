#include "gui.h"

#include "statebutton.h"
#include "ui_gui.h"

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
    for (VirtualAxis* axis : {m_x, m_z, m_phi})
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

void Gui::onSu(bool su)
{
    QPalette colours = palette();
    colours.setColor(QPalette::Window, su ? QColor(Qt::darkRed) : QColor(255, 255, 192));
    setPalette(colours);
}
