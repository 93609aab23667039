#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class Inform;
}

// What stands before the operator: the installation, the program, and its two manuals, which the viewer shows
// from the working directory. A manual or a viewer that is missing shows nothing, and the latter is told in
// the debug output.
class Inform : public QDialog
{
    Q_OBJECT

public:
    explicit Inform(QWidget* parent); // in the middle of the panel that begins where `parent` does
    ~Inform() override;

public slots:
    void on_pbManual_clicked();
    void on_pbOperator_clicked();
    void on_pbClose_clicked();

protected:
    void changeEvent(QEvent* event) override; // says so itself when the key switch locks the window

private:
    void showVersion();

    std::unique_ptr<Ui::Inform> ui;
};
