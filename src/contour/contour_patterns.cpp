#include "addcontourpoint.h"
#include "contour.h"
#include "contourparams.h"
#include "generators.h"
#include "schema.h"
#include "touchmenu.h"
#include "ui_contour.h"

namespace {

template <class Generator>
bool generate(const PatternDialog::Seam& seam, CONTOUR* panel, QWidget* button)
{
    Generator dialog(seam, panel, button);
    QObject::connect(&dialog, &PatternDialog::message, panel, &CONTOUR::message);
    return dialog.exec() == QDialog::Accepted;
}

} // namespace

void CONTOUR::on_pbTemplate_clicked()
{
    Q_ASSERT(schema());
    const QStringList entries = {QStringLiteral("Прихватки     "), QStringLiteral("Сварка     "),
                                 QStringLiteral("Останов     ")};
    const int entry = touchMenu(ui->pbTemplate, QStringLiteral("Шаблоны"), entries);
    if (entry < 0)
        return;
    if (entry == 2) {
        m_tech.addStop();
    } else {
        const WeldContour contour = contourValues();
        const PatternDialog::Seam seam{contour.length,
                                       schema()->D(),
                                       ui->weldSpeed->value(),
                                       ui->contourSpeed->value(),
                                       contour.closed ? contour.nrings : 1,
                                       contour};
        const auto dialog = schema()->round()
                                ? (entry == 1 ? generate<CircleWeld> : generate<CircleTackWelds>)
                                : (entry == 1 ? generate<LinWeld> : generate<LinTackWelds>);
        if (dialog(seam, this, ui->pbTemplate))
            updateValidDistance();
    }
    updateTechTab();
}

void CONTOUR::on_pbAddTechPoint_clicked()
{
    AddContourPoint dialog(this, m_points.rowCount(), ui->nrings->whole());
    connect(&dialog, &AddContourPoint::message, this, &CONTOUR::message);
    dialog.exec();
}

void CONTOUR::onContourCellDoubleClicked(int row, int column)
{
    const bool leaves = m_points.closed() || row < m_points.last();
    if (!m_points.isXYZ() || column != m_points.frameColumn() || row < 0 || !leaves)
        return;
    ContourParams dialog(this, row + 1, this);
    connect(&dialog, &ContourParams::message, this, &CONTOUR::message);
    dialog.setFrame(m_points.frame(row));
    if (dialog.exec() == QDialog::Accepted)
        updateValidDistance(); // the seam has another length
}
