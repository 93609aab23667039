#pragma once

#include <QWidget>

// A small button that paints itself. The type fixes size and look: 0 to 8 and 14 are 19 x 19, 9 to 12
// are 37 x 37, 13 is 30 x 30. Types 6 ("АВТ.") and 7 ("РУЧ.") are toggles, the others push buttons.
class CUniButton : public QWidget
{
    Q_OBJECT

public:
    explicit CUniButton(int type, QWidget* parent = nullptr);

    void setChecked(bool checked); // toggles only
    void setAlpha(float alpha);    // 0 transparent to 1 solid

signals:
    void clicked(); // push buttons: at the release; toggles: at every change of state

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void enterEvent(QEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    bool isToggle() const { return m_type == 6 || m_type == 7; }
    QColor tinted(QColor colour) const; // with the alpha of the button, and less while it is disabled

    int m_type;
    bool m_mouseOver = false;
    bool m_pressed = false;
    float m_alpha = 1.0F;
};
