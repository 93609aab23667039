#pragma once

#include <QFrame>
#include <QList>
#include <QMap>
#include <QRect>
#include <QStringList>

#include <memory>

class KVKTCPthread;
class KVSTCPthread;
class LenzeElement;
class Lock;
class TcpLink;

namespace Ui {
class ElementDlg;
}

// The small window of one device: its name and model, its state, its readings, and one button that does the
// opposite of what the device is doing. It floats over the console, can be dragged by its title, and follows
// the telemetry while it is hidden. What the family shares; how the device is commanded is the heirs'.
class DeviceDlg : public QFrame
{
    Q_OBJECT

public:
    ~DeviceDlg() override;

    // While a modal window blocks the console the dialog steps aside, as it could neither be hidden nor
    // moved off what waits for an answer; it comes back unless it was hidden meanwhile.
    void setVisible(bool visible) override;

public slots:
    void showDlg(); // at the pointer, moved to where a dialog may stand

    // 0 off or closed, 1 on or open, 2 going off or closing, 3 going on or opening; any other number is an
    // error.
    void onStateChanged(int state);

    // A press that no interlock refused. A device on its way can be sent back at once. Before the first state
    // nothing happens.
    void on_sbSwitch_clicked();

protected:
    // `id` and `name`: the device and its model. `state`: what is known of it, below 0 for nothing. `lockOn`,
    // `lockOff`: the interlocks that decide over switching on (opening) and off (closing); `listOn`,
    // `listOff`: the reasons told. None is owned. `strStates`: names of the states 0 to 3, no more and no
    // fewer. `area`: where a dialog may stand, on the screen.
    DeviceDlg(QWidget* parent, const QString& id, const QString& name, int state, Lock* lockOn, Lock* lockOff,
              const QList<Lock*>& listOn, const QList<Lock*>& listOff, const QString& textOn,
              const QString& textOff, const QStringList& strStates, const QRect& area = consoleArea);

    // Makes the table of readings, one row to a name. Without names the dialog has none.
    void setRows(const QStringList& names);
    void showReading(int row, const QString& text);
    void showValidity(int row, bool valid); // an invalid reading keeps its text, in black on pink
    static QString switchText(bool on);     // a reading that is on or off

    virtual void switchDevice(bool on) = 0; // sends the command

    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

    static const QRect consoleArea; // the vacuum panel: x 0 to 900, y 100 to 1000

private:
    void place(const QPoint& corner);
    void endMoving();

    std::unique_ptr<Ui::ElementDlg> m_ui;
    int m_state;
    const QString m_textOn;
    const QString m_textOff;
    const QStringList m_states;
    const QRect m_area;
    bool m_aside = false; // hidden by a modal window only
    bool m_moving = false;
    QPoint m_grip; // where the title was seized, from the dialog's corner
};

// A device of the vacuum plant: text commands over the link of its controller, and readings of either.
class LenzeDlg : public DeviceDlg
{
    Q_OBJECT

public slots:
    void sensorChanged(const LenzeElement* element, float value);
    void numberChanged(const LenzeElement* element, int value); // 0 is off

protected:
    // `strElements` are the names of the rows, one for each of `listElements`, which outlive the dialog.
    LenzeDlg(TcpLink* link, QWidget* parent, const QString& id, const QString& name, int state, Lock* lockOn,
             Lock* lockOff, const QList<Lock*>& listOn, const QList<Lock*>& listOff, const QString& textOn,
             const QString& textOff, const QString& cmdOn, const QString& cmdOff,
             const QStringList& strStates, const QStringList& strElements,
             const QList<LenzeElement*>& listElements);

    void switchDevice(bool on) override; // a command on a lost link is dropped without a word

private:
    void showReading(const LenzeElement* element, const QString& text);

    TcpLink* m_link;
    const QString m_cmdOn;
    const QString m_cmdOff;
    QMap<const LenzeElement*, int> m_mapElementRows;
};

class KvsDlg final : public LenzeDlg
{
    Q_OBJECT

public:
    KvsDlg(KVSTCPthread* link, QWidget* parent, const QString& id, const QString& name, int state,
           Lock* lockOn, Lock* lockOff, const QList<Lock*>& listOn, const QList<Lock*>& listOff,
           const QString& textOn, const QString& textOff, const QString& cmdOn, const QString& cmdOff,
           const QStringList& strStates, const QStringList& strElements,
           const QList<LenzeElement*>& listElements);
};

class KvkDlg final : public LenzeDlg
{
    Q_OBJECT

public:
    KvkDlg(KVKTCPthread* link, QWidget* parent, const QString& id, const QString& name, int state,
           Lock* lockOn, Lock* lockOff, const QList<Lock*>& listOn, const QList<Lock*>& listOff,
           const QString& textOn, const QString& textOff, const QString& cmdOn, const QString& cmdOff,
           const QStringList& strStates, const QStringList& strElements,
           const QList<LenzeElement*>& listElements);
};

// A device of the unit BKU without a link: whoever owns the dialog passes its commands on. It may stand
// anywhere above the foot of the console.
class BkuDlg final : public DeviceDlg
{
    Q_OBJECT

public:
    BkuDlg(QWidget* parent, const QString& id, const QString& name, int state, Lock* lockOn, Lock* lockOff,
           const QList<Lock*>& listOn, const QList<Lock*>& listOff, const QString& textOn,
           const QString& textOff, const QStringList& strStates);

signals:
    // By the dialog's id: "ТМН", "VPT", "VE1". True switches on or opens.
    void signalCommandTMN(bool on);
    void signalCommandVPT(bool on);
    void signalCommandVE(bool on);

protected:
    void switchDevice(bool on) override;

private:
    const QString m_id;
};
