#include "plantpicture.h"

#include <QPainter>
#include <QPixmapCache>

#include <iterator>

namespace {

constexpr QSize scene(1290,
                      815);  // the console's diagram is 900 wide, all places are its own; then the machine
constexpr int nameSize = 24; // px of the scene
constexpr QColor gas(0, 174, 224);
constexpr QColor still(190, 194, 206);
constexpr QColor good(34, 160, 70);
constexpr QColor moving(230, 180, 0);
constexpr QColor bad(210, 30, 30);

struct Place
{
    const char* name; // as the installation tells it
    const char* stem; // of its pictures
    QPoint at;        // centre
    QPoint text;      // centre of its name
};

const Place devices[] = {
    {"vp1", "VT", {232, 388}, {302, 366}},  {"nd1", "ND", {232, 473}, {320, 410}},
    {"vp2", "vv", {140, 562}, {196, 552}},  {"nz1", "NZ", {140, 634}, {200, 640}},
    {"vp7", "vh", {84, 690}, {84, 732}},    {"nl1", "NL", {140, 746}, {200, 746}},
    {"vp3", "vv", {520, 430}, {574, 430}},  {"nz2", "NZ", {520, 634}, {464, 634}},
    {"vp6", "vh", {464, 690}, {464, 732}},  {"nl2", "NL", {520, 746}, {464, 764}},
    {"vp5", "vv", {630, 430}, {684, 444}},  {"vp4", "vv", {846, 266}, {808, 222}},
    {"vp8", "vv", {740, 266}, {702, 222}},  {"vpt", "vh", {126, 56}, {126, 14}},
    {"tmn", "TMN", {220, 56}, {220, 14}},   {"ve1", "VE", {370, 56}, {340, 14}},
    {"nw2", "NW2", {822, 470}, {822, 516}},
};

struct Pipe
{
    const char* devices; // parted by blanks; gas flows while one of them stands open
    QVector<QPoint> points;
};

const Pipe pipes[] = {
    {"vpt", {{78, 56}, {220, 56}}},
    {"ve1", {{220, 56}, {400, 56}}},
    {"vp1", {{140, 330}, {140, 388}, {232, 388}, {232, 430}}},
    {"vp2", {{190, 500}, {140, 500}, {140, 634}}},
    {"vp2 vp7", {{140, 634}, {140, 804}}},
    {"vp7", {{30, 690}, {140, 690}}},
    {"vp3", {{520, 330}, {520, 540}}},
    {"vp5", {{630, 342}, {630, 540}, {520, 540}}},
    {"vp3 vp5 vp6", {{520, 540}, {520, 804}}},
    {"vp6", {{410, 690}, {520, 690}}},
    {"vp4", {{660, 140}, {846, 140}, {846, 330}}},
    {"vp8", {{660, 190}, {740, 190}, {740, 320}}},
};

struct Gauge
{
    const char* name;
    const char* caption;
    QRect at;
    QPoint tap; // where it measures
};

const Gauge gauges[] = {
    {"pt1", "PT1", {222, 576, 200, 44}, {140, 598}}, {"pt2", "PT2", {294, 468, 200, 44}, {270, 490}},
    {"pt3", "PT3", {606, 558, 200, 44}, {520, 580}}, {"pt4", "PT4", {680, 364, 200, 44}, {630, 386}},
    {"pt5", "PT5 камера", {114, 150, 290, 64}, {}},  {"pt6", "PT6 пушка", {500, 34, 280, 44}, {460, 56}},
};

QColor stateColour(const QString& word)
{
    if (word == QLatin1String("on") || word == QLatin1String("running"))
        return good;
    if (word.startsWith(QLatin1String("going")))
        return moving;
    return word == QLatin1String("error") || word == QLatin1String("nodata") ? bad : still;
}

// The console's own picture of a device in that state.
QPixmap sprite(const char* stem, const QString& word)
{
    const char* const state = word == QLatin1String("on")                                         ? "1"
                              : word.startsWith(QLatin1String("going"))                           ? "23"
                              : word == QLatin1String("error") || word == QLatin1String("nodata") ? "4"
                                                                                                  : "0";
    return QPixmap(QStringLiteral(":/images/%1_%2.png").arg(QLatin1String(stem), QLatin1String(state)));
}

QString inWords(const QString& word)
{
    static const QHash<QString, QString> words = {
        {"on", "включены"},          {"off", "выключены"},       {"idle", "бездействие"},
        {"running", "выполнение"},   {"error", "ошибка"},        {"done", "выполнен"},
        {"closed", "закрыта"},       {"open", "открыта"},        {"opening", "открывается"},
        {"closing", "закрывается"},  {"pressed", "прижата"},     {"released", "отжата"},
        {"pressing", "прижимается"}, {"releasing", "отжимается"}};
    return words.value(word, word);
}

QString regimeText(const QString& number)
{
    static const QHash<QString, QString> names = {
        {"0", "Наладка"},           {"1", "Ручное управление"},
        {"2", "Подготовка"},        {"3", "Форвакуумная откачка"},
        {"4", "Откачка камеры"},    {"5", "Напуск в камеру"},
        {"6", "Завершение работы"}, {"abnormal", "Аварийное завершение"}};
    return names.value(number);
}

void setPoints(QPainter* painter, int pixels, bool bold = false)
{
    QFont font = painter->font();
    font.setPixelSize(pixels);
    font.setBold(bold);
    painter->setFont(font);
}

void lamp(QPainter* painter, const QRect& at, const QString& text, const QColor& colour)
{
    painter->setPen(Qt::NoPen);
    painter->setBrush(colour);
    painter->drawRoundedRect(at, 6, 6);
    painter->setPen(colour == bad || colour == good ? Qt::white : Qt::black);
    painter->drawText(at, Qt::AlignCenter, text);
}

} // namespace

PlantPicture::PlantPicture(QWidget* parent)
    : QWidget(parent)
{
    setMinimumSize(scene / 2);
}

void PlantPicture::show(const PlantState& state)
{
    if (state == m_state)
        return;
    m_state = state;
    update();
}

void PlantPicture::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.fillRect(rect(), QColor(255, 255, 225));
    const double scale = std::min(double(width()) / scene.width(), double(height()) / scene.height());
    painter.translate((width() - scene.width() * scale) / 2, (height() - scene.height() * scale) / 2);
    painter.scale(scale, scale);
    if (m_state.isEmpty()) {
        setPoints(&painter, 28);
        painter.drawText(QRect(QPoint(), scene), Qt::AlignCenter, QStringLiteral("Установка не отвечает"));
        return;
    }
    paintPipes(&painter);
    paintDevices(&painter);
    paintMachine(&painter);
}

void PlantPicture::paintPipes(QPainter* painter) const
{
    for (const Pipe& pipe : pipes) {
        bool lit = false;
        for (const QString& device : QString(pipe.devices).split(' '))
            lit = lit || m_state.value(device) == QLatin1String("on");
        painter->setPen(QPen(lit ? gas : still, 12, Qt::SolidLine, Qt::FlatCap, Qt::RoundJoin));
        painter->drawPolyline(pipe.points.data(), pipe.points.size());
    }
    painter->setPen(QPen(Qt::black, 3));
    painter->setBrush(value("vacuum") == QLatin1String("on") ? QColor(160, 255, 255) : QColor(214, 210, 208));
    painter->drawRect(90, 104, 570, 226);
    painter->drawPixmap(QPoint(310, 6), QPixmap(QStringLiteral(":/images/gun.png")));
    if (value("ir").toDouble() > 0 && value("channel3") == QLatin1String("running")) {
        painter->setPen(QPen(bad, 5));
        painter->drawLine(430, 200, 430, 280);
    }
    // The door slides down to open and stands off its seal while its pressing is released.
    const QString door = value("door");
    const int y = door == QLatin1String("closed") ? 90 : door == QLatin1String("open") ? 340 : 215;
    const int x = value("pressing") == QLatin1String("pressed") ? 42 : 30;
    painter->drawPixmap(QRect(x, y, 48, 250), QPixmap(QStringLiteral(":/images/door.png")));
}

void PlantPicture::paintDevices(QPainter* painter)
{
    for (const Place& device : devices) {
        const QPixmap picture = sprite(device.stem, m_state.value(QLatin1String(device.name)));
        painter->drawPixmap(device.at - QPoint(picture.width() / 2, picture.height() / 2), picture);
        setPoints(painter, nameSize, true);
        painter->setPen(Qt::black);
        QRect text(0, 0, 80, 30);
        text.moveCenter(device.text);
        painter->drawText(text, Qt::AlignCenter, QString(device.name).toUpper());
    }
    for (const Gauge& gauge : gauges) {
        painter->setPen(QPen(QColor(30, 35, 70), 3));
        if (!gauge.tap.isNull())
            painter->drawLine(gauge.tap, QPoint(gauge.at.left(), gauge.at.center().y()));
        painter->setPen(Qt::NoPen);
        painter->setBrush(QColor(0, 128, 255));
        painter->drawRoundedRect(gauge.at, 4, 4);
        painter->setPen(Qt::white);
        setPoints(painter, nameSize, true);
        painter->drawText(
            gauge.at, Qt::AlignCenter,
            QStringLiteral("%1  %2").arg(QString::fromUtf8(gauge.caption), value(gauge.name).toUpper()));
    }
    setPoints(painter, nameSize);
    painter->setPen(Qt::black);
    painter->drawText(QRect(294, 428, 220, 34), Qt::AlignLeft,
                      QStringLiteral("масло %1 °C").arg(value("oil")));
}

void PlantPicture::paintMachine(QPainter* painter) const
{
    constexpr int left = 910, wide = 376, high = 44;
    int y = 4;
    const auto line = [&](const QString& text, const QColor& colour) {
        lamp(painter, {left, y, wide, high}, text, colour);
        y += high + 6;
    };
    setPoints(painter, nameSize, true);
    const QString regime = value("regime");
    const QString progress = value("progress");
    line(regimeText(regime), regime == QLatin1String("abnormal") ? bad : stateColour(progress));
    line(QStringLiteral("Режим: ") + inWords(progress), stateColour(progress));
    line(QStringLiteral("Дверь %1, %2").arg(inWords(value("door")), inWords(value("pressing"))), still);
    line(value("alarm") == QLatin1String("on") ? QStringLiteral("Авария: кнопка или трос")
                                               : QStringLiteral("Приводы ") + inWords(value("drives")),
         value("alarm") == QLatin1String("on") ? bad : stateColour(value("drives")));
    for (int channel = 1; channel <= 3; ++channel) {
        const QString word = m_state.value(QStringLiteral("channel%1").arg(channel));
        line(QStringLiteral("Канал %1: %2").arg(channel).arg(inWords(word)), stateColour(word));
    }
    setPoints(painter, nameSize);
    painter->setPen(Qt::black);
    static const char* const axes[] = {"lx", "ly", "a", "b", "c", "d", "u1", "v", "x", "z", "phi", "ir"};
    for (int i = 0; i < int(std::size(axes)); ++i)
        painter->drawText(QRect(left + 8 + (i % 2) * wide / 2, y + 10 + (i / 2) * 42, wide / 2, 40),
                          Qt::AlignVCenter,
                          QStringLiteral("%1 %2").arg(
                              i == 11 ? QStringLiteral("мА") : QString(axes[i]).toUpper(), value(axes[i])));
}
