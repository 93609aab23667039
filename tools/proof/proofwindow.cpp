#include "proofwindow.h"

#include "proofpicture.h"

#include <QLabel>
#include <QPainter>
#include <QSlider>
#include <QVBoxLayout>

namespace {

// The picture is painted once for each size; the mark alone moves.
class PictureWidget : public QWidget
{
public:
    PictureWidget(const Proof& proof, const QSlider* slider)
        : m_proof(proof)
        , m_slider(*slider)
    {}

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), Qt::white);
        paintProof(&painter, QRectF(rect()).adjusted(10, 10, -10, -10), m_proof, m_slider.value());
    }

private:
    const Proof& m_proof;
    const QSlider& m_slider;
};

} // namespace

ProofWindow::ProofWindow(const Proof& proof)
    : m_proof(proof)
    , m_slider(new QSlider(Qt::Horizontal))
    , m_words(new QLabel)
{
    setWindowTitle(QStringLiteral("Проверка сварки: ") + proof.weld.name);
    m_picture = new PictureWidget(proof, m_slider);
    m_slider->setObjectName(QStringLiteral("place"));
    m_slider->setRange(0, qMax(0, proof.run.samples.size() - 1));
    m_slider->setPageStep(qMax(1, proof.run.samples.size() / 50));
    m_slider->setMinimumHeight(64);
    m_slider->setStyleSheet(QStringLiteral("QSlider::groove:horizontal { height: 12px; background: #c8c8c8; }"
                                           "QSlider::handle:horizontal { width: 48px; margin: -18px 0;"
                                           " background: #00823c; border-radius: 8px; }"));
    m_words->setObjectName(QStringLiteral("words"));
    m_words->setStyleSheet(QStringLiteral("font-size: 20px;"));
    auto* column = new QVBoxLayout(this);
    column->addWidget(m_picture, 1);
    column->addWidget(m_words);
    column->addWidget(m_slider);
    connect(m_slider, &QSlider::valueChanged, this, &ProofWindow::showSample);
    resize(1280, 1000);
    showSample(0);
}

void ProofWindow::showSample(int sample)
{
    if (const ProofRun::Sample s = m_proof.run.samples.value(sample); sample < m_proof.run.samples.size())
        m_words->setText(
            QStringLiteral("Путь %1 мм   время %2 с   ток %3 мА   фокус %4 мА   скорость %5 мм/мин")
                .arg(s.path, 0, 'f', 2)
                .arg(s.time, 0, 'f', 1)
                .arg(s.Ir, 0, 'f', 1)
                .arg(s.If, 0, 'f', 0)
                .arg(s.feed, 0, 'f', 1));
    m_picture->update();
}
