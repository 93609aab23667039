#include "ncclock.h"
#include "weldfixture.h"
#include "weldprogram.h"

#include <QtTest>

#include <random>

// Whatever the contour and the table: the three channels need the same time for every stretch between two
// technology rows, and every cut lies on the path.
namespace {

constexpr int samplesPerScheme = 400;

// One end of a move that the programs must contain: a frame's end or a cut.
struct Mark
{
    double path;    // mm with the passes left out taken away
    double seconds; // since event 1
    QList<double> at;
    bool cut;
};

struct Sample
{
    std::mt19937 random;
    std::unique_ptr<Weld> weld;
    QVector<double> ends; // path at the end of each frame of one pass; the last is the pass
    int stops = 0;

    explicit Sample(unsigned seed)
        : random(seed)
    {}

    double uniform(double low, double high) { return std::uniform_real_distribution<>(low, high)(random); }
    int whole(int low, int high) { return std::uniform_int_distribution<>(low, high)(random); }
    bool chance(double share) { return uniform(0, 1) < share; }
    static double cents(double value) { return std::round(value * 100) / 100; }
    double cents(double low, double high) { return cents(uniform(low, high)); }

    WeldContour& contour() { return weld->tables.contour; }
    QVector<TechRow>& tech() { return weld->tables.tech; }
    const QList<float>& coords(int row) { return contour().rows[row % contour().rows.size()].coords; }

    void straightContour();
    void circleContour();
    void ringContour();
    void measure();
    void table();

    QList<double> point(int frame, double part);
    QVector<Mark> marks(QVector<double>* stretches);
};

// Every frame goes on by x, so that no cut is dropped on it.
void Sample::straightContour()
{
    weld = std::make_unique<Weld>(new SchemaXYZ);
    const int count = whole(2, 9);
    QList<float> c{float(cents(-200, 200)), float(cents(-200, 200)), float(cents(-50, 50))};
    for (int i = 0; i < count; ++i) {
        const double dx = cents(5, 60) * (chance(0.5) ? 1 : -1);
        const QList<float> next{float(cents(double(c[0]) + dx)), float(cents(double(c[1]) + cents(-60, 60))),
                                float(cents(double(c[2]) + cents(-30, 30)))};
        Frame frame;
        const int plane = whole(0, 2);
        const PlaneColumns columns = planeColumns(plane);
        const double chord = std::hypot(double(next[columns.first]) - double(c[columns.first]),
                                        double(next[columns.second]) - double(c[columns.second]));
        if (chord > 8 && chance(0.4))
            frame = arc(float(std::ceil(chord * uniform(0.6, 2))), whole(0, 1), plane);
        weld->point(c, frame);
        c = next;
    }
    contour().rows.last().frame.type = Frame::End;
    if (count > 2 && chance(0.5)) {
        weld->closed(whole(1, 3));
        contour().rows.last().frame = Frame();
    }
    measure();
}

void Sample::circleContour()
{
    const int plane = chance(0.5) ? 0 : whole(1, 2);
    const PlaneColumns columns = planeColumns(plane);
    const double R = cents(20, 200);
    const double sense = chance(0.5) ? 1 : -1;
    const bool closed = chance(0.6);
    const int count = closed ? whole(4, 9) : whole(3, 6);
    // The start angle is found by its cosine, which is coarse where the circle crosses the first axis: two
    // decimals of the point are up to a millimetre of path there.
    const double start = uniform(20, 160) + (chance(0.5) ? 180 : 0);
    const double third = cents(-20, 20);
    const double cx = cents(-100, 100), cy = cents(-100, 100);
    weld = std::make_unique<Weld>(new SchemaXYZr(float(2 * R), 0, plane));
    for (int i = 0; i < count; ++i) {
        const double step = closed ? 360.0 / count : 300.0 / count;
        const double a = qDegreesToRadians(start + sense * step * (i + (i > 0 ? uniform(-0.15, 0.15) : 0)));
        QList<float> c{float(third), float(third), float(third)};
        c[columns.first] = float(cents(cx + R * std::cos(a)));
        c[columns.second] = float(cents(cy + R * std::sin(a)));
        weld->point(c);
    }
    contour().centerX = float(cx);
    contour().centerY = float(cy);
    if (plane == 0) { // taught points: the circle is found through them
        const Circle circle = calcD(contour());
        weld->schema->setD(float(circle.diameter));
        contour().centerX = float(cents(circle.centerX));
        contour().centerY = float(cents(circle.centerY));
    }
    if (closed)
        weld->closed(whole(1, 5));
    measure();
}

void Sample::ringContour()
{
    weld = std::make_unique<Weld>(new SchemaCircle(float(cents(20, 400)), 4));
    const bool closed = chance(0.6);
    const int count = closed ? whole(3, 10) : whole(2, 6);
    const double sense = chance(0.5) ? 1 : -1;
    const double start = chance(0.5) ? 0 : cents(0, 360);
    const bool follows = chance(0.5);
    QList<float> manipulator{float(cents(-50, 50)), float(cents(-50, 50)), float(cents(-50, 50))};
    for (int i = 0; i < count; ++i) {
        const double step = 360.0 / (closed ? count : count + 1);
        double a = start + sense * step * (i + (i > 0 ? uniform(-0.15, 0.15) : 0));
        a = cents(std::fmod(a + 720, 360));
        if (i > 0 && follows && chance(0.7))
            manipulator[whole(0, 2)] += float(cents(3, 20));
        weld->point({float(a < 360 ? a : 0), manipulator[0], manipulator[1], manipulator[2]});
    }
    if (closed)
        weld->closed(whole(1, 5));
    measure();
}

void Sample::measure()
{
    weld->measure();
    const int count = contour().rows.size();
    double sum = 0;
    for (int i = 0; i + 1 < count; ++i) {
        sum += contour().schema->round() ? contour().schema->distance(coords(i), coords(i + 1))
                                         : frameLength(contour(), i, coords(i), coords(i + 1));
        ends.append(sum);
    }
    if (contour().closed)
        ends.append(double(contour().length));
}

// Rows keep clear of the frames' ends, or lie on them as exactly as two decimals allow.
void Sample::table()
{
    const bool ring = contour().schema->circle();
    const double pass = double(contour().length);
    const double total = totalLength(contour());
    const auto speed = [this] { return float(cents(60, 2400)); };
    weld->row(0, chance(0.5) ? 0.0f : 10.0f, speed());
    QVector<double> paths;
    for (int i = whole(0, 14); i > 0; --i) {
        const int end = whole(0, ends.size() - 1 - (ring && contour().closed ? 1 : 0));
        const bool onEnd = chance(0.2);
        const double p =
            onEnd ? ends[end] + pass * whole(0, passCount(contour()) - 1) : uniform(0.6, total - 0.6);
        bool clear = p < total - 0.5;
        for (double e : ends)
            clear = clear && (onEnd || std::fabs(std::remainder(p - e, pass)) > 0.5);
        if (clear)
            paths.append(cents(p));
    }
    std::sort(paths.begin(), paths.end());
    double last = 0;
    for (double p : paths) {
        if (p - last < 1.0)
            continue;
        last = p;
        const bool on = tech().last().Ir > 0.0f;
        const float Ir = chance(on ? 0.5 : 0.6) ? 0.0f : float(cents(5, 50));
        const float If = chance(0.8) ? tech().last().If : float(whole(650, 750));
        weld->row(float(p), float(std::round(Ir * 10) / 10), speed(), If);
        if (!contour().closed && chance(0.2)) {
            weld->stop();
            ++stops;
            TechRow restart = tech()[tech().size() - 2];
            tech().last().Ir = restart.Ir; // for the next row's choice; a stop carries no values of its own
            tech().last().If = restart.If;
        }
        if (chance(0.1)) {
            weld->row(float(p) + 0.25f, 99, 1); // switched off: no part of the program
            tech().last().on = false;
            tech().last().Ir = Ir;
        }
    }
    weld->end(0, speed());
}

// A point of a frame, found from what the controller does with the frame's words.
QList<double> Sample::point(int frame, double part)
{
    const QList<float>& a = coords(frame);
    const QList<float>& b = coords(frame + 1);
    QList<double> p;
    for (int i = 0; i < a.size(); ++i)
        p.append(double(a[i]) + (double(b[i]) - double(a[i])) * part);
    const Schema& schema = *contour().schema;
    if (schema.circle()) {
        p[0] = double(a[0]) + std::remainder(double(b[0]) - double(a[0]), 360.0) * part;
        return p;
    }
    const Frame& f = contour().rows[frame].frame;
    if (!schema.rotate() && f.type != Frame::Arc)
        return p;

    const PlaneColumns columns = planeColumns(schema.rotate() ? schema.Aux() : f.plane);
    const double ax = double(a[columns.first]), ay = double(a[columns.second]);
    const double bx = double(b[columns.first]), by = double(b[columns.second]);
    const double r = double(schema.rotate() ? schema.R() : f.radius);
    const bool left = schema.rotate() ? circleStart(contour()).increasing : f.direction == 1;
    const double half = std::hypot(bx - ax, by - ay) / 2;
    const double lead = std::asin(std::min(1.0, half / r)); // half the angle of the shorter arc
    const double heading = std::atan2(by - ay, bx - ax) - (left ? lead : -lead);
    const double turned = 2 * lead * part; // from a: a chord of its own, bent by half of it
    const double chord = 2 * r * std::sin(turned / 2);
    const double direction = heading + (left ? turned / 2 : -turned / 2);
    p[columns.first] = ax + chord * std::cos(direction);
    p[columns.second] = ay + chord * std::sin(direction);
    return p;
}

// What the table asks for: ends and cuts with their times, and the time of each stretch of the table.
QVector<Mark> Sample::marks(QVector<double>* stretches)
{
    const bool round = contour().schema->round();
    const double pass = double(contour().length);
    QVector<QPair<double, double>> rows; // path, speed from there on
    rows.append({0.0, double(tech()[0].speed)});
    TechRow before = tech()[0];
    double leftOut = 0;
    for (int i = 1; i < tech().size(); ++i) {
        const TechRow& row = tech()[i];
        if (!row.on)
            continue;
        const double way = double(row.path) - double(before.path);
        if (round && row.Ir == 0.0f && before.Ir == 0.0f && row.If == before.If) {
            for (double rest = way; rest > pass; rest -= pass)
                leftOut += pass;
        }
        const double u = double(row.path) - leftOut;
        if (way != 0)
            stretches->append((u - rows.last().first) / rows.last().second * 60);
        rows.append({u, double(row.speed)});
        before = row;
    }

    const double runs = totalLength(contour()) - leftOut;
    QVector<Mark> result;
    int next = 1;
    double path = 0, seconds = 0, speed = rows[0].second;
    const auto go = [&](double to) {
        seconds += (to - path) / speed * 60;
        path = to;
    };
    for (int lap = 0; lap < passCount(contour()); ++lap) {
        for (int frame = 0; frame < ends.size(); ++frame) {
            const double begin = lap * pass + (frame > 0 ? ends[frame - 1] : 0.0);
            const double end = lap * pass + ends[frame];
            if (end > runs + 0.02)
                return result;
            for (; next < rows.size() && rows[next].first < end; ++next) {
                if (end - rows[next].first < 0.02)
                    break;
                go(rows[next].first);
                speed = rows[next].second;
                result.append({path, seconds, point(frame, (path - begin) / (end - begin)), true});
            }
            go(end);
            result.append({path, seconds, point(frame, 1), false});
            if (next < rows.size() && std::fabs(rows[next].first - end) < 0.02)
                speed = rows[next++].second;
        }
    }
    return result;
}

} // namespace

class TestWeldTiming : public QObject
{
    Q_OBJECT

private slots:
    void channelsAgree_data()
    {
        QTest::addColumn<int>("scheme");
        QTest::newRow("straight lines and arcs") << 0;
        QTest::newRow("circle") << 1;
        QTest::newRow("ring joint") << 2;
    }

    void channelsAgree()
    {
        QFETCH(int, scheme);
        int compared = 0, withStops = 0, withPauses = 0;
        for (unsigned seed = 1; seed <= samplesPerScheme; ++seed) {
            Sample sample(seed * 3 + unsigned(scheme));
            if (scheme == 0)
                sample.straightContour();
            else if (scheme == 1)
                sample.circleContour();
            else
                sample.ringContour();
            sample.table();
            QVERIFY(tableValidity(sample.tech()).valid);

            QVector<double> stretches;
            const QVector<Mark> marks = sample.marks(&stretches);
            if (mayDrop(sample, marks))
                continue; // a cut may be dropped by rule: its feed then merges into the next stretch
            ++compared;
            withStops += sample.stops > 0;
            withPauses += totalLength(sample.contour()) > (marks.isEmpty() ? 0 : marks.last().path) + 1;
            const QString trouble = compare(sample, marks, stretches);
            if (!trouble.isEmpty()) {
                WeldStage stage;
                const MotionPrograms programs = contourPrograms(sample.weld->tables, stage);
                qInfo().noquote() << programs.channel1 << '\n'
                                  << programs.channel2 << '\n'
                                  << technologyProgram(sample.weld->tables);
                QFAIL(qPrintable(QString("seed %1: %2").arg(seed).arg(trouble)));
            }
        }
        qInfo("%d samples compared, %d with stops, %d with passes left out", compared, withStops, withPauses);
        QVERIFY(compared > samplesPerScheme * 3 / 5);
        QVERIFY(withStops > samplesPerScheme / 20);
        QVERIFY(scheme == 0 || withPauses > samplesPerScheme / 20);
    }

private:
    // Where coordinate 0 hardly changes up to a cut: on a circle, and where a pause of whole passes leaves
    // two rows next to one another.
    static bool mayDrop(Sample& sample, const QVector<Mark>& marks)
    {
        const bool ring = sample.contour().schema->circle();
        double x = double(sample.coords(0)[0]);
        double path = 0;
        for (const Mark& mark : marks) {
            if (mark.cut && (mark.path - path < 0.3 || (!ring && std::fabs(mark.at[0] - x) < 0.1)))
                return true;
            x = mark.at[0];
            path = mark.path;
        }
        return false;
    }

    static QMap<QString, double> place(const Schema& schema, const QList<float>& c)
    {
        QMap<QString, double> at;
        const char* words[] = {"V", "x", "y", "z"};
        for (int i = 0; i < c.size(); ++i)
            at[words[schema.circle() ? i : i + 1]] = double(c[i]);
        return at;
    }

    // Empty when all is well.
    static QString compare(Sample& sample, const QVector<Mark>& marks, const QVector<double>& stretches)
    {
        const Schema& schema = *sample.contour().schema;
        const double mmPerDegree = double(schema.D()) * M_PI / 360;

        // Channel 3: a pause or a ramp for each stretch of the table.
        const NcClock::Run beam =
            NcClock::run(technologyProgram(sample.weld->tables), {{"IR", 0.0}, {"IW", 700.0}}, mmPerDegree);
        if (!beam.trouble.isEmpty())
            return beam.trouble;
        QVector<NcClock::Step> pauses = beam.steps;
        pauses.removeLast(); // the second after the beam is off
        if (pauses.size() != stretches.size())
            return QString("channel 3 has %1 stretches, not %2").arg(pauses.size()).arg(stretches.size());
        double total = 0, slack = 0;
        for (int i = 0; i < stretches.size(); ++i) {
            if (std::fabs(pauses[i].seconds - stretches[i]) > pauses[i].slack)
                return QString("channel 3, stretch %1: %2 s, not %3")
                    .arg(i)
                    .arg(pauses[i].seconds)
                    .arg(stretches[i]);
            total += pauses[i].seconds;
            slack += pauses[i].slack;
        }

        // Channels 1 and 2, stage by stage as the operator would start them.
        QVector<NcClock::Step> moves, turns;
        QStringList waits;
        WeldStage stage;
        QMap<QString, double> at1 = place(schema, sample.coords(0)), at2 = at1;
        for (stage.stage = 1; stage.stage <= sample.stops + 1; ++stage.stage) {
            stage.stopsSeen = 0;
            const MotionPrograms programs = contourPrograms(sample.weld->tables, stage);
            const NcClock::Run run1 = NcClock::run(programs.channel1, at1, mmPerDegree);
            const NcClock::Run run2 = NcClock::run(programs.channel2, at2, mmPerDegree);
            if (!run1.trouble.isEmpty() || !run2.trouble.isEmpty())
                return run1.trouble + run2.trouble;
            if (stage.stopsSeen != sample.stops)
                return QString("%1 stops seen").arg(stage.stopsSeen);
            moves += run1.steps;
            turns += run2.steps;
            if (!run1.steps.isEmpty())
                at1 = run1.steps.last().at;
            if (!run2.steps.isEmpty())
                at2 = run2.steps.last().at;
            const QString released = run1.events.filter("SEV").value(0);
            if (stage.stage > 1)
                waits.append(QString(released).replace("SEV", schema.circle() ? "WEV" : "WREV"));
        }
        if (beam.events.mid(2) != waits)
            return "channel 3 waits for " + beam.events.mid(2).join(' ') + ", not " + waits.join(' ');

        QString trouble = follow(sample, moves, marks, &slack);
        if (trouble.isEmpty() && schema.circle())
            trouble = follow(sample, turns, marks, &slack);
        double moved = 0;
        for (const NcClock::Step& step : moves)
            moved += step.seconds;
        if (trouble.isEmpty() && std::fabs(moved - total) > slack + 0.01)
            trouble = QString("channel 1 needs %1 s, channel 3 %2 s").arg(moved).arg(total);
        return trouble;
    }

    static QString follow(Sample& sample, QVector<NcClock::Step> steps, const QVector<Mark>& marks,
                          double* slack)
    {
        const Schema& schema = *sample.contour().schema;
        // The last row of a closed ring may fall a hair before the end of the turn.
        for (int i = steps.size() - 1; i > 0 && schema.circle() && sample.contour().closed; --i) {
            if (steps[i].seconds < 0.02 && steps.size() > marks.size()) {
                steps[i - 1].slack += steps[i].seconds + steps[i].slack;
                steps[i - 1].seconds += steps[i].seconds;
                steps[i - 1].at = steps[i].at;
                steps.removeAt(i);
            }
        }
        if (steps.size() != marks.size())
            return QString("%1 moves, not %2").arg(steps.size()).arg(marks.size());
        double before = 0;
        double path = 0;
        for (int i = 0; i < marks.size(); ++i) {
            const double asked = marks[i].seconds - before;
            // Points with two decimals lie off the circle through them, so its frames are a little shorter
            // or longer than their way.
            const double feed = asked > 0 ? (marks[i].path - path) / asked : 1;
            const double grain = steps[i].slack + (schema.rotate() ? 0.15 : 0.02) / feed;
            if (std::fabs(steps[i].seconds - asked) > grain)
                return QString("move %1: %2 s, not %3").arg(i).arg(steps[i].seconds).arg(asked);
            *slack += grain;
            before = marks[i].seconds;
            path = marks[i].path;
            const QMap<QString, double> want = place(schema, toFloat(marks[i].at));
            for (const QString& axis : want.keys()) {
                const bool turned = axis == "V" && !steps[i].at.contains(axis);
                const double d = std::fabs(std::remainder(want[axis] - steps[i].at[axis], 360.0));
                const bool owns = movesAxis(sample, axis, steps);
                if (!turned && owns && d > (schema.rotate() ? 0.08 : 0.02))
                    return QString("move %1 leads to %2=%3, not %4")
                        .arg(i)
                        .arg(axis)
                        .arg(steps[i].at[axis])
                        .arg(want[axis]);
            }
        }
        return QString();
    }

    // On a ring one channel has V, the other the manipulator.
    static bool movesAxis(Sample& sample, const QString& axis, const QVector<NcClock::Step>& steps)
    {
        if (!sample.contour().schema->circle())
            return true;
        const double first = steps.first().at[axis];
        return std::any_of(steps.begin(), steps.end(),
                           [&](const NcClock::Step& step) { return step.at[axis] != first; });
    }

    static QList<float> toFloat(const QList<double>& values)
    {
        QList<float> result;
        for (double value : values)
            result.append(float(value));
        return result;
    }
};

QTEST_GUILESS_MAIN(TestWeldTiming)
#include "test_weldtiming.moc"
