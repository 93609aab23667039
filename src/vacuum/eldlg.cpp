#include "eldlg.h"

#include "kvscomm.h"
#include "lenzeelement.h"
#include "ui_elementdlg.h"
#include "widgets.h"

#include <QCursor>
#include <QMouseEvent>

namespace {

constexpr int fault = 4;
constexpr int nameColumn = 160; // px
constexpr int valueColumn = 86;
constexpr int rowHeight = 18;
constexpr int letters = 16; // px

// The beam unit's devices are opened from outside the vacuum panel.
const QRect bkuArea(0, 100, panelWidth, 880);

QString styleOf(int state)
{
    switch (state) {
    case 1:
        return QStringLiteral("background-color: rgb(0, 255, 0);");
    case 2:
    case 3:
        return QStringLiteral("background-color: rgb(255, 255, 0);");
    default:
        return QStringLiteral("background-color: rgb(160, 160, 160);");
    }
}

} // namespace

const QRect DeviceDlg::consoleArea(0, 100, 900, 900);

DeviceDlg::DeviceDlg(QWidget* parent, const QString& id, const QString& name, int state, Lock* lockOn,
                     Lock* lockOff, const QList<Lock*>& listOn, const QList<Lock*>& listOff,
                     const QString& textOn, const QString& textOff, const QStringList& strStates,
                     const QRect& area)
    : QFrame(parent, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
    , m_ui(std::make_unique<Ui::ElementDlg>())
    , m_state(state)
    , m_textOn(textOn)
    , m_textOff(textOff)
    , m_states(strStates)
    , m_area(area)
{
    Q_ASSERT(strStates.size() == 4);

    m_ui->setupUi(this);
    setAttribute(Qt::WA_ShowWithoutActivating); // it has no use for keys
    m_ui->lblId->setText(id);
    m_ui->lblName->setText(name);
    connect(m_ui->pbHide, &QPushButton::clicked, this, &QWidget::hide);

    StateButton* button = m_ui->sbSwitch;
    button->init(textOn, false, {}, {}, {}, {}, QStringLiteral("[ошибка]"), false);
    button->setLock(true, lockOn);
    button->setLock(false, lockOff);
    for (Lock* lock : listOn)
        button->addLock(true, lock);
    for (Lock* lock : listOff)
        button->addLock(false, lock);

    setRows({});
    if (state < 0) {
        m_ui->lblState->setText(QStringLiteral("[нет данных]"));
        m_ui->lblState->setStyleSheet(styleOf(state));
    } else {
        onStateChanged(state);
    }
}

DeviceDlg::~DeviceDlg() = default;

void DeviceDlg::setRows(const QStringList& names)
{
    QTableWidget* table = m_ui->twElements;
    QFont font = table->font();
    font.setPixelSize(letters);
    font.setStretch(QFont::Condensed); // the longest name fills its column
    table->setFont(font);
    font.setStretch(QFont::Unstretched);
    font.setBold(true);
    m_ui->frmDelim->setHidden(names.isEmpty());
    table->setHidden(names.isEmpty());
    table->setColumnWidth(0, nameColumn);
    table->setColumnWidth(1, valueColumn);
    table->verticalHeader()->setMinimumSectionSize(rowHeight);
    table->setRowCount(names.size());
    for (int row = 0; row < names.size(); ++row) {
        table->setRowHeight(row, rowHeight);
        table->setItem(row, 0, new QTableWidgetItem(names[row]));
        auto* value = new QTableWidgetItem;
        value->setFont(font);
        value->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        table->setItem(row, 1, value);
    }
    table->setFixedHeight(names.size() * rowHeight + 2 * table->frameWidth());
}

void DeviceDlg::showReading(int row, const QString& text)
{
    m_ui->twElements->item(row, 1)->setText(text);
}

void DeviceDlg::showValidity(int row, bool valid)
{
    QTableWidgetItem* const cell = m_ui->twElements->item(row, 1);
    cell->setForeground(valid ? QBrush() : Qt::black);
    cell->setBackground(valid ? QBrush() : invalidGround);
}

QString DeviceDlg::switchText(bool on)
{
    return on ? QStringLiteral("Вкл.") : QStringLiteral("Выкл.");
}

void DeviceDlg::onStateChanged(int state)
{
    if (state < 0 || state >= m_states.size()) {
        m_ui->lblState->setText(QStringLiteral("[ошибка]"));
        m_ui->lblState->setStyleSheet(QStringLiteral("background-color: rgb(255, 0, 0);"));
        m_ui->sbSwitch->setText1(QStringLiteral("Ошибка"));
        m_state = fault;
        return;
    }
    const bool on = state & 1;
    m_ui->lblState->setText(m_states.at(state));
    m_ui->lblState->setStyleSheet(styleOf(state));
    m_ui->sbSwitch->setText1(on ? m_textOff : m_textOn);
    m_ui->sbSwitch->setState(on);
    m_state = state;
}

void DeviceDlg::on_sbSwitch_clicked()
{
    if (m_state < 0)
        return;
    // In an error the button stays as it was, and so does what it does.
    const bool on = m_state == fault ? m_ui->sbSwitch->isChecked() : m_state & 1;
    switchDevice(!on);
    hide();
}

void DeviceDlg::showDlg()
{
    adjustSize();
    place(QCursor::pos());
    show();
}

void DeviceDlg::place(const QPoint& corner)
{
    move(qMax(m_area.left(), qMin(corner.x(), m_area.left() + m_area.width() - width())),
         qMax(m_area.top(), qMin(corner.y(), m_area.top() + m_area.height() - height())));
}

void DeviceDlg::setVisible(bool visible)
{
    m_aside = false;
    QFrame::setVisible(visible);
}

bool DeviceDlg::event(QEvent* event)
{
    if (liftMayBeLost(*this, *event))
        endMoving();
    if (event->type() == QEvent::WindowBlocked && isVisible()) {
        hide();
        m_aside = true;
    } else if (event->type() == QEvent::WindowUnblocked && m_aside) {
        show();
    }
    return QFrame::event(event);
}

void DeviceDlg::mousePressEvent(QMouseEvent* event)
{
    if (!m_ui->lblId->geometry().contains(event->pos()))
        return;
    m_moving = true;
    m_grip = event->pos();
    grabMouse();
}

void DeviceDlg::mouseMoveEvent(QMouseEvent* event)
{
    if (m_moving)
        place(event->globalPos() - m_grip);
}

void DeviceDlg::mouseReleaseEvent(QMouseEvent*)
{
    endMoving();
}

void DeviceDlg::endMoving()
{
    if (!m_moving)
        return;
    m_moving = false;
    releaseMouse();
}

LenzeDlg::LenzeDlg(TcpLink* link, QWidget* parent, const QString& id, const QString& name, int state,
                   Lock* lockOn, Lock* lockOff, const QList<Lock*>& listOn, const QList<Lock*>& listOff,
                   const QString& textOn, const QString& textOff, const QString& cmdOn, const QString& cmdOff,
                   const QStringList& strStates, const QStringList& strElements,
                   const QList<LenzeElement*>& listElements)
    : DeviceDlg(parent, id, name, state, lockOn, lockOff, listOn, listOff, textOn, textOff, strStates)
    , m_link(link)
    , m_cmdOn(cmdOn)
    , m_cmdOff(cmdOff)
{
    Q_ASSERT(strElements.size() == listElements.size());

    setRows(strElements);
    for (int row = 0; row < listElements.size(); ++row) {
        const LenzeElement* element = listElements[row];
        m_mapElementRows.insert(element, row);
        Q_ASSERT(element->type() == LenzeElement::Number || element->type() == LenzeElement::Sensor);
        if (element->type() == LenzeElement::Number)
            connect(element, qOverload<const LenzeElement*, int>(&LenzeElement::numberValChanged), this,
                    &LenzeDlg::numberChanged);
        else
            connect(element, qOverload<const LenzeElement*, float>(&LenzeElement::sensorValChanged), this,
                    &LenzeDlg::sensorChanged);
    }
}

void LenzeDlg::sensorChanged(const LenzeElement* element, float value)
{
    showReading(element, QString::number(double(value), 'f', element->dec()));
}

void LenzeDlg::numberChanged(const LenzeElement* element, int value)
{
    showReading(element, switchText(value != 0));
}

void LenzeDlg::showReading(const LenzeElement* element, const QString& text)
{
    const auto i = m_mapElementRows.find(element);
    Q_ASSERT(i != m_mapElementRows.end());
    DeviceDlg::showReading(*i, text);
}

void LenzeDlg::switchDevice(bool on)
{
    m_link->command(on ? m_cmdOn : m_cmdOff);
}

KvsDlg::KvsDlg(KVSTCPthread* link, QWidget* parent, const QString& id, const QString& name, int state,
               Lock* lockOn, Lock* lockOff, const QList<Lock*>& listOn, const QList<Lock*>& listOff,
               const QString& textOn, const QString& textOff, const QString& cmdOn, const QString& cmdOff,
               const QStringList& strStates, const QStringList& strElements,
               const QList<LenzeElement*>& listElements)
    : LenzeDlg(link, parent, id, name, state, lockOn, lockOff, listOn, listOff, textOn, textOff, cmdOn,
               cmdOff, strStates, strElements, listElements)
{}

KvkDlg::KvkDlg(KVKTCPthread* link, QWidget* parent, const QString& id, const QString& name, int state,
               Lock* lockOn, Lock* lockOff, const QList<Lock*>& listOn, const QList<Lock*>& listOff,
               const QString& textOn, const QString& textOff, const QString& cmdOn, const QString& cmdOff,
               const QStringList& strStates, const QStringList& strElements,
               const QList<LenzeElement*>& listElements)
    : LenzeDlg(link, parent, id, name, state, lockOn, lockOff, listOn, listOff, textOn, textOff, cmdOn,
               cmdOff, strStates, strElements, listElements)
{}

BkuDlg::BkuDlg(QWidget* parent, const QString& id, const QString& name, int state, Lock* lockOn,
               Lock* lockOff, const QList<Lock*>& listOn, const QList<Lock*>& listOff, const QString& textOn,
               const QString& textOff, const QStringList& strStates)
    : DeviceDlg(parent, id, name, state, lockOn, lockOff, listOn, listOff, textOn, textOff, strStates,
                bkuArea)
    , m_id(id)
{}

void BkuDlg::switchDevice(bool on)
{
    if (m_id == QLatin1String("VPT"))
        emit signalCommandVPT(on);
    else if (m_id == QLatin1String("VE1"))
        emit signalCommandVE(on);
    else if (m_id == QStringLiteral("ТМН"))
        emit signalCommandTMN(on);
}
