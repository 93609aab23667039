#pragma once

#include "trainer/lesson.h"

#include <QPixmap>
#include <QWidget>

// The installation in one picture, scaled to the widget: the vacuum plant as the console draws it, and below
// it what the motion controller tells.
class PlantPicture : public QWidget
{
    Q_OBJECT

public:
    explicit PlantPicture(QWidget* parent = nullptr);

    void show(const PlantState& state); // empty: nothing is known

protected:
    void paintEvent(QPaintEvent*) override;

private:
    void paintPipes(QPainter* painter) const;
    void paintDevices(QPainter* painter);
    void paintMachine(QPainter* painter) const;
    QString value(const char* name) const { return m_state.value(QLatin1String(name)); }
    bool isOpen(const char* device) const { return value(device) == QLatin1String("on"); }

    PlantState m_state;
};
