#pragma once

#include <QDialog>
#include <QPalette>

#include <array>
#include <memory>

class QLabel;

namespace Ui {
class Selector;
}

// The popup of six speeds and a free entry. It shows itself below `parent`; the caller runs `exec` and reads
// `value()` after acceptance. A press outside leaves it: a popup gets every press from its showing on, which
// a grab of a dialog's own would not, since a window manager shows a dialog when it pleases.
class Selector : public QDialog
{
    Q_OBJECT

public:
    // `values`: exactly six, the last is the largest that the free entry takes. `title` is the text of the
    // free entry, `decimals` those of the six. `name` and `unit` of the axis go into the journal line.
    Selector(const QString& name, const QString& unit, const QList<float>& values, const QString& title,
             int decimals, QWidget* parent);
    // Of an axis's speed: six shares of `maxSpeed`, units a minute, without decimals.
    Selector(const QString& name, const QString& unit, int maxSpeed, QWidget* parent);
    ~Selector() override;

    float value() const { return m_value; }        // units a minute
    void range(float min, float max, float value); // keeps `value`, put between the bounds

signals:
    void message(const QString& line, bool shown); // journal line; shown in the list too

protected:
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    QLabel* labelAt(const QPoint& place) const; // null on the background and outside
    void choose(float value);
    void enterFreely();

    std::unique_ptr<Ui::Selector> m_ui;
    std::array<QLabel*, 6> m_speeds;
    const QString m_name;
    const QString m_unit;
    QWidget* m_parent;
    QLabel* m_current = nullptr; // under the pointer
    QPalette m_normal;
    QPalette m_highlighted;
    float m_value = 0;
    float m_max = 0;
};
