#pragma once

#include <QLocale>
#include <QString>
#include <QStringList>

#include <cmath>

namespace plant {

// Numbers of events and blocks stay far below this; a longer one is a slip of the pen.
constexpr int maxNcDigits = 8;

inline bool isLetter(QChar c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

inline bool isDigit(QChar c)
{
    return c >= '0' && c <= '9';
}

// Goes over one line from the left. Blanks between the parts carry no meaning. After the first failure it
// stands at the end of the line, so that readers need not look at each step whether the one before went well.
class NcScanner
{
public:
    explicit NcScanner(const QStringRef& line)
        : m_text(line)
    {}

    void fail(const QString& text)
    {
        if (m_error.isEmpty())
            m_error = text;
        m_pos = m_text.size();
    }

    const QString& error() const { return m_error; }

    bool atEnd()
    {
        skipBlanks();
        return m_pos == m_text.size();
    }

    // The next character without taking it, null at the end.
    QChar peek() { return atEnd() ? QChar() : m_text.at(m_pos); }

    bool take(char c)
    {
        if (peek() != QLatin1Char(c))
            return false;
        ++m_pos;
        return true;
    }

    bool takeWord(const char* word)
    {
        if (peek().toUpper() != QLatin1Char(*word)) // most lines are settled by a word's first letter
            return false;
        const QLatin1String wanted(word);
        if (!m_text.mid(m_pos, wanted.size()).startsWith(wanted, Qt::CaseInsensitive))
            return false;
        m_pos += wanted.size();
        return true;
    }

    void expect(char c)
    {
        if (!take(c))
            fail(QStringLiteral("'%1' expected before '%2'").arg(QLatin1Char(c)).arg(rest()));
    }

    void expectEnd()
    {
        if (!atEnd())
            fail(QStringLiteral("'%1' is too much").arg(rest()));
    }

    int integer()
    {
        skipBlanks();
        const int start = m_pos;
        while (m_pos < m_text.size() && isDigit(m_text.at(m_pos)))
            ++m_pos;
        const int digits = m_pos - start;
        if (digits == 0 || digits > maxNcDigits) {
            fail(QStringLiteral("whole number expected before '%1'").arg(m_text.mid(start)));
            return 0;
        }
        return m_text.mid(start, digits).toInt();
    }

    double number()
    {
        skipBlanks();
        const int start = m_pos;
        const bool negative = takeSign();
        Decimal decimal;
        takeDigits(decimal);
        if (m_pos < m_text.size() && m_text.at(m_pos) == '.') {
            ++m_pos;
            const int whole = decimal.digits;
            takeDigits(decimal);
            decimal.decimals = decimal.digits - whole;
        }
        if (decimal.digits == 0) {
            fail(QStringLiteral("number expected before '%1'").arg(m_text.mid(start)));
            return 0;
        }
        if (!takeExponent() && decimal.digits <= Decimal::exactDigits)
            return negative ? -decimal.value() : decimal.value();
        bool ok = false;
        const double value = QLocale::c().toDouble(m_text.mid(start, m_pos - start), &ok);
        if (!ok || !std::isfinite(value)) {
            fail(QStringLiteral("'%1' is no number").arg(m_text.mid(start, m_pos - start)));
            return 0;
        }
        return value;
    }

    // The name of an axis word up to its "=": letters and at most one digit, "U1". Empty, and nothing is
    // taken, when what follows is no such word.
    QString axisWord()
    {
        skipBlanks();
        int end = m_pos;
        while (end < m_text.size() && isLetter(m_text.at(end)))
            ++end;
        if (end == m_pos)
            return {};
        if (end < m_text.size() && isDigit(m_text.at(end)))
            ++end;
        const int nameEnd = end;
        while (end < m_text.size() && m_text.at(end).isSpace())
            ++end;
        if (end == m_text.size() || m_text.at(end) != '=')
            return {};
        const QString name = upper(m_text.mid(m_pos, nameEnd - m_pos));
        m_pos = end + 1;
        return name;
    }

    QString upTo(char c)
    {
        const int end = m_text.indexOf(QLatin1Char(c), m_pos);
        if (end < 0) {
            fail(QStringLiteral("'%1' expected after '%2'").arg(QLatin1Char(c)).arg(rest()));
            return {};
        }
        const QString text = m_text.mid(m_pos, end - m_pos).trimmed().toString();
        m_pos = end + 1;
        return text;
    }

    QString rest() const { return m_text.mid(m_pos).trimmed().toString(); }

private:
    void skipBlanks()
    {
        while (m_pos < m_text.size() && m_text.at(m_pos).isSpace())
            ++m_pos;
    }

    // True for a minus.
    bool takeSign()
    {
        if (m_pos == m_text.size() || (m_text.at(m_pos) != '-' && m_text.at(m_pos) != '+'))
            return false;
        return m_text.at(m_pos++) == '-';
    }

    // A number of so few digits is one division of two whole numbers that a double holds, which rounds as the
    // long way does.
    struct Decimal
    {
        static constexpr int exactDigits = 15;
        qint64 all = 0; // the digits without the point
        int digits = 0;
        int decimals = 0; // of them
        double value() const
        {
            double power = 1;
            for (int i = 0; i < decimals; ++i)
                power *= 10;
            return double(all) / power;
        }
    };

    void takeDigits(Decimal& decimal)
    {
        for (; m_pos < m_text.size() && isDigit(m_text.at(m_pos)); ++m_pos) {
            if (++decimal.digits <= Decimal::exactDigits)
                decimal.all = decimal.all * 10 + (m_text.at(m_pos).unicode() - '0');
        }
    }

    bool takeExponent()
    {
        const int start = m_pos;
        if (m_pos == m_text.size() || m_text.at(m_pos).toUpper() != 'E')
            return false;
        ++m_pos;
        takeSign();
        Decimal exponent;
        takeDigits(exponent);
        if (exponent.digits == 0)
            m_pos = start;
        return exponent.digits > 0;
    }

    // In upper case. Words of one letter are most of a program: they share their texts.
    static QString upper(const QStringRef& name)
    {
        static const QStringList letters =
            QStringLiteral("A B C D E F G H I J K L M N O P Q R S T U V W X Y Z").split(' ');
        return name.size() == 1 ? letters.at(name.at(0).toUpper().unicode() - 'A')
                                : name.toString().toUpper();
    }

    const QStringRef m_text;
    int m_pos = 0;
    QString m_error;
};

} // namespace plant
