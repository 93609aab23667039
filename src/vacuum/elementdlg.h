#pragma once

#include "eldlg.h"

class Element;
class TCPthread;

// The small window of a device behind the generic link. Its state is an element: a flag is off or on, a
// number one of the states. While the element is invalid the state is an error.
class ElementDlg final : public DeviceDlg
{
    Q_OBJECT

public:
    // `state` and `listElements` are shown from their next change on and outlive the dialog, as does `link`.
    // `strElements`: the names of the rows, one for each of `listElements`.
    ElementDlg(TCPthread* link, QWidget* parent, const QString& id, const QString& name, Element* state,
               Lock* lockOn, Lock* lockOff, const QList<Lock*>& listOn, const QList<Lock*>& listOff,
               const QString& textOn, const QString& textOff, const QString& cmdOn, const QString& cmdOff,
               const QStringList& strStates, const QStringList& strElements,
               const QList<Element*>& listElements);

public slots:
    // Of the state or of a reading; assert on any other element.
    void validChanged(const Element* element, bool valid); // an invalid reading stands on pink
    void boolChanged(const Element* element, bool value);
    void numberChanged(const Element* element, float value);

protected:
    void switchDevice(bool on) override; // a command on a lost link is dropped without a word

private:
    void follow(const Element* element);
    void showState();
    int rowOf(const Element* element) const; // -1 for the state, unless it has a row too

    TCPthread* m_link;
    const Element* m_stateElement;
    const QString m_cmdOn;
    const QString m_cmdOff;
    QMap<const Element*, int> m_mapElementRows;
};
