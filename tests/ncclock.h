#pragma once

#include <QMap>
#include <QStringList>
#include <QVector>

#include <cmath>

// Reads a program as the controller does and tells how long each of its moves takes and where it ends.
// Written for the tests from the dialect alone: it knows nothing of contours and tables.
class NcClock
{
public:
    struct Step
    {
        double seconds = 0;
        double slack = 0; // what the decimals of the printed numbers may hide of it, s
        QMap<QString, double> at;
        double length = 0; // mm or deg; 0 for a dwell
    };

    struct Run
    {
        QVector<Step> steps; // moves and dwells between the first event and the end
        QStringList events;  // SEV, WEV and WREV in their order
        QString trouble;     // a statement that the controller would refuse
    };

    // `start`: where the axes stand. `mmPerDegree` of the turning part.
    static Run run(const QString& program, QMap<QString, double> start, double mmPerDegree)
    {
        Run result;
        NcClock clock;
        clock.m_at = std::move(start);
        clock.m_mmPerDegree = mmPerDegree;
        const QStringList lines = program.split('\n');
        bool counting = false;
        for (int i = 0; i < lines.size(); ++i) {
            const QString statement = lines[i].section(' ', 1);
            if (statement.startsWith("GOTO N")) {
                const QString target = statement.mid(5) + ' ';
                do {
                    ++i;
                } while (i < lines.size() && !lines[i].startsWith(target));
                if (i == lines.size())
                    result.trouble = "no block " + target;
                --i;
            } else if (statement.contains("EV(") && statement != "REV(ALL)") {
                result.events.append(statement);
                // Channel 1 and 2 begin with the event that they set, channel 3 with the one it waits for.
                counting = counting || statement.startsWith("SEV") || statement == "WEV(1)";
            } else if (statement == "M30" || statement == "ARF()" || (statement == "REV(ALL)" && counting)) {
                break;
            } else if (statement.startsWith('G') && !statement.startsWith("GAX")) {
                Step step;
                if (!clock.execute(statement, &step))
                    result.trouble = lines[i];
                if (counting && step.seconds >= 0 && !statement.startsWith("G1") &&
                    !statement.startsWith("G0 "))
                    result.steps.append(step);
            }
        }
        return result;
    }

private:
    bool execute(const QString& statement, Step* step)
    {
        QString motion;
        QMap<QString, double> words;
        for (const QString& token : statement.split(' ', Qt::SkipEmptyParts)) {
            if (token.startsWith('G')) {
                const QString code = QString::number(token.mid(1).toInt());
                if (code == "17" || code == "18" || code == "19")
                    m_plane = code.toInt();
                else if (code != "90")
                    motion = code;
                continue;
            }
            int letters = 0;
            while (letters < token.size() && token[letters].isLetter())
                ++letters;
            bool ok = false;
            const double value = token.mid(token.indexOf('=') >= 0 ? letters + 1 : letters).toDouble(&ok);
            if (!ok)
                return false;
            words[token.left(letters)] = value;
        }
        const double feed = words.take("F");
        if (motion == "4") {
            step->seconds = feed;
            step->slack = 0.0006;
            step->at = m_at;
            return true;
        }
        const double radius = words.take("R");
        const QMap<QString, double> from = m_at;
        for (auto word = words.begin(); word != words.end(); ++word)
            m_at[word.key()] = word.value();
        step->at = m_at;
        if (motion == "0" || motion == "16" || motion.isEmpty())
            return true;

        double error = 0.02; // mm: two ends with two decimals each
        double way = 0;
        if (motion == "1" && words.contains("V")) {
            const double turn = std::fabs(std::remainder(m_at["V"] - from["V"], 360.0));
            way = turn * m_mmPerDegree;
            error = 0.01 * m_mmPerDegree;
        } else if (motion == "1") {
            for (const QString& axis : words.keys())
                way = std::hypot(way, m_at[axis] - from[axis]);
            if (words.contains("IR"))
                error = 4e-6; // mA: the rate comes from single-precision cells
        } else {
            const char* axes[3][2] = {{"x", "y"}, {"x", "z"}, {"y", "z"}};
            const auto& plane = axes[m_plane - 17];
            const double chord = std::hypot(m_at[plane[0]] - from[plane[0]], m_at[plane[1]] - from[plane[1]]);
            if (chord > 2 * radius + 0.02)
                return false;
            const double sine = std::min(1.0, chord / (2 * radius));
            way = 2 * radius * std::asin(sine);
            error /= std::sqrt(std::max(1e-6, 1 - sine * sine));
        }
        step->length = way;
        if (feed <= 0)
            return way < 0.02;
        step->seconds = way / feed * 60;
        step->slack = error / feed * 60 + step->seconds * 0.0006 / feed + 1e-6;
        return true;
    }

    QMap<QString, double> m_at;
    double m_mmPerDegree = 0;
    int m_plane = 17;
};
