#include "regime.h"

#include <iterator>

namespace {

constexpr const char* names[] = {
    "Наладка",        "Ручное управление", "Подготовка",        "Форвакуумная откачка",
    "Откачка камеры", "Напуск в камеру",   "Завершение работы",
};
static_assert(std::size(names) == regime::Count);

} // namespace

QString regime::name(Number number)
{
    return QString::fromUtf8(names[number]);
}
