#include "selector.h"

#include "numpad.h"
#include "ui_selector.h"
#include "widgets.h"

#include <QMouseEvent>

#include <algorithm>

namespace {

constexpr float leastSpeed = 0.1F; // of the free entry

QList<float> sharesOf(int maxSpeed)
{
    QList<float> speeds;
    for (const float percent : {2.5F, 5.0F, 10.0F, 25.0F, 50.0F, 100.0F})
        speeds.append(percent / 100 * float(maxSpeed));
    return speeds;
}

// Just below the parent, moved so that every entry stays on the panel.
QPoint placeBelow(const QWidget* parent, const QSize& size)
{
    const QPoint below = parent->mapToGlobal(QPoint(0, parent->height() + 1));
    return {qMin(below.x(), panelWidth - size.width()), qMin(below.y(), panelHeight - size.height())};
}

} // namespace

Selector::Selector(const QString& name, const QString& unit, const QList<float>& nl, const QString& title,
                   int decimals, QWidget* parent)
    : QDialog(parent->window(), Qt::Popup | Qt::FramelessWindowHint)
    , m_ui(std::make_unique<Ui::Selector>())
    , m_name(name)
    , m_unit(unit)
    , m_parent(parent)
{
    Q_ASSERT(nl.size() == 6);

    m_ui->setupUi(this);
    m_speeds = {m_ui->lblSpeed1, m_ui->lblSpeed2, m_ui->lblSpeed3,
                m_ui->lblSpeed4, m_ui->lblSpeed5, m_ui->lblSpeed6};
    m_normal = m_ui->lblSpeed1->palette();
    m_highlighted = m_normal;
    m_highlighted.setColor(QPalette::Window, QColor(65, 121, 205));
    m_highlighted.setColor(QPalette::WindowText, Qt::white);

    for (int i = 0; i < nl.size(); ++i)
        m_speeds[std::size_t(i)]->setText(QString::number(double(nl[i]), 'f', decimals));
    m_ui->lblFree->setText(title);
    m_max = nl.last();

    setMouseTracking(true);
    for (QLabel* label : findChildren<QLabel*>())
        label->setMouseTracking(true); // the moves over them come up to here
    move(placeBelow(parent, size()));
    show();
}

Selector::Selector(const QString& name, const QString& unit, int maxSpeed, QWidget* parent)
    : Selector(name, unit, sharesOf(maxSpeed), QStringLiteral("Произвольная скорость"), 0, parent)
{}

Selector::~Selector() = default;

void Selector::range(float min, float max, float value)
{
    m_value = qBound(min, value, max);
}

QLabel* Selector::labelAt(const QPoint& place) const
{
    return qobject_cast<QLabel*>(childAt(place));
}

void Selector::mouseMoveEvent(QMouseEvent* event)
{
    QLabel* label = labelAt(event->localPos().toPoint());
    if (label == m_current)
        return;
    if (m_current)
        m_current->setPalette(m_normal);
    if (label)
        label->setPalette(m_highlighted);
    m_current = label;
}

void Selector::mousePressEvent(QMouseEvent* event)
{
    hide();
    QLabel* label = labelAt(event->localPos().toPoint());
    if (std::find(m_speeds.begin(), m_speeds.end(), label) != m_speeds.end())
        choose(label->text().toFloat());
    else if (label == m_ui->lblFree)
        enterFreely();
    else
        reject();
}

void Selector::choose(float value)
{
    m_value = value;
    emit message(
        QStringLiteral("[I]Установлена скорость %1 %2/мин для оси %3").arg(double(value)).arg(m_unit, m_name),
        true);
    accept();
}

void Selector::enterFreely()
{
    Numpad numpad(QStringLiteral("Скорость"), m_parent, 0, false, true, false);
    if (numpad.exec() == QDialog::Accepted)
        choose(qBound(leastSpeed, float(numpad.value()), m_max));
    else
        reject();
}
