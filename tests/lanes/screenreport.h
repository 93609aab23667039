#pragma once

#include "trainer/screencheck.h"

#include <QDir>
#include <QDirIterator>
#include <QRegularExpression>
#include <QWidget>

#include <cstdio>
#include <iterator>

// What the machine wants otherwise: rule and path as one pattern, and why.
struct Exception
{
    const char* pattern;
    const char* reason;
};
inline const Exception exceptions[] = {
    // Colours that mean a state, the same all over the machine and in its papers.
    {"^contrast .*/(lblCNC|lblKVS|lblKVK|lblELA|lblContour)$",
     "white on red is a lost link or a run without current"},
    {"^contrast .*/lblVacuumState$", "white on pink is the setup regime"},
    {"^contrast .*/(pbStop|pbStopGoPoint)$", "the red of a stop button; its letters are three times as high"},
    {"^contrast .*/sbShutdown/", "the same red switches the installation off"},
    {"^contrast .*/lwLog/", "red is an alarm's line, which has its picture in front as well"},
    {"^contrast .*/CMessageStack$", "pink letters on the fill of the message's kind"},
    {"^contrast (Gui|MyFrame/AlarmDialog)/QLabel$",
     "an alarm's notice: white on red in bold letters of 30 px"},
    {"^small letters .*/lwLog/", "eight lines of the journal at a glance"},
    {"^small letters .*/lblState$", "the second line of a state button, under a title in 16 px"},
    {"^small letters .*/lblContour$", "two lines of a long name have room below the links"},
    {"^covered .*/lblGlDesk$", "the regime of the remote panel stands there while it holds the drives"},
    {"^covered Gui/(kvs|contour)/", "the notice of the key switch lies over the middle of what it locks"},
    {"^covered .*/(frmLY|pbInfoLY)", "the second drive of LX is shown in LY's row"},
    {"^targets too close .*/(frmLY|pbInfoLY)", "the same"},
    {"^targets too close Gui/kvs/PT", "a pressure and its unit answer a touch alike"},
    {"^targets too close Gui/kvs/(N|V)", "pictures of the mnemonic diagram meet where the pipes do"},
    {"^small target .*/lblND1$", "the pump's picture beside it answers alike"},
    {"^small target .*/QTableCornerButton$", "selects nothing: a touch there has no effect"},
    {"^elided .*/twUsers/", "its columns are as wide as the user leaves them"},
    {"^never on view eldlg.h/BkuDlg$", "the vacuum panel has no device of the beam unit"},
    {"^contrast .*/twTechTab/", "red is a row that the beam cannot follow"},
};

// What the walk has measured and found. Each finding is told once, with a crop of it in `folder`.
class ScreenReport
{
public:
    // `all`: the walk is whole, so that each exception must excuse something and nothing may be left out.
    ScreenReport(const QString& folder, bool all)
        : m_folder(folder)
        , m_all(all)
    {}

    // A window, and what must be seen of the console beneath it.
    void look(QWidget* window, const QString& state, QWidget* console)
    {
        ++m_windows;
        measure(window, state);
        for (const ScreenFinding& finding : coveredByWindows(
                 console, {"pbStop", "lblCNC", "lblKVS", "lblKVK", "lblELA", "frErrorDiagnostic"}))
            note(finding, state, console);
    }

    void measure(QWidget* part, const QString& state)
    {
        const ScreenMeasure measure = measureScreen(part);
        m_widgets += measure.widgets;
        m_texts += measure.texts;
        m_seen.unite(measure.seen);
        for (const ScreenFinding& finding : measure.findings)
            note(finding, state, part->window());
    }

    int end(int touches, double seconds)
    {
        if (m_all) {
            never(MIRTA_SOURCES "/forms", "*.ui", "<widget class=\"[^\"]*\" name=\"([^\"]+)\"");
            never(MIRTA_SOURCES "/src", "*.h",
                  "\nclass (\\w+)[^;{]*: public (?:QDialog|PatternDialog|DeviceDlg)\\b");
        }
        for (const Exception& exception : exceptions) {
            if (m_all && !m_excused.contains(exception.pattern)) {
                std::printf("an exception that excuses nothing: %s\n", exception.pattern);
                ++m_findings;
            }
        }
        std::printf("screen: %d windows, %d widgets, %d texts, %d touches, %d findings, %d named exceptions, "
                    "%.1f s\n",
                    m_windows, m_widgets, m_texts, touches, m_findings, int(std::size(exceptions)), seconds);
        return m_findings ? 1 : 0;
    }

private:
    void note(const ScreenFinding& finding, const QString& state, QWidget* window)
    {
        const QString name = finding.rule + ' ' + finding.path;
        const QString key =
            name + (finding.rule == "clipped" ? finding.what : finding.what.section(':', 0, 0));
        if (m_told.contains(key))
            return;
        m_told.insert(key);
        if (isExcused(name))
            return;
        const QString crop =
            QString("%1/finding-%2.png").arg(m_folder).arg(m_findings + 1, 3, 10, QChar('0'));
        window->grab(finding.place.adjusted(-40, -40, 40, 40) & window->rect()).save(crop);
        tell(name, finding.what + "\n    [" + state + "] " + crop);
    }

    bool isExcused(const QString& name)
    {
        for (const Exception& exception : exceptions) {
            if (QRegularExpression(exception.pattern).match(name).hasMatch()) {
                m_excused.insert(exception.pattern);
                return true;
            }
        }
        return false;
    }

    // What the files name and no state had on view.
    void never(const QString& folder, const QString& files, const QString& naming)
    {
        for (QDirIterator at(folder, {files}, QDir::Files, QDirIterator::Subdirectories); at.hasNext();) {
            QFile file(at.next());
            file.open(QIODevice::ReadOnly);
            auto named = QRegularExpression(naming).globalMatch(QString::fromUtf8(file.readAll()));
            while (named.hasNext()) {
                const QString name = named.next().captured(1);
                const QString told = "never on view " + at.fileName() + '/' + name;
                if (!m_seen.contains(name) && !isExcused(told))
                    tell(told, {});
            }
        }
    }

    void tell(const QString& name, const QString& what)
    {
        ++m_findings;
        std::printf("%s: %s\n", qPrintable(name), qPrintable(what));
    }

    QString m_folder;
    bool m_all;
    QSet<QString> m_told;
    QSet<QString> m_seen;
    QSet<QString> m_excused;
    int m_windows = 0;
    int m_widgets = 0;
    int m_texts = 0;
    int m_findings = 0;
};
