#include "deathtest.h"
#include "techtable.h"
#include "weldroles.h"

#include <QTableWidget>
#include <QTest>

class TestTechTable : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void rowsComeIn();
    void commentSwitchesItsBlock();
    void pathsThatCannotBeGoneAreRed();
    void shownDefaultsGoIntoEveryRow();
    void settingsOfARasterOutliveItsText();
    void assertions();

private:
    using T = TechTable;

    QString column(int column) const
    {
        QStringList cells;
        for (int row = 0; row < m_table->rowCount(); ++row)
            cells << m_table->text(row, column);
        return cells.join(' ');
    }
    QString red() const
    {
        QString marks;
        for (int row = 0; row < m_table->rowCount(); ++row)
            marks += m_cells->item(row, 0)->foreground().color() == QColor(Qt::red) ? 'r' : '.';
        return marks;
    }

    std::unique_ptr<QTableWidget> m_cells;
    std::unique_ptr<TechTable> m_table;
};

// 100 mm with the beam up, level and down.
void TestTechTable::init()
{
    m_cells = std::make_unique<QTableWidget>(0, T::ColumnCount);
    m_table = std::make_unique<TechTable>(m_cells.get());
    m_table->reset(600);
    m_table->setWholePath(100);
    m_table->addTechPoint(10, 20, 600);
    m_table->addTechPoint(80, 20, 600);
}

void TestTechTable::rowsComeIn()
{
    m_table->addLinearTackPoint(95, 800, 1200);
    m_table->addPoints({50, 100.004f}, 900); // shown rounded down, no longer beyond the end
    m_table->addComment("Прихватки");
    m_table->addTechPoint(1, 0, 600); // counts from the row above the comment
    QCOMPARE(column(T::Path), QString("0.00 10.00 50.00 90.00 95.00 100.00 Прихватки 101.00 100.00"));
    QCOMPARE(column(T::Ir), QString("0.0 20.0 0.0 20.0 800.0 0.0  0.0 0.0"));
    QCOMPARE(column(T::Speed), QString("600.0 600.0 900.0 600.0 1200.0 900.0  600.0 600.0"));
    m_table->setNumber(7, T::Path, -5); // from a file
    m_table->addTechPoint(1, 0, 0);
    QCOMPARE(m_table->text(8, T::Path), QString("-4.00"));
    for (int row = 0; row < m_table->rowCount(); ++row)
        QCOMPARE(m_cells->item(row, 0)->font().italic() && m_cells->item(row, 0)->font().bold(),
                 m_table->isFixed(row));
    m_table->reset(300);
    QCOMPARE(column(T::Speed), QString("300.0 300.0"));
}

void TestTechTable::commentSwitchesItsBlock()
{
    m_table->addComment("Прихватки");
    m_table->addTechPoint(1, 5, 600);
    m_table->addTechPoint(1, 0, 600);
    m_table->addStop();
    m_table->addTechPoint(1, 0, 600);
    const auto state = [this] {
        QString marks;
        for (const TechRow& row : m_table->rows())
            marks += row.stop ? '!' : row.on ? '+' : row.comment ? '-' : 'o';
        return marks;
    };
    QCOMPARE(state(), QString("+++-++!++"));
    m_table->toggleBlock(3);
    QCOMPARE(state(), QString("+++-oo!++"));
    QCOMPARE(m_cells->item(5, 6)->background().color(), QColor(192, 192, 192));
    m_table->toggleBlock(6); // not the last row
    QCOMPARE(state(), QString("+++-oo!o+"));
    m_table->toggleBlock(3);
    QCOMPARE(state(), QString("+++-++!o+"));
    QCOMPARE(m_cells->item(5, 6)->background().color(), QColor(Qt::white));
}

void TestTechTable::pathsThatCannotBeGoneAreRed()
{
    struct
    {
        int column;
        float value; // in row 2
        const char* marks;
    } const cases[] = {{T::Path, 120, "..r."}, // beyond the end
                       {T::Path, 10, "...."},  // the same place and the same currents: a change of speed
                       {T::Ir, 21, ".rr."}};   // the current jumps
    for (const auto& change : cases) {
        m_table->setNumber(2, change.column, change.value);
        QCOMPARE(m_table->markValidity(), QString(change.marks) == "....");
        QCOMPARE(red(), QString(change.marks));
    }
}

void TestTechTable::shownDefaultsGoIntoEveryRow()
{
    m_table->addComment("Прихватки");
    m_table->setDefaults({true, false, false, 655.4f, 1, -2});
    QCOMPARE(column(T::If), QString("655 655 655 655 655"));
    QVERIFY(!m_cells->isColumnHidden(T::If) && m_cells->isColumnHidden(T::Ix));
    QCOMPARE(m_cells->columnWidth(T::If), 80);
    QCOMPARE(column(T::Ix), QString("0.0 0.0 0.0  0.0")); // a hidden column keeps its values
    QCOMPARE(m_cells->item(0, T::If)->background(), m_cells->palette().alternateBase());
    m_table->insert(1, m_table->restRow(900));
    QCOMPARE(m_table->line(1), QString("+ 0.00 0.0 655 1.0 -2.0 900.0 2 "));
}

void TestTechTable::settingsOfARasterOutliveItsText()
{
    Raster raster{Raster::On, 5, 10.5, -3, 90, 100, 0.25, 0, 1, 1};
    for (const auto& [kind, text] :
         {std::pair(Raster::On, "Прямоугольник; 10.50x-3.00; 90; 100; 0.25x0.00; 1; 1"),
          std::pair(Raster::Keep, ""), std::pair(Raster::Off, "ВЫКЛ")}) {
        raster.kind = kind;
        m_table->setRaster(1, raster);
        QCOMPARE(m_table->text(1, T::RasterCell), QString(text));
        QCOMPARE(m_cells->item(1, T::RasterCell)->data(RasterTypeRole).toInt(), 5);
        const Raster read = m_table->raster(1);
        QCOMPARE(read.kind, kind);
        QCOMPARE(read.ampX, kind == Raster::On ? 10.5f : 0);
    }
}

void TestTechTable::assertions()
{
    QVERIFY(deathOf([this] { m_table->addTechPoint(-1, 0, 0); }).contains("interval >= 0"));
    QVERIFY(deathOf([this] { m_table->addLinearTackPoint(-1, 0, 0); }).contains("interval >= 0"));
    for (const float Ir : {-1.0f, 801.0f})
        QVERIFY(deathOf([&] { m_table->addTechPoint(1, Ir, 0); }).contains("(IrVal >= 0) && (IrVal <= 800)"));
    QVERIFY(deathOf([this] { m_table->remove(0); }).contains("row > 0"));
    QVERIFY(deathOf([this] { m_table->remove(3); }).contains("row < twTechTab->rowCount()-1"));
    m_cells->setRowCount(0);
    QVERIFY(deathOf([this] { m_table->addComment(""); }).contains("row > 0"));
}

QTEST_MAIN(TestTechTable)

#include "test_techtable.moc"
