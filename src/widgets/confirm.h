#pragma once

#include <QDialog>

// The modal yes/no question of the whole console. It shows itself in a titled frame directly below
// `parent`; `exec` waits for the answer. Without an answer within `seconds` it counts as no; 0 waits
// without limit.
class Confirm : public QDialog
{
    Q_OBJECT

public:
    Confirm(const QString& title, const QString& text, QWidget* parent, int seconds);
};
