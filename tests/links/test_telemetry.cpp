#include "generic.h"

#include "comparetext.h"
#include "deathtest.h"
#include "elementdlg.h"
#include "linkcontroller.h"
#include "lockview.h"
#include "sitefixture.h"
#include "statebutton.h"
#include "widgets.h"

#include <QTableWidget>
#include <QtTest>

#include <limits>
#include <thread>

namespace {

using Map = QMap<QString, Element*>;

QByteArray packet(const QByteArray& bytes) // a text or a block: both have the same head
{
    return frame(bytes, 0x5153);
}

QByteArray f32(float value)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

// Owns the elements of a map.
struct Elements
{
    void add(int type, const char* name, int dec = 1, float min = -100, float max = 100)
    {
        own.push_back(std::make_unique<Element>(Element::Type(type), name, dec, min, max));
        map.insert(name, own.back().get());
    }
    Element& operator[](const char* name) { return *map.value(name); }

    std::vector<std::unique_ptr<Element>> own;
    Map map;
};

// A unit that publishes values: its TCP side, and the blocks.
struct Unit : SiteFixture, LinkController
{
    Unit()
        : LinkController(site().drive)
    {}
    bool connect(TCPthread& link, Map& map) const
    {
        return link.connect(where.host, where.tcpPort, where.udpPort, &map);
    }
    bool open(TCPthread& link, Map& map) { return connect(link, map) && accept(); }
    QByteArray heard(int bytes) const
    {
        while (peer->bytesAvailable() < bytes && peer->waitForReadyRead(5000)) {
        }
        return peer->readAll();
    }

    const Endpoint where = site().drive;
    QObject here; // hears what the link tells; what it has not yet heard goes with it
};

// What an element tells: "valid 1", "raw 2.5" ..., each signal in its short form; the long form must agree.
struct Diary
{
    explicit Diary(Element& element)
    {
        watch(element, &Element::validChanged, &Element::validChanged, "valid ");
        watch(element, &Element::rawNumberValChanged, &Element::rawNumberValChanged, "raw ");
        watch(element, &Element::numberValChanged, &Element::numberValChanged, "number ");
        watch(element, &Element::boolValChanged, &Element::boolValChanged, "bool ");
        watch(element, &Element::stringValChanged, &Element::stringValChanged, "string ");
    }
    QStringList take() { return std::exchange(lines, {}); }

    QObject here;
    QStringList lines;
    QString before;

private:
    template <class T>
    void watch(Element& element, void (Element::*full)(const Element*, T), void (Element::*plain)(T),
               const char* name)
    {
        const auto line = [name](T value) { return QString(name + QString("%1").arg(value)); };
        QObject::connect(&element, full, &here, [this, &element, line](const Element* sender, T value) {
            before = sender == &element ? line(value) : "?";
        });
        QObject::connect(&element, plain, &here, [this, line](T value) {
            lines += before == line(value) ? before : "only one form of " + line(value);
        });
    }
};

// A unit with two numbers in its block, "a" and "b", and a link that has taken 1 and 2 of them.
struct Pair
{
    Elements all;
    Unit unit;
    TCPthread link;

    Pair()
    {
        all.add(6, "a");
        all.add(6, "b");
        QVERIFY(unit.open(link, all.map));
        QTRY_VERIFY((unit.datagram(packet(f32(1) + f32(2))), all["b"].numberVal() == 2));
    }
};

} // namespace

class TestTelemetry : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    }
    void cleanupTestCase() { qInstallMessageHandler(nullptr); }

    void elementTellsFirstValuesAndChanges()
    {
        Element e(Element::CheckedNumberA, "I", 2, -1, 5);
        QVERIFY(!e.valid() && e.numberVal() == 0 && e.offset() == -1 && !e.isVariable());
        Diary diary(e);
        for (const QStringList& told :
             {QStringList{"valid 0", "raw 0", "number 0", "bool 0", "string "}, {}}) {
            e.setValid(false);
            e.setRawNumberVal(0);
            e.setNumberVal(0);
            e.setBoolVal(false);
            e.setStringVal(QString());
            QCOMPARE(diary.take(), told);
        }

        // The scaled value is kept within the limits, the raw one is not.
        for (const float v : {7.0F, 9.0F, -8.0F, 2.5F, std::numeric_limits<float>::quiet_NaN()}) {
            e.setRawNumberVal(v);
            e.setNumberVal(v);
        }
        QCOMPARE(diary.take(), (QStringList{"raw 7", "number 5", "raw 9", "raw -8", "number -1", "raw 2.5",
                                            "number 2.5", "raw nan", "number -1"}));
        QVERIFY(deathOf([] { Element(Element::FlagA, "a", 0, 1, 0); }).contains("\"min <= max\""));

        // The mutex is free while a change is told.
        float seen = 0;
        connect(&e, qOverload<float>(&Element::numberValChanged), &e, [&](float) { seen = e.numberVal(); });
        e.setNumberVal(4);
        QCOMPARE(seen, 4.0F);
    }

    void subscriptionAndOffsets()
    {
        // One of each type, and one that is not known; the order is that of the names.
        Elements all;
        const char* const names[] = {"h", "g", "f", "e", "d", "c", "b", "a%1"};
        for (int type = 0; type < 8; ++type)
            all.add(type, names[type]);

        Unit unit;
        TCPthread link;
        QVERIFY(!link.command("nobody there"));
        QVERIFY(unit.open(link, all.map));
        QVERIFY(!unit.connect(link, all.map));
        const QByteArray text =
            "SUBSCRIBE PORT " + QByteArray::number(unit.where.udpPort) + " DELAY 50 a%1, b, c, d, e, f, g, h";
        QCOMPARE(unit.heard(4 + text.size()), packet(text));
        const int offsets[] = {26, 24, 15, 6, 5, 4, 0, 0}; // of type 0, 1 ...
        for (size_t type = 0; type < 8; ++type)
            QCOMPARE(all.own[type]->offset(), offsets[type]);

        Unit second;
        Map nothing;
        TCPthread idle;
        QVERIFY(second.open(idle, nothing));
        const QByteArray bare = "SUBSCRIBE PORT " + QByteArray::number(second.where.udpPort) + " DELAY 50 ";
        QCOMPARE(second.heard(4 + bare.size()), packet(bare));

        second.server.close();
        TCPthread refused;
        QVERIFY(deathOf([&] {
                    second.connect(refused, nothing);
                    refused.connect(QString(), 1, 2, &nothing);
                    abort();
                }).contains("comm.cpp connect() error: Connection refused\nCOMM gethostbyname() error: "));
        QVERIFY(!second.connect(refused, nothing));
        QVERIFY(!refused.connected() && !refused.disconnect());

        // The same elements again keep their places; one more that comes before them would move them.
        QVERIFY(link.disconnect());
        QVERIFY(unit.open(link, all.map));
        QVERIFY(link.disconnect());
        all.add(0, "a");
        QVERIFY(
            deathOf([&] { unit.connect(link, all.map); }).contains("\"(m_offs < 0) || (m_offs == offs)\""));
    }

    void labelFollowsElement()
    {
        Elements all;
        all.add(2, "sensor", 2);
        all.add(6, "variable", 0);
        PoLabel sensor;
        PoLabel variable;
        sensor.setElement(&all["sensor"]);
        variable.setElement(&all["variable"]);
        all["sensor"].setNumberVal(1.255F);
        all["variable"].setNumberVal(12.4F);
        for (Element* element : qAsConst(all.map))
            element->setValid(false);
        QCOMPARE(sensor.text(), "1.25");
        QCOMPARE(variable.text(), "12");
        const auto pink = [](const PoLabel& label) {
            return label.palette().color(label.backgroundRole()) == QColor(255, 192, 192);
        };
        QVERIFY(pink(sensor) && !pink(variable));
    }

    void framesBothWays()
    {
        Unit unit;
        Map nothing;
        TCPthread link;
        QStringList messages;
        connect(&link, &TCPthread::message, &unit.here, [&](const QString& text) { messages += text; });
        QVERIFY(unit.open(link, nothing));
        unit.heard(1);
        QVERIFY(link.command("SET ток := 1;"));
        const QByteArray sent = packet("SET ток := 1;");
        QCOMPARE(unit.heard(sent.size()), sent);
        QVERIFY(!link.command(QString(65536, 'x')));

        // A frame byte by byte, an empty one, one of another link that does not end the connection, a good
        // frame.
        for (const char byte : packet("slow")) {
            unit.send(QByteArray(1, byte));
            QVERIFY(QTest::qWaitFor([&] { return unit.taken(); }));
        }
        unit.send(packet(""));
        unit.send(frame("other"));
        unit.send(packet(QByteArray("good\0hidden", 11)));
        QTRY_COMPARE(messages, (QStringList{"slow", "", "good"}));
        QVERIFY(link.connected());

        // The unit goes away.
        int ends = 0;
        connect(&link, &TCPthread::disconnected, &unit.here, [&] { ++ends; });
        unit.peer->close();
        QTRY_COMPARE(ends, 1);
        QVERIFY(!link.connected() && !link.command("too late"));
    }

    void blockFillsTheElements()
    {
        Elements all;
        for (const char* name : {"a0", "b1", "c2", "d3", "e4", "f5", "g6"})
            all.add(name[1] - '0', name);
        Unit unit;
        TCPthread link;
        QVERIFY(unit.open(link, all.map));

        std::vector<std::unique_ptr<Diary>> diaries;
        for (Element* element : qAsConst(all.map))
            diaries.push_back(std::make_unique<Diary>(*element));
        // Bytes other than 0 are true; what follows the elements is not looked at.
        const QByteArray data = QByteArray("\1\0\0\5", 4) + '\1' + f32(12.5F) + f32(4095) + '\0' + f32(-300) +
                                f32(-7) + '\x80' + '\0' + f32(1e9F) + "rest";
        const QList<QStringList> told = {{"valid 1", "bool 0"},
                                         {"valid 0", "bool 1"},
                                         {"valid 1", "raw 4095", "number 12.5"},
                                         {"valid 0", "raw -7", "number -100"},
                                         {"bool 1"},
                                         {"bool 0"},
                                         {"number 100"}};
        QTRY_VERIFY((unit.datagram(packet(data)), !diaries.back()->lines.isEmpty()));
        unit.datagram(packet(data));
        for (int i = 0; i < told.size(); ++i)
            QCOMPARE(diaries[size_t(i)]->take(), told[i]);

        // Silence ends the connection, though not within a frame; every value is stale then, of whatever
        // type.
        int ends = 0;
        QStringList messages;
        connect(&link, &TCPthread::disconnected, &unit.here, [&] { ++ends; });
        connect(&link, &TCPthread::message, &unit.here, [&](const QString& text) { messages += text; });
        unit.send(packet("late").left(6));
        QTest::qWait(1400);
        QVERIFY(ends == 0 && link.connected());
        unit.send(packet("late").mid(6));
        QTRY_COMPARE(ends, 1);
        QCOMPARE(messages, QStringList("late"));
        QVERIFY(!link.connected());
        for (Element* element : qAsConst(all.map))
            QVERIFY(!element->valid());
        QTRY_COMPARE(diaries[4]->lines, QStringList{"valid 0"});
        QCOMPARE(diaries[0]->lines, QStringList{"valid 0"});

        // The loss was that of the former connection.
        QVERIFY(unit.open(link, all.map));
        QTRY_VERIFY((unit.datagram(packet(data)), all["a0"].valid()));
        QVERIFY(link.disconnect());
        QTRY_COMPARE(ends, 2);
    }

    void blockOverSeveralDatagrams()
    {
        Pair pair;
        auto& [all, unit, link] = pair;

        // Cut anywhere, even in the head; longer than a datagram may be in the end.
        const QByteArray block = packet(f32(3) + f32(4));
        for (int cut = 2; cut < block.size(); ++cut) {
            all["b"].setNumberVal(0);
            unit.stray(frame("")); // neither a block nor the rest of one
            unit.datagram(block.left(cut));
            unit.stray(block.mid(cut));
            QTest::qWait(5);
            const bool early = all["b"].numberVal() == 4;
            unit.datagram(block.mid(cut)); // in any case: the telemetry would wait for it for ever
            QVERIFY2(!early, "half a block was read");
            QTRY_COMPARE(all["b"].numberVal(), 4.0F);
        }
        const QByteArray largest = packet(f32(5) + f32(6) + QByteArray(65503 - 8, 'x'));
        unit.datagram(largest.left(40000));
        unit.datagram(largest.mid(40000));
        QTRY_COMPARE(all["b"].numberVal(), 6.0F);

        // More than any block may hold.
        Unit second;
        QVERIFY(deathOf([&] {
                    Map nothing;
                    TCPthread link2;
                    second.connect(link2, nothing);
                    for (int i = 0; i < 100; ++i) {
                        second.datagram(largest.left(40000));
                        QThread::msleep(20);
                    }
                }).contains("\"s + sock.pendingDatagramSize() <= sizeof(packet)\""));
    }

    void brokenBlocks()
    {
        // Of another link, a single byte, too short for the second element. The first two end the telemetry.
        for (const auto& [block, ends] : {std::pair{frame(f32(9) + f32(9)), true},
                                          {QByteArray("\x53"), true},
                                          {packet(f32(7) + "xyz"), false}}) {
            Pair pair;
            auto& [all, unit, link] = pair;
            for (Element* element : qAsConst(all.map))
                element->setValid(true);
            unit.datagram(block);
            QTRY_VERIFY(!all["b"].valid());
            QCOMPARE(all["b"].numberVal(), 2.0F); // the last good value stays
            QCOMPARE(all["a"].valid(), !ends);
            const QByteArray next = packet(f32(1) + f32(3));
            if (!ends) {
                QTRY_VERIFY((unit.datagram(next), all["b"].numberVal() == 3));
                continue;
            }
            // The telemetry that has ended does not miss anything any more; the connection stays.
            if (block.size() > 1) // once is enough
                QTest::qWait(1250);
            unit.datagram(next);
            QTest::qWait(50);
            QVERIFY(link.connected());
            QCOMPARE(all["b"].numberVal(), 2.0F);
        }
    }

    void valuesReadWhileTheyCome()
    {
        Elements all;
        all.add(2, "a", 1, 0, 1e6F);
        Element& e = all["a"];
        Unit unit;
        TCPthread link;
        QVERIFY(unit.open(link, all.map));
        QTRY_VERIFY((unit.datagram(packet('\1' + f32(0) + f32(0))), e.valid()));

        // The telemetry writes as fast as it can while a second thread reads, and a third writes texts.
        std::atomic<bool> stop{false};
        int told = 0;
        connect(&e, qOverload<const Element*, float>(&Element::numberValChanged), &unit.here,
                [&](const Element*, float) { ++told; });
        float last = 0;
        bool ordered = true;
        std::thread reader([&] {
            while (!stop) {
                const float now = e.numberVal();
                ordered = ordered && now >= last && e.rawNumberVal() >= now;
                last = now;
                ordered = ordered && e.stringVal().size() <= 100;
            }
        });
        std::thread writer([&] {
            for (int i = 0; !stop; ++i)
                e.setStringVal(QString(i % 100, 'x'));
        });
        for (int i = 1; i <= 3000; ++i) {
            unit.datagram(packet('\1' + f32(float(i)) + f32(float(i))));
            if (i % 20 == 0)
                QTest::qWait(1);
        }
        QTRY_VERIFY((unit.datagram(packet('\1' + f32(5000) + f32(5000))), e.numberVal() == 5000));
        stop = true;
        reader.join();
        writer.join();
        QVERIFY(ordered);
        QTRY_VERIFY(told > 100);
    }

    void deviceDialog()
    {
        Elements all;
        all.add(2, "state", 0, 0, 10);
        all.add(1, "power");
        all.add(6, "flow", 2);
        Unit unit;
        TCPthread link;
        QVERIFY(unit.open(link, all.map));
        unit.heard(1);
        Lock lockOff(false, "busy", "idle");
        const auto dlg =
            dialog(link, all["state"], lockOff, {"power", "flow"}, {&all["power"], &all["flow"]});
        auto* shown = dlg->findChild<QLabel*>("lblState");
        auto* button = dlg->findChild<StateButton*>("sbSwitch");
        auto* table = dlg->findChild<QTableWidget*>("twElements");
        QCOMPARE(shown->text(), "[нет данных]");

        // Valid, state, its text, and the button's command: in an error it does what it did before.
        for (const auto& [valid, state, text, command] : {std::tuple{true, 2.0F, "[stops]", "P1 ON"},
                                                          {true, 3.9F, "[starts]", "P1 OFF"},
                                                          {false, 3.9F, "[ошибка]", "P1 OFF"},
                                                          {true, 0.0F, "[off]", "P1 ON"},
                                                          {true, 4.0F, "[ошибка]", "P1 ON"},
                                                          {true, 1.0F, "[on]", "P1 OFF"}}) {
            const QByteArray flags = valid ? QByteArray("\1\1\1", 3) : QByteArray("\0\1\0", 3);
            const QByteArray block = f32(1.005F) + flags + f32(state) + f32(0); // flow, power, state
            QTRY_VERIFY((unit.datagram(packet(block)), all["state"].numberVal() == state));
            QTRY_COMPARE(shown->text(), QString(text));
            QTRY_COMPARE(table->item(0, 1)->background().color() == QColor(255, 192, 192), !valid);
            dlg->showDlg();
            QTest::mousePress(button, Qt::LeftButton);
            QCOMPARE(unit.heard(4 + int(qstrlen(command))), packet(command));
            QVERIFY(dlg->isHidden());
        }
        QCOMPARE(table->item(0, 1)->text(), "Вкл.");
        QCOMPARE(table->item(1, 1)->text(), "1.00");

        lockOff.setState(true); // the interlock holds
        dlg->showDlg();
        QTest::mousePress(button, Qt::LeftButton);
        QTest::mouseRelease(button, Qt::LeftButton);
        QVERIFY(!dlg->isHidden() && !unit.peer->waitForReadyRead(50));
    }

    void deviceDialogOfAFlag()
    {
        // A flag has two states; a variable is believed without a word about its validity.
        Elements all;
        all.add(5, "simple");
        all.add(1, "power");
        TCPthread link;
        Lock lockOff(false, "busy", "idle");
        const auto dlg = dialog(link, all["simple"], lockOff, {}, {});
        all["simple"].setBoolVal(true);
        QCOMPARE(dlg->findChild<QLabel*>("lblState")->text(), "[on]");
        QVERIFY(dlg->findChild<QTableWidget*>("twElements")->isHidden());
        QVERIFY(deathOf([&] {
                    dialog(link, all["simple"], lockOff, {"one"}, {});
                }).contains("\"strElements.size() == listElements.size()\""));
        QVERIFY(deathOf([&] {
                    dlg->boolChanged(&all["power"], true);
                }).contains("\"i != m_mapElementRows.end()\""));
    }

private:
    static std::unique_ptr<ElementDlg> dialog(TCPthread& link, Element& state, Lock& lockOff,
                                              const QStringList& names, const QList<Element*>& rows)
    {
        return std::make_unique<ElementDlg>(
            &link, nullptr, "P1", "pump", &state, nullptr, &lockOff, QList<Lock*>(), QList<Lock*>(), "start",
            "stop", "P1 ON", "P1 OFF", QStringList{"[off]", "[on]", "[stops]", "[starts]"}, names, rows);
    }
};

QTEST_MAIN(TestTelemetry)
#include "test_telemetry.moc"
