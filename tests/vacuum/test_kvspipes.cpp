#include "vacuumcontroller.h"
#include "widgets.h"

namespace {

// What a change of a valve does to pipes that several valves feed: for each combination of lit valves, in
// binary order with the first valve first, whether the pipes go dark (0), are lit (1) or stay (-).
const struct
{
    const char* valve;
    const char* pipes;
    const char* valves;
    const char* truth;
} shared[] = {
    {"VP2", "BC B5 B6", "VP2 VP7", "0-11"},
    {"VP7", "BC B5 B6", "VP2 VP7", "01-1"},
    {"VP3", "EF E2 E3", "VP3 VP5 VP6", "00--1111"},
    {"VP3", "EG E4 E5 E6", "VP3 VP5 VP6", "0---1111"},
    {"VP5", "EF E2 E3 EG", "VP3 VP5 VP6", "0011--11"},
    {"VP5", "E4 E5 E6", "VP3 VP5 VP6", "0-11--11"},
    {"VP6", "E4 E5 E6 EG", "VP3 VP5 VP6", "0101-1-1"},
};

const std::map<QString, QStringList> pipeStems = {
    // clang-format off
    {"vpipe", {"A0", "B2", "B3", "B4", "B5", "B6", "E0", "E1", "E2", "E3", "E4", "E5", "E6", "F0", "F1", "H3", "H4", "J2"}},
    {"hpipe", {"A2", "B0", "C1", "F3", "G1", "H0", "H1", "J0", "O1", "P0"}},
    {"lbpipe", {"A1"}}, {"ltpipe", {"B1"}}, {"hlt", {"C0", "G0", "O0"}}, {"rbpipe", {"F2"}}, {"rtpipe", {"H2", "J1"}},
    {"vbt", {"H5", "J3"}}, {"lpipe", {"EF"}}, {"rpipe", {"EG", "BC"}},
    // clang-format on
};

const std::map<QString, QStringList> ownPipes = {
    {"VP1", {"A0", "A1", "A2"}},
    {"VP2", {"B0", "B1", "B2", "B3", "B4"}},
    {"VP3", {"E0", "E1"}},
    {"VP4", {"H0", "H1", "H2", "H3", "H4", "H5"}},
    {"VP5", {"F0", "F1", "F2", "F3"}},
    {"VP6", {"G0", "G1"}},
    {"VP7", {"C0", "C1"}},
    {"VP8", {"J0", "J1", "J2", "J3"}},
    {"VPT", {"O0", "O1", "P0"}},
};

QStringList words(const char* list)
{
    return QString::fromUtf8(list).split(' ');
}

} // namespace

// Which pipes of the panel are lit, and the frame of the chamber.
class TestKvsPipes : public PanelFixture
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }
    void pipes();
    void chamber();

private:
    void set(const QString& valve, int state)
    {
        const QByteArray slot = valve == "VPT" ? "changedVPT" : "onChanged" + valve.toLatin1() + "State";
        QVERIFY(QMetaObject::invokeMethod(m_panel.get(), slot.constData(), Q_ARG(int, state)));
    }
    bool shows(const QString& sprite, const QString& image) const
    {
        const QPixmap expected(QStringLiteral(":/images/%1.png").arg(image));
        return !expected.isNull() &&
               w<PoSprite>(sprite)->pixmap(Qt::ReturnByValue).toImage() == expected.toImage();
    }
};

// Every change of a valve from every combination of the valves that share pipes, over dark and over lit
// pipes.
void TestKvsPipes::pipes()
{
    QMap<QString, std::array<qint64, 2>> faces;
    for (const auto& [stem, names] : pipeStems) {
        for (const QString& name : names) {
            auto* pipe = w<PoSprite>("pipe" + name);
            QVERIFY2(shows("pipe" + name, stem + "_0"), qPrintable(name)); // dark at first
            for (size_t lit : {0U, 1U}) {
                pipe->setSprite(int(lit));
                QVERIFY2(shows("pipe" + name, stem + (lit ? "_1" : "_0")), qPrintable(name));
                faces[name][lit] = pipe->pixmap(Qt::ReturnByValue).cacheKey();
            }
        }
    }
    QCOMPARE(faces.size(), 41);
    QVERIFY(w("pipeI0")->isHidden() && w("pipeI8")->isHidden());

    for (const char* group : {"VP1", "VP4", "VP8", "VPT", "VP2 VP7", "VP3 VP5 VP6"}) {
        const QStringList valves = words(group);
        int combinations = 1;
        for (int i = 0; i < valves.size(); ++i)
            combinations *= 3;
        for (int number = 0; number < combinations * valves.size() * 3 * 2; ++number) {
            // Digits of the number: what lay there, what changes, to which state, and the states before.
            const int before = number % 2;
            const int to = number / 2 % 3;
            const QString& valve = valves[number / 6 % valves.size()];
            QMap<QString, int> states;
            int rest = number / 6 / valves.size();
            for (const QString& each : valves) {
                states[each] = rest % 3;
                set(each, states[each]);
                rest /= 3;
            }
            for (auto i = faces.begin(); i != faces.end(); ++i)
                w<PoSprite>("pipe" + i.key())->setSprite(before);
            set(valve, to);

            states[valve] = to;
            QMap<QString, int> expected;
            for (const QString& pipe : ownPipes.at(valve))
                expected[pipe] = to != 0;
            for (const auto& rule : shared) {
                if (valve != rule.valve)
                    continue;
                int row = 0;
                for (const QString& each : words(rule.valves))
                    row = 2 * row + (states[each] != 0);
                for (const QString& pipe : words(rule.pipes))
                    expected[pipe] = rule.truth[row] == '-' ? before : rule.truth[row] - '0';
            }
            for (auto i = faces.begin(); i != faces.end(); ++i) {
                const qint64 shown = w<PoSprite>("pipe" + i.key())->pixmap(Qt::ReturnByValue).cacheKey();
                if (shown != i.value()[size_t(expected.value(i.key(), before))])
                    QFAIL(qPrintable(QStringLiteral("pipe%1 after %2 to %3, number %4")
                                         .arg(i.key(), valve)
                                         .arg(to)
                                         .arg(number)));
            }
        }
    }
    for (int state : {0, 1, 2, 3, 4, 0}) {
        set("VP5", state);
        for (int i = 0; i <= 8; ++i)
            QCOMPARE(w(QStringLiteral("pipeI%1").arg(i))->isHidden(), state == 0);
    }
}

void TestKvsPipes::chamber()
{
    const QColor open(160, 255, 255), closed(214, 210, 208);
    const QStringList valves = words("VP1 VP3 VP4 VP8");
    QList<int> states{0, 0, 0, 0};
    for (int number = 0; number < 256; ++number) {
        for (int i = 0; i < 4; ++i) {
            states[i] = number >> 2 * i & 3;
            set(valves[i], states[i]);
            QCOMPARE(colour("frmChamber"), states.contains(1) ? open : closed); // on the way does not count
        }
        set("VP2", 1);
        QCOMPARE(colour("frmChamber"), states.contains(1) ? open : closed);
    }
}

QTEST_MAIN(TestKvsPipes)
#include "test_kvspipes.moc"
