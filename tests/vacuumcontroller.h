#pragma once

#include "kvs.h"
#include "numpad.h"
#include "sitefixture.h"
#include "vacuumwire.h"

#include <QApplication>
#include <QEventLoop>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

#include <functional>

// A vacuum controller that tells what it is made to tell and writes down what it is told.
struct VacuumController : LinkController
{
    VacuumController(const vacuumwire::Wire& w, const Endpoint& at)
        : LinkController(at)
        , wire(w)
        , pack(w.empty())
    {}
    // Tells the datagram from now on, so that the link does not count as lost.
    void keepTelling()
    {
        QObject::connect(&m_beat, &QTimer::timeout, [this] { datagram(pack); });
        m_beat.start(200);
    }
    void put(std::initializer_list<std::pair<QString, double>> fields)
    {
        for (const auto& field : fields)
            wire.put(pack, field.first, field.second);
    }
    QStringList takeCommands(int atLeast = 0)
    {
        QStringList texts;
        while (peer && (texts.size() < atLeast || peer->bytesAvailable())) {
            if (peer->bytesAvailable() < 4 && !peer->waitForReadyRead(2000))
                break;
            const QByteArray head = peer->read(4);
            while (peer->bytesAvailable() < quint8(head[2]) && peer->waitForReadyRead(2000)) {
            }
            texts << QString::fromUtf8(peer->read(quint8(head[2])));
        }
        return texts;
    }
    // A table of constants; the texts travel in Windows-1251, here given as bytes.
    void sendConstants(const QVector<std::tuple<qint32, float, QByteArray>>& records)
    {
        QByteArray body;
        for (const auto& [id, value, text] : records) {
            QByteArray record(8, '\0');
            qToLittleEndian(id, record.data());
            qToLittleEndian(value, record.data() + 4);
            body += record + text.leftJustified(84, '\0', true);
        }
        send(frame(body, wire.constants));
    }

    const vacuumwire::Wire& wire;
    QByteArray pack; // the datagram as it stands

private:
    QTimer m_beat;
};

// Answers the next dialog of that class as soon as it is on screen; the caller runs it meanwhile.
template <class Dialog>
void whenOpen(const std::function<void(Dialog*)>& act)
{
    auto* timer = new QTimer(QCoreApplication::instance());
    QObject::connect(timer, &QTimer::timeout, [timer, act] {
        for (QWidget* widget : QApplication::allWidgets()) {
            auto* dialog = qobject_cast<Dialog*>(widget);
            if (!dialog || !dialog->isVisible())
                continue;
            timer->stop();
            timer->deleteLater();
            return act(dialog);
        }
    });
    timer->start(5);
}

// Types on the keypad that opens next, and enters it or closes it; then comes `then`.
inline void typeNext(
    const QString& digits, bool enter = true, const QString& title = {},
    const std::function<void()>& then = [] {})
{
    whenOpen<Numpad>([=](Numpad* pad) {
        if (!title.isEmpty())
            QCOMPARE(pad->window()->windowTitle(), title);
        for (const QChar digit : digits)
            QTest::mouseClick(pad->findChild<QPushButton*>(digit == ',' ? QStringLiteral("pbDecimal")
                                                                        : QStringLiteral("pb") + digit),
                              Qt::LeftButton);
        enter ? QTest::mouseClick(pad->findChild<QPushButton*>("pbEnter"), Qt::LeftButton) : pad->reject();
        then();
    });
}

// The vacuum panel on a site of its own, joined to both controllers. Base of test classes.
class PanelFixture : public QObject
{
protected:
    void begin()
    {
        m_site = std::make_unique<SiteFixture>();
        m_kvs = std::make_unique<VacuumController>(vacuumwire::kvs(), site().kvs);
        m_kvk = std::make_unique<VacuumController>(vacuumwire::kvk(), site().kvk);
        start();
    }
    void start()
    {
        m_lines.clear();
        m_panel = std::make_unique<KVS>();
        connect(m_panel.get(), &KVS::message, this,
                [this](const QString& line, bool show) { m_lines << (show ? QString() : "- ") + line; });
        m_panel->show();
        QVERIFY(m_kvs->accept() && m_kvk->accept());
    }
    void end()
    {
        m_panel.reset();
        m_kvs.reset();
        m_kvk.reset();
        m_site.reset();
    }

    // Returns when the panel has taken the whole datagram. A field that the panel shows nowhere marks it.
    void tellKvs(std::initializer_list<std::pair<QString, double>> fields)
    {
        m_kvs->put(fields);
        deliver(*m_kvs, "Disch8", m_panel->kvs(), &KVSStatus::changedDisch8);
    }
    void tellKvk(std::initializer_list<std::pair<QString, double>> fields)
    {
        m_kvk->put(fields);
        deliver(*m_kvk, "StateMP", m_panel->kvk(), &KVKStatus::changedStateMP);
    }
    template <class Widget = QWidget>
    Widget* w(const QString& name) const
    {
        auto* found = m_panel->findChild<Widget*>(name);
        Q_ASSERT_X(found, "widget", qPrintable(name));
        return found;
    }
    void touch(const QString& name) { QTest::mouseClick(w(name), Qt::LeftButton); }
    QColor colour(const QString& name) const { return w(name)->palette().color(QPalette::Window); }
    QStringList takeLines() { return std::exchange(m_lines, {}); }

    std::unique_ptr<SiteFixture> m_site;
    std::unique_ptr<VacuumController> m_kvs;
    std::unique_ptr<VacuumController> m_kvk;
    std::unique_ptr<KVS> m_panel;
    QStringList m_lines; // what the panel reports; "- " before what the list does not show

private:
    // The datagram goes out with two marks: when the second is told, the first has been taken whole.
    template <class Link, class Status, class Value>
    void deliver(VacuumController& controller, const QString& field, Link* link, void (Status::*mark)(Value))
    {
        static quint32 last = 1000;
        QEventLoop loop;
        const auto told = connect(link, mark, &loop, [&loop](Value value) {
            if (value == Value(last))
                loop.quit();
        });
        QTimer again; // the telemetry thread may not listen yet
        connect(&again, &QTimer::timeout, &loop, [&] { controller.datagram(controller.pack); });
        QTimer::singleShot(10'000, &loop, [&loop] { loop.exit(1); });
        int lost = 0;
        for (int time = 0; time < 2 && !lost; ++time) {
            controller.put({{field, double(++last)}});
            controller.datagram(controller.pack);
            again.start(20);
            lost = loop.exec();
        }
        disconnect(told);
        QVERIFY2(!lost, "the panel does not take the datagram");
    }
};
