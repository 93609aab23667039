#include "instructorwindow.h"

#include "faultboard.h"
#include "lessonpage.h"
#include "plantpicture.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QTableWidget>
#include <QTime>
#include <QUrl>

namespace {

constexpr int mostNotes = 2000;
constexpr QSize wanted(1720, 1000);

// The colours of the console: a button is blue, red means a fault.
const char look[] = R"(
QWidget { font-family: "DejaVu Sans"; font-size: 16px; }
InstructorWindow { background: #d7d9e2; }
QPushButton { background: #a5abff; border: 1px solid #5d64b8; border-radius: 6px; padding: 4px 10px; min-height: 44px; }
QPushButton:pressed { background: #8087e6; }
QPushButton:disabled { background: #c4c7d4; color: #777; border-color: #a0a3b0; }
QPushButton[stands="true"] { background: #d21e1e; color: white; border-color: #7c0000; font-weight: bold; }
QTabBar::tab { background: #c4c7d4; min-height: 46px; padding: 0 12px; }
QTabBar::tab:selected { background: #3c4668; color: white; }
QTabWidget::pane { border: 1px solid #8a8fa8; }
QLineEdit { background: white; min-height: 44px; padding: 0 6px; }
QMenu::item { min-height: 44px; padding: 4px 24px; font-size: 18px; }
QMenu::item:selected { background: #3c4668; color: white; }
QHeaderView::section { background: #c4c7d4; padding: 4px; border: 1px solid #a0a3b0; }
)";

QLabel* text(const QString& name, int pixels, bool bold)
{
    auto* label = new QLabel;
    label->setObjectName(name);
    label->setWordWrap(true);
    label->setStyleSheet(QStringLiteral("font-size: %1px; font-weight: %2;")
                             .arg(pixels)
                             .arg(bold ? QLatin1String("bold") : QLatin1String("normal")));
    return label;
}

} // namespace

QStringList suppliedLessons()
{
    QStringList files;
    for (const QString& name : QDir(QStringLiteral(":/lessons")).entryList(QDir::Files, QDir::Name))
        files << QStringLiteral(":/lessons/") + name;
    return files;
}

InstructorWindow::InstructorWindow(const std::function<void(const QString&)>& instruct, const QString& pages,
                                   int period)
    : m_run(instruct, period)
    , m_pages(pages)
    , m_picture(new PlantPicture)
    , m_faults(new FaultBoard([this](const QString& line) { m_run.instruct(line); }))
{
    setWindowTitle(QStringLiteral("Инструктор"));
    setStyleSheet(QLatin1String(look));
    auto* sides = new QHBoxLayout(this);
    sides->addWidget(leftSide(), 7);
    sides->addWidget(lessonSide(), 4);
    // On a second screen, when there is one, beside the console.
    const QRect room = QGuiApplication::screens().last()->availableGeometry();
    setGeometry(QRect(room.topLeft(), wanted.boundedTo(room.size())));

    connect(&m_run, &LessonRun::changed, this, &InstructorWindow::follow);
    connect(&m_run, &LessonRun::noted, this, &InstructorWindow::addNote);
    connect(&m_run, &LessonRun::finished, this, &InstructorWindow::writePage);
    showLesson();
}

// A lesson that is cut off has its page too.
InstructorWindow::~InstructorWindow()
{
    m_run.stop(QStringLiteral("тренажёр закрыт"));
}

QWidget* InstructorWindow::leftSide()
{
    auto* side = new QWidget;
    auto* rows = new QVBoxLayout(side);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->addWidget(m_picture, 1);
    rows->addWidget(m_faults);
    return side;
}

QPushButton* InstructorWindow::button(const QString& text, const QString& name,
                                      void (InstructorWindow::*pressed)())
{
    auto* made = new QPushButton(text);
    made->setObjectName(name);
    made->setFocusPolicy(Qt::NoFocus);
    connect(made, &QPushButton::clicked, this, pressed);
    return made;
}

QWidget* InstructorWindow::lessonSide()
{
    auto* side = new QWidget;
    auto* rows = new QVBoxLayout(side);
    rows->setContentsMargins(0, 0, 0, 0);
    auto* files = new QHBoxLayout;
    files->addWidget(button(QStringLiteral("Выбрать урок"), QStringLiteral("pbSupplied"),
                            &InstructorWindow::chooseSupplied));
    files->addWidget(
        button(QStringLiteral("Из файла"), QStringLiteral("pbFile"), &InstructorWindow::chooseFile));
    rows->addLayout(files);
    rows->addWidget(m_title = text(QStringLiteral("lblTitle"), 22, true));
    rows->addWidget(m_tell = text(QStringLiteral("lblTell"), 16, false));
    rows->addWidget(m_trainee = new QLineEdit);
    m_trainee->setPlaceholderText(QStringLiteral("Ученик"));
    m_trainee->setMaxLength(60);
    auto* starts = new QHBoxLayout;
    starts->addWidget(
        m_begin = button(QStringLiteral("Начать"), QStringLiteral("pbBegin"), &InstructorWindow::begin));
    starts->addWidget(
        m_stop = button(QStringLiteral("Прервать"), QStringLiteral("pbStop"), &InstructorWindow::stop));
    starts->addWidget(
        m_open = button(QStringLiteral("Протокол"), QStringLiteral("pbPage"), &InstructorWindow::openPage));
    rows->addLayout(starts);
    rows->addWidget(m_end = text(QStringLiteral("lblEnd"), 18, true));

    m_steps = new QTableWidget(0, 3);
    m_steps->setHorizontalHeaderLabels(
        {QStringLiteral("Шаг"), QStringLiteral("Занял"), QStringLiteral("Отведено")});
    m_steps->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_steps->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_steps->verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_steps->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_steps->setSelectionMode(QAbstractItemView::NoSelection);
    m_steps->setFocusPolicy(Qt::NoFocus);
    rows->addWidget(m_steps, 3);
    rows->addWidget(new QLabel(QStringLiteral("Журнал: время урока или часы, что сделано")));
    m_notes = new QListWidget;
    m_notes->setWordWrap(true);
    m_notes->setSelectionMode(QAbstractItemView::NoSelection);
    m_notes->setFocusPolicy(Qt::NoFocus);
    rows->addWidget(m_notes, 2);
    return side;
}

void InstructorWindow::choose(const Lesson& lesson)
{
    m_run.stop(QStringLiteral("выбран другой урок"));
    m_lesson = lesson;
    m_end->clear();
    showLesson();
}

void InstructorWindow::begin()
{
    m_end->setStyleSheet(QStringLiteral("font-size: 18px; font-weight: bold; color: black;"));
    m_run.begin(m_lesson, m_trainee->text().simplified());
}

void InstructorWindow::chooseSupplied()
{
    QMenu menu(this);
    for (const QString& file : suppliedLessons()) {
        Lesson lesson;
        QString why;
        if (readLesson(file, &lesson, &why))
            menu.addAction(lesson.title, this, [this, lesson] { choose(lesson); });
    }
    menu.exec(QCursor::pos());
}

void InstructorWindow::chooseFile()
{
    const QString file = QFileDialog::getOpenFileName(this, QStringLiteral("Урок"), QDir::homePath(),
                                                      QStringLiteral("Уроки (*.lesson)"));
    Lesson lesson;
    QString why;
    if (file.isEmpty())
        return;
    if (readLesson(file, &lesson, &why))
        choose(lesson);
    else
        QMessageBox::warning(this, QStringLiteral("Урок"), QStringLiteral("Это не урок.\n") + why);
}

void InstructorWindow::showLesson()
{
    m_title->setText(m_lesson.title.isEmpty() ? QStringLiteral("Урок не выбран") : m_lesson.title);
    m_tell->setText(m_lesson.tell);
    m_steps->setRowCount(m_lesson.steps.size());
    for (int i = 0; i < m_lesson.steps.size(); ++i) {
        m_steps->setItem(i, 0, new QTableWidgetItem(m_lesson.steps[i].title));
        m_steps->setItem(i, 1, new QTableWidgetItem);
        m_steps->setItem(i, 2, new QTableWidgetItem(clockText(m_lesson.steps[i].within)));
    }
    follow();
}

// Green is done, red is not, yellow waits.
void InstructorWindow::showSteps()
{
    const LessonResult& result = m_run.result();
    for (int i = 0; i < m_steps->rowCount() && i < result.steps.size(); ++i) {
        const LessonResult::Step& step = result.steps[i];
        const bool waits = m_run.running() && i == m_run.step();
        const double until = waits ? m_run.time() : step.ended;
        m_steps->item(i, 1)->setText(step.began < 0 ? QString() : clockText(until - step.began));
        const QColor colour = step.done         ? QColor(170, 235, 180)
                              : waits           ? QColor(255, 235, 140)
                              : step.began >= 0 ? QColor(255, 170, 170)
                                                : QColor(Qt::white);
        for (int column = 0; column < m_steps->columnCount(); ++column)
            m_steps->item(i, column)->setBackground(colour);
    }
}

void InstructorWindow::follow()
{
    m_picture->show(m_run.state());
    m_faults->show(m_run.faults());
    const bool running = m_run.running();
    m_begin->setEnabled(!running && !m_lesson.title.isEmpty() && !m_run.state().isEmpty());
    m_stop->setEnabled(running);
    m_open->setEnabled(!running && !m_lastPage.isEmpty());
    m_trainee->setReadOnly(running);
    if (m_run.preparing())
        m_end->setText(QStringLiteral("Установка готовится к уроку…"));
    else if (running)
        m_end->setText(QStringLiteral("Идёт, %1").arg(clockText(m_run.time())));
    if (m_run.result().title == m_lesson.title)
        showSteps();
}

void InstructorWindow::addNote(double at, const QString& text)
{
    const QString time = at < 0 ? QTime::currentTime().toString(QStringLiteral("HH:mm:ss"))
                                : QStringLiteral("+") + clockText(at);
    auto* item = new QListWidgetItem(time + QStringLiteral("  ") + text);
    if (text.startsWith(QLatin1String("[A]")) || text.startsWith(QLatin1String("[W]")))
        item->setForeground(QColor(170, 0, 0));
    m_notes->addItem(item);
    if (m_notes->count() > mostNotes)
        delete m_notes->takeItem(0);
    m_notes->scrollToBottom();
}

void InstructorWindow::writePage()
{
    const LessonResult& result = m_run.result();
    const bool passed = result.end == LessonResult::End::Passed;
    m_end->setStyleSheet(QStringLiteral("font-size: 18px; font-weight: bold; color: %1;")
                             .arg(passed ? QLatin1String("#00702a") : QLatin1String("#b00000")));
    QString text = QStringLiteral("%1: %2").arg(endText(result.end), result.reason);
    const QString name = lessonPageName(result, m_pages);
    QString why;
    if (writeLessonPage(result, name, &why))
        m_lastPage = name;
    else
        text += QStringLiteral("\nПротокол не записан: ") + why;
    m_end->setText(text);
    follow();
}

void InstructorWindow::openPage()
{
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(m_lastPage)))
        m_end->setText(QStringLiteral("Протокол: ") + m_lastPage);
}

// The console's window ends the trainer; a lesson is not lost by a slip.
void InstructorWindow::closeEvent(QCloseEvent* event)
{
    event->ignore();
    showMinimized();
}
