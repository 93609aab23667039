#include "constants.h"

#include "framed.h"
#include "kvscomm.h"
#include "numpad.h"
#include "settings.h"
#include "ui_constants.h"

#include <QDebug>
#include <QHeaderView>

#include <iterator>

namespace {

constexpr double accessCode = 730'592;
constexpr int textSize = 13; // pt

// The widths of the columns as the settings know them.
const char* const widthKeys[] = {"Constants/Width_ID", "Constants/Width_DESC", "Constants/Width_VALUE"};
constexpr int standardWidth = 100; // px
constexpr int headerHeight = 48;   // room for a finger that widens a column

QTableWidgetItem* centred(const QString& text)
{
    auto* const item = new QTableWidgetItem(text);
    QFont font = item->font();
    font.setPointSize(textSize);
    item->setFont(font);
    item->setTextAlignment(Qt::AlignCenter);
    return item;
}

} // namespace

Constants::Constants(KVKTCPthread* kvk, KVSTCPthread* kvs, QWidget* parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::Constants>())
    , m_kvk(kvk)
    , m_kvs(kvs)
{
    m_ui->setupUi(this);
    const Settings settings;
    for (int column = 0; column < int(std::size(widthKeys)); ++column)
        m_ui->twConst->setColumnWidth(column, settings.columnWidth(widthKeys[column], standardWidth));
    m_ui->twConst->horizontalHeader()->setFixedHeight(headerHeight);
    // A description that needs several lines gets them.
    connect(m_ui->twConst->horizontalHeader(), &QHeaderView::sectionResized, m_ui->twConst,
            &QTableView::resizeRowsToContents);

    frameAt(parent->mapToGlobal(QPoint((parent->width() - width()) / 2, 0)),
            QStringLiteral("Параметры системы"), this, parent);
}

Constants::~Constants()
{
    Settings settings;
    for (int column = 0; column < int(std::size(widthKeys)); ++column)
        settings.setValue(QLatin1String(widthKeys[column]), m_ui->twConst->columnWidth(column));
    emit message(QStringLiteral("[I]Закрыто окно параметров системы"), false);
}

void Constants::onConstsReceivedKVK(int)
{
    m_countKVK = showRows(*m_kvk, QStringLiteral("KBK:"), m_countKVK);
}

void Constants::onConstsReceivedKVS(int)
{
    m_countKVS = showRows(*m_kvs, QStringLiteral("KBC:"), m_countKVS);
}

int Constants::showRows(VacuumLink& link, const QString& prefix, int shown)
{
    int count = 0;
    const auto* const records = static_cast<const VacuumConst*>(link.getVacConsts(count));
    QTableWidget* const table = m_ui->twConst;
    const int first = firstRow(prefix);
    while (shown > count)
        table->removeRow(first + --shown);
    while (shown < count)
        table->insertRow(first + shown++);
    for (int i = 0; i < count; ++i) {
        const VacuumConst& record = records[i];
        const QString description = record.description();
        qDebug() << " Consts: " << description << record.id << record.value;

        const int row = first + i;
        const QString id = QString::number(record.id);
        table->setItem(row, 0, centred(prefix + id));
        table->item(row, 0)->setData(Qt::UserRole, id);
        table->setItem(row, 1, new QTableWidgetItem(description));
        table->setItem(row, 2, centred(QString::number(double(record.value), 'g', 6)));
    }
    table->resizeRowsToContents();
    return count;
}

int Constants::firstRow(const QString& prefix) const
{
    const QTableWidget* const table = m_ui->twConst;
    int row = 0;
    while (row < table->rowCount() && !table->item(row, 0)->text().startsWith(prefix))
        ++row;
    return row;
}

void Constants::on_pbChange_clicked()
{
    const int row = m_ui->twConst->currentRow();
    if (row < 0)
        return;
    // The rows may be replaced while the keypad is open: the change is that of the row which was chosen. The
    // controller is known by its place, not by its prefix: both answer in the order in which they are asked.
    const QString name = m_ui->twConst->item(row, 0)->text();
    const QString description = m_ui->twConst->item(row, 1)->text();
    const bool ofKvs = row >= m_countKVK;
    Numpad entry(name, m_ui->pbChange, 0, false, false, false);
    if (entry.exec() != QDialog::Accepted)
        return;
    Numpad code(QStringLiteral("Пароль:"), m_ui->pbChange, 0, true, true, true);
    if (code.exec() != QDialog::Accepted || code.value() != accessCode)
        return;

    emit message(QStringLiteral("[I]Изменено значение параметра %1 (%2), новое значение: %3")
                     .arg(name, description, QString::number(entry.value(), 'g')),
                 true);
    const QString command = QStringLiteral("SET(%1,%2)").arg(name, QString::number(entry.value(), 'f', 7));
    if (ofKvs)
        m_kvs->command(command);
    else
        m_kvk->command(command);
    accept();
}
