#pragma once

#include "drivecontroller.h"
#include "gui.h"
#include "sitefixture.h"
#include "statebutton.h"
#include "widgets.h"

#include <QListWidget>
#include <QtTest>

// What the controller has been told since the last time, and no more.
#define SENT(...)                                                                                            \
    do {                                                                                                     \
        const QStringList expected{__VA_ARGS__};                                                             \
        QTRY_VERIFY(commands().size() >= expected.size());                                                   \
        QCOMPARE(takeCommands(), expected);                                                                  \
    } while (false)

// The console window of a site of its own, in front of a motion controller that only writes down what it
// is told. Base of test classes: `begin` for each test, `end` after it.
class GuiFixture : public QObject
{
protected:
    void begin();
    void end();

    template <class Widget = QWidget>
    Widget* w(const QString& name) const
    {
        auto* found = m_gui->findChild<Widget*>(name);
        Q_ASSERT_X(found, "widget", qPrintable(name));
        return found;
    }
    void start(); // builds the window anew, joined to the controller
    void tell(std::initializer_list<std::pair<const char*, double>> fields);
    const QStringList& commands(); // all since the last takeCommands()
    QStringList takeCommands();
    void touch(const QString& name) { QTest::mouseClick(w(name), Qt::LeftButton); }
    QColor colour(const QString& name) const { return w(name)->palette().color(QPalette::Window); }
    QStringList list() const; // lines of lwLog without their stamps
    QString journal() const;  // the file of this run, without stamps
    void setVirtualMode();

    std::unique_ptr<SiteFixture> m_site;
    std::unique_ptr<DriveController> m_controller;
    std::unique_ptr<Gui> m_gui;
    QByteArray m_datagram;
    QByteArray m_received;
    QStringList m_commands;
};

inline void GuiFixture::begin()
{
    m_site = std::make_unique<SiteFixture>();
    QFile users(site().path(QStringLiteral("/home/oper/bin/users.bin")));
    QVERIFY(users.open(QIODevice::WriteOnly));
    users.write(QByteArray("\xA0\xF4\0\0", 4));
    users.close();
    m_controller = std::make_unique<DriveController>();
    start();
}

inline void GuiFixture::end()
{
    m_gui.reset();
    m_controller.reset();
    m_site.reset();
}

inline void GuiFixture::start()
{
    m_gui.reset();
    m_datagram = drivewire::emptyDatagram();
    m_received.clear();
    m_commands.clear();
    m_gui = std::make_unique<Gui>();
    m_gui->setWindowState(Qt::WindowNoState); // the test's screen is smaller than the machine's
    m_gui->resize(panelWidth, panelHeight);
    m_gui->show();
    QVERIFY(m_controller->accept());
    drivewire::put(m_datagram, drivewire::fieldNamed("KeyAccess"), 1);
    drivewire::put(m_datagram, drivewire::fieldNamed("DrivesPower"), 1);
    drivewire::put(m_datagram, drivewire::fieldNamed("SpiralPower"), 1);
    tell({});
}

inline void GuiFixture::tell(std::initializer_list<std::pair<const char*, double>> fields)
{
    // A limit that the window only remembers marks each datagram. The datagram is sent twice, with two marks:
    // when the second has come, the window has taken the whole of the first.
    static float mark = 100'000;
    QEventLoop loop;
    const auto connection = connect(m_gui->drives(), &DriveStatus::changedMinLimPHI, &loop, [&](float value) {
        if (value >= mark)
            loop.quit();
    });
    for (const auto& field : fields)
        drivewire::put(m_datagram, drivewire::fieldNamed(field.first), field.second);
    QTimer again; // the telemetry thread may not have bound its port yet
    connect(&again, &QTimer::timeout, this, [this] { m_controller->datagram(m_datagram); });
    again.start(20);
    QTimer::singleShot(10'000, &loop, [&loop] { loop.exit(1); });
    int lost = 0;
    for (int time = 0; time < 2 && !lost; ++time) {
        drivewire::put(m_datagram, drivewire::fieldNamed("MinLimPHI"), double(++mark));
        m_controller->datagram(m_datagram);
        lost = loop.exec();
    }
    disconnect(connection);
    QVERIFY2(!lost, "the console does not take the datagram");
}

inline const QStringList& GuiFixture::commands()
{
    m_received += m_controller->peer->readAll();
    while (m_received.size() >= 4) {
        const int length = qFromLittleEndian<quint16>(m_received.constData() + 2);
        m_commands << QString::fromUtf8(m_received.mid(4, length));
        m_received.remove(0, 4 + length);
    }
    return m_commands;
}

inline QStringList GuiFixture::takeCommands()
{
    m_controller->peer->waitForReadyRead(50); // what the console has sent is on its way over loopback
    commands();
    return std::exchange(m_commands, {});
}

inline QStringList GuiFixture::list() const
{
    QStringList lines;
    const auto* log = w<QListWidget>(QStringLiteral("lwLog"));
    for (int row = 0; row < log->count(); ++row)
        lines << log->item(row)->text().mid(11);
    return lines;
}

inline QString GuiFixture::journal() const
{
    QString text;
    QDir log(site().path(QStringLiteral("/log")));
    for (const QString& day : log.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        for (const QString& file : QDir(log.filePath(day)).entryList(QDir::Files)) {
            for (const QByteArray& line : m_site->read("/log/" + day + "/" + file).split('\n'))
                text += QString::fromUtf8(line).mid(11) + '\n';
        }
    }
    return text;
}

inline void GuiFixture::setVirtualMode()
{
    tell({{"DrivesOn", 1}, {"TransOn", 1}, {"ChannelState1", 1}});
}
