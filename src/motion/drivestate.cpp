#include "drivestate.h"

#include <algorithm>
#include <iterator>

namespace {

struct StateText
{
    int code;
    const char* text; // UTF-8
};

constexpr StateText driveStates[] = {
#include "drivestates.inc"
};

constexpr bool ascending()
{
    for (std::size_t i = 1; i < std::size(driveStates); ++i) {
        if (driveStates[i - 1].code >= driveStates[i].code)
            return false;
    }
    return true;
}
static_assert(ascending(), "the lookup halves the table");

constexpr const char* virtualStates[] = {
    "Питание всех приводов виртуальной оси выключено",
    "Готовность всех приводов виртуальной оси",
    "Виртуальная ось включена",
    "Ошибка на одном из приводов виртуальной оси",
    "Предупреждение на одном из приводов виртуальной оси",
};

QString unknownState()
{
    return QStringLiteral("Состояние привода неопределено - ошибка связи");
}

} // namespace

QString stateDesc(int code)
{
    const auto* row =
        std::lower_bound(std::begin(driveStates), std::end(driveStates), code,
                         [](const StateText& state, int wanted) { return state.code < wanted; });
    return row != std::end(driveStates) && row->code == code ? QString::fromUtf8(row->text) : unknownState();
}

QString virtualStateDesc(int state)
{
    return state >= 0 && state < int(std::size(virtualStates)) ? QString::fromUtf8(virtualStates[state])
                                                               : unknownState();
}
