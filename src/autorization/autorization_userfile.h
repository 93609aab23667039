#pragma once

#include <QByteArray>
#include <QString>

class QIODevice;

// The user file "/home/oper/bin/users.bin". All integers are u16, little-endian.
//
//   header   0  magic 0xF4A0        each user   0  bytes of login, 3 to 63
//            2  users, 0 to 1023                2  bytes of name, 1 to 127
//                                               4  bytes of password digest, 1 to 31
//                                               6  group id
//                                               8  login, name (UTF-8, no terminator), digest (raw)
namespace Autorization {

constexpr int maxUsersInFile = 1023;
constexpr int maxNameBytes = 127;

struct UserRecord
{
    QString login;
    QString name;
    QByteArray password; // digest
    int group = -1;
};

enum class UserRead {
    Whole,
    Missing, // the file ends before or in the head
    Damaged  // a length out of its range, or a field cut short
};

// The number of users that follow, -1 for a header that is short, foreign or out of range.
int readUserCount(QIODevice& file);
// `text` without the characters at its end that would take it beyond `bytes` bytes of UTF-8.
QString cutToBytes(QString text, int bytes);

// A zero byte in a text ends that text; the bytes behind it are passed over.
UserRead readUser(QIODevice& file, UserRecord* record);

void writeUserCount(QIODevice& file, int count);
// Texts are written so that they can be read back: cut to the most, filled with zero bytes to the least.
void writeUser(QIODevice& file, const UserRecord& record);

} // namespace Autorization
