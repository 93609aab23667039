#include "inform.h"

#include "desktopprogram.h"
#include "ui_inform.h"
#include "widgets.h"

#include <QEvent>

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
    showVersion();
    adjustSize();
    const QPoint corner = parent ? parent->mapToGlobal(QPoint()) : QPoint();
    move(corner + QPoint((panelWidth - width()) / 2, (panelHeight - height()) / 2));
}

Inform::~Inform() = default;

void Inform::showVersion()
{
    ui->lblVersion->setText(isEnabled() ? QStringLiteral("Программа управления МИРТА, версия " MIRTA_VERSION)
                                        : QStringLiteral("Панель управления заблокирована"));
    QPalette palette;
    if (!isEnabled())
        palette.setColor(QPalette::WindowText, Qt::red);
    ui->lblVersion->setPalette(palette);
}

void Inform::changeEvent(QEvent* event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::EnabledChange)
        showVersion();
}

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
