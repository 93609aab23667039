#pragma once

#include "trainer/lessonrun.h"

#include <QWidget>

class FaultBoard;
class PlantPicture;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QTableWidget;

// Files of the lessons that come with the program, in their order.
QStringList suppliedLessons();

// The instructor's place: the installation in one picture, its faults by button, the lesson that runs, and
// what the trainee does, with times. It speaks the instructor's lines and nothing else.
class InstructorWindow : public QWidget
{
    Q_OBJECT

public:
    // `instruct` sends a line to the installation, `pages` is the folder for the results of lessons.
    InstructorWindow(const std::function<void(const QString&)>& instruct, const QString& pages,
                     int period = 100);

    ~InstructorWindow() override;

    LessonRun& run() { return m_run; }
    void choose(const Lesson& lesson);              // it waits for the button then
    QString lastPage() const { return m_lastPage; } // of the last lesson, empty for none

public slots:
    void hear(const QString& said) { m_run.hear(said); }
    void readJournal(const QString& line) { m_run.readJournal(line); }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    QWidget* leftSide();
    QWidget* lessonSide();
    QPushButton* button(const QString& text, const QString& name, void (InstructorWindow::*pressed)());
    void begin();
    void stop() { m_run.stop(QStringLiteral("остановлен инструктором")); }
    void chooseSupplied();
    void chooseFile();
    void showLesson();
    void showSteps();
    void follow();
    void addNote(double at, const QString& text);
    void writePage();
    void openPage();

    LessonRun m_run;
    QString m_pages;
    QString m_lastPage;
    Lesson m_lesson; // chosen
    PlantPicture* m_picture;
    FaultBoard* m_faults;
    QLabel* m_title;
    QLabel* m_tell;
    QLabel* m_end;
    QLineEdit* m_trainee;
    QTableWidget* m_steps;
    QListWidget* m_notes;
    QPushButton* m_begin;
    QPushButton* m_stop;
    QPushButton* m_open;
};
