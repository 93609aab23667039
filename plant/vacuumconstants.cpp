#include "plant/vacuumconstants.h"

#include "plant/vacuumpack.h"

#include <QRegularExpression>
#include <QTextCodec>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace plant {

VacuumConstants::VacuumConstants()
    : m_kvs{
          {1, 2000, 10, 20000, "Давление в магистрали для включения NZ1, Па"},
          {2, 2000, 10, 20000, "Давление в магистрали для включения NZ2, Па"},
          {3, 10, 0.1F, 100, "Давление в насосе для включения ND1, Па"},
          {4, 60, 1, 200, "Предельное давление на выходе ND1, Па"},
          {5, 8, 0.1F, 50, "Давление в камере для открытия VP1, Па"},
          {6, 5000, 1, 20000, "Перепад давления для открытия VP2, Па"},
          {7, 5000, 1, 20000, "Перепад давления для открытия VP3, Па"},
          {8, 5000, 1, 20000, "Перепад давления для открытия VP5, Па"},
          {9, 180, 100, 210, "Рабочая температура масла ND1, °C"},
          {10, 80, 40, 120, "Температура остывшего масла ND1, °C"},
          {11, 3, 0, 100, "Наименьший проток ОЖ W1 (NW2), л/мин"},
          {12, 3, 0, 100, "Наименьший проток ОЖ W2 (ND1), л/мин"},
          {13, 3, 0, 100, "Наименьший проток ОЖ W3 (ND1), л/мин"},
          {14, 3, 0, 100, "Наименьший проток ОЖ W4 (ND1), л/мин"},
          {15, 3, 0, 100, "Наименьший проток ОЖ W5 (ND1), л/мин"},
          {16, 3, 0, 100, "Наименьший проток ОЖ W6 (NZ2), л/мин"},
          {17, 3, 0, 100, "Наименьший проток ОЖ W7 (NL1), л/мин"},
          {18, 70, 30, 95, "Температура ОЖ для отключения насоса, °C"},
      }
    , m_kvk{
          {1, 5, 0.5F, 50, "Конец форвакуумной откачки, Па"},
          {2, 1e-2F, 1e-3F, 1, "Рабочее давление в камере, Па"},
          {3, 0.1F, 1e-3F, 10, "Давление разрешения приводов и спиралей, Па"},
          {4, 9.8e4F, 8e4F, 1e5F, "Атмосфера в камере, Па"},
          {5, 20, 1, 100, "Давление в пушке для включения ТМН, Па"},
          {6, 10, 1, 600, "Выдержка аварийного завершения, с"},
          {7, 300, 10, 3600, "Ожидание выключения приводов при напуске, с"},
      }
{}

double VacuumConstants::value(Owner owner, int id) const
{
    // Both tables are numbered from 1 without a gap.
    return static_cast<double>(table(owner).at(static_cast<std::size_t>(id - 1)).value);
}

QString VacuumConstants::set(Owner owner, const QString& argument)
{
    static const QRegularExpression form(QStringLiteral("\\A(KB[CK]):(\\d{1,9}),([^,]+)\\z"));
    const auto match = form.match(argument);
    if (!match.hasMatch())
        return QStringLiteral("malformed constant");
    if (match.captured(1) != (owner == Owner::Kvs ? QLatin1String("KBC") : QLatin1String("KBK")))
        return QStringLiteral("%1 belongs to the other controller").arg(match.captured(1));
    const int id = match.captured(2).toInt();
    auto& constants = table(owner);
    const auto row =
        std::find_if(constants.begin(), constants.end(), [id](const Constant& c) { return c.id == id; });
    if (row == constants.end())
        return QStringLiteral("no constant %1").arg(id);
    bool ok = false;
    const float wanted = match.captured(3).toFloat(&ok);
    if (!ok || !(wanted >= row->least && wanted <= row->most))
        return QStringLiteral("takes %1 to %2").arg(double(row->least)).arg(double(row->most));
    row->value = wanted;
    return {};
}

QByteArray VacuumConstants::records(Owner owner) const
{
    const QTextCodec* codec = QTextCodec::codecForName("CP1251");
    QByteArray bytes;
    for (const Constant& constant : table(owner)) {
        ConstantRecord record{constant.id, constant.value, {}};
        const QByteArray text = codec->fromUnicode(QString::fromUtf8(constant.text));
        std::memcpy(record.text, text.constData(), std::min(text.size(), int(sizeof record.text) - 1));
        bytes.append(reinterpret_cast<const char*>(&record), sizeof record);
    }
    return bytes;
}

} // namespace plant
