#include "contourfixture.h"
#include "schema.h"

#include <QPlainTextEdit>

class TestContour : public ContourTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    // --- contour table ---

    void newContour()
    {
        m_window->place(1.5, -2.25, 3);
        const std::pair<QList<Answer>, const char*> entries[] = {
            {{},
             "<b>Линейная интерполяция</b>|LX|LY|Z|Параметры|[I]Новый контур 'Смешаная интерполяция XYZ' "
             "создан|0 2"},
            {{Answers::number("120.5")},
             "<b>Круговая интерполяция</b><pre>D=120.5</>|LX|LY|Z|[I]Новый контур 'Круговая интерполяция' "
             "создан|0 2"},
            {{Answers::number("250"), Answers::number("4")},
             "<b>Кольцевой стык</b><pre>D=250</>|V|LX|LY|Z|[I]Новый контур 'Кольцевой стык' создан|4 2"}};
        for (int entry = 0; entry < 3; ++entry) {
            m_window->press("pbNew", QList<Answer>{Answers::entry(entry)} + entries[entry].first);
            QString made = m_window->text("lblConsts");
            for (int i = 0; i < m_window->points()->columnCount(); ++i)
                made += '|' + m_window->points()->horizontalHeaderItem(i)->text();
            made += '|' + told();
            made += QString("|%1 %2").arg(m_window->points()->rowCount()).arg(m_window->tech()->rowCount());
            QCOMPARE(made, entries[entry].second);
            QCOMPARE(m_window->shownName, "Программа сварки");
            QCOMPARE(m_window->find("frmRotate")->isVisibleTo(m_contour->widget(1)), entry == 1);
        }
        QCOMPARE(points(0), "0.00 90.00 180.00 270.00");
        QCOMPARE(m_window->cell(m_window->points(), 3, 2), "-2.25");
        QCOMPARE(selectedRow(), 0);

        // A cancelled or refused number leaves what is there.
        m_window->shownName = "mine";
        m_window->press("pbNew", {Answers::entry(2), Answers::number("99"), Answers::cancel()});
        for (const int entry : {1, 2}) { // a part without a diameter
            m_window->press("pbNew", {Answers::entry(entry), Answers::number("0")});
            QCOMPARE(told(), "[A]Ошибка! Диаметр, мм: от 0.01 до 9999999!");
        }
        QCOMPARE(m_contour->schema()->D(), 250.0F);
        QCOMPARE(m_window->points()->rowCount(), 4);
        QCOMPARE(m_window->shownName, "mine");
    }

    void buttonsFollowTheMachine()
    {
        m_window->laySampleWeld();
        struct
        {
            bool drives, transformed;
            unsigned int channel1;
            const char* enabled;
        } const cases[] = {{true, true, 1, "New Ins Corr CorrNgo Del Inverse Ring "},
                           {false, true, 1, "New Del Inverse Ring "},
                           {true, false, 1, "New Del Inverse Ring "}, // the axes are its own
                           {true, true, 3, ""}};                      // a program runs
        for (const auto& now : cases) {
            m_contour->onDriveState(now.drives);
            m_contour->onVirtualMode(now.transformed);
            m_contour->onChannel1State(now.channel1);
            QString enabled;
            for (const char* name : {"New", "Ins", "Corr", "CorrNgo", "Del", "Inverse", "Ring"})
                enabled +=
                    m_window->find("pb" + QByteArray(name))->isEnabled() ? name + QString(' ') : QString();
            QCOMPARE(enabled, now.enabled);
            QVERIFY(m_window->find("pbGcode")->isEnabled() && m_window->find("pbRun")->isEnabled());
        }
    }

    void shiftingAndInversion()
    {
        m_window->newLine({{0, 0, 0}, {30, 40, 0}, {30, 40, 12.345F}});
        QCOMPARE(m_window->text("points length"), "3 62.35");
        QCOMPARE(total(), "62.35");
        QCOMPARE(m_contour->coords(2), (QList<float>{30, 40, 12.35F}));
        m_window->place(110, 5, 1);
        m_window->choose("pbCorr", 0);
        QCOMPARE(points(0), "0.00 30.00 110.00");
        m_window->place(120, 5, 1);
        for (const bool yes : {false, true}) {
            m_window->press("pbCorr", {Answers::entry(1), Answers::confirm(yes)});
            QCOMPARE(points(0), yes ? "10.00 40.00 120.00" : "0.00 30.00 110.00");
        }
        QCOMPARE(m_contour->coords(2), (QList<float>{120, 5, 1}));
        QCOMPARE(told(), "[I]Нажата кнопка 'Сдвиг всего контура' панели Контур");
        m_contour->addParameters(0, Frame::Arc, 1, 0, 80, true);
        const QString before = m_window->text("length");
        m_window->press("pbInverse");
        QCOMPARE(points(0) + '|' + points(3),
                 "120.00 40.00 10.00|Прямая Дуга, r=80.0, пр. ч.с., пл-XY Конец");
        QCOMPARE(m_window->text("length"), before);
    }

    void deleting()
    {
        m_window->newLine({{0, 0, 0}, {10, 0, 0}, {20, 0, 0}});
        m_contour->onContourCellClicked(1, 0); // a walk back: the mark goes to the beginning
        for (const bool yes : {false, true}) {
            m_window->press("pbDel", {Answers::confirm(yes)});
            QCOMPARE(selectedRow(), yes ? 0 : 2);
        }
        QCOMPARE(points(0) + ' ' + total(), "0.00 10.00 10.00");
    }

    void closing()
    {
        m_window->newLine({{0, 0, 0}, {100, 0, 0}, {100, 75, 0}});
        m_window->choose("pbRing", -1);
        QVERIFY(!m_window->find("frmRings")->isEnabled());
        QCOMPARE(m_window->text("lblLength"), "Длина шва,\nмм");

        m_window->choose("pbRing", 0);
        QCOMPARE(m_window->text("pbRing lblLength length"),
                 "Замкнут\nпрямым\nходом Длина прохода,\nмм 300.00"); // 100 + 75 and back by 125
        QCOMPARE(points(3), "Прямая Прямая Прямая");
        m_window->enter("nrings", "3");
        QCOMPARE(told(), "[I]Задано новое число проходов по контуру - 3");
        QCOMPARE(total(), "900.00");

        m_window->press("pbRing");
        QCOMPARE(m_window->text("pbRing"), "Замкнуть\nконтур");
        QCOMPARE(points(3), "Прямая Прямая Конец");
        QCOMPARE(total(), "175.00");

        m_window->choose("pbRing", 1);
        QCOMPARE(m_window->text("pbRing length"), "Замкнут\nобратным\nходом 350.00");
        m_window->enter("nrings", "0");
        QCOMPARE(m_window->text("nrings"), "1");

        m_window->newRing("100", "3");
        m_window->press("pbRing"); // a ring asks nothing
        QCOMPARE(m_window->text("pbRing length"), "Контур\nзамкнут 314.16");
    }

    void circle()
    {
        const char* const shown = "diameter centerX centerY length lblConsts";
        m_window->newRound("10", {{60, 20, 5}, {10, 70, 5}});
        QCOMPARE(m_window->text("lblConsts"), "<b>Круговая интерполяция</b><pre>D=10</>");
        // The chord is longer than the diameter given: marked until the circle is known.
        QCOMPARE(m_window->points()->item(1, 0)->foreground().color(), QColor(Qt::red));
        m_window->teach(-40, 20, 5);
        QCOMPARE(m_window->points()->item(1, 0)->foreground().color(), QColor(Qt::black));
        const QString taught = "100.00 10.00 20.00 157.08 <b>Круговая интерполяция</b><pre>D=100</>";
        QCOMPARE(m_window->text(shown), taught);

        for (const char* diameter : {"0", "50"}) { // none collapses the points onto the centre
            QCOMPARE(points(0) + ' ' + points(1), "60.00 10.00 -40.00 20.00 70.00 20.00");
            m_window->press("pbSettings", typed("diameter", diameter) << Answers::button("pbSettingsDone"));
        }
        QVERIFY(m_window->journal.contains("[A]Ошибка! Диаметр, мм: от 0.01 до 9999999!"));
        QVERIFY(m_window->journal.contains("Задан новый диаметр для контура - 50 мм"));
        QCOMPARE(points(0), "35.00 10.00 -15.00");
        QCOMPARE(m_window->text(shown), QString(taught).replace("100", "50").replace("157.08", "78.54"));
    }

    // --- moving along the contour ---

    void touchingAPoint()
    {
        m_window->newLine({{0, 0, 0}, {100, 0, 0}, {100, 50, 0}});
        QVERIFY(m_window->linkUp());
        m_window->touchCell(m_window->points(), 0, 3, {Answers::cancel()}); // the frame: no way to move
        QCOMPARE(program("_temp1"), "");

        m_window->touchCell(m_window->points(), 0, 1);
        QCOMPARE(selectedRow(), 2); // the mark waits for the machine
        QCOMPARE(m_window->points()->currentRow(), 2);
        QTRY_COMPARE(m_window->commands(), "1 _temp1");
        const QStringList moves = program("_temp1").split('\n').filter("G01");
        QCOMPARE(moves.size(), 3); // the point it stands at, and one for each row
        QVERIFY(moves.last().endsWith("x=0.00 y=0.00 z=0.00 F0.0"));
        QCOMPARE(m_window->find<QPlainTextEdit>("teGcode")->toPlainText(), "");

        m_window->newRing("100", "4");
        m_window->touchCell(m_window->points(), 2, 0);
        QTRY_COMPARE(m_window->commands(), "1 _temp1, 2 _temp2, 1 _temp1");
        QVERIFY(program("_temp2").contains("V=180.00"));
    }

    void shiftAndGo()
    {
        m_window->newLine({{0, 0, 0}, {100, 0, 0}});
        m_contour->onChangedPointNo(0);
        QCOMPARE(selectedRow(), 0);
        for (const unsigned int none : {2U, 4'000'000'000U}) {
            m_contour->onChangedPointNo(none); // not in the table
            QCOMPARE(selectedRow(), 0);
        }
        m_window->place(0, 10, 0);
        m_window->press("pbCorrNgo");
        QCOMPARE(m_contour->coords(0), (QList<float>{0, 10, 0}));
        QCOMPARE(total(), "100.50");
        QVERIFY(program("_temp1").contains("x=100.00 y=0.00"));

        m_contour->onChangedPointNo(1); // past the last row of an open contour it stays
        m_window->place(100, 0, 0);
        m_window->press("pbCorrNgo");
        QVERIFY(!program("_temp1").contains("x=0.00"));
        m_window->choose("pbRing", 0);
        m_window->press("pbCorrNgo"); // and of a closed one goes to the first
        QVERIFY(program("_temp1").contains("x=0.00 y=10.00"));
    }

private:
    QString total() const { return tech(m_window->tech()->rowCount() - 1, 0); }
    int selectedRow() const
    {
        const QModelIndexList rows = m_window->points()->selectionModel()->selectedRows();
        return rows.size() == 1 ? rows.first().row() : -1;
    }
};

QTEST_MAIN(TestContour)

#include "test_contour.moc"
