#include "plantprocess.h"

#include "lessonrun.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QRegularExpression>
#include <QThread>

namespace {

constexpr int kStartTimeout = 10'000; // ms; also of an answer
constexpr int kEndTimeout = 3'000;    // ms

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

QString PlantProcess::besideThisProgram()
{
    const QString here = QCoreApplication::applicationDirPath();
    const QString beside = here + QLatin1String("/plant");
    return QFileInfo(beside).isFile() ? beside : QFileInfo(here).path() + QLatin1String("/plant");
}

bool PlantProcess::start(QString* why)
{
    QStringList arguments{
        "--root",       m_options.root,      "--free-ports", "--speed", QString::number(m_options.speed),
        "--shm-suffix", m_options.shmSuffix, "--quit-on-eof"};
    if (m_options.air)
        arguments << "--air";
    if (!m_options.pcap.isEmpty())
        arguments << "--pcap" << m_options.pcap;
    if (!m_options.script.isEmpty())
        arguments << "--script" << m_options.script;
    m_process.start(m_options.program, arguments);
    if (!m_process.waitForStarted(kStartTimeout)) {
        *why = m_process.errorString();
        return false;
    }
    QElapsedTimer timer;
    timer.start();
    static const QRegularExpression ready("^plant ready tcp=(\\d+) udp=(\\d+) kvs-tcp=(\\d+) kvs-udp=(\\d+)"
                                          " kvk-tcp=(\\d+) kvk-udp=(\\d+)$");
    while (m_drive.tcp == 0 && m_process.state() == QProcess::Running && timer.elapsed() < kStartTimeout) {
        m_process.waitForReadyRead(100);
        readLines();
        for (const QString& line : lines()) {
            const QRegularExpressionMatch match = ready.match(line);
            if (!match.hasMatch())
                continue;
            m_drive = {match.captured(1).toInt(), match.captured(2).toInt()};
            m_kvs = {match.captured(3).toInt(), match.captured(4).toInt()};
            m_kvk = {match.captured(5).toInt(), match.captured(6).toInt()};
        }
    }
    if (m_drive.tcp == 0)
        *why = QStringLiteral("the simulated installation did not come up: ") + lines().join("; ");
    return m_drive.tcp != 0;
}

void PlantProcess::instruct(const QString& lines)
{
    const QByteArray bytes = lines.toUtf8().replace(';', '\n') + '\n';
    QMetaObject::invokeMethod(this, [this, bytes] { m_process.write(bytes); });
}

QStringList PlantProcess::lines() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_lines;
}

int PlantProcess::count(const QString& pattern) const
{
    return lines().filter(QRegularExpression(pattern)).size();
}

int PlantProcess::connections(const QString& controller) const
{
    const QString name = controller == "drive" ? QString() : controller.toUpper() + ": ";
    return count("^\\S+ " + name + "console connected$");
}

QString PlantProcess::ask(const QString& line, const QString& answer)
{
    constexpr unsigned long pause = 5; // ms
    const QRegularExpression begin('^' + QRegularExpression::escape(answer));
    const int before = lines().filter(begin).size();
    instruct(line);
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < kStartTimeout) {
        const QStringList answers = lines().filter(begin);
        if (answers.size() > before)
            return answers.last();
        QThread::msleep(pause);
    }
    return {};
}

void PlantProcess::setEndpoints(Site* site) const
{
    const QString host = QStringLiteral("127.0.0.1");
    site->drive = {host, m_drive.tcp, m_drive.udp};
    site->kvs = {host, m_kvs.tcp, m_kvs.udp};
    site->kvk = {host, m_kvk.tcp, m_kvk.udp};
}

void PlantProcess::readLines()
{
    while (m_process.canReadLine()) {
        const QString line = QString::fromUtf8(m_process.readLine()).trimmed();
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (!LessonRun::isAnswer(line)) // they come ten times a second
                m_lines << line;
        }
        emit said(line);
    }
}
