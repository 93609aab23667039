#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QtTest>

namespace {

// Pixels that differ by a quarter of the range when seen without colour, on the ground of the panel.
int differing(const QString& one, const QString& other)
{
    const auto shape = [](const QString& name) {
        QImage ground(QPixmap(name).size(), QImage::Format_RGB32);
        ground.fill(QColor(255, 255, 192));
        QPainter(&ground).drawPixmap(0, 0, QPixmap(name));
        return ground.convertToFormat(QImage::Format_Grayscale8);
    };
    const QImage a = shape(one);
    const QImage b = shape(other);
    int count = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x)
            count += qAbs(qGray(a.pixel(x, y)) - qGray(b.pixel(x, y))) > 64;
    }
    return count;
}

} // namespace

// The images travel inside the program; a name that is missing there would leave a lamp dark.
class TestImages : public QObject
{
    Q_OBJECT

private slots:
    void everyImageIsThere()
    {
        const std::pair<const char*, const char*> folders[] = {
            {"", "close ok no mirta icon-error-mini icon-info-mini icon-run-mini icon-warning-mini "
                 "icon-basic-mini"},
            {"indicator_", "gray green yellow red"},
            {"arrows/", "left right down plus minus"},
            {"numpad/", "delete clear enter sign decimal"},
            {"style/up_", "top_left top top_right left mid right bottom_left bottom bottom_right"},
            {"style/down_", "top_left top top_right left mid right bottom_left bottom bottom_right"}};
        for (const auto& [folder, names] : folders) {
            for (const QString& name : QString(names).split(' ')) {
                for (const char* suffix : {".png", ""}) // axis lamps have none
                    QVERIFY2(!QPixmap(":/images/" + QString(folder) + name + suffix).isNull(),
                             qPrintable(name));
            }
        }
    }

    // Told apart by everyone, whatever the colour: lamps, and the vacuum panel's images by stem and state.
    void statesDiffer()
    {
        QStringList rows{"indicator gray green yellow red", "t 0 1 2"};
        for (const char* device : {"NP", "NW", "NL", "NZ", "ND", "NW2", "VT", "vv", "vh", "TMN", "VE"})
            rows << device + QString(" 0 1 23 4");
        for (const char* pipe :
             {"vpipe", "hpipe", "lbpipe", "ltpipe", "hlt", "rbpipe", "rtpipe", "vbt", "lpipe", "rpipe", "w"})
            rows << pipe + QString(" 0 1");
        for (const QString& row : qAsConst(rows)) {
            const QStringList states = row.split(' ').mid(1);
            const auto image = [&](const QString& state) {
                return QString(":/images/%1_%2.png").arg(row.section(' ', 0, 0), state);
            };
            const QSize size = QPixmap(image(states.first())).size();
            for (const QString& state : states) {
                QCOMPARE(QPixmap(image(state)).size(), size);
                QVERIFY2(!size.isEmpty(), qPrintable(row));
                for (const QString& other : states.mid(states.indexOf(state) + 1)) {
                    const int count = differing(image(state), image(other));
                    QVERIFY2(count * 30 >= size.width() * size.height(),
                             qPrintable(QString("%1, %2 %3: %4").arg(row, state, other).arg(count)));
                }
            }
        }
    }
};

QTEST_MAIN(TestImages)
#include "test_images.moc"
