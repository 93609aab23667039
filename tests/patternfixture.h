#pragma once

#include "contourfixture.h"
#include "nctesthost.h"
#include "schema.h"
#include "widgets.h"

#include <QPlainTextEdit>

#include <algorithm>

// What the tests of the dialogs that write the two tables of a contour share.

using Answer = std::function<bool()>;

// Touches a number of the dialog on top and types another.
inline QList<Answer> typed(const char* label, const QString& number)
{
    return {[label] {
                auto* shown = Answers::shown<PoLabel>(label);
                if (shown)
                    QTimer::singleShot(0, shown, [shown] { QTest::mouseClick(shown, Qt::LeftButton); });
                return shown != nullptr;
            },
            Answers::number(number)};
}

inline Answer ticked(const char* box) // a box takes touches on its text only
{
    return [box] {
        auto* shown = Answers::shown<QAbstractButton>(box);
        if (shown)
            shown->click();
        return shown != nullptr;
    };
}

// Looks at the dialog on top.
inline Answer look(const char* widget, const std::function<void()>& at)
{
    return [widget, at] {
        if (!Answers::shown<QWidget>(widget))
            return false;
        at();
        return true;
    };
}

inline QString number(const char* label)
{
    const auto* shown = Answers::shown<QLabel>(label);
    return shown ? shown->text() : QStringLiteral("not shown");
}

// The programs of the three channels run on a simulated controller; tells where the beam was on.
class Beam
{
public:
    explicit Beam(const ContourWindow& window)
    {
        const auto program = [&](const char* edit) {
            return window.find<QPlainTextEdit>(edit)->toPlainText();
        };
        const bool ring = window.contour->schema()->circle();
        const QList<float> first = window.contour->coords(0); // where the operator places the machine
        host().at("X") = double(first[ring ? 1 : 0]);
        host().at("Y") = double(first[ring ? 2 : 1]);
        m_bench.start(3, program("teGcode_3"));
        m_bench.forSeconds(1);
        if (ring)
            m_bench.start(2, program("teGcode_2"));
        m_bench.forSeconds(1);
        m_bench.start(1, program("teGcode"));
    }

    NcTestHost& host() { return m_bench.host; }

    // `place` of the machine on the seam, mm. Each time the beam was on: from where to where, and its peak.
    struct Burn
    {
        double from, to, peak;
    };
    QVector<Burn> run(const std::function<double(NcTestHost&)>& place)
    {
        QVector<Burn> burns;
        bool on = false;
        m_ended = m_bench.untilDone(5000, {1, 2, 3}, [&] {
            const double Ir = host().at("IR");
            const double at = place(host());
            if (Ir > 0.5) {
                if (!on)
                    burns.append({at, at, Ir});
                burns.last().to = at;
                burns.last().peak = std::max(burns.last().peak, Ir);
            }
            on = Ir > 0.5;
            for (const int channel : {1, 3}) {
                if (m_bench.nc.state(channel) == plant::ChannelState::Running)
                    m_runningAt[channel] = host().time;
            }
        });
        return burns;
    }

    double ended(int channel) const { return m_runningAt.value(channel); } // s; of channels 1 and 3

    QString trouble() const
    {
        QStringList all = m_bench.host.told("deadlock");
        for (int channel = 1; channel <= 3; ++channel) {
            if (!m_bench.nc.error(channel).isEmpty())
                all << QString("channel %1: %2").arg(channel).arg(m_bench.nc.error(channel));
        }
        if (!m_ended)
            all << "does not end";
        return all.join('\n');
    }

private:
    NcBench m_bench{0.02};
    bool m_ended = false;
    QMap<int, double> m_runningAt; // the last time that a channel ran
};

// The tab of the contour with its dialogs.
class PatternFixture : public QObject
{
protected:
    void begin(); // an empty window on a site of its own
    void end();
    void answer(const char* button, QList<Answer> answers)
    {
        Answers all(std::move(answers));
        m_window->press(button);
        QVERIFY2(all.allGiven(), "a dialog did not come or was not answered");
    }
    void generate(int entry) { answer("pbTemplate", {Answers::entry(entry), Answers::button("pbCreate")}); }
    void line(const QString& length);
    void ring(const QString& D, int passes);
    // Path, current and speed of the rows between the fixed ones; comments by their text.
    QStringList rows() const;

    std::unique_ptr<SiteFixture> m_site;
    std::unique_ptr<ContourWindow> m_window;
};

inline void PatternFixture::begin()
{
    m_site = std::make_unique<SiteFixture>();
    m_window = std::make_unique<ContourWindow>();
    m_window->open();
    m_window->ready();
    answer("weldSpeed", {Answers::number("600")});
    answer("contourSpeed", {Answers::number("1200")});
}

inline void PatternFixture::end()
{
    m_window.reset();
    m_site.reset();
}

inline void PatternFixture::line(const QString& length)
{
    m_window->choose("pbNew", 0);
    m_window->teach(0, 0, 0);
    m_window->teach(length.toFloat(), 0, 0);
}

inline void PatternFixture::ring(const QString& D, int passes)
{
    m_window->newRing(D, "4");
    m_window->press("pbRing");
    answer("nrings", {Answers::number(QString::number(passes))});
}

inline QStringList PatternFixture::rows() const
{
    const QTableWidget* table = m_window->tech();
    QStringList list;
    for (int row = 1; row < table->rowCount() - 1; ++row) {
        list << m_window->cell(table, row, 0);
        if (table->columnSpan(row, 0) == 1)
            list.last() += ' ' + m_window->cell(table, row, 1) + ' ' + m_window->cell(table, row, 5);
    }
    return list;
}
