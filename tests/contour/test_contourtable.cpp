#include "comparetext.h"
#include "contourtable.h"
#include "deathtest.h"
#include "schema.h"
#include "techtable.h"
#include "weldlook.h"

#include <QSettings>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>

// The two tables of a weld: its points, and what is laid along them.
class TestContourTable : public QObject
{
    Q_OBJECT

private slots:
    // No points; rows for 100 mm with the beam up, level and down.
    void init()
    {
        m_cells = std::make_unique<QTableWidget>();
        m_table = std::make_unique<ContourTable>(m_cells.get());
        m_table->init(std::make_unique<SchemaXYZ>());
        m_techCells = std::make_unique<QTableWidget>(0, T::ColumnCount);
        m_tech = std::make_unique<TechTable>(m_techCells.get());
        m_tech->reset(600);
        m_tech->setWholePath(100);
        m_tech->addTechPoint(10, 20, 600);
        m_tech->addTechPoint(80, 20, 600);
    }

    // --- points ---

    void teaching()
    {
        m_table->teach({0, 0, 0});
        QCOMPARE(points(3), "Прямая");
        m_table->teach({30, 40, 0});
        QVERIFY(m_table->teach({30, 40, 12.345f}));
        QVERIFY(!m_table->teach({30, 40, 12.345f})); // the machine already stands there
        QCOMPARE(points(3), "Прямая Прямая Конец");
        QCOMPARE(m_table->coords(2), (QList<float>{30, 40, 12.35f}));
        m_table->setCurrent(0);
        m_table->teach({7, 0, 0}); // a point in between is travelled through
        QCOMPARE(points(0) + ' ' + points(3), "0.00 7.00 30.00 30.00 Прямая Прямая Прямая Конец");
        QCOMPARE(marked(), 1);
        m_table->setMovesForward(false);
        m_table->teach({3, 0, 0}); // before the point that the machine came back to
        QCOMPARE(points(0), "0.00 3.00 7.00 30.00 30.00");
        m_table->setClosed(true, false);
        QCOMPARE(m_table->frame(4).type, int(Frame::Line));
        m_table->setMovesForward(true);
        m_table->setCurrent(4);
        m_table->teach({50, 0, 0}); // and so is each of a closed contour
        QCOMPARE(m_table->frame(5).type, int(Frame::Line));
    }

    void removing()
    {
        const std::tuple<int, bool, const char*, int> cases[] = {{2, true, "0.00 10.00", 1},
                                                                 {2, false, "0.00 10.00", 0},
                                                                 {1, true, "0.00 20.00", 0},
                                                                 {0, true, "10.00 20.00", 0}};
        for (const auto& [current, forward, left, mark] : cases) {
            init();
            teach({{0, 0, 0}, {10, 0, 0}, {20, 0, 0}});
            m_table->setMovesForward(forward);
            m_table->setCurrent(current);
            m_table->removeCurrent();
            QCOMPARE(points(0) + '|' + points(3), left + QString("|Прямая Конец"));
            QCOMPARE(marked(), mark);
            m_table->removeCurrent();
            QCOMPARE(points(3), "Прямая");
            m_table->removeCurrent();
            QCOMPARE(m_table->current(), -1);
            m_table->teach({7, 0, 0}); // the empty table takes a first point again
            QCOMPARE(points(0), "7.00");
        }
    }

    void inversionKeepsEachFrameOnItsStretch()
    {
        // Frame 1 runs from the first point to the second and so on; 4, when closed, from the last to the
        // first.
        for (const bool closed : {false, true}) {
            init();
            teach({{1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {4, 0, 0}});
            m_table->setClosed(closed, true);
            for (int row = 0; row < (closed ? 4 : 3); ++row)
                m_table->setFrame(row, {Frame::Arc, float(row + 1), 0, 0});
            for (const char* turned :
                 {closed ? "1432 4321" : "4321 3210", closed ? "1234 1234" : "1234 1230"}) {
                m_table->invert();
                QString xs, radii;
                for (const ContourRow& row : m_table->values().rows) {
                    xs += QString::number(row.coords[0]);
                    radii += QString::number(row.frame.radius);
                }
                QCOMPARE(xs + ' ' + radii, turned);
            }
        }
    }

    void ringAndCircle()
    {
        m_table->init(std::make_unique<SchemaCircle>(100, 4));
        m_table->layRing(4, {0, 1, 2, 3});
        QCOMPARE(m_table->line(3), "270.00 1.00 2.00 3.00 ");
        m_table->invert();
        QCOMPARE(points(0), "0.00 270.00 180.00 90.00");
        m_table->invert();
        m_table->movePoint(3, {100, 0, 0, 0});
        m_table->movePoint(1, {-100, 1, 0, 0});
        m_table->movePoint(2, {180, 0, 0, 0});
        QCOMPARE(points(0), "0.00 350.00 360.00 10.00");

        m_table->init(std::make_unique<SchemaXYZr>(40, 0, 0));
        teach({{0, 0, 0}, {10, 0, 0}, {20, 0, 0}});
        QVERIFY(!m_table->fitCircle()); // none goes through a straight line
        QCOMPARE(m_table->schema()->D(), 40.0f);
    }

    // --- technology ---

    void rowsComeIn()
    {
        m_tech->addLinearTackPoint(95, 800, 1200);
        m_tech->addPoints({50, 100.004f}, 900); // shown rounded down, no longer beyond the end
        m_tech->addComment("Прихватки");
        m_tech->addTechPoint(1, 0, 600); // counts from the row above the comment
        QCOMPARE(tech(T::Path), "0.00 10.00 50.00 90.00 95.00 100.00 Прихватки 101.00 100.00");
        QCOMPARE(tech(T::Ir), "0.0 20.0 0.0 20.0 800.0 0.0  0.0 0.0");
        QCOMPARE(tech(T::Speed), "600.0 600.0 900.0 600.0 1200.0 900.0  600.0 600.0");
        m_tech->setNumber(7, T::Path, -5); // from a file
        m_tech->addTechPoint(1, 0, 0);
        QCOMPARE(m_tech->text(8, T::Path), "-4.00");
        for (int row = 0; row < m_tech->rowCount(); ++row) {
            const QFont font = m_techCells->item(row, 0)->font();
            QCOMPARE(font.italic() && font.bold(), m_tech->isFixed(row));
        }
        m_tech->reset(300);
        QCOMPARE(tech(T::Speed), "300.0 300.0");
    }

    void commentSwitchesItsBlock()
    {
        m_tech->addComment("Прихватки");
        m_tech->addTechPoint(1, 5, 600);
        m_tech->addTechPoint(1, 0, 600);
        m_tech->addStop();
        m_tech->addTechPoint(1, 0, 600);
        const std::pair<int, const char*> touches[] = {
            {3, "+++-oo!++"}, {6, "+++-oo!o+"}, {3, "+++-++!o+"}}; // never the last row
        for (const auto& [comment, expected] : touches) {
            m_tech->toggleBlock(comment);
            QString marks;
            for (const TechRow& row : m_tech->rows())
                marks += row.stop ? '!' : row.on ? '+' : row.comment ? '-' : 'o';
            QCOMPARE(marks, expected);
            QCOMPARE(m_techCells->item(5, 6)->background().color(),
                     marks[5] == 'o' ? QColor(192, 192, 192) : QColor(Qt::white));
        }
    }

    void shownDefaultsGoIntoEveryRow()
    {
        m_tech->addComment("Прихватки");
        m_tech->setDefaults({true, false, false, 655.4f, 1, -2});
        QCOMPARE(tech(T::If), "655 655 655 655 655");
        QVERIFY(!m_techCells->isColumnHidden(T::If) && m_techCells->isColumnHidden(T::Ix));
        QCOMPARE(m_techCells->columnWidth(T::If), 80);
        QCOMPARE(tech(T::Ix), "0.0 0.0 0.0  0.0"); // a hidden column keeps its values
        QCOMPARE(m_techCells->item(0, T::If)->background(), m_techCells->palette().alternateBase());
        m_tech->insert(1, m_tech->restRow(900));
        QCOMPARE(m_tech->line(1), "+ 0.00 0.0 655 1.0 -2.0 900.0 2 ");
    }

    // --- columns of both

    void keptWidths()
    {
        const QTemporaryDir folder;
        QSettings settings(folder.filePath("settings.ini"), QSettings::IniFormat);
        const QStringList keys = contourWidthKeys({"LX", "LY"}) + techWidthKeys();
        QCOMPARE(keys.mid(1, 2).join(' '), "Contour/Width_LXLY_LY Contour/Width_S");
        QCOMPARE(keys.mid(7).join(' '), "Contour/Width_Rate Contour/Width_TR");
        const QVariant stored[] = {40, 1000, 39, 1001, "wide", QVariant(), -7, 0, 50};
        for (int i = 0; i < keys.size(); ++i)
            settings.setValue(keys[i], stored[i]);
        QTableWidget table(0, keys.size());
        restoreWidths(&table, settings, keys, 80);
        QList<int> widths;
        for (int column = 0; column < keys.size(); ++column)
            widths << table.columnWidth(column);
        QCOMPARE(widths, (QList<int>{40, 1000, 80, 80, 80, 80, 80, 80, 50}));
        table.setColumnHidden(8, true);
        keepWidths(&table, settings, keys);
        QCOMPARE(settings.value(keys[3]).toInt(), 80);
        QCOMPARE(settings.value(keys[8]).toInt(), 50); // of a hidden one
    }

    void fittedColumn()
    {
        QTableWidget table(0, 3);
        table.resize(500, 100);
        table.show();
        table.setColumnWidth(2, 80);
        const auto* fitted = new FittedColumn(&table, 2);
        const int room = table.viewport()->width();
        QCOMPARE(table.columnWidth(2), room - 200);
        table.setColumnHidden(1, true);
        QCOMPARE(table.columnWidth(2), room - 100);
        table.setColumnWidth(0, room); // nothing is left: its own width stays
        QCOMPARE(table.columnWidth(2), 80);
        table.setColumnWidth(2, 120);
        table.resize(800, 100);
        QCOMPARE(table.columnWidth(2), qMax(120, table.viewport()->width() - room));
        QCOMPARE(fitted->ownWidth(), 120);
    }

    // --- misuse

    void assertions()
    {
        const std::pair<std::function<void()>, const char*> wrong[] = {
            {[this] { m_table->coords(0); }, "twi"},
            {[this] {
                 m_table->addPoint({1, 2, 3});
             },
             "point.size() == twContour->columnCount()"},
            {[this] {
                 m_table->setMovesForward(false);
                 m_table->teach({1, 2, 3});
             },
             "row >= 0"},
            {[this] { m_tech->addTechPoint(-1, 0, 0); }, "interval >= 0"},
            {[this] { m_tech->addLinearTackPoint(-1, 0, 0); }, "interval >= 0"},
            {[this] { m_tech->addTechPoint(1, -1, 0); }, "(IrVal >= 0) && (IrVal <= 800)"},
            {[this] { m_tech->addTechPoint(1, 801, 0); }, "(IrVal >= 0) && (IrVal <= 800)"},
            {[this] { m_tech->remove(0); }, "row > 0"},
            {[this] { m_tech->remove(3); }, "row < twTechTab->rowCount()-1"},
            {[this] {
                 m_techCells->setRowCount(0);
                 m_tech->addComment("");
             },
             "row > 0"}};
        for (const auto& [act, condition] : wrong)
            QVERIFY2(deathOf(act).contains(condition), condition);
    }

private:
    using T = TechTable;

    static QString column(const QTableWidget& cells, int column)
    {
        QStringList list;
        for (int row = 0; row < cells.rowCount(); ++row)
            list << (cells.item(row, column) ? cells.item(row, column)->text() : QString());
        return list.join(' ');
    }
    QString points(int number) const { return column(*m_cells, number); }
    QString tech(int number) const { return column(*m_techCells, number); }
    int marked() const { return m_cells->selectionModel()->selectedRows().value(0).row(); }
    void teach(const QList<QList<float>>& points)
    {
        for (const QList<float>& point : points)
            m_table->teach(point);
    }

    std::unique_ptr<QTableWidget> m_cells, m_techCells;
    std::unique_ptr<ContourTable> m_table;
    std::unique_ptr<TechTable> m_tech;
};

QTEST_MAIN(TestContourTable)

#include "test_contourtable.moc"
