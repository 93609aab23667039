#pragma once

#include "autorization_abstractmanager.h"
#include "autorization_userfile.h"
#include "guifixture.h"
#include "trainer/screen.h"
#include "trainer/screenwalk.h"
#include "trainer/sitefolder.h"
#include "vacuumcontroller.h"

#include <QLineEdit>
#include <QMenu>
#include <QTextCodec>

// The console on a site with many users and long names, on links whose other ends say what a state needs;
// walked by a finger.
class ScreenFixture : public GuiFixture
{
public:
    ScreenFixture() { begin(); }
    ~ScreenFixture()
    {
        m_beat.stop();
        m_kvs.reset();
        m_kvk.reset();
        end();
    }

protected:
    // What a touch has opened, with all that it can hold.
    virtual void opened(QWidget* window, const QString& road) = 0;

    void connectAll()
    {
        m_datagram = drivewire::drive().empty();
        m_controller->accept();
        m_kvs->accept();
        m_kvk->accept();
        m_kvs->keepTelling();
        m_kvk->keepTelling();
        connect(&m_beat, &QTimer::timeout, this, [this] { m_controller->datagram(m_datagram); });
        m_beat.start(200);
    }

    void loseAll()
    {
        m_beat.stop();
        m_controller->peer.reset();
        m_kvs->peer.reset();
        m_kvk->peer.reset();
        settle(300);
    }

    void logIn(int id)
    {
        QTimer watch;
        connect(&watch, &QTimer::timeout, this, [&] {
            QWidget* dialog = QApplication::activeModalWidget();
            auto* login = dialog ? dialog->findChild<QLineEdit*>("leLogin") : nullptr;
            if (id < 0 || !login)
                return void(m_walk.visitNew("login", 1));
            login->setText(QString("preobrazhen%1").arg(id));
            dialog->findChild<QLineEdit*>("lePassword")->setText("12345678");
            QTest::mouseClick(dialog->findChild<QWidget*>("pbEnter"), Qt::LeftButton);
        });
        watch.start(20);
        emit m_gui->signalUserChange(m_gui->autorizationAccepted() ? id : -1);
    }

    // Every number of the drives' datagram, and every word of it.
    void tellAll(double number, double word)
    {
        for (const auto& field : drivewire::drive().fields) {
            if (field.kind == statuswire::F)
                drivewire::drive().put(m_datagram, field.name, number);
            else if (field.name.startsWith("State"))
                drivewire::drive().put(m_datagram, field.name, word);
        }
        tell({});
    }

    void tellVacuum(const std::function<double(const vacuumwire::Field&)>& value)
    {
        for (VacuumController* controller : {m_kvs.get(), m_kvk.get()}) {
            for (const vacuumwire::Field& field : controller->wire.fields)
                controller->wire.put(controller->pack, field, value(field));
            controller->datagram(controller->pack);
        }
        settle();
    }

    void settle(int ms = 60) { QTest::qWait(ms); }

    // A window that no touch opens: another unit asks for it, or a fault.
    void alone(const QString& state, const std::function<void()>& open)
    {
        QTimer watch;
        connect(&watch, &QTimer::timeout, this, [&] { m_walk.visitNew(state, 0); });
        watch.start(20);
        open();
    }

    void newContour(int scheme)
    {
        QTimer watch;
        connect(&watch, &QTimer::timeout, this, [&] {
            if (auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget())) {
                const auto entries = menu->actions();
                QTest::mouseClick(menu, Qt::LeftButton, {},
                                  menu->actionGeometry(entries[entries.size() - 3 + scheme]).center());
            } else if (QWidget* pad = QApplication::activeModalWidget()) {
                pad->findChild<QLineEdit*>("leValue")->setText("1250.5");
                QTest::mouseClick(pad->findChild<QWidget*>("pbEnter"), Qt::LeftButton);
            }
        });
        watch.start(20);
        touch("pbNew");
    }

    const QStringList leave{"pbCloseProgram", "sbShutdown"};
    // As many letters as a record of the controllers holds, in Windows-1251.
    const QByteArray longText =
        QTextCodec::codecForName("Windows-1251")
            ->fromUnicode(QStringLiteral(
                "Выдержка давления после открытия затвора высоковакуумного насоса, не менее, секунды "));
    const QString longFile = QStringLiteral("Кольцо нижнее D1250 толщина 40 мм образец 0123456789");
    const QString longName = QStringLiteral("Преображенская Александра Константиновна");

    std::unique_ptr<VacuumController> m_kvs;
    std::unique_ptr<VacuumController> m_kvk;
    ScreenWalk m_walk{[this](QWidget* window, const QString& road) { opened(window, road); }, leave};

private:
    void begin()
    {
        m_site = std::make_unique<SiteFixture>();
        laySiteFolder(m_site->root(), true);
        layUsers();
        for (const char* file : {"/home/oper/bin/contours/%1.save", "/points/%1.point",
                                 "/programs/ch1/%1.npg", "/programs/ch2/%1.npg", "/programs/ch3/%1.npg"}) {
            for (int number = 0; number < 3; ++number)
                m_site->write(QString(file).arg(longFile + QString::number(number)), "");
        }
        m_controller = std::make_unique<DriveController>();
        m_kvs = std::make_unique<VacuumController>(vacuumwire::kvs(), site().kvs);
        m_kvk = std::make_unique<VacuumController>(vacuumwire::kvk(), site().kvk);
        m_gui = std::make_unique<Gui>();
        m_gui->setWindowState(Qt::WindowNoState);
        m_gui->setGeometry(QRect(QPoint(), panelSize));
        QApplication::setStyle(new MyWinStyle);
        m_walk.stays(m_gui.get());
    }

    void layUsers()
    {
        QFile file(site().path("/home/oper/bin/users.bin"));
        file.open(QIODevice::WriteOnly);
        Autorization::writeUserCount(file, 20);
        for (int i = 0; i < 20; ++i)
            Autorization::writeUser(file, {QString("preobrazhen%1").arg(i), longName,
                                           Autorization::passwordDigest("12345678"), i % 3});
    }

    QTimer m_beat;
};
