#include "tcplink.h"

#include <QTime>

namespace {

void tell(const char* line)
{
    if (line)
        qDebug("%s", line);
}

} // namespace

TcpLink::TcpLink(QThread& thread, const LinkTexts& texts)
    : m_thread(thread)
    , m_texts(texts)
{}

TcpLink::~TcpLink() = default;

bool TcpLink::connect(const QString& host, int tcpPort, int udpPort)
{
    tell(m_texts.opening);
    if (connected())
        return false;
    m_thread.wait(); // the former connection may still be giving up its telemetry

    const int stream = comm::openStream(host, tcpPort, m_texts.host);
    if (stream < 0)
        return false;

    m_connection.open(stream);
    m_controller = comm::peerOf(stream);
    m_stop = false;
    m_telemetry = listen(udpPort);
    tell(m_texts.opened);
    m_thread.start();
    return true;
}

bool TcpLink::command(const QString& text)
{
    qDebug() << m_texts.sent << text;
    return m_connection.send(textSignature, text);
}

bool TcpLink::connected() const
{
    return m_connection.isOpen();
}

bool TcpLink::disconnect()
{
    if (!connected())
        return false;
    stop();
    return m_thread.wait();
}

QString TcpLink::timeStamp()
{
    return QTime::currentTime().toString(QStringLiteral("[hh:mm:ss] "));
}

void TcpLink::end()
{
    stop();
    m_thread.wait();
}

void TcpLink::serve()
{
    tell(m_texts.started);
    const int stream = m_connection.socket();
    while (!m_stop) {
        const comm::Wait wait = comm::waitForInput(stream);
        if (wait == comm::Wait::Failed)
            break;
        if (wait == comm::Wait::Ready && receiveFrame(stream) == Turn::End)
            break;
    }
    for (const char* line : m_texts.ended)
        tell(line);

    m_connection.close();
    m_telemetry.reset();
    tellDisconnected();
}

QString TcpLink::receiveText(int socket, int length, const char* label)
{
    const QString text = QString::fromUtf8(receiveBody(socket, length).constData());
    qDebug().noquote() << label << text;
    return text;
}

QByteArray TcpLink::receiveBody(int socket, int length)
{
    return comm::receiveBody(socket, length, m_stop, m_texts.stopped);
}
