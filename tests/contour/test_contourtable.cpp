#include "contourtable.h"
#include "deathtest.h"
#include "schema.h"

#include <QTableWidget>
#include <QTest>

class TestContourTable : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_cells = std::make_unique<QTableWidget>();
        m_table = std::make_unique<ContourTable>(m_cells.get());
        m_table->init(std::make_unique<SchemaXYZ>());
    }

    void teaching();
    void removing();
    void inversionKeepsEachFrameOnItsStretch();
    void ring();
    void circle();
    void assertions();

private:
    QString column(int column) const
    {
        QStringList cells;
        for (int row = 0; row < m_table->rowCount(); ++row)
            cells << m_cells->item(row, column)->text();
        return cells.join(' ');
    }
    int marked() const { return m_cells->selectionModel()->selectedRows().value(0).row(); }

    std::unique_ptr<QTableWidget> m_cells;
    std::unique_ptr<ContourTable> m_table;
};

void TestContourTable::teaching()
{
    m_table->teach({0, 0, 0});
    QCOMPARE(column(3), QString("Прямая"));
    m_table->teach({30, 40, 0});
    QVERIFY(m_table->teach({30, 40, 12.345f}));
    QVERIFY(!m_table->teach({30, 40, 12.345f})); // the machine already stands there
    QCOMPARE(column(3), QString("Прямая Прямая Конец"));
    QCOMPARE(m_table->coords(2), (QList<float>{30, 40, 12.35f}));
    m_table->setCurrent(0);
    m_table->teach({7, 0, 0}); // a point in between is travelled through
    QCOMPARE(column(0), QString("0.00 7.00 30.00 30.00"));
    QCOMPARE(column(3), QString("Прямая Прямая Прямая Конец"));
    QCOMPARE(marked(), 1);
    m_table->setMovesForward(false);
    m_table->teach({3, 0, 0}); // before the point that the machine came back to
    QCOMPARE(column(0), QString("0.00 3.00 7.00 30.00 30.00"));
    m_table->setClosed(true, false);
    QCOMPARE(m_table->frame(4).type, int(Frame::Line));
    m_table->setMovesForward(true);
    m_table->setCurrent(4);
    m_table->teach({50, 0, 0}); // and so is each of a closed contour
    QCOMPARE(m_table->frame(5).type, int(Frame::Line));
}

void TestContourTable::removing()
{
    const std::tuple<int, bool, const char*, int> cases[] = {{2, true, "0.00 10.00", 1},
                                                             {2, false, "0.00 10.00", 0},
                                                             {1, true, "0.00 20.00", 0},
                                                             {0, true, "10.00 20.00", 0}};
    for (const auto& [current, forward, left, mark] : cases) {
        init();
        for (const float x : {0.0f, 10.0f, 20.0f})
            m_table->teach({x, 0, 0});
        m_table->setMovesForward(forward);
        m_table->setCurrent(current);
        m_table->removeCurrent();
        QCOMPARE(column(0), QString(left));
        QCOMPARE(column(3), QString("Прямая Конец"));
        QCOMPARE(marked(), mark);
        m_table->removeCurrent();
        QCOMPARE(column(3), QString("Прямая"));
        m_table->removeCurrent();
        QCOMPARE(m_table->current(), -1);
        m_table->teach({7, 0, 0}); // the empty table takes a first point again
        QCOMPARE(column(0), QString("7.00"));
    }
}

void TestContourTable::inversionKeepsEachFrameOnItsStretch()
{
    // Frame 1 runs from the first point to the second and so on; 4, when closed, from the last to the first.
    for (const bool closed : {false, true}) {
        init();
        for (const float x : {1.0f, 2.0f, 3.0f, 4.0f})
            m_table->teach({x, 0, 0});
        m_table->setClosed(closed, true);
        for (int row = 0; row < (closed ? 4 : 3); ++row)
            m_table->setFrame(row, {Frame::Arc, float(row + 1), 0, 0});
        for (const char* turned : {closed ? "1432 4321" : "4321 3210", closed ? "1234 1234" : "1234 1230"}) {
            m_table->invert();
            QString points;
            QString radii;
            for (const ContourRow& row : m_table->values().rows) {
                points += QString::number(row.coords[0]);
                radii += QString::number(row.frame.radius);
            }
            QCOMPARE(points + ' ' + radii, QString(turned));
        }
    }
}

void TestContourTable::ring()
{
    m_table->init(std::make_unique<SchemaCircle>(100, 4));
    m_table->layRing(4, {0, 1, 2, 3});
    QCOMPARE(m_table->line(3), QString("270.00 1.00 2.00 3.00 "));
    m_table->invert();
    QCOMPARE(column(0), QString("0.00 270.00 180.00 90.00"));
    m_table->invert();
    m_table->movePoint(3, {100, 0, 0, 0});
    m_table->movePoint(1, {-100, 1, 0, 0});
    m_table->movePoint(2, {180, 0, 0, 0});
    QCOMPARE(column(0), QString("0.00 350.00 360.00 10.00"));
}

void TestContourTable::circle()
{
    m_table->init(std::make_unique<SchemaXYZr>(40, 0, 0));
    for (const float x : {0.0f, 10.0f, 20.0f})
        m_table->teach({x, 0, 0});
    QVERIFY(!m_table->fitCircle()); // none goes through a straight line
    QCOMPARE(m_table->schema()->D(), 40.0f);
    m_table->init(std::make_unique<SchemaXYZr>(40, 0, 0));
    for (const QList<float>& point : {QList<float>{60, 20, 5}, {10, 70, 5}, {-40, 20, 5}})
        m_table->teach(point);
    m_table->markReach(m_table->values());
    QCOMPARE(m_cells->item(1, 0)->foreground().color(), QColor(Qt::red));
    QVERIFY(m_table->fitCircle());
    m_table->markReach(m_table->values());
    QCOMPARE(m_cells->item(1, 0)->foreground().color(), QColor(Qt::black));
    QCOMPARE((QList<float>{m_table->centerX(), m_table->centerY()}), (QList<float>{10, 20}));
    m_table->changeDiameter(100, 50);
    QCOMPARE(column(0) + ' ' + column(1), QString("35.00 10.00 -15.00 20.00 45.00 20.00"));
}

void TestContourTable::assertions()
{
    QVERIFY(deathOf([this] { m_table->coords(0); }).contains("twi"));
    QVERIFY(deathOf([this] {
                m_table->addPoint({1, 2, 3});
            }).contains("point.size() == twContour->columnCount()"));
    QVERIFY(deathOf([this] {
                m_table->setMovesForward(false);
                m_table->teach({1, 2, 3});
            }).contains("row >= 0"));
}

QTEST_MAIN(TestContourTable)

#include "test_contourtable.moc"
