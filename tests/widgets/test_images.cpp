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
    void everyImageIsThere()
    {
        QStringList names =
            QStringLiteral("indicator_gray indicator_green indicator_yellow indicator_red close ok no mirta "
                           "icon-error-mini icon-info-mini icon-run-mini icon-warning-mini icon-basic-mini")
                .split(' ');
        for (const char* name : {"left", "right", "down", "plus", "minus"})
            names << QStringLiteral("arrows/") + name;
        for (const char* name : {"delete", "clear", "enter", "sign", "decimal"})
            names << QStringLiteral("numpad/") + name;
        for (const char* part : {"top_left", "top", "top_right", "left", "mid", "right", "bottom_left",
                                 "bottom", "bottom_right"})
            names << QStringLiteral("style/up_") + part << QStringLiteral("style/down_") + part;
        for (const QString& name : qAsConst(names)) {
            QVERIFY2(!QPixmap(":/images/" + name + ".png").isNull(), qPrintable(name));
            QVERIFY2(!QPixmap(":/images/" + name).isNull(), qPrintable(name)); // axis lamps have no suffix
        }
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
};

QTEST_MAIN(TestImages)
#include "test_images.moc"
