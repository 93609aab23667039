#include "deathtest.h"
#include "lockview.h"

#include <QLabel>
#include <QSignalSpy>
#include <QtTest>

namespace {

struct Line
{
    QColor colour;
    QString text;
    qint64 picture;
};

// What the operator sees of a line: its picture stands before its text.
Line seen(const LockLine& line)
{
    const QList<QLabel*> labels = line.findChildren<QLabel*>(QString(), Qt::FindDirectChildrenOnly);
    const QPixmap picture = labels.at(0)->pixmap(Qt::ReturnByValue);
    return {line.palette().color(QPalette::Window), labels.at(1)->text(), picture.cacheKey()};
}

} // namespace

class TestLockView : public QObject
{
    Q_OBJECT

private slots:
    void everyWriteIsTold();
    void viewFollowsItsLock();
    void aViewIsBoundOnce();
    void groupShowsItsListWhileTheFingerIsDown();
};

void TestLockView::everyWriteIsTold()
{
    Lock lock(true, QString(), QString()); // written are conditions that permit
    QVERIFY(!lock.state());
    QSignalSpy told(&lock, &Lock::stateChanged);
    lock.setState(true);
    lock.setState(true);
    lock.setState(false);
    QCOMPARE(told.size(), 3);
    QCOMPARE(told.at(1).first().toBool(), false); // the stored state, not the value written
    QCOMPARE(told.at(2).first().toBool(), true);
}

void TestLockView::viewFollowsItsLock()
{
    Lock lock(false, QStringLiteral("Дверь открыта"), QString());
    lock.setState(true);
    LockView view(nullptr);
    view.update(true); // nothing to show yet
    QCOMPARE(seen(view).text, QString());

    view.setLock(&lock);
    QCOMPARE(view.height(), 40);
    QCOMPARE(view.font().pointSize(), 14);
    const Line locked = seen(view);
    QCOMPARE(locked.colour, QColor(Qt::red));
    QCOMPARE(locked.text, QStringLiteral("Дверь открыта  "));

    lock.setState(false);
    const Line open = seen(view);
    QCOMPARE(open.colour, QColor(Qt::green));
    QCOMPARE(open.text, QStringLiteral("  ")); // a lock without this sentence: the picture alone
    QVERIFY(open.picture != locked.picture);
    QCOMPARE(view.palette().color(QPalette::Disabled, QPalette::Window), QColor(Qt::green));
}

void TestLockView::aViewIsBoundOnce()
{
    Lock lock(false, QString(), QString());
    const QByteArray told = deathOf([&] {
        LockView view(nullptr);
        view.setLock(&lock);
        view.setLock(&lock);
    });
    QVERIFY2(told.contains("!m_lock"), told);
}

void TestLockView::groupShowsItsListWhileTheFingerIsDown()
{
    Lock own(false, QStringLiteral("не готов"), QStringLiteral("готов"));
    Lock first(false, QStringLiteral("1 нет"), QStringLiteral("1 да"));
    Lock second(false, QStringLiteral("2 нет"), QStringLiteral("2 да"));
    second.setState(true);

    QWidget panel;
    panel.resize(600, 400);
    LockGroup group(&panel);
    group.setGeometry(50, 60, 300, 40);
    group.setLock(&own);
    QCOMPARE(seen(group).text, QStringLiteral("готов"));
    group.addLock(&second);
    group.addLock(&first);
    panel.show();

    QTest::mousePress(&group, Qt::LeftButton);
    QList<LockView*> lines = panel.findChildren<LockView*>();
    QCOMPARE(lines.size(), 2);
    QCOMPARE(seen(*lines.at(0)).text, QStringLiteral("2 нет  "));
    QCOMPARE(seen(*lines.at(1)).text, QStringLiteral("1 да  "));
    QVERIFY(lines.at(0)->mapTo(&panel, QPoint()).y() < lines.at(1)->mapTo(&panel, QPoint()).y());
    const QWidget* popup = lines.at(0)->parentWidget();
    QCOMPARE(popup->parentWidget(), &panel);
    QCOMPARE(popup->pos(), QPoint(70, 90));
    QVERIFY(popup->isVisible());
    QVERIFY(popup->width() >= group.width());

    first.setState(true); // live while shown
    QCOMPARE(seen(*lines.at(1)).text, QStringLiteral("1 нет  "));

    QTest::mouseRelease(&group, Qt::LeftButton);
    QVERIFY(panel.findChildren<LockView*>().isEmpty());

    QTest::mousePress(&group, Qt::LeftButton);
    group.setEnabled(false); // the release will never come
    QVERIFY(panel.findChildren<LockView*>().isEmpty());
}

QTEST_MAIN(TestLockView)
#include "test_lockview.moc"
