#include "demo/Initials.h"

#include "dataset/QelError.h"
#include "demo/DemoFiles.h"

using namespace Qt::StringLiterals;

namespace Qel::Demo {

Initials::Initials()
{
    for (const QStringList &record :
         ReadDemoFile(u"initials.csv"_s, {u"CHAR"_s, u"PINYIN"_s, u"WUBI"_s}))
        keys_.insert(record[0].front(), {record[1].front(), record[2].front()});
    for (const QStringList &record : ReadDemoFile(u"readings.csv"_s, {u"WORD"_s, u"PINYIN"_s}))
        readings_.push_back({record[0], record[1]});
}

QString Initials::Convert(QStringView name, QChar Keys::*key) const
{
    QString initials;
    initials.reserve(name.size());
    for (const QChar character : name) {
        const auto found = keys_.constFind(character);
        if (found != keys_.cend())
            initials += (*found).*key;
        else if (character.script() == QChar::Script_Han)
            throw EQelError(u"没有汉字“%1”的拼音和五笔首码"_s.arg(character));
        else
            initials += character.toUpper();
    }
    return initials;
}

QString Initials::Pinyin(QStringView name) const
{
    QString initials = Convert(name, &Keys::pinyin);
    for (const Reading &reading : readings_) {
        for (qsizetype at = name.indexOf(reading.word); at >= 0;
             at = name.indexOf(reading.word, at + reading.word.size()))
            initials.replace(at, reading.pinyin.size(), reading.pinyin);
    }
    return initials;
}

QString Initials::Wubi(QStringView name) const
{
    return Convert(name, &Keys::wubi);
}

} // namespace Qel::Demo
