#include "weldlook.h"

#include <QSettings>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>

class TestWeldLook : public QObject
{
    Q_OBJECT

private slots:
    void keptWidths();
    void fittedColumn();
};

void TestWeldLook::keptWidths()
{
    const QTemporaryDir folder;
    QSettings settings(folder.filePath("settings.ini"), QSettings::IniFormat);
    const QStringList keys = contourWidthKeys({"LX", "LY"}) + techWidthKeys();
    QCOMPARE(keys.mid(1, 2).join(' '), QString("Contour/Width_LXLY_LY Contour/Width_S"));
    QCOMPARE(keys.mid(7).join(' '), QString("Contour/Width_Rate Contour/Width_TR"));
    const QVariant stored[] = {40, 1000, 39, 1001, "wide", QVariant(), -7, 0, 50};
    for (int i = 0; i < keys.size(); ++i)
        settings.setValue(keys[i], stored[i]);
    QTableWidget table(0, keys.size());
    restoreWidths(&table, settings, keys, 80);
    QList<int> widths;
    for (int column = 0; column < keys.size(); ++column)
        widths << table.columnWidth(column);
    QCOMPARE(widths, (QList<int>{40, 1000, 80, 80, 80, 80, 80, 80, 50}));
    table.setColumnHidden(8, true);
    keepWidths(&table, settings, keys);
    QCOMPARE(settings.value(keys[3]).toInt(), 80);
    QCOMPARE(settings.value(keys[8]).toInt(), 50); // of a hidden one
}

void TestWeldLook::fittedColumn()
{
    QTableWidget table(0, 3);
    table.resize(500, 100);
    table.show();
    table.setColumnWidth(2, 80);
    const auto* fitted = new FittedColumn(&table, 2);
    const int room = table.viewport()->width();
    QCOMPARE(table.columnWidth(2), room - 200);
    table.setColumnHidden(1, true);
    QCOMPARE(table.columnWidth(2), room - 100);
    table.setColumnWidth(0, room); // nothing is left: its own width stays
    QCOMPARE(table.columnWidth(2), 80);
    table.setColumnWidth(2, 120);
    table.resize(800, 100);
    QCOMPARE(table.columnWidth(2), qMax(120, table.viewport()->width() - room));
    QCOMPARE(fitted->ownWidth(), 120);
}

QTEST_MAIN(TestWeldLook)

#include "test_weldlook.moc"
