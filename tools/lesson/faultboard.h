#pragma once

#include <QAbstractButton>
#include <QTabWidget>
#include <QVector>

#include <functional>

// Every fault of the instructor's lines by a button, in pages. A button is pressed in while its fault stands,
// whoever has made it; a touch makes it or takes it away.
class FaultBoard : public QTabWidget
{
    Q_OBJECT

public:
    // `instruct` sends a line to the installation.
    explicit FaultBoard(std::function<void(const QString&)> instruct, QWidget* parent = nullptr);

    void show(const QStringList& faults); // as the installation tells them

private:
    void addPage(const QString& title, int columns, const QVector<QPair<QString, QString>>& faults);
    void touched(int index);

    struct Fault
    {
        QString line; // makes it
        QAbstractButton* button;
        bool stands = false;
    };
    std::function<void(const QString&)> m_instruct;
    QVector<Fault> m_faults;
};
