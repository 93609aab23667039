#pragma once

#include "consolehost.h"
#include "contour.h"
#include "drivecomm.h"
#include "sitefixture.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QMap>
#include <QMenu>
#include <QTableWidget>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QTimer>
#include <QVBoxLayout>

#include <functional>
#include <memory>

// Answers the dialogs and menus that the next touch opens, one answer for each, in their order.
class Answers
{
public:
    explicit Answers(QList<std::function<bool()>> answers)
        : m_answers(std::move(answers))
    {
        m_timer.setInterval(5);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] {
            if (!m_answers.isEmpty() && m_answers.first()())
                m_answers.removeFirst();
        });
        m_timer.start();
    }
    bool allGiven() const { return m_answers.isEmpty(); }

    static std::function<bool()> entry(int index) // of a menu; -1 dismisses it
    {
        return [index] {
            auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            if (!menu)
                return false;
            if (index < 0)
                QTest::keyClick(menu, Qt::Key_Escape);
            else
                QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier,
                                  menu->actionGeometry(menu->actions().value(index + 1)).center());
            return true;
        };
    }
    static std::function<bool()> button(const char* name)
    {
        return [name] {
            auto* button = shown<QAbstractButton>(name);
            if (button) // what it opens must not hold up the answers
                QTimer::singleShot(0, button, [button] { QTest::mouseClick(button, Qt::LeftButton); });
            return button != nullptr;
        };
    }
    static std::function<bool()> number(const QString& text) // on the keypad
    {
        return [text] {
            auto* clear = shown<QAbstractButton>("pbClear");
            auto* enter = shown<QAbstractButton>("pbEnter");
            if (!clear || !enter)
                return false;
            clear->click();
            for (const QChar c : text) {
                const QString key = c == QLatin1Char('.')   ? QStringLiteral("pbDecimal")
                                    : c == QLatin1Char('-') ? QStringLiteral("pbSign")
                                                            : QStringLiteral("pb") + c;
                shown<QAbstractButton>(qPrintable(key))->click();
            }
            if (text.startsWith(QLatin1Char('-')))
                shown<QAbstractButton>("pbSign")->click(); // on "0" it did nothing
            enter->click();
            return true;
        };
    }
    static std::function<bool()> cancel() // the dialog on top
    {
        return [] {
            QWidget* top = QApplication::activeModalWidget();
            auto* dialog = top ? top->findChild<QDialog*>() : nullptr;
            if (!dialog)
                return false;
            dialog->reject();
            return true;
        };
    }
    static std::function<bool()> confirm(bool yes)
    {
        return [yes] {
            QWidget* top = QApplication::activeModalWidget();
            if (!top)
                return false;
            for (auto* button : top->findChildren<QAbstractButton*>()) {
                if (button->text() == (yes ? QStringLiteral("Да") : QStringLiteral("Нет"))) {
                    QTest::mouseClick(button, Qt::LeftButton);
                    return true;
                }
            }
            return false;
        };
    }

    // In the window on top.
    template <typename T>
    static T* shown(const char* name)
    {
        QWidget* top = QApplication::activeModalWidget();
        T* widget = top ? top->findChild<T*>(QLatin1String(name)) : nullptr;
        return widget && widget->isVisible() ? widget : nullptr;
    }

private:
    QList<std::function<bool()>> m_answers;
    QTimer m_timer;
};

// A window around the contour tab with axes that stand where the test puts them, and a controller that
// takes the commands down.
class ContourWindow : public QWidget, public ConsoleHost
{
public:
    ContourWindow()
    {
        m_controller.listen(QHostAddress::LocalHost, quint16(site().drive.tcpPort));
        QObject::connect(&m_controller, &QTcpServer::newConnection, this, [this] {
            m_link = m_controller.nextPendingConnection();
            QObject::connect(m_link, &QTcpSocket::readyRead, this,
                             [this] { m_received += m_link->readAll(); });
        });
        resize(550, 900);
    }

    CONTOUR* open()
    {
        contour = new CONTOUR(this);
        contour->resize(size());
        QObject::connect(contour, &CONTOUR::message, this,
                         [this](const QString& text, bool) { journal << text; });
        show();
        return contour;
    }
    // The machine is ready for teaching.
    void ready()
    {
        contour->onDriveState(true);
        contour->onVirtualMode(true);
    }
    void place(float x, float y, float z)
    {
        axes[QStringLiteral("LX")] = x;
        axes[QStringLiteral("LY")] = y;
        axes[QStringLiteral("Z")] = z;
    }
    void teach(float x, float y, float z)
    {
        place(x, y, z);
        press("pbIns");
    }
    bool linkUp() { return m_drives.connect(site().drive.host, site().drive.tcpPort, site().drive.udpPort); }
    // The commands so far, in their order.
    QStringList commands() const
    {
        QStringList list;
        int at = 0;
        while ((at = m_received.indexOf("EXEC_", at)) >= 0) {
            const int end = m_received.indexOf(')', at);
            list << QString::fromLatin1(m_received.mid(at, end - at + 1));
            at = end;
        }
        return list;
    }

    template <typename T = QWidget>
    T* find(const char* name) const
    {
        T* widget = contour->findChild<T*>(QLatin1String(name));
        Q_ASSERT_X(widget, "find", name);
        return widget;
    }
    QTableWidget* points() const { return find<QTableWidget>("twContour"); }
    QTableWidget* tech() const { return find<QTableWidget>("twTechTab"); }
    QString text(const char* label) const { return find<QLabel>(label)->text(); }
    QString cell(const QTableWidget* table, int row, int column) const
    {
        const QTableWidgetItem* item = table->item(row, column);
        return item ? item->text() : QString();
    }
    QStringList column(const QTableWidget* table, int number) const
    {
        QStringList list;
        for (int row = 0; row < table->rowCount(); ++row)
            list << cell(table, row, number);
        return list;
    }
    // Touches a button or a number of the tab it stands on.
    void press(const char* name)
    {
        QWidget* widget = find(name);
        for (int tab = 0; tab < contour->count(); ++tab) {
            if (contour->widget(tab)->isAncestorOf(widget))
                contour->setCurrentIndex(tab);
        }
        QTest::mouseClick(widget, Qt::LeftButton);
    }
    void touchCell(QTableWidget* table, int row, int column)
    {
        contour->setCurrentIndex(table == points() ? 0 : 1);
        table->scrollToItem(table->item(row, column));
        const QRect rect = table->visualRect(table->model()->index(row, column));
        QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::NoModifier, rect.center());
    }

    // Touches a button that opens a menu, and takes the entry.
    void choose(const char* button, int entry)
    {
        Answers answers({Answers::entry(entry)});
        press(button);
        QVERIFY(answers.allGiven());
    }
    void newRing(const QString& D, const QString& points)
    {
        Answers answers({Answers::entry(2), Answers::number(D), Answers::number(points)});
        press("pbNew");
        QVERIFY(answers.allGiven());
    }
    void newRound(const QString& D)
    {
        Answers answers({Answers::entry(1), Answers::number(D)});
        press("pbNew");
        QVERIFY(answers.allGiven());
    }

    // ConsoleHost
    Axis* axis(const QString&) const override { return nullptr; }
    float coord(const QString& name) const override { return axes.value(name); }
    DriveTCPthread* drives() override { return &m_drives; }
    Lock* lock(const QString&) const override { return nullptr; }
    QString getUserName() const override { return {}; }
    float pressure() const override { return 0; }
    QString programName() const override { return shownName; }
    void setProgramName(const QString& path, bool without) override
    {
        shownName = path;
        withoutCurrent = without;
    }

    CONTOUR* contour = nullptr;
    QMap<QString, float> axes;
    QStringList journal;
    QString shownName;
    bool withoutCurrent = false;

private:
    QTcpServer m_controller;
    QTcpSocket* m_link = nullptr;
    QByteArray m_received;
    DriveTCPthread m_drives;
};

// The parts of a sample weld: 100 mm along X with the beam up, level and down.
inline void laySampleWeld(ContourWindow& window)
{
    window.choose("pbNew", 0);
    {
        Answers answers({Answers::number(QStringLiteral("600"))});
        window.press("weldSpeed");
    }
    window.teach(0, 0, 0);
    window.teach(100, 0, 0);
    window.contour->addTechPoint(10, 20, 600);
    window.contour->addTechPoint(80, 20, 600);
}
