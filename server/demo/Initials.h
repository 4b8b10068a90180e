#pragma once

#include <QHash>
#include <QString>

#include <vector>

namespace Qel::Demo {

/// The initials by which operators find names: of every Chinese character one capital letter,
/// every other character as it is, letters in capitals. As long as the name.
class Initials
{
public:
    Initials();

    /// First letters of the pinyin readings. Throws EQelError for a character without one.
    QString Pinyin(QStringView name) const;
    /// First keys in wubi 86. Throws likewise.
    QString Wubi(QStringView name) const;

private:
    struct Keys
    {
        QChar pinyin;
        QChar wubi;
    };

    /// A word in which characters are read otherwise than usual.
    struct Reading
    {
        QString word;
        QString pinyin;
    };

    QString Convert(QStringView name, QChar Keys::*key) const;

    QHash<QChar, Keys> keys_;
    std::vector<Reading> readings_;
};

} // namespace Qel::Demo
