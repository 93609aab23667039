#include "autorization_userfile.h"

#include <QIODevice>
#include <QtEndian>

#include <array>

namespace Autorization {

namespace {

constexpr quint16 magic = 0xF4A0;

struct Range
{
    int from, to;

    bool holds(int value) const { return value >= from && value <= to; }
};

constexpr Range loginBytes{3, 63};
constexpr Range nameBytes{1, maxNameBytes};
constexpr Range digestBytes{1, 31};

// False when the file ends before all the words are there.
template <size_t Count>
bool readWords(QIODevice& file, std::array<quint16, Count>* words)
{
    const QByteArray bytes = file.read(2 * Count);
    if (bytes.size() < int(2 * Count))
        return false;
    qFromLittleEndian<quint16>(bytes.constData(), Count, words->data());
    return true;
}

template <size_t Count>
void writeWords(QIODevice& file, const std::array<int, Count>& words)
{
    for (const int word : words) {
        const quint16 bytes = qToLittleEndian(static_cast<quint16>(word));
        file.write(reinterpret_cast<const char*>(&bytes), sizeof bytes);
    }
}

QString text(const QByteArray& field)
{
    return QString::fromUtf8(field.constData());
}

QByteArray field(const QString& text, const Range& range)
{
    QByteArray bytes = cutToBytes(text, range.to).toUtf8();
    // A zero byte may have cut a text short when it was read, and a length out of its range would cost
    // all accounts behind this one.
    return bytes.leftJustified(range.from, '\0');
}

} // namespace

QString cutToBytes(QString text, int bytes)
{
    while (text.toUtf8().size() > bytes)
        text.chop(text.size() > 1 && QChar(text.back()).isLowSurrogate() ? 2 : 1);
    return text;
}

int readUserCount(QIODevice& file)
{
    std::array<quint16, 2> header{};
    if (!readWords(file, &header) || header[0] != magic || header[1] > maxUsersInFile)
        return -1;
    return header[1];
}

UserRead readUser(QIODevice& file, UserRecord* record)
{
    std::array<quint16, 4> head{};
    if (!readWords(file, &head))
        return UserRead::Missing;
    const auto [loginSize, nameSize, digestSize, group] = head;
    if (!loginBytes.holds(loginSize) || !nameBytes.holds(nameSize) || !digestBytes.holds(digestSize))
        return UserRead::Damaged;
    const QByteArray login = file.read(loginSize);
    const QByteArray name = file.read(nameSize);
    const QByteArray digest = file.read(digestSize);
    if (login.size() < loginSize || name.size() < nameSize || digest.size() < digestSize)
        return UserRead::Damaged;
    *record = {text(login), text(name), digest, group};
    return UserRead::Whole;
}

void writeUserCount(QIODevice& file, int count)
{
    writeWords(file, std::array{int(magic), count});
}

void writeUser(QIODevice& file, const UserRecord& record)
{
    const QByteArray login = field(record.login, loginBytes);
    const QByteArray name = field(record.name, nameBytes);
    writeWords(file, std::array{login.size(), name.size(), record.password.size(), record.group});
    file.write(login);
    file.write(name);
    file.write(record.password);
}

} // namespace Autorization
