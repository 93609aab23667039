#include "tour.h"

#include "consoleapp.h"
#include "operator.h"
#include "plantprocess.h"

#include <QApplication>
#include <QDir>
#include <QPlainTextEdit>
#include <QThread>

#include <cstdio>

namespace {

class Tour
{
public:
    Tour(PlantProcess* plant, const QString& folder)
        : m_plant(plant)
        , m_folder(folder)
    {}

    void play()
    {
        login();
        jogging();
        details();
        points();
        calculator();
        patterns();
        contour();
        technology();
        weld();
        channels();
        information();
        vacuum();
        alarms();
        keySwitch();
    }

private:
    void picture(const QString& name)
    {
        QThread::msleep(300); // a blink of a lock pattern and the last repaint
        m_hand.grab(
            QStringLiteral("%1/%2-%3.png").arg(m_folder).arg(++m_number, 2, 10, QChar('0')).arg(name));
    }

    void login()
    {
        m_hand.waitVisible("leLogin");
        m_hand.type("su");
        picture("login");
        m_hand.tap("lePassword");
        m_hand.type("46920137");
        m_hand.tap("pbEnter");
        m_hand.waitVisible("frameHead");
        picture("at-rest");
        m_hand.tap("pbInfoV"); // a zero is moved without power only
        m_hand.tap("pbReference");
        m_hand.waitVisible("pbEnter");
        m_hand.type("1234");
        picture("access-code");
        m_hand.key(Qt::Key_Escape);
        m_hand.waitGone("pbEnter");
        close("lblSEPmax");
    }

    void jogging()
    {
        m_hand.tap("sbDrives");
        m_hand.waitEnabled("sbTrans");
        m_hand.tap("speedLX");
        m_hand.waitVisible("lblFree");
        picture("speed-selector");
        m_hand.tap("lblFree");
        m_hand.waitVisible("pbDecimal");
        picture("keypad");
        m_hand.enterNumber("1500");
        m_hand.setSpeed("LY", "1500");
        m_hand.press("pbPlusLX");
        QThread::msleep(500);
        picture("jogging");
        m_hand.release();
        m_hand.tap("coordLX");
        m_hand.waitVisible("lblCoord");
        picture("fixed-move");
        m_hand.key(Qt::Key_Escape);
        m_hand.waitGone("lblCoord");
        m_hand.tap("sbTrans");
        m_hand.waitVisible("frmVirtual");
        m_hand.setSpeed("Z", "1500");
        picture("virtual-axes");
    }

    void details()
    {
        m_hand.tap("pbInfoLX");
        m_hand.setNumber("lblSEPmax", "1200");
        m_hand.waitText("lblSEPmax", "1200.0");
        m_hand.tap("pbSecondAxis");
        picture("axis-details");
        m_hand.press("sbPark"); // tells why it refuses
        picture("parking-refused");
        m_hand.release();
        close("lblSEPmax");
        m_hand.tap("pbInfoLX2");
        m_hand.waitVisible("lblSEPmax");
        picture("axis-details-second");
        close("lblSEPmax");
        m_hand.tap("pbInfoZ");
        m_hand.waitVisible("lblSEPmax");
        picture("axis-details-virtual");
        close("lblSEPmax");
        m_hand.tap("pbInfoLX");
        m_hand.tap("pbSecondAxis");
        close("lblSEPmax");
    }

    // By the frame's own button, until `inside` has gone.
    void close(const QString& inside)
    {
        m_hand.tap("pbClose");
        m_hand.waitGone(inside);
    }

    void points()
    {
        m_hand.tap("pbPoint");
        m_hand.waitVisible("twPoint");
        m_hand.tap("pbSaveFile");
        m_hand.tap("pbSave_as");
        m_hand.type("start");
        m_hand.key(Qt::Key_Return);
        m_hand.waitGone("listWidget_prog");
        m_hand.tap("pbOpenFile");
        m_hand.waitVisible("listWidget_prog");
        m_hand.tapItem("listWidget_prog", "start");
        picture("point-files");
        m_hand.tap("pbLoad");
        m_hand.waitGone("listWidget_prog");
        m_hand.tapCell("twPoint", 1, 1);
        picture("points");
        close("twPoint");
    }

    void calculator()
    {
        m_hand.tap("pbCalc");
        m_hand.setNumber("lblDiam", "250");
        m_hand.tap("pbLinRate1Plus");
        picture("rate-calculator");
        close("lblDiam");
    }

    void fromTemplate(const QString& entry, const QString& name = QString())
    {
        m_hand.tap("pbTemplate");
        QThread::msleep(200);
        if (!name.isEmpty())
            picture(name);
        m_hand.tapMenu(entry);
    }

    // Tacks and a weld around a part of four points.
    void patterns()
    {
        m_hand.tapTab("contour", 0);
        m_hand.tap("pbNew");
        m_hand.tapMenu("Кольцевой стык");
        m_hand.enterNumber("120");
        m_hand.enterNumber("4");
        m_hand.tap("pbRing");
        m_hand.setNumber("nrings", "9");
        m_hand.setNumber("contourSpeed", "2400");
        m_hand.tapTab("contour", 1);
        m_hand.setNumber("weldSpeed", "900");
        fromTemplate("Прихватки");
        m_hand.setNumber("number", "8");
        m_hand.setNumber("Ir", "20");
        for (const char* part : {"ascend", "peak", "descend"})
            m_hand.setNumber(part, "4");
        picture("ring-tacks");
        m_hand.tap("pbDegreeOn");
        picture("ring-tacks-degrees");
        m_hand.tap("pbCreate");
        m_hand.waitGone("pbCreate");
        fromTemplate("Сварка");
        m_hand.setNumber("Ir", "35");
        m_hand.setNumber("ascend", "20");
        m_hand.setNumber("peak", "350");
        m_hand.setNumber("descend", "30");
        picture("ring-weld");
        m_hand.tap("pbCreate");
        m_hand.waitGone("pbCreate");
        picture("ring-table");
        m_hand.tap("pbAddTechPoint");
        m_hand.waitVisible("cbAllPoints");
        picture("contour-point");
        close("cbAllPoints");
        m_hand.tapTab("contour", 0);
    }

    // On the first frame of the contour.
    void lineTacks()
    {
        m_hand.tapTab("contour", 1);
        fromTemplate("Прихватки");
        m_hand.setNumber("number", "6");
        m_hand.setNumber("period", "20");
        m_hand.setNumber("Ir", "20");
        for (const char* part : {"ascend", "peak", "descend"})
            m_hand.setNumber(part, "4");
        picture("line-tacks");
        close("pbCreate");
        m_hand.tapTab("contour", 0);
    }

    void contour()
    {
        m_hand.tap("pbNew");
        QThread::msleep(200);
        picture("schemes");
        m_hand.tapMenu("Смешаная интерполяция");
        const char* points[][2] = {{"0", "0"}, {"120", "0"}, {"120", "60"}, {"0", "60"}};
        for (const auto& point : points) {
            m_hand.moveTo("LX", point[0]);
            m_hand.moveTo("LY", point[1]);
            m_hand.tap("pbIns");
            if (&point == &points[1])
                lineTacks();
        }
        m_hand.setNumber("contourSpeed", "2400");
        m_hand.tap("pbRing");
        QThread::msleep(200);
        picture("closing");
        m_hand.tapMenu("Прямым ходом");
        m_hand.setNumber("nrings", "1");
        picture("contour");
        m_hand.tapCell("twContour", 2, 3);
        m_hand.tap("pbType");
        m_hand.tap("cbCalc", QPoint(20, 20));
        picture("frame");
        m_hand.tap("pbCancel");
        m_hand.waitGone("pbType");
        m_hand.tap("pbDel");
        m_hand.waitVisible("pbNo");
        picture("confirmation");
        m_hand.tap("pbNo");
        m_hand.tapCell("twContour", 0, 0);
        m_hand.waitText("coordLX", "0.00");
        m_hand.waitText("coordLY", "0.00");
        m_hand.waitIdle();
        m_hand.tap("pbSave");
        m_hand.waitVisible("listWidget_prog");
        m_hand.tap("pbSave_as");
        picture("file-dialog");
        m_hand.type("contour");
        m_hand.key(Qt::Key_Return);
        m_hand.waitGone("listWidget_prog");
    }

    void weldPattern(const QString& ascend, const QString& peak, const QString& descend)
    {
        m_hand.setNumber("Ir", "35");
        m_hand.setNumber("ascend", ascend);
        m_hand.setNumber("descend", descend);
        m_hand.setNumber("peak", peak);
    }

    // Half of the way, a stop, the other half.
    void technology()
    {
        m_hand.tapTab("contour", 1);
        m_hand.setNumber("weldSpeed", "900");
        fromTemplate("Сварка", "templates");
        weldPattern("20", "140", "10");
        picture("line-weld");
        m_hand.tap("pbCreate");
        m_hand.waitGone("pbCreate");
        fromTemplate("Останов");
        fromTemplate("Сварка");
        weldPattern("20", "150", "20");
        m_hand.tap("pbCreate");
        m_hand.waitGone("pbCreate");
        m_hand.tapCell("twTechTab", 3, 6);
        m_hand.waitVisible("TRtype");
        m_hand.tap("TRtype");
        m_hand.tapMenu("Эллипсы");
        for (const char* part : {"TRamplX", "TRamplY"})
            m_hand.setNumber(part, "2.5");
        m_hand.setNumber("TRfreq", "500");
        picture("raster");
        m_hand.tap("pbOn");
        m_hand.waitGone("TRtype");
        picture("technology");
        m_hand.tap("pbSettings");
        m_hand.waitVisible("pbSettingsDone");
        picture("settings");
        m_hand.tap("pbSettingsCancel");
        m_hand.waitGone("pbSettingsDone");
    }

    void weld()
    {
        m_hand.tap("pbGcode");
        m_hand.waitText("channel1State", "выполнение");
        QThread::msleep(500);
        picture("welding");
        m_hand.waitText("pbGcode", "ДАЛЕЕ", 120'000);
        m_hand.waitText("channel1State", "бездействие");
        picture("technological-stop");
        m_hand.tap("pbGcode");
        m_hand.waitText("channel1State", "выполнение");
        m_hand.waitText("channel3State", "бездействие", 240'000);
        m_hand.waitText("channel1State", "бездействие");
        m_hand.tapTab("contour", 0);
        picture("weld-done");
    }

    void channels()
    {
        const char* names[] = {"channel-1", "channel-2", "channel-3"};
        for (int i = 0; i < 3; ++i) {
            m_hand.tapTab("contour", 2 + i);
            picture(names[i]);
        }
        recordedRun();
        m_hand.tapTab("contour", 0);
        m_hand.tap("pbUsers");
        m_hand.waitVisible("twUsers");
        picture("users");
        m_hand.tap("pbAdd");
        m_hand.waitVisible("cbGroup");
        picture("new-user");
        m_hand.key(Qt::Key_Escape);
        m_hand.waitGone("cbGroup");
        m_hand.key(Qt::Key_Escape);
        m_hand.waitGone("twUsers");
    }

    // A program of the operator's own in channel 1, with its record.
    void recordedRun()
    {
        m_hand.tapTab("contour", 2);
        m_hand.onScreen([] {
            for (QWidget* top : QApplication::topLevelWidgets()) {
                if (auto* edit = top->findChild<QPlainTextEdit*>("teGcode"))
                    edit->setPlainText(
                        "N1 $1\nN2 G90 G01 LX=60 LY=30 F2400\nN3 G90 G01 LX=0 LY=0 F2400\nN4 M30");
            }
        });
        m_hand.tap("pbRun");
        m_hand.waitText("channel1State", "выполнение");
        QThread::msleep(700);
        picture("recorded-run");
        m_hand.waitIdle();
        m_hand.tapTab("contour", 0);
    }

    void information()
    {
        m_hand.tap("pbInformation");
        m_hand.waitVisible("pbManual");
        picture("information");
        m_hand.tap("pbClose");
        m_hand.waitGone("pbManual");
        m_hand.press("sbShutdown"); // not while the vacuum system runs
        picture("power-off-refused");
        m_hand.release();
    }

    void regime(const QString& button, const QString& shown)
    {
        m_hand.tap(button);
        m_hand.waitVisible("pbYes");
        if (!m_asked)
            picture("regime-question");
        m_asked = true;
        m_hand.tap("pbYes");
        m_hand.waitText("lblVacuumState", shown);
    }

    double chamber() // Pa
    {
        Hand::expect(m_hand.text("lblVacuumActive") != "Не запущен", "the regime goes on");
        return m_hand.text("PT5").toDouble();
    }

    // Air into the chamber and out again, in an hour that passes in half a minute.
    void vacuum()
    {
        m_hand.waitText("lblVacuumActive", "Выполнен");
        m_hand.tap("ND1");
        m_hand.waitVisible("sbSwitch");
        picture("device");
        m_hand.press("sbSwitch"); // refused: its gate is open
        picture("device-refused");
        m_hand.release();
        m_hand.tap("pbHide");
        m_hand.waitGone("sbSwitch");
        m_hand.tap("sbDrives");
        m_plant->instruct("speed 20");
        regime("sbVacFilling", "Напуск в камеру");
        while (chamber() < 3e4)
            QThread::msleep(100);
        picture("bleeding");
        m_plant->instruct("speed 200");
        m_hand.waitText("lblVacuumActive", "Выполнен");
        regime("sbVacPumping", "Откачка камеры");
        while (chamber() > 1e4)
            QThread::msleep(100);
        picture("roughing");
        m_hand.waitText("lblVacuumActive", "Выполнен", 60'000);
        m_plant->instruct("speed 1");
        picture("welding-vacuum");
        m_plant->instruct("water 3 off");
        m_plant->instruct("gauge pt2 invalid");
        m_hand.waitText("lblVacuumState", "Аварийное завершение", 30'000);
        picture("vacuum-fault");
        m_plant->instruct("water 3 on");
        m_plant->instruct("gauge pt2 good");
        m_plant->instruct("link kvs drop 2");
        m_plant->instruct("link kvk drop 2");
        QThread::msleep(800);
        picture("links-lost");
        m_hand.waitColour("lblKVS", Qt::green);
        m_hand.waitColour("lblKVK", Qt::green);
        m_plant->instruct("vacuum on");
    }

    void alarms()
    {
        m_hand.tap("pbConstants");
        m_hand.waitVisible("twConst");
        QThread::msleep(500); // both controllers answer
        picture("constants");
        close("twConst");
        m_plant->instruct("rope left on");
        m_plant->instruct("trip LX F2019");
        QThread::msleep(700);
        picture("alarms");
        m_plant->instruct("rope left off");
        m_plant->instruct("clear LX");
    }

    void keySwitch()
    {
        m_plant->instruct("key off");
        QThread::msleep(500);
        picture("key-switch");
        m_plant->instruct("key on");
        m_hand.waitEnabled("frameHead");
    }

    PlantProcess* m_plant;
    QString m_folder;
    Operator m_hand{20'000};
    int m_number = 0;
    bool m_asked = false; // a regime's question has its picture
};

} // namespace

int runTour(PlantProcess* plant, const QString& folder)
{
    QDir().mkpath(folder);
    Tour tour(plant, folder);
    int code = 0;
    const QString trouble = runScript([&] { code = runConsole(); }, [&] { tour.play(); });
    if (trouble.isEmpty())
        return code;
    std::fprintf(stderr, "tour: %s\n", qPrintable(trouble));
    return 1;
}
