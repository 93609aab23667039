#include "contourfixture.h"
#include "schema.h"

#include <QPlainTextEdit>

class TestContour : public ContourTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void newContour();
    void cancelledOrRefusedNumberLeavesTheContour();
    void buttonsFollowTheMachine();
    void teaching();
    void shifting();
    void deleting();
    void closing();
    void inversion();
    void taughtCircle();
    void newDiameterMovesThePoints();

    void touchingAPoint();
    void touchingAPointOfARing();
    void shiftAndGo();
    void pointNumberMovesTheMark();

private:
    QList<float> point(float x, float y, float z) const { return {x, y, z}; }
    QStringList frames() const { return m_window->column(m_window->points(), 3); }
    QStringList xs() const { return m_window->column(m_window->points(), 0); }
    float total() const
    {
        return m_window->cell(m_window->tech(), m_window->tech()->rowCount() - 1, 0).toFloat();
    }
    int selectedRow() const
    {
        const QModelIndexList rows = m_window->points()->selectionModel()->selectedRows();
        return rows.size() == 1 ? rows.first().row() : -1;
    }
};

// --- contour table ---

void TestContour::newContour()
{
    m_window->place(1.5, -2.25, 3);
    struct
    {
        QStringList numbers;
        const char *header, *columns, *journal;
    } const entries[] = {
        {{}, "<b>Линейная интерполяция</b>", "LX LY Z Параметры", "Смешаная интерполяция XYZ"},
        {{"120.5"}, "<b>Круговая интерполяция</b><pre>D=120.5</>", "LX LY Z", "Круговая интерполяция"},
        {{"250", "4"}, "<b>Кольцевой стык</b><pre>D=250</>", "V LX LY Z", "Кольцевой стык"}};
    for (int entry = 0; entry < 3; ++entry) {
        QList<Answer> given{Answers::entry(entry)};
        for (const QString& number : entries[entry].numbers)
            given << Answers::number(number);
        Answers answers(given);
        m_window->press("pbNew");
        QVERIFY(answers.allGiven());

        QCOMPARE(m_window->text("lblConsts"), QString(entries[entry].header));
        QStringList columns;
        for (int i = 0; i < m_window->points()->columnCount(); ++i)
            columns << m_window->points()->horizontalHeaderItem(i)->text();
        QCOMPARE(columns.join(' '), QString(entries[entry].columns));
        QCOMPARE(m_window->journal.last(),
                 QString("[I]Новый контур '%1' создан").arg(entries[entry].journal));
        QCOMPARE(m_window->shownName, QString("Программа сварки"));
        QCOMPARE(m_window->find("frmRotate")->isVisibleTo(m_contour->widget(1)), entry == 1);
        QCOMPARE(m_window->points()->rowCount(), entry == 2 ? 4 : 0);
        QCOMPARE(m_window->tech()->rowCount(), 2);
    }
    QCOMPARE(xs(), (QStringList{"0.00", "90.00", "180.00", "270.00"}));
    QCOMPARE(m_window->cell(m_window->points(), 3, 2), QString("-2.25"));
    QCOMPARE(selectedRow(), 0);
}

void TestContour::cancelledOrRefusedNumberLeavesTheContour()
{
    laySampleWeld(*m_window);
    m_window->shownName = QStringLiteral("mine");
    Answers answers({Answers::entry(2), Answers::number(QStringLiteral("250")), Answers::cancel()});
    m_window->press("pbNew");
    QVERIFY(answers.allGiven());
    for (const int entry : {1, 2}) { // a part without a diameter
        Answers none({Answers::entry(entry), Answers::number(QStringLiteral("0"))});
        m_window->press("pbNew");
        QVERIFY(none.allGiven());
        QCOMPARE(m_window->journal.last(), QStringLiteral("[A]Ошибка! Диаметр, мм: от 0.01 до 9999999!"));
    }
    QCOMPARE(m_contour->schema()->id(), QStringLiteral("XYZ"));
    QCOMPARE(m_window->points()->rowCount(), 2);
    QCOMPARE(m_window->shownName, QStringLiteral("mine"));
}

void TestContour::buttonsFollowTheMachine()
{
    laySampleWeld(*m_window);
    struct
    {
        bool drives, transformed;
        unsigned int channel1;
        const char* enabled; // New Ins Corr corrNgo Del inveRse rinG
    } const cases[] = {{true, true, 1, "NICODRG"},
                       {false, true, 1, "NDRG"},
                       {true, false, 1, "NDRG"}, // the axes are its own
                       {true, true, 3, ""}};     // a program runs
    const std::pair<char, const char*> buttons[] = {{'N', "pbNew"},     {'I', "pbIns"}, {'C', "pbCorr"},
                                                    {'O', "pbCorrNgo"}, {'D', "pbDel"}, {'R', "pbInverse"},
                                                    {'G', "pbRing"}};
    for (const auto& now : cases) {
        m_contour->onDriveState(now.drives);
        m_contour->onVirtualMode(now.transformed);
        m_contour->onChannel1State(now.channel1);
        QString enabled;
        for (const auto& [mark, name] : buttons)
            enabled += m_window->find(name)->isEnabled() ? QString(QLatin1Char(mark)) : QString();
        QCOMPARE(enabled, QString(now.enabled));
        QVERIFY(m_window->find("pbGcode")->isEnabled() && m_window->find("pbRun")->isEnabled());
    }
}

void TestContour::teaching()
{
    m_window->choose("pbNew", 0);
    m_window->teach(0, 0, 0);
    m_window->teach(30, 40, 0);
    m_window->teach(30, 40, 12.345f);
    QCOMPARE(m_window->text("points"), QStringLiteral("3"));
    QCOMPARE(m_window->text("length"), QStringLiteral("62.35"));
    QCOMPARE(m_window->cell(m_window->tech(), 1, 0), QStringLiteral("62.35"));
    QCOMPARE(selectedRow(), 2);
    QCOMPARE(m_contour->coords(2), point(30, 40, 12.35f));
}

void TestContour::shifting()
{
    laySampleWeld(*m_window);
    m_window->place(110, 5, 1);
    m_window->choose("pbCorr", 0);
    QCOMPARE(m_contour->coords(0), point(0, 0, 0));
    QCOMPARE(m_contour->coords(1), point(110, 5, 1));

    m_window->place(120, 5, 1);
    Answers no({Answers::entry(1), Answers::confirm(false)});
    m_window->press("pbCorr");
    QCOMPARE(m_contour->coords(1), point(110, 5, 1));
    Answers yes({Answers::entry(1), Answers::confirm(true)});
    m_window->press("pbCorr");
    QCOMPARE(m_contour->coords(0), point(10, 0, 0));
    QCOMPARE(m_contour->coords(1), point(120, 5, 1));
    QCOMPARE(m_window->journal.last(), QString("[I]Нажата кнопка 'Сдвиг всего контура' панели Контур"));
}

void TestContour::deleting()
{
    m_window->choose("pbNew", 0);
    for (int i = 0; i < 3; ++i)
        m_window->teach(10.0f * float(i), 0, 0);
    m_contour->onContourCellClicked(1, 0); // a walk back: the mark goes to the beginning
    for (const bool yes : {false, true}) {
        Answers answers({Answers::confirm(yes)});
        m_window->press("pbDel");
        QVERIFY(answers.allGiven());
        QCOMPARE(selectedRow(), yes ? 0 : 2);
    }
    QCOMPARE(xs(), (QStringList{"0.00", "10.00"}));
    QCOMPARE(total(), 10.0f);
}

void TestContour::closing()
{
    laySampleWeld(*m_window);
    m_window->teach(100, 75, 0);
    m_window->choose("pbRing", -1);
    QVERIFY(!m_window->find("frmRings")->isEnabled());
    QCOMPARE(m_window->text("lblLength"), QStringLiteral("Длина шва,\nмм"));

    m_window->choose("pbRing", 0);
    auto* ring = m_window->find<QAbstractButton>("pbRing");
    QCOMPARE(ring->text(), QStringLiteral("Замкнут\nпрямым\nходом"));
    QCOMPARE(m_window->text("lblLength"), QStringLiteral("Длина прохода,\nмм"));
    QCOMPARE(m_window->text("length"), QStringLiteral("300.00")); // 100 + 75 and back by 125
    QCOMPARE(frames().last(), QStringLiteral("Прямая"));
    m_window->enter("nrings", "3");
    QCOMPARE(m_window->journal.last(), QStringLiteral("[I]Задано новое число проходов по контуру - 3"));
    QCOMPARE(total(), 900.0f);

    m_window->press("pbRing");
    QCOMPARE(ring->text(), QStringLiteral("Замкнуть\nконтур"));
    QCOMPARE(frames().last(), QStringLiteral("Конец"));
    QCOMPARE(total(), 175.0f);

    m_window->choose("pbRing", 1);
    QCOMPARE(ring->text(), QStringLiteral("Замкнут\nобратным\nходом"));
    QCOMPARE(m_window->text("length"), QStringLiteral("350.00"));
    m_window->enter("nrings", "0");
    QCOMPARE(m_window->text("nrings"), QStringLiteral("1"));

    m_window->newRing(QStringLiteral("100"), QStringLiteral("3"));
    m_window->press("pbRing"); // a ring asks nothing
    QCOMPARE(ring->text(), QStringLiteral("Контур\nзамкнут"));
    QCOMPARE(m_window->text("length"), QStringLiteral("314.16"));
}

void TestContour::inversion()
{
    laySampleWeld(*m_window);
    m_contour->addParameters(0, Frame::Arc, 1, 0, 80, true);
    const float before = total();
    m_window->press("pbInverse");
    QCOMPARE(xs(), (QStringList{"100.00", "0.00"}));
    QCOMPARE(frames(), (QStringList{"Дуга, r=80.0, пр. ч.с., пл-XY", "Конец"}));
    QCOMPARE(total(), before);
}

void TestContour::taughtCircle()
{
    m_window->newRound(QStringLiteral("10"));
    m_window->teach(60, 20, 0);
    m_window->teach(10, 70, 0);
    QCOMPARE(m_window->text("lblConsts"), QStringLiteral("<b>Круговая интерполяция</b><pre>D=10</>"));
    // The chord is longer than the diameter given: marked until the circle is known.
    QCOMPARE(m_window->points()->item(1, 0)->foreground().color(), QColor(Qt::red));
    m_window->teach(-40, 20, 0);
    QCOMPARE(m_window->text("diameter"), QStringLiteral("100.00"));
    QCOMPARE(m_window->text("centerX") + QLatin1Char(' ') + m_window->text("centerY"),
             QStringLiteral("10.00 20.00"));
    QCOMPARE(m_window->points()->item(1, 0)->foreground().color(), QColor(Qt::black));
    QCOMPARE(m_window->text("length"), QStringLiteral("157.08"));
}

void TestContour::newDiameterMovesThePoints()
{
    m_window->newRound(QStringLiteral("100"));
    m_window->teach(60, 20, 5);
    m_window->teach(10, 70, 5);
    m_window->teach(-40, 20, 5);
    for (const char* diameter : {"0", "50"}) { // none collapses the points onto the centre
        Answers answers(typed("diameter", diameter) + QList<Answer>{Answers::button("pbSettingsDone")});
        m_window->press("pbSettings");
        QVERIFY(answers.allGiven());
        if (diameter == QLatin1String("0"))
            QCOMPARE(m_contour->coords(0), point(60, 20, 5));
    }
    QVERIFY(m_window->journal.contains(QStringLiteral("[A]Ошибка! Диаметр, мм: от 0.01 до 9999999!")));
    QCOMPARE(m_contour->coords(0), point(35, 20, 5));
    QCOMPARE(m_contour->coords(1), point(10, 45, 5));
    QCOMPARE(m_contour->coords(2), point(-15, 20, 5));
    QCOMPARE(m_window->text("lblConsts"), QStringLiteral("<b>Круговая интерполяция</b><pre>D=50</>"));
    QCOMPARE(m_window->text("length"), QStringLiteral("78.54"));
    QVERIFY(m_window->journal.contains(QStringLiteral("Задан новый диаметр для контура - 50 мм")));
}

// --- moving along the contour ---

void TestContour::touchingAPoint()
{
    laySampleWeld(*m_window);
    m_window->teach(100, 50, 0);
    QVERIFY(m_window->linkUp());
    {
        Answers frame({Answers::cancel()});
        m_window->touchCell(m_window->points(), 0, 3); // the frame column is no way to move
        QVERIFY(frame.allGiven());
    }
    QVERIFY(m_site->read(QStringLiteral("/programs/_temp1.npg")).isEmpty());

    m_window->touchCell(m_window->points(), 0, 1);
    QCOMPARE(selectedRow(), 2); // the mark waits for the machine
    QCOMPARE(m_window->points()->currentRow(), 2);
    QTRY_COMPARE(m_window->commands(), QStringList{"EXEC_1(/programs/_temp1.npg)"});
    const QString program = QString::fromUtf8(m_site->read(QStringLiteral("/programs/_temp1.npg")));
    const QStringList moves = program.split(QLatin1Char('\n')).filter(QStringLiteral("G01"));
    QCOMPARE(moves.size(), 3); // the point it stands at, and one for each row
    QVERIFY(moves.last().endsWith(QStringLiteral("x=0.00 y=0.00 z=0.00 F0.0")));
    QVERIFY(m_window->find<QPlainTextEdit>("teGcode")->toPlainText().isEmpty());
}

void TestContour::touchingAPointOfARing()
{
    m_window->newRing(QStringLiteral("100"), QStringLiteral("4"));
    QVERIFY(m_window->linkUp());
    m_window->touchCell(m_window->points(), 2, 0);
    QTRY_COMPARE(m_window->commands(),
                 (QStringList{"EXEC_2(/programs/_temp2.npg)", "EXEC_1(/programs/_temp1.npg)"}));
    QVERIFY(m_site->read(QStringLiteral("/programs/_temp2.npg")).contains("V=180.00"));
}

void TestContour::shiftAndGo()
{
    laySampleWeld(*m_window);
    m_contour->onChangedPointNo(0);
    m_window->place(0, 10, 0);
    m_window->press("pbCorrNgo");
    QCOMPARE(m_contour->coords(0), point(0, 10, 0));
    QCOMPARE(total(), 100.5f);
    QVERIFY(m_site->read(QStringLiteral("/programs/_temp1.npg")).contains("x=100.00 y=0.00"));

    m_contour->onChangedPointNo(1); // past the last row of an open contour it stays
    m_window->place(100, 0, 0);
    m_window->press("pbCorrNgo");
    QVERIFY(!m_site->read(QStringLiteral("/programs/_temp1.npg")).contains("x=0.00"));
    m_window->choose("pbRing", 0);
    m_window->press("pbCorrNgo"); // and of a closed one goes to the first
    QVERIFY(m_site->read(QStringLiteral("/programs/_temp1.npg")).contains("x=0.00 y=10.00"));
}

void TestContour::pointNumberMovesTheMark()
{
    laySampleWeld(*m_window);
    m_contour->onChangedPointNo(0);
    QCOMPARE(selectedRow(), 0);
    m_contour->onChangedPointNo(2); // not in the table
    m_contour->onChangedPointNo(4'000'000'000U);
    QCOMPARE(selectedRow(), 0);
}

QTEST_MAIN(TestContour)

#include "test_contour.moc"
