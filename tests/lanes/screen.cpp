// Walks the console's panels, tabs, dialogs, menus and popups in their states, measures all that they have on
// view (trainer/screencheck.h) and leaves sheets of pictures: screen FOLDER [all]
#include "trainer/screen.h"
#include "autorization_abstractmanager.h"
#include "autorization_userfile.h"
#include "contour.h"
#include "guifixture.h"
#include "journallist.h"
#include "trainer/screencheck.h"
#include "trainer/sitefolder.h"
#include "vacuumcontroller.h"

#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>
#include <QTabBar>
#include <QTableWidget>

#include <cstdio>

namespace {

struct DriveText
{
    int code;
    const char* text;
};
constexpr DriveText driveTexts[] = {
#include "drivestates.inc"
};

// What the machine wants otherwise: rule and path as one pattern, and why.
struct Exception
{
    const char* pattern;
    const char* reason;
};
const Exception exceptions[] = {
    // Colours that mean a state, the same all over the machine and in its papers.
    {"^contrast .*/(lblCNC|lblKVS|lblKVK|lblELA|lblContour)$",
     "white on red is a lost link or a run without current"},
    {"^contrast .*/lblVacuumState$", "white on pink is the setup regime"},
    {"^contrast .*/(pbStop|pbStopGoPoint)$", "the red of a stop button; its letters are three times as high"},
    {"^contrast .*/sbShutdown/", "the same red switches the installation off"},
    {"^contrast .*/lwLog/", "red is an alarm's line, which has its picture in front as well"},
    {"^contrast .*/CMessageStack$", "pink letters on the fill of the message's kind"},
    {"^contrast Gui/QLabel$", "the notice of the key switch: white on red in letters of 30 px"},
    {"^small letters .*/lwLog/", "eight lines of the journal at a glance"},
    {"^small letters .*/lblState$", "the second line of a state button, under a title in 16 px"},
    {"^covered Gui/(kvs|contour)/", "the notice of the key switch lies over the middle of what it locks"},
    {"^covered .*/(frmLY|pbInfoLY)", "the second drive of LX is shown in LY's row"},
    {"^targets too close .*/(frmLY|pbInfoLY)", "the same"},
    {"^targets too close Gui/kvs/PT", "a pressure and its unit answer a touch alike"},
    {"^targets too close Gui/kvs/(N|V)", "pictures of the mnemonic diagram meet where the pipes do"},
    {"^small target .*/lblND1$", "the pump's picture beside it answers alike"},
    {"^small target .*/QTableCornerButton$", "selects nothing: a touch there has no effect"},
    {"^elided .*/twUsers/", "its columns are as wide as the user leaves them"},
    {"^clipped .*/twTechTab/QHeaderView/", "its columns are as wide as the user leaves them"},
};

const QStringList mustSee{"pbStop", "lblCNC", "lblKVS", "lblKVK", "lblELA", "frErrorDiagnostic"};
// They leave the console or start another program.
const QStringList notTouched{"pbCloseProgram", "sbShutdown", "pbCalc", "pbManual"};
const QString longName = QStringLiteral("Преображенская Александра Константиновна");

class ScreenWalk : public GuiFixture
{
public:
    ScreenWalk(const QString& folder, bool all)
        : m_folder(folder)
        , m_all(all)
    {
        begin();
    }
    ~ScreenWalk()
    {
        m_beat.stop();
        m_kvs.reset();
        m_kvk.reset();
        end();
    }

    void walk();
    int report(double seconds);

private:
    void begin();
    void layUsers();
    void logIn(int id); // as a user of that group; -1: looks at the dialog and cancels it
    void tellAll(double number, double word);
    void tellVacuum(const std::function<double(const vacuumwire::Field&)>& value);
    void settle(int ms = 60) { QTest::qWait(ms); }

    void group(const QString& name);
    void look(QWidget* window, const QString& state);
    void note(const ScreenFinding& finding, const QString& state, QWidget* window);
    void count(QWidget* part, const QString& state);

    void touchAll(QWidget* window, const QString& state, int depth);
    bool touch(QWidget* widget, QPoint at, const QString& state, int depth);
    bool visitNew(const QString& state, int depth);
    void visit(QWidget* window, const QString& state, int depth);

    void journalLines();
    void driveTextsOf(QWidget* window);
    void messages();

    QString m_folder;
    bool m_all;
    std::unique_ptr<VacuumController> m_kvs;
    std::unique_ptr<VacuumController> m_kvk;
    QTimer m_beat;
    QSet<QWidget*> m_open;
    QSet<QString> m_touched; // in this group of states
    QSet<QString> m_told;
    QVector<int> m_excused = QVector<int>(int(std::size(exceptions)), 0);
    QString m_group;
    QVector<QPair<QString, QImage>> m_pictures;
    int m_windows = 0;
    int m_widgets = 0;
    int m_texts = 0;
    int m_touches = 0;
    int m_findings = 0;
};

void ScreenWalk::begin()
{
    m_site = std::make_unique<SiteFixture>();
    laySiteFolder(m_site->root(), true);
    layUsers();
    m_controller = std::make_unique<DriveController>();
    m_kvs = std::make_unique<VacuumController>(vacuumwire::kvs(), site().kvs);
    m_kvk = std::make_unique<VacuumController>(vacuumwire::kvk(), site().kvk);
    m_gui = std::make_unique<Gui>();
    m_gui->setWindowState(Qt::WindowNoState);
    m_gui->setGeometry(QRect(QPoint(), panelSize));
    QApplication::setStyle(new MyWinStyle);
    m_open.insert(m_gui.get());
}

void ScreenWalk::layUsers()
{
    QFile file(site().path("/home/oper/bin/users.bin"));
    file.open(QIODevice::WriteOnly);
    Autorization::writeUserCount(file, 20);
    for (int i = 0; i < 20; ++i)
        Autorization::writeUser(file, {QString("preobrazhen%1").arg(i), longName,
                                       Autorization::passwordDigest("12345678"), i % 3});
}

void ScreenWalk::logIn(int id)
{
    QTimer watch;
    connect(&watch, &QTimer::timeout, this, [&] {
        QWidget* dialog = QApplication::activeModalWidget();
        auto* login = dialog ? dialog->findChild<QLineEdit*>("leLogin") : nullptr;
        if (id < 0 || !login)
            return void(visitNew("login", 1));
        login->setText(QString("preobrazhen%1").arg(id));
        dialog->findChild<QLineEdit*>("lePassword")->setText("12345678");
        QTest::mouseClick(dialog->findChild<QWidget*>("pbEnter"), Qt::LeftButton);
    });
    watch.start(20);
    emit m_gui->signalUserChange(m_gui->autorizationAccepted() ? id : -1);
}

// Every number of the drives' datagram, and every word of it.
void ScreenWalk::tellAll(double number, double word)
{
    for (const auto& field : drivewire::drive().fields) {
        if (field.kind == statuswire::F)
            drivewire::drive().put(m_datagram, field.name, number);
        else if (field.name.startsWith("State"))
            drivewire::drive().put(m_datagram, field.name, word);
    }
    tell({});
}

void ScreenWalk::tellVacuum(const std::function<double(const vacuumwire::Field&)>& value)
{
    for (VacuumController* controller : {m_kvs.get(), m_kvk.get()}) {
        for (const vacuumwire::Field& field : controller->wire.fields)
            controller->wire.put(controller->pack, field, value(field));
        controller->datagram(controller->pack);
    }
    settle();
}

void ScreenWalk::note(const ScreenFinding& finding, const QString& state, QWidget* window)
{
    const QString name = finding.rule + ' ' + finding.path;
    const QString key = name + (finding.rule == "clipped" ? finding.what : finding.what.section(':', 0, 0));
    if (m_told.contains(key))
        return;
    m_told.insert(key);
    for (std::size_t i = 0; i < std::size(exceptions); ++i) {
        if (QRegularExpression(exceptions[i].pattern).match(name).hasMatch()) {
            ++m_excused[int(i)];
            return;
        }
    }
    const QString crop = QString("%1/finding-%2.png").arg(m_folder).arg(++m_findings, 3, 10, QChar('0'));
    window->grab(finding.place.adjusted(-40, -40, 40, 40) & window->rect()).save(crop);
    std::printf("%s: %s: %s\n    [%s] %s\n", qPrintable(finding.rule), qPrintable(finding.path),
                qPrintable(finding.what), qPrintable(state), qPrintable(crop));
}

void ScreenWalk::count(QWidget* part, const QString& state)
{
    const ScreenMeasure measure = measureScreen(part);
    m_widgets += measure.widgets;
    m_texts += measure.texts;
    for (const ScreenFinding& finding : measure.findings)
        note(finding, state, part->window());
}

void ScreenWalk::look(QWidget* window, const QString& state)
{
    ++m_windows;
    count(window, state);
    for (const ScreenFinding& finding : coveredByWindows(m_gui.get(), mustSee))
        note(finding, state, m_gui.get());
    m_pictures.append({state, screenImage().scaled(640, 400, Qt::KeepAspectRatio, Qt::SmoothTransformation)});
}

// Ends the group of states before and its sheet.
void ScreenWalk::group(const QString& name)
{
    if (!m_pictures.isEmpty()) {
        constexpr int columns = 4;
        QImage sheet(columns * 650, (m_pictures.size() + columns - 1) / columns * 425, QImage::Format_RGB32);
        sheet.fill(Qt::white);
        QPainter painter(&sheet);
        for (int i = 0; i < m_pictures.size(); ++i) {
            const QPoint corner(i % columns * 650, i / columns * 425);
            painter.drawText(QRect(corner, QSize(640, 24)), Qt::AlignVCenter, m_pictures[i].first);
            painter.drawImage(corner + QPoint(0, 24), m_pictures[i].second);
        }
        painter.end();
        sheet.save(m_folder + '/' + m_group + ".png");
    }
    m_pictures.clear();
    m_touched.clear();
    m_group = name;
}

bool ScreenWalk::visitNew(const QString& state, int depth)
{
    bool found = false;
    for (QWidget* window : windowsFromTop()) {
        if (m_open.contains(window) || !window->isVisible())
            continue;
        found = true;
        m_open.insert(window);
        const QPointer<QWidget> there(window);
        visit(window, state, depth);
        m_open.remove(window);
        if (there && there->isVisible() && there->windowType() != Qt::ToolTip)
            there->close();
    }
    return found;
}

void ScreenWalk::visit(QWidget* window, const QString& state, int depth)
{
    settle(20); // its place and its first picture
    const QString name = window->windowTitle().isEmpty() ? screenPath(window) : window->windowTitle();
    const QString here = state + " > " + name;
    look(window, here);
    driveTextsOf(window);
    if (depth > 0 && window->windowType() != Qt::ToolTip && !qobject_cast<QMenu*>(window))
        touchAll(window, here, depth);
}

// Touches all that can be touched; what that opens is visited. A dialog that a touch has closed is opened
// again by its own opener as long as something in it is left.
void ScreenWalk::touchAll(QWidget* window, const QString& state, int depth)
{
    const QPointer<QWidget> there(window);
    QVector<QPair<QPointer<QWidget>, QPoint>> places;
    for (QWidget* widget : window->findChildren<QWidget*>()) {
        if (widget->window() != window || !widget->isVisible())
            continue;
        if (auto* table = qobject_cast<QTableWidget*>(widget)) {
            for (int column = 0; column < table->columnCount(); ++column)
                places.append(
                    {table->viewport(), table->visualRect(table->model()->index(1, column)).center()});
        } else if (canBeTouched(widget) && !qobject_cast<QTabBar*>(widget) &&
                   !notTouched.contains(widget->objectName())) {
            places.append({QPointer<QWidget>(widget), widget->rect().center()});
        }
    }
    for (const auto& place : places) {
        if (!place.first || !place.first->isVisible() || !place.first->isEnabled())
            continue;
        const QString name =
            QString("%1 %2 %3").arg(window->windowTitle(), screenPath(place.first)).arg(place.second.x());
        if (m_touched.contains(name))
            continue;
        m_touched.insert(name);
        touch(place.first, place.second, state, depth);
        if (!there || !there->isVisible())
            return;
    }
}

bool ScreenWalk::touch(QWidget* widget, QPoint at, const QString& state, int depth)
{
    const QPointer<QWidget> there(widget);
    const QString name =
        state + " > " + (widget->objectName().isEmpty() ? screenPath(widget) : widget->objectName());
    bool opened = false;
    for (int again = 0, before = -1; again < 40 && before != m_touched.size() && there && there->isVisible();
         ++again) {
        before = m_touched.size();
        ++m_touches;
        bool now = false;
        QTimer watch;
        connect(&watch, &QTimer::timeout, this, [&] { now = visitNew(name, depth - 1) || now; });
        watch.start(5);
        QCursor::setPos(widget->mapToGlobal(at)); // some windows open there
        QTest::mousePress(widget, Qt::LeftButton, Qt::NoModifier, at);
        settle(8);
        if (there)
            QTest::mouseRelease(there, Qt::LeftButton, Qt::NoModifier, at);
        settle(8);
        now = visitNew(name, depth - 1) || now;
        opened = opened || now;
        if (!now)
            break;
    }
    return opened;
}

// The dialog of an axis tells the state of its drive in words.
void ScreenWalk::driveTextsOf(QWidget* window)
{
    auto* label = window->findChild<QLabel*>("lblDriveState");
    QWidget* dialog = label;
    while (dialog && !dialog->inherits("AxisInfo"))
        dialog = dialog->parentWidget();
    if (!dialog || m_touched.contains("drive texts"))
        return;
    m_touched.insert("drive texts");
    for (const DriveText& text : driveTexts) {
        QMetaObject::invokeMethod(dialog, "onStateChanged", Q_ARG(int, text.code));
        count(label, QString("drive %1").arg(text.code, 0, 16));
    }
}

void ScreenWalk::journalLines()
{
    auto* list = w<JournalList>("lwLog");
    for (uint number = 1; number < 400; ++number)
        m_gui->prgMessage(m_gui->CNCMessage(number), true);
    for (const DriveText& text : driveTexts)
        m_gui->prgMessage(QString("[A]Привод U2: %1").arg(QString::fromUtf8(text.text)), true);
    m_gui->prgMessage("[I]Регистрация пользователя - Администратор " + longName, true);
    for (int at = list->verticalScrollBar()->maximum(); at >= 0; at -= list->viewport()->height() / 2) {
        list->verticalScrollBar()->setValue(at);
        count(list, "journal");
    }
    list->scrollToBottom();
}

// Each message of the stack, alone and newest.
void ScreenWalk::messages()
{
    for (const char* word :
         {"AlarmState", "DoorState", "TrModuleState", "DrivePowerState", "LightState", "PhaseAlarm"}) {
        for (int bit = 0; bit < 16; ++bit) {
            tell({{word, 1 << bit}});
            count(w("frErrorDiagnostic"), QString("%1 %2").arg(word).arg(bit));
        }
        tell({{word, 0}});
    }
}

void ScreenWalk::walk()
{
    auto* contour = m_gui->findChild<CONTOUR*>();
    group("start");
    logIn(-1);
    logIn(0);
    m_gui->show();
    m_gui->setGeometry(QRect(QPoint(), panelSize));
    settle();
    look(m_gui.get(), "links down");

    m_datagram = drivewire::drive().empty();
    m_controller->accept();
    m_kvs->accept();
    m_kvk->accept();
    m_kvs->keepTelling();
    m_kvk->keepTelling();
    connect(&m_beat, &QTimer::timeout, this, [this] { m_controller->datagram(m_datagram); });
    m_beat.start(200);
    tell({{"KeyAccess", 1}, {"DrivesPower", 1}, {"SpiralPower", 1}});
    settle();

    group("groups");
    for (int id : {2, 1, -1, 0}) {
        logIn(id);
        look(m_gui.get(), QString("group %1").arg(id));
    }

    group("tabs");
    for (int tab = 0; tab < contour->count(); ++tab) {
        contour->setCurrentIndex(tab);
        touchAll(m_gui.get(), QString("tab %1").arg(tab), tab ? 2 : 3);
        look(m_gui.get(), QString("tab %1").arg(tab));
    }
    contour->setCurrentIndex(0);

    group("full");
    setVirtualMode();
    tellAll(-9999.99, 0xF2026);
    m_gui->setProgramName("Кольцо D1250.save", true);
    m_gui->onChangedPressUnit(true); // torr
    for (int state : {0, 1, 2, 3, 4}) {
        tellVacuum([state](const vacuumwire::Field& field) {
            if (field.name.contains("Lock"))
                return field.kind == statuswire::B ? 1.0 : 31.0;
            if (field.name.endsWith("State"))
                return double(state);
            return field.kind == statuswire::D      ? 1.0e5
                   : field.name.startsWith("Temp")  ? (state ? -99.9 : 999.9)
                   : field.name.startsWith("Disch") ? 99.9
                   : field.kind == statuswire::F    ? 9999.0
                                                    : double(state != 0);
        });
        look(m_gui.get(), QString("vacuum state %1").arg(state));
    }
    touchAll(m_gui.get(), "full", 2);
    for (uint number = 0; number < 16; ++number) {
        tell({{"ChannelState1", number}, {"ChannelState2", number}, {"ChannelState3", number}});
        count(m_gui.get(), QString("channel state %1").arg(number));
    }
    messages();
    journalLines();
    look(m_gui.get(), "journal");

    group("locked");
    tell({{"KeyAccess", 0}});
    settle(20);
    look(m_gui.get(), "key switch");
    for (int tab = 0; tab < contour->count(); ++tab) {
        contour->setCurrentIndex(tab);
        look(m_gui.get(), QString("key switch, tab %1").arg(tab));
    }
    tell({{"KeyAccess", 1}});

    group("lost");
    m_beat.stop();
    m_controller->peer.reset();
    m_kvs->peer.reset();
    m_kvk->peer.reset();
    settle(300);
    look(m_gui.get(), "links lost");
    group({});
}

int ScreenWalk::report(double seconds)
{
    for (std::size_t i = 0; i < std::size(exceptions); ++i) {
        if (m_all && !m_excused[int(i)]) {
            std::printf("an exception that excuses nothing: %s\n", exceptions[i].pattern);
            ++m_findings;
        }
    }
    std::printf(
        "screen: %d windows, %d widgets, %d texts, %d touches, %d findings, %d named exceptions, %.1f s\n",
        m_windows, m_widgets, m_texts, m_touches, m_findings, int(std::size(exceptions)), seconds);
    return m_findings ? 1 : 0;
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QElapsedTimer timer;
    timer.start();
    takePanel(&app);
    const QString folder = QString::fromLocal8Bit(argc > 1 ? argv[1] : "screen");
    QDir(folder).removeRecursively();
    QDir().mkpath(folder);
    ScreenWalk walk(folder, argc > 2);
    walk.walk();
    return walk.report(double(timer.elapsed()) / 1000);
}
