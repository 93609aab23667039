#include "addcontourpoint.h"
#include "contour.h"
#include "contourparams.h"
#include "generators.h"
#include "schema.h"
#include "touchmenu.h"
#include "ui_contour.h"

template <class Generator>
void CONTOUR::runGenerator()
{
    const WeldContour contour = contourValues();
    const PatternDialog::Seam seam{contour.length,
                                   schema()->D(),
                                   ui->weldSpeed->value(),
                                   ui->contourSpeed->value(),
                                   contour.closed ? contour.nrings : 1,
                                   contour};
    Generator dialog(seam, this, ui->pbTemplate);
    connect(&dialog, &PatternDialog::message, this, &CONTOUR::message);
    if (dialog.exec() == QDialog::Accepted)
        updateValidDistance();
}

void CONTOUR::on_pbTemplate_clicked()
{
    Q_ASSERT(schema());
    const QStringList entries = {QStringLiteral("Прихватки     "), QStringLiteral("Сварка     "),
                                 QStringLiteral("Останов     ")};
    const int entry = touchMenu(ui->pbTemplate, QStringLiteral("Шаблоны"), entries);
    if (entry < 0)
        return;
    const bool round = schema()->round();
    if (entry == 2)
        m_tech.addStop();
    else if (entry == 1)
        round ? runGenerator<CircleWeld>() : runGenerator<LinWeld>();
    else
        round ? runGenerator<CircleTackWelds>() : runGenerator<LinTackWelds>();
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
