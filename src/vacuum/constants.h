#pragma once

#include <QDialog>

#include <memory>

class KVKTCPthread;
class KVSTCPthread;
class VacuumLink;

namespace Ui {
class Constants;
}

// The numeric parameters of both vacuum controllers in one list. The tables come when the controllers answer
// "CONST", each through its slot; one value can be changed at a time, behind an access code. A change is a
// command to the controller, which takes effect there; the list is not read again.
//
// Made for one showing: whoever shows it connects the two slots and asks the controllers, KVK first. The rows
// of KVK are known by standing first, so an answer of KVK that comes after that of KVS misdirects a change. A
// further answer of a controller, to a question of an earlier showing, takes the place of its rows.
class Constants : public QDialog
{
    Q_OBJECT

public:
    // The links are not owned. Shows itself in a titled frame at the top edge of `parent`.
    Constants(KVKTCPthread* kvk, KVSTCPthread* kvs, QWidget* parent);
    ~Constants() override; // stores the widths of the columns

public slots:
    void onConstsReceivedKVK(int count);
    void onConstsReceivedKVS(int count);
    void on_pbChange_clicked();

signals:
    void message(const QString& line, bool isShow); // a journal line

private:
    // Shows the table of a controller whose rows so far are `shown`; returns how many they are now.
    int showRows(VacuumLink& link, const QString& prefix, int shown);
    int firstRow(const QString& prefix) const; // behind all rows when there is none yet

    std::unique_ptr<Ui::Constants> m_ui;
    KVKTCPthread* m_kvk;
    KVSTCPthread* m_kvs;
    int m_countKVS = 0;
    int m_countKVK = 0;
};
