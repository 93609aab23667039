#include "gui.h"

#include "autorization_manager.h"
#include "axis.h"
#include "axisprogram.h"
#include "constants.h"
#include "desktopprogram.h"
#include "inform.h"
#include "kvs.h"
#include "point.h"
#include "ratecalc.h"
#include "site.h"
#include "statebutton.h"
#include "ui_gui.h"
#include "widgets.h"

#include <QCoreApplication>

#include <thread>

namespace {

constexpr int kConfirmTime = 5; // s; no answer counts as no

void closeWithLine(Gui* gui, const QString& line)
{
    gui->prgMessage(line, false);
    QCoreApplication::exit(0);
}

} // namespace

void Gui::on_sbDrives_clicked()
{
    if (ui->sbDrives->state() == StateButton::On) {
        m_drives.command(QStringLiteral("DRIVE OFF"));
        prgMessage(QStringLiteral("[I]Нажата кнопка 'Выключить питание приводов'"), false);
    } else {
        m_drives.command(QStringLiteral("DRIVE ON"));
        prgMessage(QStringLiteral("[I]Нажата кнопка 'Включить питание приводов'"), false);
    }
}

// The screen follows the press at once; telemetry corrects it if the controller thinks otherwise.
void Gui::on_sbTrans_clicked()
{
    const bool on = ui->sbTrans->state() != StateButton::On;
    onChangedTransOn(on);
    ui->sbTrans->setState(on);
    m_drives.command(on ? QStringLiteral("TRANS ON") : QStringLiteral("TRANS OFF"));
    prgMessage(on ? QStringLiteral("[I]Нажата кнопка 'Включить трансформацию приводов'")
                  : QStringLiteral("[I]Нажата кнопка 'Выключить трансформацию приводов'"),
               false);
}

void Gui::on_pbStop_clicked()
{
    prgMessage(QStringLiteral("[I]Нажата кнопка 'СТОП' на панели приводов"), false);
    m_drives.command(QStringLiteral("STOP_PRG"));
    if (ui->pbEndlessV->isChecked()) {
        ui->pbEndlessV->setChecked(false);
        axis(QStringLiteral("V"))->onEndlessClicked(false);
    }
}

void Gui::on_sbLightSpiral_clicked()
{
    // The line names the press that the other state would have taken: readers of old journals count on it.
    if (ui->sbLightSpiral->state() == StateButton::On) {
        prgMessage(QStringLiteral("[I]Нажата кнопка 'Включить освещение зоны сварки'"), false);
        m_drives.command(QStringLiteral("SPIRAL OFF"));
    } else {
        prgMessage(QStringLiteral("[I]Нажата кнопка 'Выключить освещение зоны сварки'"), false);
        m_drives.command(QStringLiteral("SPIRAL ON"));
    }
}

void Gui::on_pbEndlessV_clicked()
{
    Axis* v = axis(QStringLiteral("V"));
    if (ui->pbEndlessV->isChecked()) {
        prgMessage(QStringLiteral("[I]Нажата кнопка 'Бесконечное вращение' на панели координаты V"), false);
        v->onEndlessClicked(true);
    } else {
        prgMessage(QStringLiteral("[I]Отжата кнопка 'Бесконечное вращение' на панели координаты V"), false);
        m_drives.command(moveCommand(QStringLiteral("V"), QStringLiteral("0")));
        v->onEndlessClicked(false);
    }
}

void Gui::on_pbPoint_clicked()
{
    prgMessage(QStringLiteral("[I]Нажата кнопка 'Координаты точек'"), false);
    QList<float> coords;
    for (const QString& name : Point::axes())
        coords << coord(name);
    prgMessage(QStringLiteral("[I]Открыто окно 'Координаты точки'"), false);
    Point dialog(&m_drives, coords, ui->pbPoint);
    dialog.exec();
}

void Gui::on_pbConstants_clicked()
{
    prgMessage(QStringLiteral("[I]Нажата кнопка 'Параметры системы'"), false);
    KVKTCPthread* const kvk = ui->kvs->kvk();
    KVSTCPthread* const kvs = ui->kvs->kvs();
    Constants dialog(kvk, kvs, this);
    connect(&dialog, &Constants::message, this, &Gui::prgMessage);
    connect(kvk, &KVKTCPthread::constsReceived, &dialog, &Constants::onConstsReceivedKVK);
    connect(kvs, &KVSTCPthread::constsReceived, &dialog, &Constants::onConstsReceivedKVS);
    kvk->command(QStringLiteral("CONST"));
    // KVK's rows are to stand first. No touch can start anything meanwhile: the dialog stands before the
    // window.
    std::this_thread::sleep_for(site().pauses.constants);
    kvs->command(QStringLiteral("CONST"));
    dialog.exec();
}

void Gui::on_pbCalc_clicked()
{
    prgMessage(QStringLiteral("[I]Нажата кнопка 'Калькулятор скоростей'"), false);
    if (!startDesktopProgram(QStringLiteral("kcalc")))
        prgMessage(QStringLiteral("[W]Не удалось запустить калькулятор 'kcalc'"), true);
    RateCalc dialog(ui->pbCalc);
    dialog.exec();
}

void Gui::on_pbInformation_clicked()
{
    prgMessage(QStringLiteral("[I]Нажата кнопка 'Информация о программе'"), false);
    Inform(this).exec();
}

// getUserName() keeps telling who logged in at start: weld records belong to him.
void Gui::on_pbChangeUser_clicked()
{
    prgMessage(QStringLiteral("[I]Нажата кнопка 'Смена пользователя'"), false);
    const int group = m_manager->showAutorization();
    if (group == 1 || group == 2) {
        prgMessage(QStringLiteral("[I]Регистрация пользователя - %1 %2")
                       .arg(ui->lblUserRight->text(), ui->lblUserName->text()),
                   true);
    } else {
        // Also for the administrator, who gets his rights all the same: his visits leave no name.
        prgMessage(QStringLiteral("[I]Смена пользователя не выполнена"), true);
    }
    emit signalUserChange(group);
}

void Gui::on_pbCloseProgram_clicked()
{
    Confirm question(QStringLiteral("Подтверждение"),
                     QStringLiteral("Вы хотите выйти из программы оператора?"), ui->pbCloseProgram,
                     kConfirmTime);
    if (question.exec() == QDialog::Accepted)
        closeWithLine(this, QStringLiteral("[I]Выполнен выход из программы автоматической сварки по кнопке"));
}

void Gui::on_actExit_triggered()
{
    closeWithLine(
        this, QStringLiteral("[I]Выполнен выход из программы автоматической сварки по комбинации клавиш"));
}

void Gui::on_sbShutdown_clicked()
{
    Confirm question(QStringLiteral("Подтверждение"), QStringLiteral("Выключить установку?"), ui->sbShutdown,
                     kConfirmTime);
    if (question.exec() != QDialog::Accepted)
        return;
    prgMessage(QStringLiteral("[I]Завершение работы установки выполнено"), false);
    onSystemShutdown();
}

void Gui::onEndAsked()
{
    closeWithLine(this,
                  QStringLiteral("[I]Выполнен выход из программы автоматической сварки по сигналу системы"));
}

// The console ends whatever the system answers. Settings and users are saved at its end, and before the
// command as well: nobody knows how long the system waits for those it ends.
void Gui::onSystemShutdown()
{
    saveWork();
    if (!site().shell)
        qWarning("no power-off at this site");
    else if (site().shell("sudo /sbin/shutdown -h now") != 0)
        qWarning("the power-off was refused");
    QCoreApplication::exit(0);
}
