#include "confirm.h"

#include "framed.h"

#include <QLabel>
#include <QPushButton>
#include <QTimer>

namespace {

constexpr QSize dialogSize(432, 223);
constexpr QRect textPlace(10, 6, 412, 120);
constexpr QSize buttonSize(110, 60);
constexpr int textPoints = 20;
constexpr int leastPoints = 10; // a long file name is rather small than cut off

QPushButton* makeButton(const QString& name, const QString& text, QPoint place, QWidget* parent)
{
    auto* button = new QPushButton(text, parent);
    button->setObjectName(name);
    button->setGeometry(QRect(place, buttonSize));
    button->setFocusPolicy(Qt::NoFocus);
    button->setAutoDefault(false); // a stray Enter answers nothing
    QFont font = button->font();
    font.setPointSize(16);
    font.setBold(true);
    button->setFont(font);
    return button;
}

QFont fittingFont(QFont font, const QString& text)
{
    for (int points = textPoints; points >= leastPoints; --points) {
        font.setPointSize(points);
        const QRect needed =
            QFontMetrics(font).boundingRect(QRect(QPoint(), textPlace.size()), Qt::TextWordWrap, text);
        if (needed.width() <= textPlace.width() && needed.height() <= textPlace.height())
            break;
    }
    return font;
}

} // namespace

Confirm::Confirm(const QString& title, const QString& text, QWidget* parent, int seconds)
    : QDialog(parent)
{
    setFixedSize(dialogSize);

    auto* label = new QLabel(text, this);
    label->setObjectName(QStringLiteral("lblText"));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignCenter);
    label->setGeometry(textPlace);
    label->setFont(fittingFont(label->font(), text));

    connect(makeButton(QStringLiteral("pbYes"), QStringLiteral("Да"), {60, 130}, this), &QPushButton::clicked,
            this, &QDialog::accept);
    connect(makeButton(QStringLiteral("pbNo"), QStringLiteral("Нет"), {260, 130}, this),
            &QPushButton::clicked, this, &QDialog::reject);

    frameBelow(parent, title, this);

    if (seconds != 0)
        QTimer::singleShot(seconds * 1000, this, &QDialog::reject);
}
