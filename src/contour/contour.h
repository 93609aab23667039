#pragma once

#include "contourtable.h"
#include "machinestate.h"
#include "passport.h"
#include "techtable.h"

#include <QTabWidget>

#include <array>
#include <memory>

class ConsoleHost;
class ContourKeeper;
class FittedColumn;
class ProgramTab;
class SaveFile;
class WeldStart;
namespace Ui {
class CONTOUR;
}

// The weld: contour table, technology table and the programs of the three channels, one tab each.
// The tables are the data: every operation reads its numbers back from the cells. All in the window's
// thread; between the channels of a weld the operator's hand has to wait for the pauses of `Site`.
class CONTOUR : public QTabWidget
{
    Q_OBJECT
public:
    // A slip on the keypad or a damaged file may not ask for a program that fills the memory.
    static constexpr float maxPasses = 1000;
    static constexpr float maxSpeed = 1e7f; // mm/min, all that fits the keypad

    explicit CONTOUR(QWidget* parent = nullptr);
    ~CONTOUR() override; // keeps for the next start

    // Keeps widths, speeds and the contour. The contour is kept while it is edited, too, within ten seconds
    // after an edit. A file that cannot be written is told in the journal.
    void keepForNextStart();

    // The scheme. `init` takes ownership, empties both tables and is the only way to change the scheme.
    void init(Schema* schema);
    const Schema* schema() const { return m_points.schema(); }

    // The contour table.
    QList<float> coords() const; // the live position; asserts without a scheme
    QList<float> coords(int row) const { return m_points.coords(row); }
    void addPoint(const QList<float>& point) { m_points.addPoint(point); }
    void movePoint(int row, const QList<float>& delta) { m_points.movePoint(row, delta); }
    void addParameters(int row, int type, int dir, int plane, float radius, bool update);
    double calcDistance(int row, const QList<float>& from, const QList<float>& to) const; // mm
    double calcLength(int count) const;            // mm along the first `count` points
    double calcDiameter(int row, int plane) const; // mm, of the circle through row, row-1, row-2
    void recalcPointsForNewDiameter(float oldD, float newD);

    // The technology table. Currents in mA, speeds in mm/min, paths in mm.
    void addTechPoint(float interval, float Ir, float speed) { m_tech.addTechPoint(interval, Ir, speed); }
    void addLinearTackPoint(float path, float Ir, float speed) { m_tech.addLinearTackPoint(path, Ir, speed); }
    void addPointToTech(float path);
    void addComment(const QString& text) { m_tech.addComment(text); }
    void addContourPoint(bool all, bool everyPass, int point, int pass); // point and pass from 1
    void setParamValueInTable(int column, float value, int decimals);
    void setTechSettings(bool test, bool focus, bool yokeX, bool yokeY, float If, float Ix, float Iy, float D,
                         int plane);

    // Files, each `path` without its extension and without the site's root. One that cannot be read changes
    // nothing; one that cannot be written stays as it was, and the journal tells so.
    void save(const QString& name, const QString& path, bool updateName);
    void load(const QString& name, const QString& path);

    // Writes the program and starts it on the channel; one that cannot be written is told and not started.
    void run(int channel, const QString& text);

    // Opens the record of a run, which ends by itself: the long form when the last start was a weld, else the
    // short one. Asserts while another record is open.
    void startPassport();

public slots:
    void onDriveState(bool on);
    void onVirtualMode(bool on);
    void onChannel1State(unsigned int state);
    void onChannel2State(unsigned int state);
    void onChannel3State(unsigned int state);
    void onAxisMoving(bool moving);
    void onChangedPointNo(unsigned int n);
    void onCoordsChanged();
    void onUserChanged(int group);
    void onContourCellClicked(int row, int column);
    void onContourCellDoubleClicked(int row, int column); // the frame that leaves the row
    void onTechTabCellClicked(int row, int column);

signals:
    void message(const QString& text, bool show); // a journal line

protected:
    void timerEvent(QTimerEvent* event) override; // a sample of the record; `event` is null for the first

private slots:
    void on_pbNew_clicked();
    void on_pbIns_clicked();
    void on_pbCorr_clicked();
    void on_pbCorrNgo_clicked();
    void on_pbDel_clicked();
    void on_pbRing_clicked();
    void on_pbInverse_clicked();
    void on_nrings_clicked();
    void on_contourSpeed_clicked();
    void on_pbSave_clicked();
    void on_pbSave_2_clicked();
    void on_pbLoad_clicked();
    void on_pbLoad_2_clicked();

    void on_pbInsTechPoint_clicked();
    void on_pbDelTechPoint_clicked();
    void on_pbAddTechPoint_clicked();
    void on_pbTemplate_clicked();
    void on_pbSettings_clicked();
    void on_weldSpeed_clicked();
    void on_pbGcode_clicked();

    void on_pbRun_clicked();
    void on_pbRun_2_clicked();
    void on_pbRun_3_clicked();
    void on_pbPrgOpen_1_clicked();
    void on_pbPrgOpen_2_clicked();
    void on_pbPrgOpen_3_clicked();
    void on_pbPrgSave_1_clicked();
    void on_pbPrgSave_2_clicked();
    void on_pbPrgSave_3_clicked();

private:
    ConsoleHost* host() const;
    void command(const QString& text);   // to the controller
    bool refused(const QString& reason); // a journal line, empty where nothing speaks against it
    void setProgramName(const QString& name);
    void edited(); // something that the contour's file keeps may have changed
    WeldContour contourValues() const;
    WeldTables tables() const;

    // What follows from the tables and from the machine.
    void updateEnables();
    void updateRing();
    void updateGcode();
    void updateLength();
    void updateD();    // the circle, where points were taught, moved or taken away
    void showCircle(); // of an XYZr contour
    void updateHeader();
    void updatePlane(int plane);
    void updateTechTab();
    void updateValidDistance();
    void updateAfterEdit(); // what depends on the rows of the contour, but for the circle through them

    bool newRound();
    bool newRing();
    void askTechValue(int row, int column);
    void askRaster(int row);
    Passport::Head passportHead() const;
    Passport::Moment passportMoment() const;

    // What is kept. The text is that of the contour's file, with the program's name; it needs a scheme.
    QString contourText(const QString& name) const;
    void loadHead(SaveFile& file);
    void loadSettings();
    void saveSettings() const;
    void saveColumnWidths() const;

    std::unique_ptr<Ui::CONTOUR> ui;
    ContourTable m_points;
    TechTable m_tech;
    FittedColumn* m_rasterColumn = nullptr;  // child of its table
    std::array<ProgramTab*, 3> m_programs{}; // children, of the channels 1 to 3
    WeldStart* m_start = nullptr;            // child
    Passport m_passport;
    ContourKeeper* m_keeper = nullptr; // child; null while the contour of the last run is read
    QString m_contourDir;              // without the site's root
    QString m_programName;
    bool m_testMode = false; // the beam current is in the operator's hand
    MachineState m_machine;
};
