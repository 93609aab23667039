#include "proof.h"

#include "paper.h"
#include "weldproof.h"

#include <QJsonArray>

#include <cmath>

namespace {

constexpr int linesOnPaper = 60; // of one table; the rest is in --json

using Rows = QVector<QStringList>;

struct ProofTable
{
    QString title;
    QStringList head;
    Rows rows;
};

QString fixed(double value, int decimals = 1)
{
    return QString::number(value, 'f', decimals);
}

ProofTable findingTable(const Proof& proof)
{
    ProofTable table{proof.fine() ? QStringLiteral("Замечаний нет") : QStringLiteral("Замечания"),
                     {"№", "Путь, мм", "Что будет"},
                     {}};
    int count = 0;
    for (const auto& [path, text] : proof.findings())
        table.rows.append({QString::number(++count), fixed(path, 2), text});
    return table;
}

ProofTable channelTable(const ProofRun& run)
{
    ProofTable table{QStringLiteral("Время каналов до останова или конца, с"),
                     {"Участок", "Канал 1", "Канал 2", "Канал 3"},
                     {}};
    for (int i = 0; i < run.stages.size(); ++i) {
        QStringList row{QString::number(i + 1)};
        for (const double seconds : run.stages[i].seconds)
            row.append(seconds > 0 ? fixed(seconds, 2) : QStringLiteral("—"));
        table.rows.append(row);
    }
    return table;
}

ProofTable axisTable(const Proof& proof)
{
    ProofTable table{QStringLiteral("Оси, мм (V — градусы)"),
                     {"Ось", "Путь", "От", "До", "Допустимо", "Скорость/мин", "Допустимо"},
                     {}};
    for (auto i = proof.run.axes.cbegin(); i != proof.run.axes.cend(); ++i) {
        const MachineLimits::Axis limit = proof.limits.axes.value(i.key());
        const ProofRun::AxisUse& use = i.value();
        table.rows.append({i.key(), fixed(use.way, 2), fixed(use.least, 2), fixed(use.most, 2),
                           limit.endless ? QStringLiteral("без конца")
                                         : fixed(limit.min, 0) + QStringLiteral(" … ") + fixed(limit.max, 0),
                           fixed(use.feed), fixed(limit.feed, 0)});
    }
    return table;
}

ProofTable energyTable(const Proof& proof)
{
    ProofTable table{QStringLiteral("Энергия при %1 кВ").arg(fixed(proof.limits.voltage, 0)),
                     {"До строки", "Путь, мм", "Время, с", "кДж", "Дж/мм"},
                     {}};
    for (const ProofRun::Laid& laid : proof.run.laid)
        table.rows.append(
            {QString::number(laid.row + 1), fixed(laid.from, 2) + QStringLiteral(" … ") + fixed(laid.to, 2),
             fixed(laid.seconds, 2), fixed(laid.joules / 1000, 2),
             laid.perMillimetre() < 0 ? QStringLiteral("на месте") : fixed(laid.perMillimetre())});
    return table;
}

QVector<ProofTable> tables(const Proof& proof)
{
    return {findingTable(proof), channelTable(proof.run), axisTable(proof), energyTable(proof)};
}

QString summary(const Proof& proof)
{
    return QStringLiteral("Время сварки %1 с; луч и движение расходятся не больше %2 мм (округление чисел "
                          "программ даёт до %3)")
        .arg(fixed(proof.run.seconds), fixed(proof.run.apart, 2), fixed(proof.run.roundedApart, 2));
}

} // namespace

QVector<QPair<double, QString>> Proof::findings() const
{
    QVector<QPair<double, QString>> all;
    for (const WeldDoubt& doubt : doubts)
        all.append({double(doubt.path), doubtText(doubt).mid(3)});
    for (const ProofRun::Trouble& trouble : run.troubles)
        all.append({trouble.path, QStringLiteral("Прогон, %1 с: ").arg(fixed(trouble.time)) + trouble.text});
    return all;
}

Proof proveWeld(const SavedWeld& weld, const MachineLimits& limits)
{
    Proof proof{weld, limits, {}, {}};
    WeldStage stage;
    proof.doubts = weldProof(weld.tables, contourPrograms(weld.tables, stage));
    proof.run = runWeld(weld.tables, limits);
    return proof;
}

QString proofText(const Proof& proof)
{
    QString text = proof.weld.name + '\n' + summary(proof) + '\n';
    for (const ProofTable& table : tables(proof)) {
        text += '\n' + table.title + '\n';
        QVector<int> widths(table.head.size());
        for (const QStringList& row : Rows{table.head} + table.rows) {
            for (int i = 0; i < row.size(); ++i)
                widths[i] = std::max(widths[i], row[i].size());
        }
        for (const QStringList& row : table.rows.isEmpty() ? Rows() : Rows{table.head} + table.rows) {
            QString line;
            for (int i = 0; i < row.size(); ++i)
                line += row[i].leftJustified(widths[i] + 2);
            text += line.trimmed() + '\n';
        }
    }
    return text;
}

QString proofHtml(const Proof& proof)
{
    QString html = QStringLiteral("<p>%1</p>").arg(summary(proof).toHtmlEscaped());
    for (const ProofTable& table : tables(proof)) {
        html += QStringLiteral("<h3>%1</h3>").arg(table.title.toHtmlEscaped());
        if (table.rows.isEmpty())
            continue;
        QVector<QStringList> rows = table.rows.mid(0, linesOnPaper);
        for (QStringList& row : rows) {
            for (QString& cell : row)
                cell = cell.toHtmlEscaped();
        }
        html += Paper::table(table.head, rows);
        if (table.rows.size() > linesOnPaper)
            html += QStringLiteral("<p>Показаны первые %1 строк из %2.</p>")
                        .arg(linesOnPaper)
                        .arg(table.rows.size());
    }
    return html;
}

QJsonObject proofJson(const Proof& proof)
{
    QJsonArray findings, stages, laid;
    QJsonObject axes;
    for (const WeldDoubt& doubt : proof.doubts)
        findings.append(QJsonObject{
            {"path", double(doubt.path)}, {"row", doubt.row + 1}, {"text", doubtText(doubt).mid(3)}});
    for (const ProofRun::Trouble& trouble : proof.run.troubles)
        findings.append(QJsonObject{{"path", trouble.path}, {"time", trouble.time}, {"text", trouble.text}});
    for (const ProofRun::Stage& stage : proof.run.stages)
        stages.append(QJsonArray{stage.seconds[0], stage.seconds[1], stage.seconds[2]});
    for (auto i = proof.run.axes.cbegin(); i != proof.run.axes.cend(); ++i)
        axes[i.key()] =
            QJsonObject{{"way", i->way}, {"least", i->least}, {"most", i->most}, {"feed", i->feed}};
    for (const ProofRun::Laid& one : proof.run.laid)
        laid.append(QJsonObject{{"row", one.row + 1},
                                {"from", one.from},
                                {"to", one.to},
                                {"joules", one.joules},
                                {"way", one.way},
                                {"seconds", one.seconds}});
    return {{"name", proof.weld.name},
            {"fine", proof.fine()},
            {"seconds", proof.run.seconds},
            {"apart", proof.run.apart},
            {"findings", findings},
            {"channels", stages},
            {"axes", axes},
            {"energy", laid}};
}
