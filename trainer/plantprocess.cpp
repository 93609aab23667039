#include "plantprocess.h"

#include <QElapsedTimer>
#include <QRegularExpression>
#include <QUdpSocket>

namespace {

constexpr int kStartTimeout = 10'000; // ms
constexpr int kEndTimeout = 3'000;    // ms

int freeUdpPort()
{
    QUdpSocket socket;
    socket.bind(QHostAddress(QHostAddress::LocalHost), 0);
    return socket.localPort();
}

} // namespace

PlantProcess::PlantProcess(const Options& options, QObject* parent)
    : QObject(parent)
    , m_options(options)
{
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    connect(&m_process, &QProcess::readyRead, this, &PlantProcess::readLines);
    connect(&m_process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            &PlantProcess::ended);
}

PlantProcess::~PlantProcess()
{
    disconnect(&m_process, nullptr, this, nullptr);
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.terminate();
    if (!m_process.waitForFinished(kEndTimeout)) {
        m_process.kill();
        m_process.waitForFinished(kEndTimeout);
    }
}

bool PlantProcess::start(QString* why)
{
    m_udpPort = freeUdpPort();
    QStringList arguments{"--root",       m_options.root,
                          "--tcp",        "0",
                          "--udp",        QString::number(m_udpPort),
                          "--speed",      QString::number(m_options.speed),
                          "--shm-suffix", m_options.shmSuffix,
                          "--quit-on-eof"};
    if (!m_options.script.isEmpty())
        arguments << "--script" << m_options.script;
    m_process.start(m_options.program, arguments);
    if (!m_process.waitForStarted(kStartTimeout)) {
        *why = m_process.errorString();
        return false;
    }
    QElapsedTimer timer;
    timer.start();
    static const QRegularExpression ready("^plant ready tcp=(\\d+)");
    while (m_tcpPort == 0 && m_process.state() == QProcess::Running && timer.elapsed() < kStartTimeout) {
        m_process.waitForReadyRead(100);
        readLines();
        for (const QString& line : lines()) {
            const QRegularExpressionMatch match = ready.match(line);
            if (match.hasMatch())
                m_tcpPort = match.captured(1).toInt();
        }
    }
    if (m_tcpPort == 0)
        *why = QStringLiteral("the simulated installation did not come up: ") + lines().join("; ");
    return m_tcpPort != 0;
}

void PlantProcess::instruct(const QString& line)
{
    const QByteArray bytes = line.toUtf8() + '\n';
    QMetaObject::invokeMethod(this, [this, bytes] { m_process.write(bytes); });
}

QStringList PlantProcess::lines() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_lines;
}

void PlantProcess::setEndpoints(Site* site) const
{
    site->drive = {QStringLiteral("127.0.0.1"), m_tcpPort, m_udpPort};
}

void PlantProcess::readLines()
{
    while (m_process.canReadLine()) {
        const QString line = QString::fromUtf8(m_process.readLine()).trimmed();
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_lines << line;
        }
        emit said(line);
    }
}
