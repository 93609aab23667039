#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QtTest>

namespace {

constexpr int lumaStep = 64; // of 255: seen without colour

int differingLuma(const QString& one, const QString& other)
{
    const auto shape = [](const QString& name) {
        QImage ground(QPixmap(name).size(), QImage::Format_RGB32);
        ground.fill(QColor(255, 255, 192)); // what the panel shows behind
        QPainter(&ground).drawPixmap(0, 0, QPixmap(name));
        return ground.convertToFormat(QImage::Format_Grayscale8);
    };
    const QImage a = shape(one);
    const QImage b = shape(other);
    int differing = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x)
            differing += qAbs(qGray(a.pixel(x, y)) - qGray(b.pixel(x, y))) > lumaStep;
    }
    return differing;
}

} // namespace

// The images travel inside the program; a name that is missing there would leave a lamp dark.
class TestImages : public QObject
{
    Q_OBJECT

private slots:
    void everyImageIsThere_data()
    {
        QTest::addColumn<QSize>("size");
        const auto add = [](const char* name, int side) { QTest::newRow(name) << QSize(side, side); };
        for (const char* name : {"indicator_gray", "indicator_green", "indicator_yellow", "indicator_red"})
            add(name, 44);
        for (const char* name :
             {"icon-error-mini", "icon-info-mini", "icon-run-mini", "icon-warning-mini", "icon-basic-mini"})
            add(name, 20);
        add("close", 40);
        add("ok", 32);
        add("no", 32);
        add("mirta", 64);
        for (const char* name :
             {"left", "right", "up", "down", "rotate_cw", "rotate_ccw", "plus", "minus", "endless"})
            add(qPrintable(QStringLiteral("arrows/%1").arg(name)), 40);
        for (const char* name : {"delete", "clear", "enter", "sign", "decimal"})
            add(qPrintable(QStringLiteral("numpad/%1").arg(name)), 40);
        for (const char* state : {"up", "down"}) {
            for (const char* part : {"top_left", "top", "top_right", "left", "mid", "right", "bottom_left",
                                     "bottom", "bottom_right"})
                add(qPrintable(QStringLiteral("style/%1_%2").arg(state, part)), 10);
        }
    }
    void everyImageIsThere()
    {
        QFETCH(QSize, size);
        const QString name = QStringLiteral(":/images/") + QTest::currentDataTag();
        QCOMPARE(QPixmap(name + ".png").size(), size);
        // The axis lamps are named without the suffix.
        QCOMPARE(QPixmap(name).size(), size);
    }

    // Lamps are told apart by their outline alone: seen in one colour no two are alike.
    void lampsDifferInShape()
    {
        QList<QImage> shapes;
        for (const char* name : {"gray", "green", "yellow", "red"})
            shapes << QImage(QStringLiteral(":/images/indicator_%1.png").arg(name))
                          .convertToFormat(QImage::Format_Alpha8);
        for (int i = 0; i < shapes.size(); ++i) {
            for (int k = 0; k < i; ++k) {
                int differing = 0;
                for (int y = 0; y < 44; ++y) {
                    for (int x = 0; x < 44; ++x)
                        differing +=
                            qAbs(qAlpha(shapes[i].pixel(x, y)) - qAlpha(shapes[k].pixel(x, y))) > 128;
                }
                QVERIFY2(differing > 80,
                         qPrintable(QStringLiteral("%1 %2: %3").arg(i).arg(k).arg(differing)));
            }
        }
    }

    // The vacuum panel names its images by stem and state; told apart by everyone, whatever the colour.
    void vacuumStatesDiffer_data()
    {
        QTest::addColumn<QStringList>("states");
        for (const char* device : {"NP", "NW", "NL", "NZ", "ND", "NW2", "VT", "vv", "vh", "TMN", "VE"})
            QTest::newRow(device) << QStringList{QStringLiteral("0"), QStringLiteral("1"),
                                                 QStringLiteral("23"), QStringLiteral("4")};
        for (const char* pipe :
             {"vpipe", "hpipe", "lbpipe", "ltpipe", "hlt", "rbpipe", "rtpipe", "vbt", "lpipe", "rpipe", "w"})
            QTest::newRow(pipe) << QStringList{QStringLiteral("0"), QStringLiteral("1")};
        QTest::newRow("t") << QStringList{QStringLiteral("0"), QStringLiteral("1"), QStringLiteral("2")};
    }
    void vacuumStatesDiffer()
    {
        QFETCH(QStringList, states);
        const auto image = [](const QString& state) {
            return QStringLiteral(":/images/%1_%2.png").arg(QTest::currentDataTag(), state);
        };
        for (const QString& state : states) {
            const QSize size = QPixmap(image(state)).size();
            QVERIFY2(!size.isEmpty(), qPrintable(state));
            QCOMPARE(size, QPixmap(image(states.first())).size());
            for (const QString& other : states.mid(states.indexOf(state) + 1)) {
                const int differing = differingLuma(image(state), image(other));
                QVERIFY2(differing * 30 >= size.width() * size.height(),
                         qPrintable(QStringLiteral("%1 %2: %3").arg(state, other).arg(differing)));
            }
        }
    }

    // A button of any size is laid out from ten-pixel tiles: along the cut they must not change.
    void buttonEdgesTileWithoutSeam_data()
    {
        QTest::addColumn<bool>("alongX");
        QTest::addColumn<bool>("alongY");
        for (const char* state : {"up", "down"}) {
            const auto add = [state](const char* part, bool alongX, bool alongY) {
                QTest::addRow("%s_%s", state, part) << alongX << alongY;
            };
            add("top", true, false);
            add("bottom", true, false);
            add("left", false, true);
            add("right", false, true);
            add("mid", true, true);
        }
    }
    void buttonEdgesTileWithoutSeam()
    {
        QFETCH(bool, alongX);
        QFETCH(bool, alongY);
        const QImage tile(QStringLiteral(":/images/style/%1.png").arg(QTest::currentDataTag()));
        QVERIFY(!tile.isNull());
        for (int y = 0; y < tile.height(); ++y) {
            for (int x = 0; x < tile.width(); ++x)
                QCOMPARE(tile.pixel(x, y), tile.pixel(alongX ? 0 : x, alongY ? 0 : y));
        }
    }
};

QTEST_MAIN(TestImages)
#include "test_images.moc"
