#include "alarmdialog.h"

#include "widgets.h"

#include <QLabel>

AlarmDialog::AlarmDialog(QString text, QWidget* parent)
    : QDialog(parent)
{
    setGeometry(0, 0, 300, 300);
    auto* label = new QLabel(text, this);
    label->setGeometry(rect());
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    QPalette colours = label->palette();
    colours.setColor(QPalette::Window, Qt::red);
    colours.setColor(QPalette::WindowText, Qt::white);
    label->setPalette(colours);
    label->setAutoFillBackground(true);
    QFont font = label->font();
    font.setBold(true);
    font.setPixelSize(30);
    label->setFont(font);

    auto* frame = new MyFrame(QStringLiteral("Внимание!!!"), 0, 0, 1, this, parent, true, false);
    frame->move((panelWidth - frame->width()) / 2, (panelHeight - frame->height()) / 2);
    exec();
}
