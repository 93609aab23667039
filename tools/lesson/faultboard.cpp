#include "faultboard.h"

#include "trainer/lessonrun.h"

#include <QGridLayout>
#include <QPushButton>
#include <QStyle>
#include <QVariant>

namespace {

constexpr int buttonHeight = 52;                 // px, for a finger
using Faults = QVector<QPair<QString, QString>>; // button's text, line

// "Клапан %1" with "valve %1 jam" for each of the names.
Faults family(const QString& text, const QString& line, const QString& names)
{
    Faults faults;
    for (const QString& name : names.split(' '))
        faults << qMakePair(text.arg(name.toUpper()), line.arg(name));
    return faults;
}

// The same fault, whatever number stands behind it: a leak's rate, a drive's code.
bool same(const QString& line, const QString& fault)
{
    const bool byPlace = line.startsWith(QLatin1String("leak ")) || line.startsWith(QLatin1String("trip "));
    return byPlace ? fault.section(' ', 0, 1) == line.section(' ', 0, 1) : fault == line;
}

} // namespace

FaultBoard::FaultBoard(std::function<void(const QString&)> instruct, QWidget* parent)
    : QTabWidget(parent)
    , m_instruct(std::move(instruct))
{
    addPage(QStringLiteral("Защита"), 4,
            Faults{{"Авария: пульт", "emergency console on"},
                   {"Авария: переносной", "emergency pendant on"},
                   {"Ключ отключён", "key off"},
                   {"Трос левый", "rope left on"},
                   {"Трос правый", "rope right on"},
                   {"Фазы 380 В", "phase off"},
                   {"Нет сжатого воздуха", "air off"},
                   {"ЭЛА не отвечает", "beam off"}});
    addPage(QStringLiteral("Приводы"), 6,
            family("%1 отказ", "trip %1 f2019", "lx lx2 ly a b c d u1 u2 v") +
                family("%1", "breaker %1 off",
                       "qf18 qf28 qf23 qf31 qf32 qf33 qf34 qf35 qf36 qf37 qf38 qf39 qf40"));
    addPage(QStringLiteral("Клапаны"), 4,
            family("%1 заклинен", "valve %1 jam", "vp1 vp2 vp3 vp4 vp5 vp6 vp7 vp8 vpt ve1") +
                Faults{{"Прижим двери", "valve door jam"}});
    addPage(QStringLiteral("Насосы"), 4,
            family("%1 отказ", "pump %1 stop", "nl1 nl2 nz1 nz2 nd1 nw2 tmn") +
                family("Вода %1", "water %1 off", "1 2 3 4 5 6 7 8"));
    addPage(QStringLiteral("Датчики"), 6,
            family("%1 замер", "gauge %1 freeze", "pt1 pt2 pt3 pt4 pt5 pt6") +
                family("%1 обмен", "gauge %1 invalid", "pt1 pt2 pt3 pt4 pt5 pt6"));
    addPage(QStringLiteral("Течи"), 3,
            Faults{{"Камера", "leak chamber 1"},
                   {"Рубашка", "leak jacket 1"},
                   {"ND1", "leak nd1 1"},
                   {"Линия NZ1", "leak foreline 1"},
                   {"Линия NZ2", "leak roughing 1"},
                   {"Пушка", "leak gun 0.1"}});
    addPage(QStringLiteral("Связь"), 3,
            Faults{{"CNC обрыв 5 с", "link drop 5"},
                   {"KVS обрыв 5 с", "link kvs drop 5"},
                   {"KVK обрыв 5 с", "link kvk drop 5"},
                   {"CNC молчит 5 с", "link silence 5"},
                   {"KVS молчит 5 с", "link kvs silence 5"},
                   {"KVK молчит 5 с", "link kvk silence 5"}});
}

void FaultBoard::addPage(const QString& title, int columns, const Faults& faults)
{
    auto* page = new QWidget;
    auto* grid = new QGridLayout(page);
    grid->setSpacing(6);
    for (const auto& [text, line] : faults) {
        auto* button = new QPushButton(text, page);
        button->setObjectName(line);
        button->setMinimumHeight(buttonHeight);
        button->setFocusPolicy(Qt::NoFocus);
        const int place = grid->count();
        grid->addWidget(button, place / columns, place % columns);
        const int index = m_faults.size();
        connect(button, &QPushButton::clicked, this, [this, index] { touched(index); });
        m_faults << Fault{line, button};
    }
    grid->setRowStretch(grid->rowCount(), 1);
    addTab(page, title);
}

void FaultBoard::touched(int index)
{
    const Fault& fault = m_faults[index];
    m_instruct(fault.stands ? LessonRun::mending(fault.line) : fault.line);
}

void FaultBoard::show(const QStringList& faults)
{
    for (Fault& fault : m_faults) {
        const bool stands = std::any_of(faults.begin(), faults.end(),
                                        [&](const QString& now) { return same(fault.line, now); });
        if (stands == fault.stands)
            continue;
        fault.stands = stands;
        fault.button->setProperty("stands", QVariant(stands)); // the style sheet shows it
        fault.button->style()->unpolish(fault.button);
        fault.button->style()->polish(fault.button);
    }
    for (int page = 0; page < count(); ++page) {
        int standing = 0;
        for (const Fault& fault : qAsConst(m_faults))
            standing += fault.stands && fault.button->parentWidget() == widget(page);
        const QString title = tabText(page).section(' ', 0, 0);
        setTabText(page, standing ? QStringLiteral("%1 (%2)").arg(title).arg(standing) : title);
    }
}
