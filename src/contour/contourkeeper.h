#pragma once

#include <QObject>
#include <QTimer>

#include <functional>

class QAbstractItemModel;

// Keeps the contour at work in its file while it is edited, so that a cut of the power or a fall of the
// console takes the last seconds only. The file is written some seconds after an edit, within ten after the
// last one, and only when its text has become another. Success is silent. A failure is told once, and tried
// again until the text is kept.
class ContourKeeper : public QObject
{
    Q_OBJECT

public:
    using Text = std::function<QString()>; // what the file is to hold; empty when there is nothing to keep

    // `path` without the site's root.
    ContourKeeper(const QString& path, Text text, QObject* parent);

    void watch(const QAbstractItemModel* table); // each change of it is an edit
    void edited();                               // something else of the text may have changed
    void taken();                                // the text is what was read from the file
    void keep();                                 // at once

signals:
    void message(const QString& text, bool show); // a journal line

private:
    const QString m_path;
    const Text m_text;
    QString m_kept; // the text that the file holds
    bool m_failed = false;
    QTimer m_timer;
};
