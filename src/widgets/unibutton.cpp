#include "unibutton.h"

#include <QDebug>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

namespace {

constexpr int typeCount = 15;
const QColor ink(24, 30, 60);
const QColor rim(70, 80, 140);

int sideOf(int type)
{
    if (type == 13)
        return 30;
    return type >= 9 && type <= 12 ? 37 : 19;
}

QPainterPath strokes(const QVector<QLineF>& lines)
{
    QPainterPath path;
    for (const QLineF& line : lines) {
        path.moveTo(line.p1());
        path.lineTo(line.p2());
    }
    return path;
}

QPainterPath chevron(double turn, std::initializer_list<double> heights)
{
    QPainterPath path;
    for (double y : heights) {
        path.moveTo(-0.5, y + 0.25);
        path.lineTo(0, y - 0.25);
        path.lineTo(0.5, y + 0.25);
    }
    return QTransform().rotate(turn).map(path);
}

// The sign on a button as lines in a square from -1 to 1.
QPainterPath signOf(int type)
{
    switch (type) {
    case 0: // plus
        return strokes({{-0.5, 0, 0.5, 0}, {0, -0.5, 0, 0.5}});
    case 1: // minus
        return strokes({{-0.5, 0, 0.5, 0}});
    case 2: // up
        return chevron(0, {0});
    case 3: // right
        return chevron(90, {0});
    case 4: // down
        return chevron(180, {0});
    case 5: // left
        return chevron(270, {0});
    case 9: // the same, fast
        return chevron(0, {-0.25, 0.25});
    case 10:
        return chevron(90, {-0.25, 0.25});
    case 11:
        return chevron(180, {-0.25, 0.25});
    case 12:
        return chevron(270, {-0.25, 0.25});
    case 8: // check mark
        return strokes({{-0.45, 0.05, -0.1, 0.4}, {-0.1, 0.4, 0.5, -0.35}});
    case 13: // cross
        return strokes({{-0.35, -0.35, 0.35, 0.35}, {-0.35, 0.35, 0.35, -0.35}});
    default: { // ring
        QPainterPath path;
        path.addEllipse(QPointF(0, 0), 0.42, 0.42);
        return path;
    }
    }
}

// No font is as small as the face: the word is drawn as wide as there is room for it.
QPainterPath wordOn(const QRectF& face, const QString& word)
{
    QFont font;
    font.setPixelSize(40);
    font.setBold(true);
    QPainterPath path;
    path.addText(0, 0, font, word);
    const QRectF drawn = path.boundingRect();
    if (drawn.isEmpty()) // a computer without fonts
        return path;
    const QSizeF room(face.width() - 3, face.height() * 0.45);
    const QPointF middle = face.center();
    return QTransform()
        .translate(middle.x(), middle.y())
        .scale(room.width() / drawn.width(), room.height() / drawn.height())
        .translate(-drawn.center().x(), -drawn.center().y())
        .map(path);
}

} // namespace

CUniButton::CUniButton(int type, QWidget* parent)
    : QWidget(parent)
    , m_type(type)
{
    if (type < 0 || type >= typeCount)
        qWarning() << "CUniButton: unknown type" << type;
    setFixedSize(sideOf(type), sideOf(type));
}

void CUniButton::setChecked(bool checked)
{
    if (!isToggle() || checked == m_pressed)
        return;
    m_pressed = checked;
    update();
    emit clicked();
}

void CUniButton::setAlpha(float alpha)
{
    m_alpha = qBound(0.0F, alpha, 1.0F);
    update();
}

QColor CUniButton::tinted(QColor colour) const
{
    colour.setAlphaF(colour.alphaF() * double(m_alpha) * (isEnabled() ? 1 : 0.4));
    return colour;
}

void CUniButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);

    const bool lit = isToggle() && m_pressed;
    const double inset = m_pressed && !lit ? 2 : 0; // the word of a toggle needs the whole face
    const QRectF face = QRectF(rect()).adjusted(inset + 0.5, inset + 0.5, -inset - 0.5, -inset - 0.5);
    QPainterPath outline;
    if (m_type == 13)
        outline.addEllipse(face);
    else
        outline.addRoundedRect(face, 4, 4);

    QColor top = lit ? QColor(150, 240, 255) : QColor(232, 236, 255);
    QColor foot = lit ? QColor(0, 190, 228) : QColor(140, 152, 226);
    if (m_mouseOver) {
        top = top.lighter(104);
        foot = foot.lighter(112);
    }
    if (m_pressed)
        std::swap(top, foot);
    QLinearGradient shade(face.topLeft(), face.bottomLeft());
    shade.setColorAt(0, tinted(top));
    shade.setColorAt(1, tinted(foot));
    painter.setBrush(shade);
    painter.setPen(tinted(rim));
    painter.drawPath(outline);
    painter.setBrush(Qt::NoBrush);

    if (isToggle()) {
        painter.fillPath(wordOn(face, m_type == 6 ? QStringLiteral("АВТ.") : QStringLiteral("РУЧ.")),
                         tinted(ink));
        return;
    }
    const double half = face.width() / 2;
    painter.setPen(QPen(tinted(ink), width() / 10.0, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(QTransform(half, 0, 0, half, face.center().x(), face.center().y()).map(signOf(m_type)));
}

void CUniButton::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_pressed = isToggle() ? !m_pressed : true;
    update();
    if (isToggle())
        emit clicked();
}

void CUniButton::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || isToggle() || !m_pressed)
        return;
    m_pressed = false;
    update();
    emit clicked();
}

void CUniButton::enterEvent(QEvent*)
{
    m_mouseOver = true;
    update();
}

void CUniButton::leaveEvent(QEvent*)
{
    m_mouseOver = false;
    update();
}

// A finger that is down on it lifts unseen.
void CUniButton::hideEvent(QHideEvent*)
{
    if (!isToggle())
        m_pressed = false;
}
