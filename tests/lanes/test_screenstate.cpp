#include "trainer/screenstate.h"

#include <QLabel>
#include <QTableWidget>
#include <QtTest>

// Two windows that are built alike are equal; what an operator would see otherwise makes one difference.
class TestScreenState : public QObject
{
    Q_OBJECT

private slots:
    void whatIsSeenIsCompared();
};

void TestScreenState::whatIsSeenIsCompared()
{
    const std::function<void(QLabel*, QTableWidget*)> changes[] = {
        [](QLabel* label, QTableWidget*) { label->setText("12.5\n"); },
        [](QLabel* label, QTableWidget*) { label->setEnabled(false); },
        [](QLabel* label, QTableWidget*) { label->hide(); },
        [](QLabel* label, QTableWidget*) { label->move(1, 0); },
        [](QLabel* label, QTableWidget*) { label->setPalette(Qt::red); },
        [](QLabel* label, QTableWidget*) {
            label->setPixmap(QPixmap::fromImage(QImage(8, 8, QImage::Format_Mono)));
        },
        [](QLabel*, QTableWidget* table) { table->setItem(1, 0, new QTableWidgetItem("7")); },
        [](QLabel*, QTableWidget* table) { table->setCurrentCell(1, 0); },
    };
    const auto state = [](const std::function<void(QLabel*, QTableWidget*)>& change) {
        QWidget window;
        auto* frame = new QWidget(&window);
        frame->setObjectName("frame");
        auto* table = new QTableWidget(2, 1, &window);
        auto* label = new QLabel("12.4", frame);
        window.show();
        change(label, table);
        return screenState(&window);
    };
    const QStringList usual = state([](QLabel*, QTableWidget*) {});
    QCOMPARE(state([](QLabel*, QTableWidget*) {}), usual);
    for (const auto& change : changes) {
        const QStringList differences = screenDifference(usual, state(change));
        QCOMPARE(differences.size(), 2);
        QVERIFY(differences[0].startsWith("- QWidget[0]/") && differences[1].startsWith("+ QWidget[0]/"));
    }
    const QStringList label = state(changes[0]);
    QCOMPARE(screenDifference(usual, label, {"*/QLabel[0]"}), QStringList());
    QCOMPARE(screenDifference(usual, label, {"*/frame"}), QStringList());
    QCOMPARE(screenDifference(usual, label, {"*/fram", "*/Label"}).size(), 2);
}

QTEST_MAIN(TestScreenState)
#include "test_screenstate.moc"
