#include "Organisations.h"

#include <QByteArrayList>

using namespace Qt::StringLiterals;

namespace Qel::Bench {

void FillOrganisations(Store::Connection &connection, int count)
{
    constexpr int inRegion = 100;
    const int regions = std::max(1, count / inRegion);
    const QStringList kinds{u"人民医院"_s, u"中医院"_s, u"妇幼保健院"_s, u"中心卫生院"_s,
                            u"大药房"_s};
    QByteArrayList texts;
    int at = 0;
    connection.InsertRows("BAS_ORG",
                          "ORG_ID, ORG_CODE, ORG_NAME, ORG_ABBR, ORG_NAME_PY, ORG_TYPE, REGION_ID",
                          [&](QList<QByteArrayView> &row) {
                              if (at == count)
                                  return false;
                              const QByteArray id = QByteArray::number(200'000 + at);
                              const QString &kind = kinds[at % kinds.size()];
                              texts = {id,
                                       'H' + id,
                                       u"第%1区%2"_s.arg(at / 5).arg(kind).toUtf8(),
                                       kind.toUtf8(),
                                       "DQRMYY",
                                       "4",
                                       u"%1"_s.arg(at % regions, 6, 10, QChar(u'0')).toUtf8()};
                              for (qsizetype column = 0; column < texts.size(); ++column)
                                  row[column] = texts[column];
                              ++at;
                              return true;
                          });
}

} // namespace Qel::Bench
