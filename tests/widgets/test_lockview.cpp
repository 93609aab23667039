#include "comparetext.h"
#include "deathtest.h"
#include "lockview.h"

#include <QLabel>
#include <QSignalSpy>
#include <QtTest>

namespace {

const QColor red(Qt::red), green(Qt::green);

// What the operator sees of a line: its picture stands before its text.
QLabel* part(const LockLine& line, int number)
{
    return line.findChildren<QLabel*>(QString(), Qt::FindDirectChildrenOnly).at(number);
}
QString text(const LockLine& line)
{
    return part(line, 1)->text();
}
qint64 picture(const LockLine& line)
{
    return part(line, 0)->pixmap(Qt::ReturnByValue).cacheKey();
}
QColor ground(const LockLine& line)
{
    return line.palette().color(QPalette::Window);
}

} // namespace

class TestLockView : public QObject
{
    Q_OBJECT

private slots:
    void everyWriteIsTold()
    {
        Lock lock(true, QString(), QString()); // written are conditions that permit
        QVERIFY(!lock.state());
        const QSignalSpy told(&lock, &Lock::stateChanged);
        for (bool state : {true, true, false})
            lock.setState(state);
        QCOMPARE(told.size(), 3);
        QCOMPARE(told.at(1).first().toBool(), false); // the stored state, not the value written
        QCOMPARE(told.at(2).first().toBool(), true);
    }

    void viewFollowsItsLock()
    {
        Lock lock(false, "Дверь открыта", QString());
        lock.setState(true);
        LockView view(nullptr);
        view.update(true); // nothing to show yet
        QCOMPARE(text(view), "");

        view.setLock(&lock);
        QCOMPARE(view.height(), 40);
        QCOMPARE(view.font().pointSize(), 14);
        QCOMPARE(ground(view), red);
        QCOMPARE(text(view), "Дверь открыта  ");
        const qint64 locked = picture(view);

        lock.setState(false);
        QCOMPARE(ground(view), green);
        QCOMPARE(text(view), "  "); // a lock without this sentence: the picture alone
        QVERIFY(picture(view) != locked);
        QCOMPARE(view.palette().color(QPalette::Disabled, QPalette::Window), green);
        QVERIFY(deathOf([&] { view.setLock(&lock); }).contains("!m_lock")); // bound once
    }

    void groupShowsItsListWhileTheFingerIsDown()
    {
        Lock own(false, "не готов", "готов");
        Lock first(false, "1 нет", "1 да");
        Lock second(false, "2 нет", "2 да");
        second.setState(true);

        QWidget panel;
        panel.resize(600, 400);
        LockGroup group(&panel);
        group.setGeometry(50, 60, 300, 40);
        group.setLock(&own);
        QCOMPARE(text(group), "готов");
        group.addLock(&second);
        group.addLock(&first);
        panel.show();

        QTest::mousePress(&group, Qt::LeftButton);
        const QList<LockView*> lines = panel.findChildren<LockView*>();
        QCOMPARE(lines.size(), 2);
        QCOMPARE(text(*lines[0]), "2 нет  ");
        QCOMPARE(text(*lines[1]), "1 да  ");
        QVERIFY(lines[0]->mapTo(&panel, QPoint()).y() < lines[1]->mapTo(&panel, QPoint()).y());
        const QWidget* popup = lines[0]->parentWidget();
        QCOMPARE(popup->parentWidget(), &panel);
        QCOMPARE(popup->pos(), QPoint(70, 90));
        QVERIFY(popup->isVisible());
        QVERIFY(popup->width() >= group.width());

        first.setState(true); // live while shown
        QCOMPARE(text(*lines[1]), "1 нет  ");
        QTest::mouseRelease(&group, Qt::LeftButton);
        QVERIFY(panel.findChildren<LockView*>().isEmpty());
        QTest::mousePress(&group, Qt::LeftButton);
        group.setEnabled(false); // the release will never come
        QVERIFY(panel.findChildren<LockView*>().isEmpty());
    }
};

QTEST_MAIN(TestLockView)
#include "test_lockview.moc"
