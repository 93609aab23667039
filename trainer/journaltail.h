#pragma once

#include <QObject>
#include <QTimer>

// The lines that a console writes into its journal from now on, wherever it runs: the newest file beneath the
// folder is followed, and a newer one when the console is started anew.
class JournalTail : public QObject
{
    Q_OBJECT

public:
    // `folder` holds a folder for each day. `period`: ms between two looks.
    explicit JournalTail(const QString& folder, int period = 100, QObject* parent = nullptr);

signals:
    void line(const QString& text); // without its time

private:
    QString newest() const;
    void look();

    QString m_folder;
    QString m_file;
    qint64 m_read = 0; // bytes
    QTimer m_timer;
};
