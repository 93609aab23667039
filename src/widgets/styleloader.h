#pragma once

#include <QKeySequence>
#include <QObject>

// The application's style sheet, read from a file at start and again whenever a key is pressed.
class StyleLoader : public QObject
{
    Q_OBJECT

public:
    // Makes a loader that the application object owns, and applies the sheet at once.
    static void attach(const QString& file, QKeySequence key);
    static QString defaultStyleFile();

    // A file that cannot be read leaves the style as it is, with a line in the debug output.
    void setAppStyleSheet();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    StyleLoader(const QString& file, const QKeySequence& key, QObject* parent);

    QString m_file;
    QKeySequence m_key;
};
