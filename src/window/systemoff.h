#pragma once

#include <QDialog>
#include <QTimer>

#include <memory>

class TCPthread;
namespace Ui {
class SystemOff;
}

// The minute before the installation switches itself off. Nobody opens it yet: it stands ready for a unit
// that asks for the power-off. It counts from the moment it is made; the caller shows it and does what
// turnOff() asks for. Stays above everything, without a frame that could be closed past the question.
class SystemOff : public QDialog
{
    Q_OBJECT

public:
    // `link`: to the unit that asked, and is told when the operator goes on working. Not owned, may be null.
    SystemOff(TCPthread* link, QWidget* parent);
    ~SystemOff() override;

    void reject() override; // ends the count as well

signals:
    void turnOff();                               // nobody answered
    void message(const QString& text, bool show); // a journal line

public slots:
    void on_pbCancel_clicked();
    void timeChanged(); // a second has gone

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    std::unique_ptr<Ui::SystemOff> ui;
    TCPthread* m_link;
    QTimer m_timer;
    int m_seconds; // left
};
