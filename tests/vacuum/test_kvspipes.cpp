#include "vacuumcontroller.h"
#include "widgets.h"

// Which pipes of the panel are lit, and the frame of the chamber.
class TestKvsPipes : public PanelFixture
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    // A walk over the valves: what each step lights (+) and puts out (-), and nothing else changes. Of pipes
    // that several valves feed, some go dark with one valve while another is still open: the operators know
    // the picture that way.
    void pipes()
    {
        const std::tuple<const char*, int, const char*> steps[] = {
            {"VP1", 1, "+A0 A1 A2"},
            {"VP1", 0, "-A0 A1 A2"},
            {"VP4", 2, "+H0 H1 H2 H3 H4 H5"}, // on the way is not closed
            {"VP4", 0, "-H0 H1 H2 H3 H4 H5"},
            {"VP8", 1, "+J0 J1 J2 J3"},
            {"VP8", 0, "-J0 J1 J2 J3"},
            {"VPT", 1, "+O0 O1 P0"},
            {"VPT", 0, "-O0 O1 P0"},
            {"VP2", 1, "+B0 B1 B2 B3 B4 BC B5 B6"},
            {"VP7", 1, "+C0 C1"},
            {"VP2", 0, "-B0 B1 B2 B3 B4"},
            {"VP2", 1, "+B0 B1 B2 B3 B4"},
            {"VP7", 0, "-C0 C1"},
            {"VP2", 0, "-B0 B1 B2 B3 B4 BC B5 B6"},
            {"VP7", 1, "+C0 C1 BC B5 B6"},
            {"VP7", 0, "-C0 C1 BC B5 B6"},
            {"VP3", 1, "+E0 E1 EF E2 E3 EG E4 E5 E6"},
            {"VP6", 1, "+G0 G1"},
            {"VP3", 0, "-E0 E1 EF E2 E3"},
            {"VP3", 1, "+E0 E1 EF E2 E3"},
            {"VP5", 1, "+F0 F1 F2 F3"},
            {"VP6", 0, "-G0 G1"},
            {"VP3", 0, "-E0 E1"},
            {"VP6", 1, "+G0 G1"},
            {"VP6", 0, "-G0 G1 E4 E5 E6 EG"},
            {"VP6", 1, "+G0 G1 E4 E5 E6 EG"},
            {"VP5", 0, "-F0 F1 F2 F3 EF E2 E3 EG"},
            {"VP6", 0, "-G0 G1 E4 E5 E6"},
            {"VP5", 1, "+F0 F1 F2 F3 EF E2 E3 EG E4 E5 E6"},
            {"VP3", 1, "+E0 E1"},
            {"VP5", 0, "-F0 F1 F2 F3"},
            {"VP3", 0, "-E0 E1 EF E2 E3 EG E4 E5 E6"},
            {"VP6", 1, "+G0 G1 E4 E5 E6 EG"},
            {"VP6", 0, "-G0 G1 E4 E5 E6 EG"},
        };
        // A pipe is lit when it does not show what it shows at first.
        QMap<QString, qint64> dark;
        for (const PoSprite* sprite : m_panel->findChildren<PoSprite*>()) {
            if (sprite->objectName().startsWith("pipe"))
                dark[sprite->objectName().mid(4)] = sprite->pixmap(Qt::ReturnByValue).cacheKey();
        }
        QCOMPARE(dark.size(), 41);
        QVERIFY(shows("pipeA0", "vpipe_0"));
        QStringList lit;
        for (const auto& [valve, state, changes] : steps) {
            set(valve, state);
            for (const QString& pipe : QString(changes + 1).split(' '))
                *changes == '+' ? lit.append(pipe) : void(lit.removeOne(pipe));
            lit.sort();
            QStringList shown;
            for (auto i = dark.cbegin(); i != dark.cend(); ++i) {
                if (w<PoSprite>("pipe" + i.key())->pixmap(Qt::ReturnByValue).cacheKey() != i.value())
                    shown << i.key();
            }
            QCOMPARE(shown, lit);
        }
    }

    void jacket()
    {
        for (int state : {0, 1, 2, 3, 4, 0}) {
            set("VP5", state);
            for (int i = 0; i <= 8; ++i)
                QCOMPARE(w(QString("pipeI%1").arg(i))->isHidden(), state == 0);
        }
    }

    void chamber()
    {
        const QColor open(160, 255, 255), closed(214, 210, 208);
        set("VP2", 1);
        QCOMPARE(colour("frmChamber"), closed);
        for (const char* valve : {"VP1", "VP3", "VP4", "VP8"}) {
            for (int state : {0, 1, 2, 3, 0}) { // on the way does not count
                set(valve, state);
                QCOMPARE(colour("frmChamber"), state == 1 ? open : closed);
            }
        }
    }

private:
    void set(const QString& valve, int state)
    {
        const QByteArray slot = valve == "VPT" ? "changedVPT" : "onChanged" + valve.toLatin1() + "State";
        QVERIFY(QMetaObject::invokeMethod(m_panel.get(), slot.constData(), Q_ARG(int, state)));
    }
};

QTEST_MAIN(TestKvsPipes)
#include "test_kvspipes.moc"
