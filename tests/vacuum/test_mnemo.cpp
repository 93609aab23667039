#include "kvs.h"
#include "sitefixture.h"
#include "statebutton.h"
#include "widgets.h"

#include <QFontMetrics>
#include <QtTest>

#include <algorithm>

namespace {

bool isPipe(const QObject* object)
{
    return object->objectName().startsWith(QLatin1String("pipe"));
}

// What the label's letters cover, in the panel's pixels.
QRect written(const QLabel* label)
{
    const QRect inside = label->contentsRect();
    const QRect text = label->fontMetrics().boundingRect(inside, int(label->alignment()), label->text());
    return text.translated(label->pos());
}

} // namespace

// The mnemonic diagram as a drawing: whole pictures, closed lines, legible names.
class TestMnemo : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_site = std::make_unique<SiteFixture>();
        m_panel = std::make_unique<KVS>();
        m_panel->resize(900, 900);
    }
    void cleanup()
    {
        m_panel.reset();
        m_site.reset();
    }

    // A picture larger than its place would be cut, a smaller one would leave a gap in the line.
    void picturesFillTheirPlaces()
    {
        const QList<PoSprite*> sprites = m_panel->findChildren<PoSprite*>();
        QCOMPARE(sprites.size(), 19 + 41 + 14 + 1); // devices, pipes, cooling water, door
        for (const PoSprite* sprite : sprites) {
            const QSize size = sprite->pixmap(Qt::ReturnByValue).size();
            QVERIFY2(!size.isEmpty(), qPrintable(sprite->objectName()));
            const bool whole = size == sprite->size();
            const bool stretched = sprite->hasScaledContents() &&
                                   (size.width() == sprite->width() || size.height() == sprite->height());
            QVERIFY2(whole || stretched, qPrintable(sprite->objectName()));
        }
    }

    // A straight pipe ends at a bend, a device, the chamber or its jacket, or in the open as an exhaust.
    void pipesJoin()
    {
        const QList<QWidget*> parts = m_panel->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
        const auto meets = [&](const QWidget* pipe, QPoint beyond) {
            return std::any_of(parts.begin(), parts.end(), [&](const QWidget* part) {
                const bool solid = qobject_cast<const PoSprite*>(part) || isPipe(part) ||
                                   part->objectName() == QLatin1String("Chamber");
                return solid && part != pipe && part->geometry().contains(beyond);
            });
        };
        QStringList open;
        for (const PoSprite* pipe : m_panel->findChildren<PoSprite*>()) {
            if (!isPipe(pipe) || !pipe->hasScaledContents())
                continue;
            const QRect place = pipe->geometry();
            const QPoint middle = place.center();
            const bool upright =
                meets(pipe, {middle.x(), place.top() - 1}) && meets(pipe, {middle.x(), place.bottom() + 1});
            const bool level =
                meets(pipe, {place.left() - 1, middle.y()}) && meets(pipe, {place.right() + 1, middle.y()});
            if (!upright && !level)
                open << pipe->objectName();
        }
        open.sort();
        QCOMPARE(open, (QStringList{QStringLiteral("pipeB6"), QStringLiteral("pipeE6")}));
    }

    // With the longest readings, in both units: every text whole, and none on another or on a symbol.
    void textsStandClear()
    {
        for (auto show : {&KVS::onChangedPT1, &KVS::onChangedPT2, &KVS::onChangedPT3, &KVS::onChangedPT4,
                          &KVS::onChangedPT5})
            (m_panel.get()->*show)(8.8e-8);
        m_panel->onChangedPT6(8.8e-8F);
        for (auto show :
             {&KVS::changedT1, &KVS::changedT7, &KVS::onChangedND1Temp, &KVS::onChangedND1CorpTemp})
            (m_panel.get()->*show)(188.8F);
        for (auto show : {&KVS::changedW1, &KVS::changedW7})
            (m_panel.get()->*show)(88.8F);
        m_panel->changedTMNFreq(1888);
        for (int unit : {0, 1}) {
            m_panel->setPressUnit(unit);
            checkTexts();
        }
    }

    void regimesStandInOneRow()
    {
        QList<StateButton*> row = m_panel->findChildren<StateButton*>(QRegularExpression("^sbVac"));
        QCOMPARE(row.size(), 7);
        std::sort(row.begin(), row.end(), [](auto* a, auto* b) { return a->x() < b->x(); });
        for (int i = 0; i < row.size(); ++i) {
            QCOMPARE(row[i]->y(), row[0]->y());
            QVERIFY(row[i]->height() >= 60);
            QVERIFY(i == 0 || row[i]->x() > row[i - 1]->geometry().right());
            for (const QLabel* title : row[i]->findChildren<QLabel*>())
                QVERIFY2(title->sizeHint().width() <= row[i]->width() - 4, qPrintable(title->text()));
        }
    }

private:
    void checkTexts()
    {
        QVector<const QLabel*> labels;
        for (const QLabel* label : m_panel->findChildren<QLabel*>(QString(), Qt::FindDirectChildrenOnly)) {
            if (!label->text().isEmpty())
                labels << label;
        }
        QVERIFY(labels.size() > 70);
        for (int i = 0; i < labels.size(); ++i) {
            const QRect place = written(labels[i]);
            QVERIFY2(labels[i]->geometry().contains(place),
                     qPrintable(labels[i]->objectName() + QStringLiteral(": ") + labels[i]->text()));
            for (int k = 0; k < i; ++k)
                QVERIFY2(!place.intersects(written(labels[k])),
                         qPrintable(labels[i]->objectName() + ' ' + labels[k]->objectName()));
            for (const PoSprite* sprite : m_panel->findChildren<PoSprite*>())
                QVERIFY2(!place.intersects(sprite->geometry()),
                         qPrintable(labels[i]->objectName() + ' ' + sprite->objectName()));
        }
    }

    std::unique_ptr<SiteFixture> m_site;
    std::unique_ptr<KVS> m_panel;
};

QTEST_MAIN(TestMnemo)
#include "test_mnemo.moc"
