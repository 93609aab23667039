#include "novcert.h"

#include <QtEndian>

namespace NovCertFormat3 {

namespace {

constexpr int samplePeriod = 100; // ms
constexpr quint16 version = 100;
constexpr quint16 lastKindWithValue = 1;
constexpr int longestText = 0xFFFF; // bytes, where the length has 16 bits

template <typename T>
void append(QByteArray& bytes, T value)
{
    const T little = qToLittleEndian(value);
    bytes.append(reinterpret_cast<const char*>(&little), int(sizeof little));
}

// A text too long for its length field is cut between two characters.
QByteArray shortText(const QString& text)
{
    QByteArray bytes = text.toUtf8();
    if (bytes.size() <= longestText)
        return bytes;
    int end = longestText;
    while (end > 0 && (bytes[end] & 0xC0) == 0x80)
        --end;
    return bytes.left(end);
}

void append(QByteArray& bytes, const InformationBlock& block)
{
    const QByteArray name = block.GetName().toUtf8();
    const QByteArray value = block.GetValue().toUtf8();
    append(bytes, quint32(name.size()));
    append(bytes, quint32(value.size()));
    bytes += name + value;
}

void append(QByteArray& bytes, const Graph& graph)
{
    const QByteArray name = shortText(graph.GetName());
    const QColor colour = graph.GetColour();
    for (const int part : {colour.red(), colour.green(), colour.blue(), 0})
        append(bytes, quint8(part));
    append(bytes, quint16(name.size()));
    bytes += name;
}

void append(QByteArray& bytes, const Plot& plot, int following)
{
    const QByteArray name = shortText(plot.GetName());
    const QByteArray unit = shortText(plot.GetUnitName());
    for (const int word : {name.size(), unit.size(), int(plot.GetKind()), plot.Count(), following})
        append(bytes, quint16(word));
    bytes += name + unit;
    if (plot.GetKind() <= lastKindWithValue)
        append(bytes, plot.GetValue());
    for (const Graph* graph : plot)
        append(bytes, *graph);
}

} // namespace

Writer::Writer(AbstractErrorHandler* handler, const QString& fileName, quint32 period, QObject* parent)
    : QObject(parent)
    , m_handler(handler)
    , m_file(fileName)
    , m_period(period)
{
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.setInterval(samplePeriod);
    connect(&m_timer, &QTimer::timeout, this, &Writer::OnTimeout);
}

void Writer::Start()
{
    Stop();
    // Unbuffered: a full disk shows at the write that meets it.
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        m_handler->OnError(AbstractErrorHandler::OpenFailed);
        return;
    }
    if (write(head(), AbstractErrorHandler::HeadCutShort))
        m_timer.start();
}

void Writer::Stop()
{
    m_timer.stop();
    m_file.close();
}

QByteArray Writer::head() const
{
    QByteArray bytes("\x43\x4E", 2);
    append(bytes, version);
    append(bytes, quint32(m_blocks.Count()));
    append(bytes, m_period);
    for (const InformationBlock* block : m_blocks)
        append(bytes, *block);
    int following = m_plots.Count();
    for (const Plot* plot : m_plots)
        append(bytes, *plot, --following);
    return bytes;
}

void Writer::OnTimeout()
{
    QByteArray sample;
    for (const Plot* plot : m_plots) {
        for (const Graph* graph : *plot)
            append(sample, graph->GetValue());
    }
    if (write(sample, AbstractErrorHandler::SampleCutShort))
        emit OnUpdate();
}

// Behind a piece that is missing no reader finds the next sample, so the recording ends there.
bool Writer::write(const QByteArray& bytes, int code)
{
    if (m_file.write(bytes) == bytes.size())
        return true;
    Stop();
    m_handler->OnError(code);
    return false;
}

} // namespace NovCertFormat3
