#include "sql/Compile.h"

#include <QTest>

#include <utility>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

/// BAS_ORG has a column that clients may not read, SRV_TOKEN nothing that they may.
constexpr char Columns[] = "TABLE,COLUMN,TYPE,SIZE,KEY,NOT_NULL,DEFAULT,READABLE,MEANING\n"
                           "BAS_ORG,ID,TEXT,10,1,1,,1,\n"
                           "BAS_ORG,SECRET,TEXT,10,,0,,0,\n"
                           "BAS_ORG,NAME,TEXT,50,,0,,1,\n"
                           "BAS_REGION,REGION_ID,TEXT,10,1,1,,1,\n"
                           "SRV_TOKEN,HASH,TEXT,64,1,1,,0,\n";

/// Queries of one column with a value (%v) at every place that the grammar has for one.
const QList<QByteArray> ValuePlaces{
    "SELECT %v FROM BAS_ORG A",
    "SELECT %v AS C FROM BAS_ORG A",
    "SELECT DISTINCT %v FROM BAS_ORG A",
    "SELECT (%v) FROM BAS_ORG A",
    "SELECT NVL(%v,'x') FROM BAS_ORG A",
    "SELECT NVL(A.NAME,%v) FROM BAS_ORG A",
    "SELECT NVL2(A.NAME,A.ID,%v) FROM BAS_ORG A",
    "SELECT DECODE(%v,'1','2') FROM BAS_ORG A",
    "SELECT DECODE(A.ID,%v,'2') FROM BAS_ORG A",
    "SELECT DECODE(A.ID,'1',%v) FROM BAS_ORG A",
    "SELECT DECODE(A.ID,'1','2',%v) FROM BAS_ORG A",
    "SELECT SUBSTR(%v,1,2) FROM BAS_ORG A",
    "SELECT SUBSTR('abc',%v) FROM BAS_ORG A",
    "SELECT UPPER(TRIM(%v)) FROM BAS_ORG A",
    "SELECT TO_CHAR(%v) FROM BAS_ORG A",
    "SELECT TO_DATE(%v,'YYYY-MM-DD') FROM BAS_ORG A",
    "SELECT CAST(%v AS VARCHAR2(9)) FROM BAS_ORG A",
    "SELECT CASE WHEN %v='1' THEN 'a' END FROM BAS_ORG A",
    "SELECT CASE WHEN A.ID='1' THEN %v END FROM BAS_ORG A",
    "SELECT CASE WHEN A.ID='1' THEN 'a' ELSE %v END FROM BAS_ORG A",
    "SELECT CASE %v WHEN '1' THEN 'a' END FROM BAS_ORG A",
    "SELECT CASE A.ID WHEN %v THEN 'a' END FROM BAS_ORG A",
    "SELECT 'x'||%v FROM BAS_ORG A",
    "SELECT %v+1 FROM BAS_ORG A",
    "SELECT 1/%v FROM BAS_ORG A",
    "SELECT - %v FROM BAS_ORG A",
    "SELECT MAX(%v) FROM BAS_ORG A",
    "SELECT COUNT(DISTINCT %v) FROM BAS_ORG A",
    "SELECT A.ID FROM BAS_ORG A WHERE %v='1'",
    "SELECT A.ID FROM BAS_ORG A WHERE '1'<%v",
    "SELECT A.ID FROM BAS_ORG A WHERE A.ID='1' AND (A.ID='2' OR NOT %v>='3')",
    "SELECT A.ID FROM BAS_ORG A WHERE %v IS NULL",
    "SELECT A.ID FROM BAS_ORG A WHERE %v LIKE 'x%'",
    "SELECT A.ID FROM BAS_ORG A WHERE A.NAME NOT LIKE %v",
    "SELECT A.ID FROM BAS_ORG A WHERE %v BETWEEN '1' AND '2'",
    "SELECT A.ID FROM BAS_ORG A WHERE A.ID BETWEEN %v AND '2'",
    "SELECT A.ID FROM BAS_ORG A WHERE A.ID NOT BETWEEN '1' AND %v",
    "SELECT A.ID FROM BAS_ORG A WHERE %v IN ('1','2')",
    "SELECT A.ID FROM BAS_ORG A WHERE A.ID IN ('1',%v,'2')",
    "SELECT A.ID FROM BAS_ORG A WHERE %v NOT IN (SELECT REGION_ID FROM BAS_REGION)",
    "SELECT A.ID FROM BAS_ORG A, BAS_REGION R WHERE R.REGION_ID(+)=%v",
    "SELECT COUNT(*) FROM BAS_ORG A GROUP BY %v",
    "SELECT COUNT(*) FROM BAS_ORG A GROUP BY A.ID HAVING %v='1'",
    "SELECT COUNT(*) FROM BAS_ORG A HAVING MIN(%v)='1'",
    "SELECT A.ID FROM BAS_ORG A ORDER BY %v",
    "SELECT A.ID FROM BAS_ORG A ORDER BY A.NAME DESC NULLS FIRST,%v DESC",
    // of a query around, and of a derived table
    "SELECT (SELECT MAX(R.REGION_ID) FROM BAS_REGION R WHERE R.REGION_ID=%v) FROM BAS_ORG A",
    "SELECT A.ID FROM BAS_ORG A WHERE EXISTS (SELECT 1 FROM BAS_REGION R WHERE R.REGION_ID=%v)",
    "SELECT A.ID FROM BAS_ORG A WHERE A.ID IN (SELECT %v FROM BAS_REGION R)",
    "SELECT %v FROM (SELECT * FROM BAS_ORG) A",
    "SELECT %v FROM (SELECT A.* FROM BAS_ORG A ORDER BY A.NAME) A WHERE ROWNUM <= 5",
};

/// What a query may stand in (%q); each of these is a query of one column again.
const QList<QByteArray> QueryPlaces{
    "SELECT ID FROM BAS_ORG WHERE ID IN (%q)",
    "SELECT ID FROM BAS_ORG WHERE NOT EXISTS (%q)",
    "SELECT COUNT(*) FROM (%q) Z",
    "SELECT NVL2((%q),'x','y') FROM BAS_ORG",
    "SELECT O.ID FROM BAS_ORG O, (%q) Z WHERE O.NAME='x'",
    "SELECT ID FROM BAS_ORG ORDER BY (%q) DESC",
};

struct Forbidden
{
    QByteArray text;
    QByteArray code;
};
using ForbiddenList = QList<Forbidden>;

ForbiddenList All(const QByteArray &code, const QList<QByteArray> &texts)
{
    ForbiddenList list;
    for (const QByteArray &text : texts)
        list << Forbidden{text, code};
    return list;
}

const ForbiddenList &Values()
{
    static const ForbiddenList values =
        All("sql.unknown_column", {"\"UPPER\"",
                                   "A.B.ID",
                                   "SECRET",
                                   "A.SECRET",
                                   "a.secret",
                                   "\"SECRET\"",
                                   "A.\"SECRET\"",
                                   "\"A.SECRET\"",
                                   "NVL(A.SECRET,'x')",
                                   "Q.SECRET",
                                   "SRV_TOKEN.HASH",
                                   "HASH",
                                   "Q.ID",
                                   "ROWID",
                                   "A.ROWID",
                                   "OID",
                                   "A.CTID",
                                   "XMIN",
                                   "TABLEOID",
                                   "USER",
                                   "UID",
                                   "CURRENT_USER",
                                   "SESSION_USER",
                                   "CURRENT_DATE",
                                   "CURRENT_TIMESTAMP",
                                   "SYSTIMESTAMP",
                                   "LEVEL",
                                   "A.LEVEL",
                                   "TRUE",
                                   "DEFAULT",
                                   "A.ID\u00a0",
                                   "A.ID\u200b",
                                   "\uff33\uff25\uff23",
                                   "\uff07x\uff07",
                                   "\u2018x\u2019",
                                   "\u201cID\u201d",
                                   "\u202eDI.A",
                                   "A.ID\u2028",
                                   "\ufeffID",
                                   "\u037e"}) +
        All("sql.function", {"pg_sleep(30)",
                             "set_config('statement_timeout','0',false)",
                             "pg_terminate_backend(1)",
                             "pg_cancel_backend(1)",
                             "current_setting('x')",
                             "pg_read_file('/etc/passwd')",
                             "pg_ls_dir('.')",
                             "lo_import('x')",
                             "lo_get(1)",
                             "dblink('x','y')",
                             "pg_advisory_lock(1)",
                             "query_to_xml('SELECT 1',true,true,'')",
                             "version()",
                             "txid_current()",
                             "nextval('x')",
                             "repeat('x',1000000000)",
                             "random()",
                             "load_extension('x')",
                             "randomblob(1000000000)",
                             "zeroblob(1)",
                             "readfile('x')",
                             "writefile('x','y')",
                             "printf('%s',A.ID)",
                             "quote(A.ID)",
                             "hex(A.ID)",
                             "char(39)",
                             "chr(39)",
                             "sqlite_version()",
                             "fts3_tokenizer('x')",
                             "SYS_CONTEXT('USERENV','HOST')",
                             "USERENV('SID')",
                             "HTTPURITYPE('http://x')",
                             "REGEXP_LIKE(A.ID,'(a+)+')",
                             "LISTAGG(A.ID)",
                             "COALESCE(A.ID,'x')",
                             "NULLIF(A.ID,'x')",
                             "QEL_UPPER(A.ID)",
                             "QEL_DATE(A.ID)",
                             "ROW_NUMBER()",
                             "VALUES(1)",
                             "UPPER()",
                             "NVL(A.ID)",
                             "SUBSTR(DISTINCT A.ID,1)",
                             "UPPER(*)",
                             "COUNT(A.ID) OVER ()",
                             "pg_sleep (30)",
                             "Pg_SlEeP(30)",
                             "NVL(pg_sleep(30),'x')"}) +
        All("sql.syntax", {"CAST(A.ID AS regclass)",
                           "CAST(A.ID AS OID)",
                           "CAST(A.ID AS CLOB)",
                           "A.ID::regclass",
                           "UTL_HTTP.REQUEST('http://x')",
                           "DBMS_LOCK.SLEEP(30)",
                           "pg_catalog.pg_sleep(30)",
                           "\"pg_sleep\"(30)",
                           "E'x'",
                           "N'x'",
                           "X'00'",
                           "B'1'",
                           "q'[x]'",
                           "U&'\\0041'",
                           "$$x$$",
                           "$1",
                           ":x",
                           "?",
                           "@x",
                           "#x",
                           "`ID`",
                           "[ID]",
                           "\\",
                           "'x",
                           "\"x",
                           "\"\"",
                           "{fn NOW()}",
                           "A.ID@remote",
                           "A.ID/**/",
                           "/* x */A.ID",
                           "A.ID--",
                           "(SELECT 1 FROM BAS_ORG UNION SELECT HASH FROM SRV_TOKEN)",
                           "(WITH X AS (SELECT 1 FROM BAS_ORG) SELECT 1 FROM X)",
                           "(TABLE BAS_ORG)",
                           "(UPDATE BAS_ORG SET ID='1')",
                           "(DELETE FROM BAS_ORG)",
                           "(SELECT 1)",
                           "()",
                           "A.ID COLLATE X",
                           "A.ID AT TIME ZONE 'x'",
                           "EXTRACT(YEAR FROM A.ID)",
                           "ARRAY[1]",
                           "ROW(1,2).f",
                           "(A.ID,A.ID)",
                           "A.",
                           ".ID",
                           "A..ID",
                           "1A",
                           "0x10",
                           "A.ID\v",
                           "A.ID\f",
                           "\x01",
                           "\x7f"}) +
        ForbiddenList{{QByteArray("A.ID\0", 5), "sql.syntax"},
                      {QByteArray("'\0'", 3), "sql.syntax"},
                      {"'\xff'", "sql.syntax"},
                      {"'\xc0\xa7'", "sql.syntax"},     // an overlong apostrophe
                      {"'\xed\xa0\x80'", "sql.syntax"}, // half a surrogate pair
                      {"'\xe8\x8d'", "sql.syntax"},     // a cut character
                      {"\xbf'", "sql.syntax"}};
    return values;
}

/// Queries with a table (%t) at every place that the grammar has for one.
const QList<QByteArray> TablePlaces{
    "SELECT 'x' FROM %t",
    "SELECT 'x' FROM %t T",
    "SELECT B.ID FROM BAS_ORG B, %t",
    "SELECT B.ID FROM %t, BAS_ORG B WHERE B.ID='1'",
};

const ForbiddenList &Tables()
{
    static const ForbiddenList tables =
        All("sql.unknown_table", {"SRV_TOKEN",
                                  "srv_token",
                                  "\"SRV_TOKEN\"",
                                  "SRV_IDEMPOTENCY",
                                  "sqlite_master",
                                  "\"sqlite_master\"",
                                  "sqlite_schema",
                                  "sqlite_temp_master",
                                  "sqlite_sequence",
                                  "pg_class",
                                  "pg_authid",
                                  "pg_stat_activity",
                                  "pg_catalog.pg_class",
                                  "information_schema.tables",
                                  "public.BAS_ORG",
                                  "\"public\".\"BAS_ORG\"",
                                  "main.BAS_ORG",
                                  "temp.BAS_ORG",
                                  "DUAL",
                                  "USER_TABLES",
                                  "V$SESSION",
                                  "\"BAS_ORG \"",
                                  "\"BAS_ORG;\"",
                                  "\"BAS_ORG\"\"\"",
                                  "\uff22\uff21\uff33_ORG",
                                  "BAS_ORG\u200b",
                                  "BAS_ORG\u202e",
                                  "NOWHERE"}) +
        All("sql.syntax", {"BAS_ORG@remote",
                           "pg_ls_dir('.')",
                           "generate_series(1,1000000000)",
                           "json_each('[]')",
                           "pragma_table_info('BAS_ORG')",
                           "TABLE(X)",
                           "LATERAL (SELECT 1 FROM BAS_ORG)",
                           "(VALUES (1))",
                           "(SRV_TOKEN)",
                           "(BAS_ORG)",
                           "BAS_ORG X JOIN SRV_TOKEN Y ON 1=1",
                           "BAS_ORG NATURAL JOIN SRV_TOKEN",
                           "BAS_ORG AS OF TIMESTAMP X",
                           "BAS_ORG PARTITION (P1)",
                           "BAS_ORG TABLESAMPLE SYSTEM (1)",
                           "'BAS_ORG'",
                           "BAS_ORG/**/",
                           "BAS_ORG--",
                           "(SELECT * FROM BAS_ORG UNION ALL SELECT * FROM SRV_TOKEN)",
                           "(WITH X AS (SELECT 1 FROM BAS_ORG) SELECT * FROM X)",
                           "(DELETE FROM BAS_ORG)",
                           "[BAS_ORG]",
                           "`BAS_ORG`",
                           "$$BAS_ORG$$",
                           ":x",
                           "BAS_ORG\\"});
    return tables;
}

const ForbiddenList &Tails()
{
    static const ForbiddenList tails = All("sql.syntax", {" UNION SELECT HASH FROM SRV_TOKEN",
                                                          " UNION ALL SELECT ID FROM BAS_ORG",
                                                          " INTERSECT SELECT ID FROM BAS_ORG",
                                                          " MINUS SELECT ID FROM BAS_ORG",
                                                          " EXCEPT SELECT ID FROM BAS_ORG",
                                                          " FOR UPDATE",
                                                          " FOR UPDATE NOWAIT",
                                                          " LIMIT 1",
                                                          " OFFSET 5",
                                                          " FETCH FIRST 1 ROWS ONLY",
                                                          " CONNECT BY PRIOR ID=NAME",
                                                          " START WITH ID='1'",
                                                          " INTO OUTFILE '/tmp/x'",
                                                          " WINDOW W AS ()",
                                                          " RETURNING ID",
                                                          " -- x",
                                                          " /* x */",
                                                          " \\g",
                                                          " )",
                                                          " ,",
                                                          " WITH READ ONLY",
                                                          " OPTION (x)"});
    return tails;
}

/// Each query in every place for one, and again.
QList<QByteArray> Nested(const QByteArray &query, int depth)
{
    QList<QByteArray> all{query};
    if (depth > 0) {
        for (const QByteArray &place : QueryPlaces)
            all += Nested(QByteArray(place).replace("%q", query), depth - 1);
    }
    return all;
}

} // namespace

/// What clients may not write is refused at every place and depth, each time by its code.
class ForbiddenTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        const QStringList failures = std::exchange(failures_, {});
        QVERIFY2(failures.isEmpty(), qPrintable(failures.mid(0, 10).join(u'\n')));
    }

    /// Else the other tests would see the places refused and not what stands in them.
    void WhatIsAllowedIsAcceptedInEachPlace()
    {
        for (const QByteArray &place : ValuePlaces)
            ExpectEverywhere(QByteArray(place).replace("%v", "A.ID"), "", 2);
        for (const QByteArray &place : TablePlaces)
            ExpectEverywhere(QByteArray(place).replace("%t", "BAS_REGION"), "", 2);
        QVERIFY(examined_ > 1'500);
    }

    void NoForbiddenValueInAnyPlace()
    {
        for (const QByteArray &place : ValuePlaces)
            for (const Forbidden &value : Values())
                ExpectEverywhere(QByteArray(place).replace("%v", value.text), value.code, 1);
        QVERIFY(examined_ > 40'000);
    }

    void NoForbiddenTableInAnyPlace()
    {
        for (const QByteArray &place : TablePlaces)
            for (const Forbidden &table : Tables())
                ExpectEverywhere(QByteArray(place).replace("%t", table.text), table.code, 2);
    }

    void NothingBehindAQuery()
    {
        for (const QByteArray &place : ValuePlaces)
            for (const Forbidden &tail : Tails())
                ExpectEverywhere(QByteArray(place).replace("%v", "A.ID") + tail.text, tail.code, 1);
    }

    void NoSecondStatement()
    {
        for (const QByteArray &place : ValuePlaces) {
            const QByteArray query = QByteArray(place).replace("%v", "A.ID");
            for (const char *second : {"DELETE FROM BAS_ORG", "SELECT ID FROM BAS_ORG", ";", "X"}) {
                Expect(query + ';' + second, "sql.not_select");
                for (const QByteArray &outer : QueryPlaces) // inside a bracket it has no place
                    Expect(QByteArray(outer).replace("%q", query + ';' + second), "sql.syntax");
            }
            Expect(query + ';', "");
        }
    }

    void NothingButSelect()
    {
        for (const char *text : {"",
                                 " ",
                                 ";",
                                 "DELETE FROM BAS_ORG",
                                 "UPDATE BAS_ORG SET ID='1'",
                                 "INSERT INTO BAS_ORG VALUES ('1')",
                                 "MERGE INTO BAS_ORG",
                                 "DROP TABLE BAS_ORG",
                                 "CREATE TABLE X AS SELECT ID FROM BAS_ORG",
                                 "ALTER TABLE BAS_ORG",
                                 "TRUNCATE BAS_ORG",
                                 "WITH X AS (SELECT ID FROM BAS_ORG) SELECT ID FROM X",
                                 "(SELECT ID FROM BAS_ORG)",
                                 "TABLE BAS_ORG",
                                 "VALUES (1)",
                                 "EXPLAIN SELECT ID FROM BAS_ORG",
                                 "EXPLAIN ANALYZE SELECT ID FROM BAS_ORG",
                                 "PREPARE X AS SELECT ID FROM BAS_ORG",
                                 "EXECUTE X",
                                 "DEALLOCATE ALL",
                                 "COPY BAS_ORG TO '/tmp/x'",
                                 "COPY (SELECT ID FROM BAS_ORG) TO STDOUT",
                                 "DECLARE X CURSOR FOR SELECT ID FROM BAS_ORG",
                                 "FETCH ALL FROM X",
                                 "CALL X()",
                                 "DO 'x'",
                                 "BEGIN",
                                 "COMMIT",
                                 "ROLLBACK",
                                 "SAVEPOINT X",
                                 "SET ROLE X",
                                 "RESET ALL",
                                 "SHOW ALL",
                                 "LOCK TABLE BAS_ORG",
                                 "LISTEN X",
                                 "NOTIFY X",
                                 "LOAD 'x'",
                                 "VACUUM",
                                 "VACUUM INTO 'x'",
                                 "ANALYZE",
                                 "REINDEX",
                                 "PRAGMA query_only=0",
                                 "ATTACH 'x' AS Y",
                                 "DETACH Y",
                                 "GRANT ALL ON BAS_ORG TO PUBLIC",
                                 "DISCARD ALL",
                                 "SELECTED ID FROM BAS_ORG",
                                 "'SELECT'",
                                 "\"SELECT\" ID FROM BAS_ORG",
                                 "\ufeffSELECT ID FROM BAS_ORG",
                                 "\uff33ELECT ID FROM BAS_ORG"})
            Expect(text, "sql.not_select");
    }

    void NoStarShowsWhatMayNotBeRead()
    {
        for (const char *text :
             {"SELECT * FROM BAS_ORG", "SELECT A.* FROM BAS_ORG A",
              "SELECT DISTINCT * FROM BAS_ORG", "SELECT * FROM (SELECT * FROM BAS_ORG)",
              "SELECT Z.* FROM (SELECT A.* FROM BAS_ORG A) Z",
              "SELECT * FROM BAS_ORG ORDER BY NAME",
              "SELECT * FROM BAS_ORG WHERE EXISTS (SELECT * FROM BAS_ORG)",
              "SELECT * FROM (SELECT * FROM BAS_ORG ORDER BY NAME) WHERE ROWNUM <= 3"}) {
            for (const auto dialect : {Sql::Dialect::Sqlite, Sql::Dialect::PostgreSql}) {
                const auto query = Sql::Compile(text, catalog_, dialect);
                QCOMPARE(query.fields.size(), 2);
                QCOMPARE(query.fields[0].name, u"ID"_s);
                QCOMPARE(query.fields[1].name, u"NAME"_s);
                for (const std::string &printed : {query.all, query.count, query.Page(10, 0)})
                    QVERIFY2(printed.find("SECRET") == std::string::npos, printed.c_str());
            }
        }
    }

private:
    void ExpectEverywhere(const QByteArray &query, const QByteArray &code, int depth)
    {
        for (const QByteArray &text : Nested(query, depth))
            Expect(text, code);
    }

    /// An empty code: it is accepted.
    void Expect(const QByteArray &text, const QByteArray &code)
    {
        ++examined_;
        for (const auto dialect : {Sql::Dialect::Sqlite, Sql::Dialect::PostgreSql}) {
            QByteArray given;
            try {
                Sql::Compile(text, catalog_, dialect);
            } catch (const Sql::ESqlError &error) {
                given = QByteArray::fromStdString(error.Code());
            }
            if (given != code)
                failures_ << u"“%1” instead of “%2”: %3"_s.arg(
                    QString::fromLatin1(given), QString::fromLatin1(code), QString::fromUtf8(text));
        }
    }

    const Sql::Catalog catalog_ = Sql::Catalog::FromCsv(Columns);
    int examined_ = 0;
    QStringList failures_;
};

QTEST_GUILESS_MAIN(ForbiddenTest)
#include "ForbiddenTest.moc"
