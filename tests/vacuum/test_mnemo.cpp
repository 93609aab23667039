#include "kvs.h"
#include "sitefixture.h"
#include "statebutton.h"
#include "widgets.h"

#include <QFontMetrics>
#include <QtTest>

#include <algorithm>

namespace {

// What the label's letters cover, in the panel's pixels.
QRect written(const QLabel* label)
{
    const QRect inside = label->contentsRect();
    const QRect text = label->fontMetrics().boundingRect(inside, int(label->alignment()), label->text());
    return text.translated(label->pos());
}

} // namespace

// The mnemonic diagram as a drawing: whole pictures, legible names. That its lines are closed is checked
// where it is laid out.
class TestMnemo : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_panel = std::make_unique<KVS>();
        m_panel->resize(900, 900);
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
                     qPrintable(labels[i]->objectName() + ": " + labels[i]->text()));
            for (int k = 0; k < i; ++k)
                QVERIFY2(!place.intersects(written(labels[k])),
                         qPrintable(labels[i]->objectName() + ' ' + labels[k]->objectName()));
            for (const PoSprite* sprite : m_panel->findChildren<PoSprite*>())
                QVERIFY2(!place.intersects(sprite->geometry()),
                         qPrintable(labels[i]->objectName() + ' ' + sprite->objectName()));
        }
    }

    SiteFixture m_site;
    std::unique_ptr<KVS> m_panel;
};

QTEST_MAIN(TestMnemo)
#include "test_mnemo.moc"
