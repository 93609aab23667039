#include "gui.h"

#include "axis.h"
#include "cmessageserver.h"
#include "cmessagestack.h"
#include "cncmessages.h"
#include "statebutton.h"
#include "ui_gui.h"

#include <QCoreApplication>

void Gui::initMessages()
{
    auto* stack = new CMessageStack(ui->frErrorDiagnostic);
    stack->move(5, 24);
    // The server lives to the end of the process, so that no message ends before the stack that shows it.
    auto* server = new CMessageServer(QCoreApplication::instance());
    connect(server, &CMessageServer::sigAddMessage, stack, &CMessageStack::slotAddMessage);
    connect(server, &CMessageServer::sigUpdateMessage, stack, &CMessageStack::slotUpdateMessage);
    connect(server, &CMessageServer::sigDeleteMessage, stack, &CMessageStack::slotDeleteMessage);
    connect(stack, &CMessageStack::sigConfirmMessage, server, &CMessageServer::slotConfirmMessage);
    m_words = new MachineWords(server, this);
    connect(m_words, &MachineWords::message, this, &Gui::prgMessage);
    connect(m_words, &MachineWords::command, this, &Gui::send);
}

QString Gui::CNCMessage(uint number) const
{
    return cncMessage(number, [this](CNCValue value, const QString& name) -> double {
        for (const VirtualAxis* virtualAxis : {m_x, m_z, m_phi}) {
            if (virtualAxis->name() == name)
                return double(value == CNCValue::MinLimit ? virtualAxis->minLimit()
                                                          : virtualAxis->maxLimit());
        }
        const Axis* drive = axis(name);
        switch (value) {
        case CNCValue::MinLimit:
            return double(drive->minLimit());
        case CNCValue::MaxLimit:
            return double(drive->maxLimit());
        default:
            return double(drive->coord());
        }
    });
}

void Gui::onNewCNCMessage(uint number)
{
    if (number)
        prgMessage(CNCMessage(number), true);
}

void Gui::onLightStateChanged(uint state)
{
    constexpr uint spiral = 1U << 2;
    m_words->lights(state);
    ui->sbLightSpiral->setState(bool(state & spiral));
}
