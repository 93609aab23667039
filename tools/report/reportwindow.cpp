#include "reportwindow.h"

#include "mywinstyle.h"
#include "reportpdf.h"

#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QScroller>
#include <QSplitter>
#include <QTreeWidget>

namespace {

constexpr int touchHeight = 48;
constexpr int fileRole = Qt::UserRole;
constexpr int rangeRole = Qt::UserRole + 1;
const QColor chosenFace(120, 200, 120);

QTreeWidget* table(const QStringList& titles, const QString& name)
{
    auto* tree = new QTreeWidget;
    tree->setObjectName(name);
    tree->setHeaderLabels(titles);
    tree->setRootIsDecorated(false);
    tree->setUniformRowHeights(true);
    tree->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    tree->setStyleSheet(
        QStringLiteral("* { font-size: 16px; } QTreeWidget::item { height: %1px; }").arg(touchHeight));
    QScroller::grabGesture(tree->viewport(), QScroller::TouchGesture);
    return tree;
}

} // namespace

ReportWindow::ReportWindow(double percent, bool overPath)
    : m_list(table({QStringLiteral("Дата"), QStringLiteral("Программа"), QStringLiteral("Сварщик"),
                    QStringLiteral("Запись")},
                   QStringLiteral("records")))
    , m_findings(table(QStringList(QStringLiteral("Ход")) + deviationTitles(), QStringLiteral("findings")))
    , m_charts(new Charts)
    , m_summary(new QLabel)
{
    m_view.percent = percent;
    m_view.overPath = overPath;
    setWindowTitle(QStringLiteral("Отчёт по записям"));
    setStyleSheet(QStringLiteral("* { font-size: 16px; }"));
    m_list->setSelectionMode(QAbstractItemView::MultiSelection);
    m_list->setSortingEnabled(true);
    m_list->sortByColumn(0, Qt::DescendingOrder);
    m_summary->setWordWrap(true);
    m_summary->setObjectName(QStringLiteral("summary"));

    auto* work = new QWidget;
    auto* column = new QVBoxLayout(work);
    column->addWidget(commands());
    column->addWidget(chartButtons());
    column->addWidget(m_charts, 1);
    column->addWidget(m_summary);
    column->addWidget(m_findings);
    m_findings->setFixedHeight(3 * touchHeight);
    auto* halves = new QSplitter;
    halves->addWidget(m_list);
    halves->addWidget(work);
    halves->setSizes({620, 1180});
    (new QHBoxLayout(this))->addWidget(halves);

    connect(m_list, &QTreeWidget::itemSelectionChanged, this, &ReportWindow::readChosen);
    connect(m_findings, &QTreeWidget::itemClicked, this, [this](QTreeWidgetItem* item) {
        const QPointF range = item->data(0, rangeRole).toPointF();
        const double margin = qMax(0.5, 2 * (range.y() - range.x()));
        if (!item->data(0, rangeRole).isNull())
            m_charts->showRange(range.x() - margin, range.y() + margin);
    });
    draw();
}

QPushButton* ReportWindow::button(const QString& text, const QString& name, bool stays)
{
    auto* made = new QPushButton(text);
    made->setObjectName(name);
    made->setMinimumHeight(touchHeight);
    made->setCheckable(stays);
    const auto face = [made](bool on) {
        QPalette colours = made->palette();
        MyWinStyle::setFace(colours, on ? chosenFace : MyWinStyle::restFace(made));
        made->setPalette(colours);
    };
    if (stays)
        connect(made, &QPushButton::toggled, made, face);
    return made;
}

QWidget* ReportWindow::commands()
{
    auto* bar = new QWidget;
    auto* row = new QHBoxLayout(bar);
    row->setContentsMargins(0, 0, 0, 0);
    const auto add = [&](const QString& text, const char* name, auto slot) {
        QPushButton* made = button(text, QLatin1String(name));
        connect(made, &QPushButton::clicked, this, slot);
        row->addWidget(made);
    };
    add(QStringLiteral("Файлы…"), "pbFiles", [this] {
        open(QFileDialog::getOpenFileNames(this, QStringLiteral("Записи"), QString(),
                                           QStringLiteral("Записи (*.csv *.dump);;Все файлы (*)")));
    });
    add(QStringLiteral("Папка…"), "pbFolder", [this] {
        const QString folder = QFileDialog::getExistingDirectory(this, QStringLiteral("Папка записей"));
        open(folder.isEmpty() ? QStringList() : QStringList(folder));
    });
    m_time = button(QStringLiteral("Время"), QStringLiteral("pbTime"), true);
    m_path = button(QStringLiteral("Путь"), QStringLiteral("pbPath"), true);
    for (QPushButton* axis : {m_time, m_path}) {
        row->addWidget(axis);
        connect(axis, &QPushButton::clicked, this, [this, axis] {
            m_view.overPath = axis == m_path;
            draw();
        });
    }
    add(QStringLiteral("Весь ход"), "pbWhole", [this] { m_charts->showWhole(); });
    row->addStretch();
    row->addWidget(new QLabel(QStringLiteral("Допуск")));
    m_percent = new QDoubleSpinBox;
    m_percent->setObjectName(QStringLiteral("percent"));
    m_percent->setLocale(QLocale(QLocale::Russian));
    m_percent->setRange(0, 100);
    m_percent->setDecimals(1);
    m_percent->setSuffix(QStringLiteral(" %"));
    m_percent->setButtonSymbols(QAbstractSpinBox::NoButtons); // they are beside it, for fingers
    m_percent->setMinimumHeight(touchHeight);
    m_percent->setValue(m_view.percent);
    connect(m_percent, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, [this](double percent) {
        m_view.percent = percent;
        draw();
    });
    add(QStringLiteral(" − "), "pbLess", [this] { m_percent->stepDown(); });
    row->addWidget(m_percent);
    add(QStringLiteral(" + "), "pbMore", [this] { m_percent->stepUp(); });
    add(QStringLiteral("PDF…"), "pbPdf", &ReportWindow::savePdf);
    return bar;
}

QWidget* ReportWindow::chartButtons()
{
    auto* bar = new QWidget;
    auto* rows = new QGridLayout(bar);
    rows->setContentsMargins(0, 0, 0, 0);
    for (int kind = 0; kind < chartKinds().size(); ++kind) {
        if (kind >= 3)
            m_hidden.insert(kind); // what a weld is judged by comes first
        QPushButton* made = button(chartKinds()[kind].title, QStringLiteral("kind%1").arg(kind), true);
        made->setChecked(!m_hidden.contains(kind));
        connect(made, &QPushButton::clicked, this, [this, kind](bool on) {
            on ? void(m_hidden.remove(kind)) : void(m_hidden.insert(kind));
            draw();
        });
        rows->addWidget(made, kind / 6, kind % 6);
        m_kinds << made;
    }
    return bar;
}

void ReportWindow::open(const QStringList& paths)
{
    if (paths.isEmpty())
        return; // the choice was left
    m_list->clear();
    for (const QString& path : paths) {
        const QStringList files = recordsOf({path});
        for (const QString& file : files)
            addFile(file, paths.size() > 1 || !QFileInfo(path).isDir());
        if (files.isEmpty())
            m_summary->setText(QStringLiteral("В папке %1 нет записей.").arg(path));
    }
    for (int column = 0; column < m_list->columnCount(); ++column)
        m_list->resizeColumnToContents(column);
    if (m_list->selectedItems().isEmpty() && m_list->topLevelItemCount() > 0)
        m_list->topLevelItem(0)->setSelected(true); // the newest
}

void ReportWindow::addFile(const QString& path, bool chosen)
{
    const RecordFile head = readHead(path);
    const bool record = head.kind != RecordFile::Foreign;
    auto* item =
        new QTreeWidgetItem(m_list, {head.start.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")),
                                     head.program.isEmpty() ? QFileInfo(path).fileName() : head.program,
                                     head.welder, record ? head.kindText() : head.troubleLines().value(0)});
    item->setData(0, fileRole, path);
    item->setSelected(chosen && record);
}

void ReportWindow::readChosen()
{
    m_view.runs.clear();
    QStringList refused;
    for (int row = 0; row < m_list->topLevelItemCount(); ++row) {
        if (!m_list->topLevelItem(row)->isSelected())
            continue;
        const RecordFile run = readRecord(m_list->topLevelItem(row)->data(0, fileRole).toString());
        if (run.samples() > 0)
            m_view.runs << run;
        else
            refused << QFileInfo(run.file).fileName() + QStringLiteral(" — ") +
                           run.troubleLines().join(QStringLiteral("; "));
    }
    draw();
    if (!refused.isEmpty())
        m_summary->setText(m_summary->text() + QStringLiteral("\nНе показано: ") +
                           refused.join(QLatin1Char('\n')));
}

void ReportWindow::draw()
{
    const bool paths = m_view.hasPath();
    m_path->setEnabled(paths);
    m_view.overPath = m_view.overPath && (paths || m_view.runs.isEmpty());
    m_time->setChecked(!m_view.overPath);
    m_path->setChecked(m_view.overPath);
    QVector<int> kinds;
    for (int kind = 0; kind < m_kinds.size(); ++kind) {
        m_kinds[kind]->setVisible(isDrawable(chartKinds()[kind], m_view));
        if (!m_hidden.contains(kind))
            kinds << kind;
    }
    m_charts->show(m_view, kinds);
    tell();
}

void ReportWindow::tell()
{
    m_findings->clear();
    int spans = 0;
    QStringList lines;
    for (int r = 0; r < m_view.runs.size(); ++r) {
        const RecordFile& run = m_view.runs[r];
        lines << QStringLiteral("%1: %2, %3, %4 с")
                     .arg(r + 1)
                     .arg(QFileInfo(run.file).fileName(), run.welder, numberText(run.duration(), 1));
        const auto* x = m_view.overPath ? run.column(QStringLiteral("Путь")) : &run.columns[0];
        for (const Deviation& span : deviations(run, m_view.percent)) {
            auto* item = new QTreeWidgetItem(m_findings,
                                             QStringList(QString::number(r + 1)) + deviationCells(run, span));
            if (x && qIsFinite((*x)[span.first]) && qIsFinite((*x)[span.last]))
                item->setData(0, rangeRole, QPointF((*x)[span.first], (*x)[span.last]));
            ++spans;
        }
        for (const QString& trouble : run.troubleLines())
            new QTreeWidgetItem(m_findings, {QString::number(r + 1), trouble});
    }
    for (int column = 0; column < m_findings->columnCount(); ++column)
        m_findings->resizeColumnToContents(column);
    lines << QStringLiteral("Вне допуска ±%1 %: %2").arg(numberText(m_view.percent, 1)).arg(spans);
    m_summary->setText(m_view.runs.isEmpty() ? QStringLiteral("Выберите запись в списке слева.")
                                             : lines.join(QLatin1Char('\n')));
}

void ReportWindow::savePdf()
{
    if (m_view.runs.isEmpty())
        return;
    const QFileInfo first(m_view.runs.first().file);
    QString file = QFileDialog::getSaveFileName(this, QStringLiteral("Отчёт"),
                                                first.path() + QLatin1Char('/') + first.completeBaseName() +
                                                    QStringLiteral(".pdf"),
                                                QStringLiteral("PDF (*.pdf)"));
    QString why;
    if (!file.isEmpty() && !writeReport(file, m_view, &why))
        QMessageBox::warning(this, QStringLiteral("Отчёт"),
                             QStringLiteral("%1 не записан: %2").arg(file, why));
}
