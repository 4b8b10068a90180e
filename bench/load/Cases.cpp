#include "Cases.h"

#include "server/ServerRun.h"
#include "wire/Wire.h"

using namespace Qt::StringLiterals;

namespace Qel::Bench {

LoadCase ScanningPage()
{
    // No index has parts of addresses, so everything is read.
    return {"LIKE that scans, 50 of 100,000",
            u"SELECT A.* FROM (SELECT * FROM BAS_ORG ) A WHERE 1=1  AND ((UPPER(A.ORG_CODE) like"
            " '%中医%') or (UPPER(A.ORG_NAME) like '%中医%') or (UPPER(A.ORG_ABBR) like '%中医%') "
            "or (UPPER(A.ORG_ADDRESS) like '%中医%')) ORDER BY A.ORG_NAME "_s,
            0.85};
}

LoadCase IndexedPage(int region)
{
    return {"indexed condition, 50 of 100",
            u"SELECT * FROM BAS_ORG WHERE REGION_ID='%1' ORDER BY ORG_NAME "_s.arg(region, 6, 10,
                                                                                   QChar(u'0')),
            0.30};
}

QByteArray PageRequest(const QString &sql)
{
    return Request("POST /NorvaneSelectServlet",
                   Wire::Encode(Wire::QueryRequest{sql, 1, PageSize, 2}, Wire::Format::Cbor));
}

StoredRule Change(int client, int number)
{
    constexpr int own = 1'000;
    const int at = client * own + number % own;
    const QByteArray id = QByteArray::number(client) + '-' + QByteArray::number(number);
    return {.orgId = QByteArray::number(200'000 + at),
            .value = QByteArray::number(number / own % 2),
            .logId = QByteArray::number(1'000'000ll * (client + 1) + number),
            .key = "00000000-0000-0000-0000-" + id,
            .bodyHash = QByteArray(64, 'f'),
            .answer = QByteArray(40, 'A')};
}

QByteArray PostRequest(const StoredRule &rule)
{
    const Wire::PostRequest request{u"com.business.admin.RuleManager"_s,
                                    u"insertUpdateOrgRule"_s,
                                    {{{u"ORG_ID"_s, QString::fromLatin1(rule.orgId)},
                                      {u"RULE_CODE"_s, u"ORG_HPTX"_s},
                                      {u"RULE_NAME"_s, u"到货提醒"_s},
                                      {u"RULE_VALUE"_s, QString::fromLatin1(rule.value)},
                                      {u"VALUE_TYPE"_s, u"B"_s},
                                      {u"REMARK"_s, QString()},
                                      {u"ENABLE_FLAG"_s, u"1"_s},
                                      {u"LAST_OPERATE"_s, u"1"_s},
                                      {u"LAST_USER"_s, u"测量员"_s}}}};
    return Request("POST /NorvaneServlet", Wire::Encode(request, Wire::Format::Cbor), rule.key);
}

void ExpectStored(const QByteArray &body)
{
    const Wire::PostAnswer answer = Wire::DecodePostAnswer(body, Wire::Format::Cbor);
    if (answer.rows.size() != 1 || answer.rows[0].code != u"1"_s)
        qFatal("the server did not store the row");
}

} // namespace Qel::Bench
