#include "kvs.h"

namespace {

const QColor kDisconnected(255, 192, 192); // background while the vacuum controller does not answer

} // namespace

KVS::KVS(QWidget* parent)
    : QFrame(parent)
{
    QPalette colours = palette();
    colours.setColor(QPalette::Window, kDisconnected);
    setPalette(colours);
    setAutoFillBackground(true);
    setFrameStyle(QFrame::Panel | QFrame::Raised);
}

void KVS::onSystemStarted()
{
    emit onKVSConnected(false);
    emit onKVKConnected(false);
}

void KVS::onUserChanged(int) {}

void KVS::onDoorStateChanged(unsigned int) {}
