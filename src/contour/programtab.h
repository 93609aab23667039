#pragma once

#include <QObject>

class QLabel;
class QPlainTextEdit;

// The program of one NC channel: its text, which the operator may edit, the name beside it, the files it is
// kept in, and its start. A path is the controller's, which sees the same folder: it begins with "/" and
// bears no root.
class ProgramTab : public QObject
{
    Q_OBJECT
public:
    // `channel` is 1 to 3. The widgets belong to the form; dialogs open above `panel`, which owns this.
    ProgramTab(int channel, QPlainTextEdit* edit, QLabel* name, QWidget* panel);

    QString text() const;
    void show(const QString& program, const QString& name); // what a generator made

    // The operator chooses the file.
    void open();
    void save();

    // `path` is without its extension. A file that cannot be read changes nothing; one that cannot be written
    // stays as it was, and the journal tells so.
    void loadFile(const QString& name, const QString& path);
    void saveFile(const QString& name, const QString& path);

    // A generated program: `write` puts it where `start` starts it from. False when it was not written: that
    // is told, and it is not to be started.
    bool write(const QString& program);
    void start();

    // Writes the text as it stands and starts it, unless there is something against it: a journal line. False
    // when it was not started.
    bool run(const QString& against = {});

signals:
    void message(const QString& text, bool show); // a journal line
    void command(const QString& text);            // to the controller

private:
    bool writeProgram(const QString& path, const QString& program);
    void execute(const QString& path);
    QString launchPath() const;
    QString editedPath() const;

    int m_channel;
    QPlainTextEdit* m_edit;
    QLabel* m_name;
    QWidget* m_panel;
};
