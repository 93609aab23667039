#pragma once

#include <QBrush>
#include <QFile>
#include <QIcon>
#include <QString>

#include <array>

class QListWidget;

// What the console tells, for the operator in a list and for later readers in a file, one for each run. A
// line begins with its class, "[I]", "[W]", "[A]", "[C]" or "[M]"; the file keeps it, the list shows its icon
// and colour instead. Window's thread.
class Journal
{
public:
    // `list` belongs to the window. It follows the finger from now on.
    explicit Journal(QListWidget* list);

    // Begins the file of this run, /log/yyyy_MM_dd/polog_hh_mm_ss.log of this moment. Where there is no
    // folder /log there is no file: told in the debug output, and the list works all the same.
    void open();
    void close(); // lines that come later are for the list alone

    // Stamps the line with the time. It is in the file when this returns; a file that cannot be written is
    // told in the debug output, once. `shown` false: the file only.
    void write(const QString& line, bool shown);
    void show(const QString& stamp, const QString& line); // the list's part alone

private:
    struct Class // of a line
    {
        QLatin1String mark; // its first three characters
        QBrush colour;      // shared by all lines, as the icon: the list keeps every one of them
        QIcon icon;
    };

    QListWidget* m_list;
    const std::array<Class, 5> m_classes;
    QFile m_file;
    bool m_written = true; // the last line
};
