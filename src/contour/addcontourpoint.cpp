#include "addcontourpoint.h"

#include "contour.h"
#include "framed.h"
#include "numpad.h"
#include "settings.h"
#include "ui_addcontourpoint.h"
#include "widgets.h"

#include <QCursor>

namespace {

const QString title = QStringLiteral("Добавление точки контура");

} // namespace

AddContourPoint::AddContourPoint(CONTOUR* contour, int pointCount, int passCount)
    : QDialog(contour)
    , ui(std::make_unique<Ui::AddContourPoint>())
    , m_contour(contour)
{
    ui->setupUi(this);
    connectNumber(ui->pointNumber, ui->pointNumberTitle->text(), pointCount);
    connectNumber(ui->rotateNumber, ui->rotateNumberTitle->text(), passCount);

    const Settings settings;
    setNumber(ui->pointNumber, settings.value(QStringLiteral("ContourPoint/Number"), 1).toFloat(),
              pointCount);
    setNumber(ui->rotateNumber, settings.value(QStringLiteral("ContourPoint/Rotate"), 1).toFloat(),
              passCount);
    ui->cbAllPoints->setChecked(settings.value(QStringLiteral("ContourPoint/AllPoint"), false).toBool());
    const bool everyPass = settings.value(QStringLiteral("ContourPoint/AllRotate"), false).toBool();
    (everyPass ? ui->rbAllRotate : ui->rbOneRotate)->setChecked(true);

    connect(ui->cbAllPoints, &QAbstractButton::toggled, this, &AddContourPoint::updateEnables);
    connect(ui->rbAllRotate, &QAbstractButton::toggled, this, &AddContourPoint::updateEnables);
    updateEnables();
    const QPoint at = QCursor::pos();
    frameAt(at, title, this, contour);
}

AddContourPoint::~AddContourPoint()
{
    Settings settings;
    settings.setValue(QStringLiteral("ContourPoint/Number"), ui->pointNumber->whole());
    settings.setValue(QStringLiteral("ContourPoint/Rotate"), ui->rotateNumber->whole());
    settings.setValue(QStringLiteral("ContourPoint/AllPoint"), ui->cbAllPoints->isChecked());
    settings.setValue(QStringLiteral("ContourPoint/AllRotate"), ui->rbAllRotate->isChecked());
    emit message(QStringLiteral("[I]Закрыто окно '%1'").arg(title), false);
}

void AddContourPoint::connectNumber(PoLabel* label, const QString& title, int maximum)
{
    const auto step = [this, label, maximum](float by) { setNumber(label, label->value() + by, maximum); };
    connect(findChild<QPushButton*>(label->objectName() + QStringLiteral("Minus")), &QPushButton::clicked,
            this, [step] { step(-1); });
    connect(findChild<QPushButton*>(label->objectName() + QStringLiteral("Plus")), &QPushButton::clicked,
            this, [step] { step(1); });
    connect(label, &PoLabel::clicked, this, [this, label, title, maximum] {
        Numpad numpad(title, this, label->value(), true, true, false);
        if (numpad.exec() == QDialog::Accepted)
            setNumber(label, float(numpad.value()), maximum);
    });
}

void AddContourPoint::setNumber(PoLabel* label, float value, int maximum)
{
    const auto largest = float(qMax(1, maximum));
    label->setValue(value >= 1 ? qMin(value, largest) : 1, 0); // what is no number is 1 too
    label->setValue(float(label->whole()), 0);
}

void AddContourPoint::updateEnables()
{
    const auto enable = [this](const char* name, bool enabled) {
        for (const char* part : {"", "Minus", "Plus", "Title"})
            findChild<QWidget*>(QLatin1String(name) + QLatin1String(part))->setEnabled(enabled);
    };
    enable("pointNumber", !ui->cbAllPoints->isChecked());
    enable("rotateNumber", !ui->rbAllRotate->isChecked());
}

void AddContourPoint::on_pbAdd_clicked()
{
    m_contour->addContourPoint(ui->cbAllPoints->isChecked(), ui->rbAllRotate->isChecked(),
                               ui->pointNumber->whole(), ui->rotateNumber->whole());
}
