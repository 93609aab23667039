#include "autorization_manager.h"
#include "contourfixture.h"
#include "fuzz.h"
#include "plant/ncparser.h"
#include "point.h"
#include "programtab.h"
#include "styleloader.h"

#include <QPlainTextEdit>

namespace {

const QString bin = QStringLiteral("/home/oper/bin/");
const QString fuzz = QStringLiteral("fuzz");

// The user file: whoever was read and written is read and written again. The first time may cut a name: what
// is no UTF-8 in it grows longer than the file has room for.
struct Users : FuzzTarget
{
    void take(const QByteArray& input) override
    {
        m_site.write(bin + "users.bin", input);
        QStringList users[3];
        for (QStringList& list : users) {
            const Autorization::Manager manager({});
            for (const Autorization::AbstractUser* user : manager.users())
                list << user->login << user->name << QString::fromLatin1(user->password) << user->group->name;
        }
        fuzzCheck(users[1] == users[2], "users got lost");
    }
};
const FuzzName<Users> users("users");

// A contour file through the tables to the programs of a weld, a test move and a walk. What is saved again is
// what was read; the first time a number may lose what the file has no digits for.
struct Contours : FuzzTarget
{
    Contours() { longest = 3; }
    void take(const QByteArray& input) override
    {
        CONTOUR& contour = *m_window.contour;
        m_site.write(m_path + ".save", input);
        QByteArray texts[3];
        for (QByteArray& text : texts) {
            contour.load(fuzz, m_path);
            contour.save(fuzz, m_path, false);
            text = saved(m_path + ".save");
        }
        fuzzCheck(texts[1] == texts[2], "a contour that is read is not the one that was saved");
        QMetaObject::invokeMethod(&contour, "on_pbGcode_clicked");
        contour.setTechSettings(true, true, true, true, 700, 0, 0, 0, 0);
        QMetaObject::invokeMethod(&contour, "on_pbGcode_clicked");
        contour.setTechSettings(false, true, true, true, 700, 0, 0, 0, 0);
        if (const int rows = m_window.points()->rowCount(); rows > 1)
            contour.onContourCellClicked(rows - 1, 0);
        m_window.journal.clear();
    }
    const QString m_path = bin + "contours/fuzz";
    ContourWindow m_window;
};
const FuzzName<Contours> contours("contours");

// A program file on its tab: shown, started as it stands and saved.
struct ProgramFiles : FuzzTarget
{
    void take(const QByteArray& input) override
    {
        m_site.write(m_path + ".npg", input);
        m_tab.loadFile(fuzz, m_path);
        fuzzCheck(m_tab.run(), "a program is not started");
        m_tab.saveFile(fuzz, m_path);
    }
    const QString m_path = QStringLiteral("/programs/ch1/fuzz");
    QWidget m_panel;
    QPlainTextEdit m_edit{&m_panel};
    QLabel m_name{&m_panel};
    ProgramTab m_tab{1, &m_edit, &m_name, &m_panel};
};
const FuzzName<ProgramFiles> programFiles("programfiles");

// A point file: a move to each of its rows, and what is saved again is what was read.
struct Points : FuzzTarget
{
    void take(const QByteArray& input) override
    {
        const QString folder = QStringLiteral("/points/");
        m_site.write("/points/fuzz.point", input);
        Point dialog(&m_drive, {}, &m_window);
        QByteArray texts[2];
        for (QByteArray& text : texts) {
            dialog.loadFile(folder, fuzz);
            dialog.saveFile(folder, fuzz);
            text = saved("/points/fuzz.point");
        }
        fuzzCheck(texts[0] == texts[1], "a point that is read is not the one that was saved");
        for (int row = 0; row < Point::axes().size(); ++row) {
            dialog.onTableCellClicked(row, 0);
            dialog.on_pbGoToPoint_clicked();
            const QString program = QString::fromUtf8(m_site.read("/programs/_point.npg"));
            fuzzCheck(plant::parseNcProgram(program, row == Point::axes().size() - 1 ? 2 : 1).error.isEmpty(),
                      "the controller does not understand a move to a point");
        }
    }
    QWidget m_window;
    DriveTCPthread m_drive;
};
const FuzzName<Points> points("points");

// The settings through a whole life of the console, with the dialogs that read them as well.
struct SettingsFiles : FuzzTarget
{
    void take(const QByteArray& input) override
    {
        m_site.write(bin + "settings.ini", input);
        const auto gui = console();
        for (const char* slot : {"on_pbPoint_clicked", "on_pbConstants_clicked", "on_pbCalc_clicked"})
            QMetaObject::invokeMethod(gui.get(), slot);
        QCoreApplication::processEvents();
    }
};
const FuzzName<SettingsFiles> settings("settings");

// The style sheet on the panel of the weld.
struct Styles : FuzzTarget
{
    Styles()
    {
        m_site.write(bin + "style.qss", {});
        StyleLoader::attach(StyleLoader::defaultStyleFile(), Qt::Key_F5);
    }
    void take(const QByteArray& input) override
    {
        m_site.write(bin + "style.qss", input);
        QTest::keyClick(&m_window, Qt::Key_F5);
        QCoreApplication::processEvents();
        m_window.grab();
    }
    ContourWindow m_window;
};
const FuzzName<Styles> styles("styles");

} // namespace
