#pragma once

#include <QDialog>

// An alarm in full, white on red, in the middle of the panel. Creating it shows it: the constructor returns
// when the operator has closed it.
class AlarmDialog : public QDialog
{
    Q_OBJECT

public:
    explicit AlarmDialog(QString text, QWidget* parent = nullptr);
};
