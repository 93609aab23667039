#include "addcontourpoint.h"
#include "contour.h"
#include "contourparams.h"
#include "generators.h"
#include "schema.h"
#include "touchmenu.h"
#include "ui_contour.h"

#include <cmath>

namespace {

constexpr float leastWay = 1; // mm along X

const QString stopText = QStringLiteral("Технол.останов");

} // namespace

template <class Generator>
void CONTOUR::runGenerator()
{
    const int points = ui->twContour->rowCount();
    PatternDialog::Seam seam{ui->length->value(), m_schema->D(), ui->weldSpeed->value(),
                             ui->contourSpeed->value()};
    seam.oneLine = points == 2 && !m_closed && frame(0).type == Frame::Line;
    for (int row = 1; row < points + (m_closed && points > 0 ? 1 : 0); ++row)
        seam.alongX = seam.alongX && std::fabs(coords(row % points)[0] - coords(row - 1)[0]) > leastWay;
    Generator dialog(seam, this, ui->pbTemplate);
    connect(&dialog, &PatternDialog::message, this, &CONTOUR::message);
    dialog.exec();
}

void CONTOUR::on_pbTemplate_clicked()
{
    Q_ASSERT(m_schema);
    const QStringList entries = {QStringLiteral("Прихватки     "), QStringLiteral("Сварка     "),
                                 QStringLiteral("Останов     ")};
    const int entry = touchMenu(ui->pbTemplate, QStringLiteral("Шаблоны"), entries);
    if (entry < 0)
        return;
    const bool round = m_schema->round();
    if (entry == 2)
        addComment(stopText);
    else if (entry == 1)
        round ? runGenerator<CircleWeld>() : runGenerator<LinWeld>();
    else
        round ? runGenerator<CircleTackWelds>() : runGenerator<LinTackWelds>();
    updateTechTab();
    updateValidDistance();
}

void CONTOUR::on_pbAddTechPoint_clicked()
{
    AddContourPoint dialog(this, ui->twContour->rowCount(), ui->nrings->whole());
    connect(&dialog, &AddContourPoint::message, this, &CONTOUR::message);
    dialog.exec();
}

void CONTOUR::onContourCellDoubleClicked(int row, int column)
{
    const bool leaves = m_closed || row < ui->twContour->rowCount() - 1;
    if (!isXYZ() || column != frameColumn() || row < 0 || !leaves)
        return;
    ContourParams dialog(this, row + 1, this);
    connect(&dialog, &ContourParams::message, this, &CONTOUR::message);
    dialog.setFrame(frame(row));
    if (dialog.exec() == QDialog::Accepted)
        updateValidDistance(); // the seam has another length
}
