#include "patterndialog.h"

#include "asklength.h"
#include "contour.h"
#include "framed.h"
#include "numpad.h"
#include "settings.h"
#include "ui_weldpattern.h"
#include "widgets.h"

#include <QRegularExpressionValidator>

#include <cmath>

// The object names of a number's buttons and caption are the label's with "Minus", "Plus" and "Title".
struct PatternDialog::Form
{
    const char* name;
    const char* title;
    const char* roundTitle; // before the unit; null where the unit does not change
    float minimum;
    float step;
    int decimals;
    const char* key; // in the settings; null where it is not kept
    float fallback;
};

const PatternDialog::Form PatternDialog::forms[NumberCount] = {
    {"number", "Количество", nullptr, 1, 1, 0, "Number", 2},
    {"period", "Период, мм", "Период, ", 0, 0.1f, 1, nullptr, 0},
    {"Ir", "Ток луча, мА", nullptr, 0, 1, 0, "Ir", 0},
    {"ascend", "Подъем, мм", "Подъем, ", 0, 0.1f, 1, "Ascend", 0},
    {"peak", "Пик, мм", "Пик, ", 0, 0.1f, 1, "Peak", 0},
    {"descend", "Спад, мм", "Спад, ", 0, 0.1f, 1, "Descend", 0},
    {"weldSpeed", "V сварки, мм/мин", nullptr, 0, 10, 1, nullptr, 0},
    {"moveSpeed", "V перехода, мм/мин", nullptr, 0, 10, 1, nullptr, 0},
};

namespace {

constexpr float maxCurrent = 800; // mA
constexpr float maxSpeed = 2400;  // mm/min
constexpr float maxTacks = 100;
constexpr float maxPeriod = 10'000; // mm

QString key(const char* group, const char* name)
{
    return QLatin1String(group) + QLatin1Char('/') + QLatin1String(name);
}

} // namespace

PatternDialog::PatternDialog(const Kind& kind, const Seam& seam, CONTOUR* contour)
    : QDialog(contour)
    , m_seam(seam)
    , m_contour(contour)
    , ui(std::make_unique<Ui::PatternDialog>())
    , m_kind(kind)
{
    ui->setupUi(this);
    setWindowTitle(QString::fromUtf8(kind.title));
    for (int i = 0; i < NumberCount; ++i)
        connectNumber(Number(i));

    const auto part = [this](Number number, const char* suffix) {
        return findChild<QWidget*>(QLatin1String(forms[number].name) + QLatin1String(suffix));
    };
    for (const char* suffix : {"", "Minus", "Plus", "Title"}) {
        part(TackCount, suffix)->setVisible(kind.tacks);
        part(Period, suffix)->setVisible(kind.tacks);
    }
    if (kind.round) { // it follows from the number of tacks
        part(Period, "Minus")->hide();
        part(Period, "Plus")->hide();
        part(Period, "")->setEnabled(false);
    }
    ui->leTacksOrder->setVisible(kind.tacks);
    ui->leTacksOrderTitle->setVisible(kind.tacks);
    ui->pbDegreeOn->setVisible(kind.round);
    ui->pbDegreeOn->setEnabled(hasDegrees());

    // The contour file keeps one word of a comment, and one it must have.
    ui->title->setText(QString::fromUtf8(kind.comment));
    connect(ui->title, &QLineEdit::textEdited, this, [this](QString text) {
        const int at = ui->title->cursorPosition();
        ui->title->setText(text.replace(QLatin1Char(' '), QLatin1Char('_')));
        ui->title->setCursorPosition(at);
    });
    connect(ui->title, &QLineEdit::textChanged, ui->pbCreate,
            [this](const QString& text) { ui->pbCreate->setEnabled(!text.isEmpty()); });
    // No tack lies before the start of the seam.
    ui->leTacksOrder->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[^-]*")), this));
    connect(ui->leTacksOrder, &QLineEdit::textChanged, this, &PatternDialog::refresh);
}

PatternDialog::~PatternDialog()
{
    Settings settings;
    for (int i = m_kind.tacks ? TackCount : Period; i < NumberCount; ++i) {
        if (forms[i].key)
            settings.setValue(key(m_kind.group, forms[i].key), double(value(Number(i))));
    }
    if (m_kind.round)
        settings.setValue(key(m_kind.group, "DegreeOn"), m_degrees);
    emit message(QStringLiteral("[I]Закрыто окно '%1'").arg(QString::fromUtf8(m_kind.title)), false);
}

void PatternDialog::connectNumber(Number number)
{
    const QString name = QLatin1String(forms[number].name);
    const auto step = [this, number](int sign) {
        setNumber(number, value(number) + float(sign) * forms[number].step);
    };
    connect(findChild<QPushButton*>(name + QStringLiteral("Minus")), &QPushButton::clicked, this,
            [step] { step(-1); });
    connect(findChild<QPushButton*>(name + QStringLiteral("Plus")), &QPushButton::clicked, this,
            [step] { step(1); });
    connect(label(number), &PoLabel::clicked, this, [this, number] { ask(number); });
}

// Anyone may have edited the file: what is no number, or outside the bounds, is not taken as it stands.
void PatternDialog::restore()
{
    const Settings settings;
    m_degrees = m_kind.round && hasDegrees() && settings.value(key(m_kind.group, "DegreeOn"), false).toBool();
    for (int i = 0; i < NumberCount; ++i) {
        const Form& form = forms[i];
        if (!form.key)
            continue;
        const float stored = settings.value(key(m_kind.group, form.key), form.fallback).toFloat();
        setValue(Number(i),
                 std::isfinite(stored) ? qBound(form.minimum, stored, maximum(Number(i))) : form.fallback);
    }
    setValue(TackCount, std::floor(value(TackCount)));
    setValue(WeldSpeed, m_seam.weldSpeed);
    setValue(MoveSpeed, m_seam.moveSpeed);
}

void PatternDialog::present(QWidget* button)
{
    refresh();
    const QPoint beside = button->mapToGlobal(QPoint(button->width() + 1, 0));
    frameAt(beside, windowTitle(), this, m_contour);
}

float PatternDialog::maximum(Number number) const
{
    switch (number) {
    case TackCount:
        return maxTacks;
    case Period:
        return maxPeriod;
    case Ir:
        return maxCurrent;
    case WeldSpeed:
    case MoveSpeed:
        return maxSpeed;
    default:
        break;
    }
    if (m_degrees)
        return m_kind.longestTurn;
    return number == Peak ? m_kind.longestPeak : m_kind.longestRamp;
}

PoLabel* PatternDialog::label(Number number) const
{
    return findChild<PoLabel*>(QLatin1String(forms[number].name));
}

float PatternDialog::value(Number number) const
{
    return label(number)->value();
}

// In millimetres of a round seam a hundredth shows, so that degrees come out whole again.
int PatternDialog::decimals(Number number) const
{
    if (!m_kind.round || !forms[number].roundTitle)
        return forms[number].decimals;
    return m_degrees && number != Period ? 1 : 2;
}

void PatternDialog::setValue(Number number, float value)
{
    label(number)->setValue(value, decimals(number));
}

void PatternDialog::setNumber(Number number, float value)
{
    setValue(number, qBound(forms[number].minimum, value, maximum(number)));
    changed(number);
    refresh();
}

QString PatternDialog::title(Number number) const
{
    const Form& form = forms[number];
    if (!m_kind.round || !form.roundTitle)
        return QString::fromUtf8(form.title);
    return QString::fromUtf8(form.roundTitle) + (m_degrees ? QStringLiteral("°") : QStringLiteral("мм"));
}

void PatternDialog::ask(Number number)
{
    Numpad numpad(title(number), this, value(number), decimals(number) == 0, true, false);
    if (numpad.exec() == QDialog::Accepted)
        setNumber(number, float(numpad.value()));
}

WeldPattern PatternDialog::pattern() const
{
    return {value(Ir), value(Ascend), value(Peak), value(Descend), value(WeldSpeed), value(MoveSpeed)};
}

QString PatternDialog::orderText() const
{
    return ui->leTacksOrder->text();
}

void PatternDialog::setOrder(const QString& order)
{
    ui->leTacksOrder->setText(order);
}

double PatternDialog::unit() const
{
    return m_degrees ? degreeLength(m_seam.D) : 1;
}

PatternView::Beam PatternDialog::beam(double start) const
{
    const double scale = unit();
    return {start * scale, double(value(Ascend)) * scale, double(value(Peak)) * scale,
            double(value(Descend)) * scale};
}

void PatternDialog::writeTitle()
{
    m_contour->addComment(ui->title->text());
}

void PatternDialog::writeIntervals(const QVector<PatternRow>& rows)
{
    for (const PatternRow& row : rows)
        m_contour->addTechPoint(row.path, row.Ir, row.speed);
}

void PatternDialog::refresh()
{
    for (int i = 0; i < NumberCount; ++i) {
        const QString name = QLatin1String(forms[i].name) + QStringLiteral("Title");
        findChild<QLabel*>(name)->setText(title(Number(i)));
    }
    ui->pbDegreeOn->setText(QStringLiteral("Измерение\n в ") +
                            (m_degrees ? QStringLiteral("градусах") : QStringLiteral("милиметрах")));
    ui->view->setPattern(beams(), double(m_seam.length), m_seam.passes, possible(), warning());
}

// Whether a degree of the seam is a length that lengths can be divided by.
bool PatternDialog::hasDegrees() const
{
    return m_seam.D >= leastLength && std::isfinite(m_seam.D);
}

void PatternDialog::on_pbDegreeOn_clicked()
{
    if (!hasDegrees())
        return;
    const auto k = float(degreeLength(m_seam.D));
    m_degrees = !m_degrees;
    for (const Number number : {Ascend, Peak, Descend})
        setValue(number, m_degrees ? value(number) / k : value(number) * k);
    unitSwitched();
    refresh();
}

void PatternDialog::on_pbCreate_clicked()
{
    emit message(QStringLiteral("[I]Нажата кнопка 'Сгенерировать' окна '%1'").arg(windowTitle()), false);
    if (create())
        accept();
}
