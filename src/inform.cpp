#include "inform.h"

#include "desktopprogram.h"
#include "ui_inform.h"
#include "widgets.h"

namespace {

void showManual(const QString& file)
{
    startDesktopProgram(QStringLiteral("okular"), {file}); // a missing viewer is not the operator's affair
}

} // namespace

Inform::Inform(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint)
    , ui(std::make_unique<Ui::Inform>())
{
    ui->setupUi(this);
    setMouseTracking(true);
    ui->lblVersion->setText(QStringLiteral("Программа управления МИРТА, версия " MIRTA_VERSION));
    adjustSize();
    const QPoint corner = parent ? parent->mapToGlobal(QPoint()) : QPoint();
    move(corner + QPoint((panelWidth - width()) / 2, (panelHeight - height()) / 2));
}

Inform::~Inform() = default;

void Inform::on_pbManual_clicked()
{
    showManual(QStringLiteral("РЭ_1.pdf"));
}

void Inform::on_pbOperator_clicked()
{
    showManual(QStringLiteral("РЭ_2.pdf"));
}

void Inform::on_pbClose_clicked()
{
    close();
}
