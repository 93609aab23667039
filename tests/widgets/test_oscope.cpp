#include "comparetext.h"
#include "oscope.h"

#include <QDateTime>
#include <QPushButton>
#include <QScrollBar>
#include <QtTest>

namespace {

const QColor red(255, 0, 0);
const QColor green(0, 255, 0);

// A chart with a clock of its own; a plot of 400 by 200 px.
class Scope : public Oscope
{
public:
    Scope()
    {
        show(); // tells the margin
        const int margin = plot().left();
        resize(400 + 2 * margin, 200 + margin);
        addOrdinate("мА", 100);
        addCurve("a", 100, red, 0);
        addCurve("b", 50, green, 0);
        start();
    }
    void run(long centisec, float a = 0)
    {
        setValues({{"a", a}});
        time += centisec;
        timeEvent();
    }
    QImage picture() { return grab().toImage().copy(plot()); }
    void touch(QEvent::Type type, int x)
    {
        QMouseEvent event(type, QPointF(x, 50), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(this, &event);
    }

    long time = 1000000;

protected:
    long presentCentisec() const override { return time; }
};

// Of each column the rows that show the colour at full strength, "from-to", "" for none.
QString rows(const QImage& picture, const QList<int>& columns, const QColor& colour)
{
    QStringList all;
    for (const int column : columns) {
        QList<int> shown;
        for (int y = 0; y < picture.height(); ++y) {
            if (picture.pixelColor(column, y) == colour)
                shown << y;
        }
        all << (shown.isEmpty() ? "" : QString("%1-%2").arg(shown.first()).arg(shown.last()));
    }
    return all.join(' ');
}

} // namespace

class TestOscope : public QObject
{
    Q_OBJECT

private slots:
    void recordsWhatIsKnown()
    {
        Scope scope;
        QCOMPARE(scope.plot().size(), QSize(400, 200));
        scope.run(1, 7);
        scope.setVisible("a", false);
        scope.run(3, 8); // the clock paused
        scope.run(0, 9); // nothing is due
        scope.time -= 2; // the clock was set back
        scope.run(0, 9);
        QCOMPARE(scope.now(), 4L);
        int instant = 0;
        for (const float expected : {7.0F, 8.0F, 8.0F, 8.0F, 0.0F})
            QCOMPARE(scope.sample("a", instant++), expected);
        QCOMPARE(scope.sample("b", 3), 0.0F); // missing among the values

        // New looks for a curve keep its history; the widget itself can still be hidden.
        scope.addCurve("a", 10, green, 0);
        QCOMPARE(scope.sample("a", 0), 7.0F);
        scope.QWidget::setVisible(false);
        QVERIFY(scope.isHidden());
        QTest::ignoreMessage(QtWarningMsg, "Oscope: no curve ?");
        scope.setVisible("?", true);
    }

    void followsThePresent()
    {
        Scope scope;
        scope.run(3000);
        QCOMPARE(scope.offset(), 0L); // the plot, 4000, is not full yet
        scope.run(3000);
        QCOMPARE(scope.offset(), 2000L);
        auto* current = scope.findChild<QPushButton*>();
        scope.setOffsetCentisec(1999); // a single sample of the past holds the view
        scope.run(100);
        QCOMPARE(scope.offset(), 1999L);
        scope.picture();
        QVERIFY(!current->isChecked());
        current->click();
        QCOMPARE(scope.offset(), 2100L);
        scope.run(100);
        QCOMPARE(scope.offset(), 2200L);
        scope.picture();
        QVERIFY(current->isChecked());
        QCOMPARE(current->text(), QDateTime::fromMSecsSinceEpoch(scope.time * 10).toString("hh:mm:ss"));

        scope.resize(scope.width() + 100, scope.height());
        QCOMPARE(scope.offset(), 1200L); // a wider view ends at the present too
        for (const auto& [asked, got] : {std::pair(-5L, 0L), {99999L, 6200L}, {6200L, 6200L}}) {
            scope.setOffsetCentisec(asked);
            QCOMPARE(scope.offset(), got);
        }
    }

    void dragEndsAtTheRecord()
    {
        Scope scope;
        scope.run(20000);
        scope.setOffsetCentisec(10000);
        const int left = scope.plot().left();
        const auto drag = [&](int from, int by) {
            scope.touch(QEvent::MouseButtonPress, from);
            scope.touch(QEvent::MouseMove, from + by);
        };
        drag(left, 50); // on the margin
        QCOMPARE(scope.offset(), 10000L);
        drag(left + 1, 50);
        QCOMPARE(scope.offset(), 9500L);
        scope.touch(QEvent::MouseMove, left + 31); // from where it began, not from the last step
        QCOMPARE(scope.offset(), 9700L);
        scope.touch(QEvent::MouseMove, left + 5000);
        QCOMPARE(scope.offset(), 0L);
        scope.touch(QEvent::MouseMove, left - 5000);
        QCOMPARE(scope.offset(), 20000L);
        scope.touch(QEvent::MouseButtonRelease, left - 5000);
        scope.touch(QEvent::MouseMove, left + 1);
        QCOMPARE(scope.offset(), 20000L);
        drag(left + 10, 30);
        scope.hide(); // the finger may lift unseen
        scope.touch(QEvent::MouseMove, left + 300);
        QCOMPARE(scope.offset(), 19700L);
    }

    void zoom()
    {
        Scope scope;
        auto* bar = scope.findChild<QScrollBar*>();
        QCOMPARE(bar->width(), 100); // a quarter of the plot
        QCOMPARE(scope.zoomIndex(), 4);
        scope.run(1000000);
        for (const auto& [zoom, pixel] : {std::pair(12, 600), {8, 60}, {1, 2}, {0, 1}}) {
            bar->setValue(zoom);
            QCOMPARE(scope.offset(), 1000000L - 400 * pixel); // follows, at each scale
        }
        for (const auto& [asked, got] : {std::pair(99, 12), {-1, 0}}) {
            scope.setZoomIndex(asked);
            QCOMPARE(scope.zoomIndex(), got);
            QCOMPARE(bar->value(), got);
        }
        scope.setOffsetCentisec(5000);
        scope.setZoomIndex(3);
        QCOMPARE(scope.offset(), 5000L); // the past stays where it was
    }

    void beginsAnewAfterEightHours()
    {
        Scope scope;
        scope.run(Oscope::capacity, 5);
        QCOMPARE(scope.now(), long(Oscope::capacity));
        QCOMPARE(scope.sample("a", Oscope::capacity - 1), 5.0F);
        scope.run(1, 6);
        QVERIFY(scope.now() == 0 && scope.offset() == 0);
        scope.run(2, 6);
        QVERIFY(scope.now() == 2 && scope.sample("a", 1) == 6);
    }

    void picture()
    {
        Scope scope;
        QCOMPARE(rows(scope.picture(), {50}, red), "");
        scope.run(1000, 25); // columns 0 to 99
        scope.run(1000, 75);
        // A quarter up of 200 px; the step goes up between the columns 99 and 100, half of it in each; the
        // last point has its mark, and nothing comes behind it.
        QCOMPARE(rows(scope.picture(), {50, 150, 99, 100, 199, 201}, red),
                 "149-150 49-50 99-150 49-100 48-51 ");
        QCOMPARE(rows(scope.picture(), {50}, green), "199-199"); // zero is on the plot

        scope.setVisible("a", false);
        QCOMPARE(rows(scope.picture(), {50}, red), "");
        scope.setVisible("a", true);
        scope.setZoomIndex(7); // 30 cs a pixel: the steps come closer
        QCOMPARE(rows(scope.picture(), {30, 40}, red), "149-150 49-50");
    }

    void gridStaysAtItsInstant()
    {
        Scope scope;
        scope.run(12340);
        const auto lines = [&] {
            const QImage picture = scope.picture();
            QString at;
            for (int x = 0; x < 400; ++x) {
                if (!rows(picture, {x}, QColor(150, 150, 150)).isEmpty())
                    at += QString::number(x) + ' ';
            }
            return at;
        };
        // Lines stand at the multiples of 1000 samples, ten to a pixel.
        scope.setOffsetCentisec(2000);
        QCOMPARE(lines(), "100 200 300 ");
        scope.setOffsetCentisec(2300);
        QCOMPARE(lines(), "70 170 270 370 ");
    }

    void oddValuesAndScales()
    {
        Scope scope;
        QTest::ignoreMessage(QtWarningMsg, "Oscope: nothing can be drawn of curve z on the scale 0");
        scope.addCurve("z", 0, green, 7); // and of no axis
        for (const float value : {50.0F, float(qQNaN()), 50.0F, float(qInf()), -float(qInf()), 1e30F, 50.0F})
            scope.run(100, value);
        // With a gap, and beyond the plot.
        QCOMPARE(rows(scope.picture(), {5, 15, 25, 35, 65}, red), "99-100  99-100  99-100");
        scope.resize(60, 40); // no room for a plot
        scope.grab();
    }
};

QTEST_MAIN(TestOscope)
#include "test_oscope.moc"
