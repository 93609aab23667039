#include "elementdlg.h"

#include "generic.h"

namespace {

bool isFlag(const Element* element)
{
    return element->type() != Element::CheckedNumberA && element->type() != Element::CheckedNumberB &&
           element->type() != Element::Number;
}

// The state that an element tells; below 0 for one that cannot be believed. A variable is always believed.
int stateOf(const Element* element)
{
    if (!element->isVariable() && !element->valid())
        return -1;
    if (isFlag(element))
        return element->boolVal();
    constexpr float most = 1e6F; // far above any state, and no trouble for an integer
    const float number = element->numberVal();
    return number < 0 ? -1 : int(qMin(number, most));
}

} // namespace

ElementDlg::ElementDlg(TCPthread* link, QWidget* parent, const QString& id, const QString& name,
                       Element* state, Lock* lockOn, Lock* lockOff, const QList<Lock*>& listOn,
                       const QList<Lock*>& listOff, const QString& textOn, const QString& textOff,
                       const QString& cmdOn, const QString& cmdOff, const QStringList& strStates,
                       const QStringList& strElements, const QList<Element*>& listElements)
    : DeviceDlg(parent, id, name, -1, lockOn, lockOff, listOn, listOff, textOn, textOff, strStates)
    , m_link(link)
    , m_stateElement(state)
    , m_cmdOn(cmdOn)
    , m_cmdOff(cmdOff)
{
    Q_ASSERT(strElements.size() == listElements.size());

    setRows(strElements);
    for (int row = 0; row < listElements.size(); ++row)
        m_mapElementRows.insert(listElements[row], row);
    follow(state);
    for (const Element* element : listElements) {
        if (element != state)
            follow(element);
    }
}

void ElementDlg::follow(const Element* element)
{
    Q_ASSERT(Element::size(element->type()) > 0);
    if (!element->isVariable())
        connect(element, qOverload<const Element*, bool>(&Element::validChanged), this,
                &ElementDlg::validChanged);
    if (isFlag(element))
        connect(element, qOverload<const Element*, bool>(&Element::boolValChanged), this,
                &ElementDlg::boolChanged);
    else
        connect(element, qOverload<const Element*, float>(&Element::numberValChanged), this,
                &ElementDlg::numberChanged);
}

void ElementDlg::validChanged(const Element* element, bool valid)
{
    if (element == m_stateElement)
        showState();
    if (const int row = rowOf(element); row >= 0)
        showValidity(row, valid);
}

void ElementDlg::boolChanged(const Element* element, bool value)
{
    if (element == m_stateElement)
        showState();
    if (const int row = rowOf(element); row >= 0)
        showReading(row, switchText(value));
}

void ElementDlg::numberChanged(const Element* element, float value)
{
    if (element == m_stateElement)
        showState();
    if (const int row = rowOf(element); row >= 0)
        showReading(row, QString::number(double(value), 'f', element->dec()));
}

void ElementDlg::showState()
{
    onStateChanged(stateOf(m_stateElement));
}

int ElementDlg::rowOf(const Element* element) const
{
    const auto i = m_mapElementRows.find(element);
    if (element == m_stateElement && i == m_mapElementRows.end())
        return -1;
    Q_ASSERT(i != m_mapElementRows.end());
    return *i;
}

void ElementDlg::switchDevice(bool on)
{
    m_link->command(on ? m_cmdOn : m_cmdOff);
}
