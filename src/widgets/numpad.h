#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class Numpad;
}

// The keypad through which every number of the console is typed, access codes included. It shows itself
// in a titled frame at the pointer; the caller runs `exec` and reads `value()` after acceptance. Ranges
// are the caller's affair.
class Numpad : public QDialog
{
    Q_OBJECT

public:
    // A start `value` above 0 stands on the display, otherwise the display is empty. The flags switch off
    // the keys for the decimal point and the sign; `password` does both and shows dots for what is typed.
    Numpad(const QString& title, QWidget* parent, float value, bool noDecimal, bool noSign, bool password);
    ~Numpad() override;

    double value() const { return m_value; } // 0 until accepted
    QString getValue() const;                // the text on the display
    void setValue(QString text);

public slots:
    void on_pb0_clicked();
    void on_pb1_clicked();
    void on_pb2_clicked();
    void on_pb3_clicked();
    void on_pb4_clicked();
    void on_pb5_clicked();
    void on_pb6_clicked();
    void on_pb7_clicked();
    void on_pb8_clicked();
    void on_pb9_clicked();
    void on_pbDecimal_clicked();
    void on_pbSign_clicked();
    void on_pbDelete_clicked();
    void on_pbClear_clicked();
    void on_pbEnter_clicked();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void drawSigns();
    void numPressed(QString digit);

    std::unique_ptr<Ui::Numpad> m_ui;
    double m_value = 0;
    bool m_noDecimal;
    bool m_noSign;
    bool m_password;
};
