#include "sql/SqlError.h"
#include "store/QueryRunner.h"
#include "support/TestDatabase.h"

#include <QTest>

#include <memory>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

struct Mistake
{
    const char *name;
    QString sql; ///< ^ stands where the mistake begins and is no part of the statement
    QString code;
    QString message;
};

const QList<Mistake> &Mistakes()
{
    const QString syntax = u"sql.syntax"_s;
    static const QList<Mistake> all{
        // words
        {"no columns", u"SELECT ^FROM BAS_ORG"_s, syntax, u"此处不应是“FROM”"_s},
        {"FROM misspelt", u"SELECT ORG_ID FORM ^BAS_ORG"_s, syntax,
         u"此处不应是“BAS_ORG”，应为“FROM”"_s},
        {"no table", u"SELECT ORG_ID FROM ^WHERE ORG_ID='1'"_s, syntax, u"此处不应是“WHERE”"_s},
        {"two commas", u"SELECT ORG_ID,^,ORG_CODE FROM BAS_ORG"_s, syntax, u"此处不应是“,”"_s},
        {"a comma before FROM", u"SELECT ORG_ID, ^from BAS_ORG"_s, syntax, u"此处不应是“FROM”"_s},
        {"BY left out", u"SELECT ORG_ID FROM BAS_ORG ORDER ^ORG_ID"_s, syntax,
         u"此处不应是“ORG_ID”，应为“BY”"_s},
        {"AND left out", u"SELECT ORG_ID FROM BAS_ORG WHERE ORG_ID='1' ^ORG_CODE='2'"_s, syntax,
         u"此处不应是“ORG_CODE”"_s},
        {"two conditions joined twice",
         u"SELECT ORG_ID FROM BAS_ORG WHERE ORG_ID='1' AND ^AND 1=1"_s, syntax,
         u"此处不应是“AND”"_s},
        {"a bracket too many", u"SELECT ORG_ID FROM BAS_ORG WHERE (ORG_ID='1')^)"_s, syntax,
         u"此处不应是“)”"_s},
        {"NULL left out", u"SELECT ORG_ID FROM BAS_ORG WHERE ORG_ID IS NOT ^LIKE"_s, syntax,
         u"此处不应是“LIKE”，应为“NULL”"_s},
        {"a clause of others", u"SELECT ORG_ID FROM BAS_ORG ^UNION SELECT ORG_ID FROM CAT_ORG"_s,
         syntax, u"不支持“UNION”"_s},
        {"a join of others", u"SELECT A.ORG_ID FROM BAS_ORG A ^LEFT JOIN CAT_ORG B ON 1=1"_s,
         syntax, u"不支持“LEFT”"_s},
        // the end
        {"nothing behind SELECT", u"SELECT^"_s, syntax, u"语句没有写完"_s},
        {"nothing behind WHERE", u"SELECT ORG_ID FROM BAS_ORG WHERE^"_s, syntax, u"语句没有写完"_s},
        {"a bracket left open", u"SELECT ORG_ID FROM BAS_ORG WHERE (ORG_ID='1'^"_s, syntax,
         u"语句没有写完，应为“)”"_s},
        {"CASE without END", u"SELECT CASE WHEN ORG_ID='1' THEN 'a' ^FROM BAS_ORG"_s, syntax,
         u"此处不应是“FROM”，应为“END”"_s},
        // characters
        {"a text left open", u"SELECT ORG_ID FROM BAS_ORG WHERE ORG_ID=^'1"_s, syntax,
         u"字符串没有结束的单引号"_s},
        {"a name left open", u"SELECT ^\"ORG_ID FROM BAS_ORG"_s, syntax, u"名称没有结束的双引号"_s},
        {"a comment", u"SELECT ORG_ID ^-- FROM BAS_ORG"_s, syntax, u"语句中不允许注释"_s},
        {"a comment in stars", u"SELECT ORG_ID ^/* */ FROM BAS_ORG"_s, syntax,
         u"语句中不允许注释"_s},
        {"an unknown character", u"SELECT ORG_ID FROM BAS_ORG WHERE ORG_ID=^?"_s, syntax,
         u"不认识的字符“?”"_s},
        {"a number with letters", u"SELECT ^1A FROM BAS_ORG"_s, syntax, u"数字后紧跟着其他字符"_s},
        // kinds
        {"a value as condition", u"SELECT ORG_ID FROM BAS_ORG WHERE ^ORG_ID"_s, syntax,
         u"此处应是条件"_s},
        {"a condition as value", u"SELECT ^(ORG_ID='1') FROM BAS_ORG"_s, syntax,
         u"此处应是值，不是条件"_s},
        {"two columns in IN",
         u"SELECT ORG_ID FROM BAS_ORG WHERE ORG_ID IN (^SELECT ORG_ID,ORG_CODE FROM BAS_ORG)"_s,
         syntax, u"此处的子查询只能有一列"_s},
        {"an aggregate in WHERE", u"SELECT ORG_ID FROM BAS_ORG WHERE ^MAX(ORG_ID)='1'"_s, syntax,
         u"此处不能用汇总函数“MAX”"_s},
        {"an aggregate of what is outside",
         u"SELECT (SELECT ^MAX(A.ORG_ID) FROM CAT_ORG) FROM BAS_ORG A"_s, syntax,
         u"汇总函数“MAX”中没有本查询的列"_s},
        {"an order by a column that is not there", u"SELECT ORG_ID FROM BAS_ORG ORDER BY ^2"_s,
         syntax, u"ORDER BY 的列序号“2”不存在"_s},
        {"outer joins in a circle",
         u"SELECT A.ORG_ID FROM BAS_ORG A,CAT_ORG B WHERE ^A.ORG_ID(+)=B.ORG_ID AND B.ORG_ID(+)=A.ORG_ID"_s,
         syntax, u"外连接（+）互相循环"_s},
        {"a mark in OR",
         u"SELECT A.ORG_ID FROM BAS_ORG A,CAT_ORG B WHERE A.ORG_ID=^B.ORG_ID(+) OR 1=1"_s, syntax,
         u"（+）只能用在 WHERE 中以 AND 相连的简单条件里"_s},
        {"ROWNUM from below", u"SELECT ORG_ID FROM BAS_ORG WHERE ^ROWNUM > 1"_s, syntax,
         u"ROWNUM 只能写成 ROWNUM <= 整数"_s},
        // something else than one SELECT
        {"an update", u"^UPDATE BAS_ORG SET ORG_NAME='x'"_s, u"sql.not_select"_s,
         u"只接受一条 SELECT 语句"_s},
        {"nothing", u"^"_s, u"sql.not_select"_s, u"只接受一条 SELECT 语句"_s},
        {"two statements", u"SELECT ORG_ID FROM BAS_ORG; ^DELETE FROM BAS_ORG"_s,
         u"sql.not_select"_s, u"只接受一条语句"_s},
        // names
        {"an unknown table", u"SELECT * FROM BAS_ORG A, ^BAS_ORGS B"_s, u"sql.unknown_table"_s,
         u"没有表“BAS_ORGS”，或不允许读取"_s},
        {"a table of the server's own", u"SELECT * FROM ^srv_token"_s, u"sql.unknown_table"_s,
         u"没有表“SRV_TOKEN”，或不允许读取"_s},
        {"an unknown table at depth",
         u"SELECT ORG_ID FROM BAS_ORG WHERE EXISTS (SELECT 1 FROM (SELECT * FROM ^NOWHERE))"_s,
         u"sql.unknown_table"_s, u"没有表“NOWHERE”，或不允许读取"_s},
        {"a star of an unknown table", u"SELECT ^B.* FROM BAS_ORG A"_s, u"sql.unknown_table"_s,
         u"没有表“B”"_s},
        {"an unknown column", u"SELECT ORG_ID, ^org_nam FROM BAS_ORG"_s, u"sql.unknown_column"_s,
         u"没有列“ORG_NAM”，或不允许读取"_s},
        {"an unknown column of a table", u"SELECT A.ORG_ID FROM BAS_ORG A ORDER BY ^A.NOTHING"_s,
         u"sql.unknown_column"_s, u"没有列“A.NOTHING”，或不允许读取"_s},
        {"a column of an unknown table", u"SELECT A.ORG_ID FROM BAS_ORG A WHERE ^B.ORG_ID='1'"_s,
         u"sql.unknown_column"_s, u"没有列“B.ORG_ID”，或不允许读取"_s},
        {"a column that a derived table hides",
         u"SELECT ^ORG_CODE FROM (SELECT ORG_ID FROM BAS_ORG)"_s, u"sql.unknown_column"_s,
         u"没有列“ORG_CODE”，或不允许读取"_s},
        {"a text in double quotes", u"SELECT ORG_ID FROM BAS_ORG WHERE ORG_ID=^\"1\""_s,
         u"sql.unknown_column"_s, u"没有列“1”，或不允许读取"_s},
        {"behind Chinese characters, bytes count",
         u"SELECT ORG_ID FROM BAS_ORG WHERE ORG_NAME='药品' AND ^药品='1'"_s,
         u"sql.unknown_column"_s, u"没有列“药品”，或不允许读取"_s},
        {"a name that fits two tables", u"SELECT ^ORG_ID FROM BAS_ORG A, CAT_ORG B"_s,
         u"sql.ambiguous"_s, u"列名“ORG_ID”不唯一"_s},
        {"a label that fits two values",
         u"SELECT ORG_ID AS X,ORG_CODE AS X FROM BAS_ORG ORDER BY ^X"_s, u"sql.ambiguous"_s,
         u"列名“X”不唯一"_s},
        {"an unknown function", u"SELECT ORG_ID FROM BAS_ORG WHERE ^load_extension('x')=1"_s,
         u"sql.function"_s, u"不允许使用函数“LOAD_EXTENSION”"_s},
        {"a function without arguments", u"SELECT ^NVL() FROM BAS_ORG"_s, u"sql.function"_s,
         u"函数“NVL”的参数不对"_s},
        // values
        {"a text that is no number", u"SELECT ORG_ID FROM BAS_ORG WHERE ^'x'=1"_s, u"sql.value"_s,
         u"“x”不是数字"_s},
        {"a day that is none",
         u"SELECT ORG_ID FROM BAS_ORG WHERE LAST_UPDATE > ^to_date('2024-02-30','yyyy-mm-dd')"_s,
         u"sql.value"_s, u"“2024-02-30”不是格式为“yyyy-mm-dd”的日期"_s},
    };
    return all;
}

} // namespace

/// What a client is told of a mistake: the code, the byte where it begins, the words.
class SqlErrorTest : public QObject
{
    Q_OBJECT

private slots:
    void NamesTheMistakeAndItsPlace_data()
    {
        QTest::addColumn<qsizetype>("at");
        for (qsizetype at = 0; at < Mistakes().size(); ++at)
            QTest::newRow(Mistakes()[at].name) << at;
    }

    void NamesTheMistakeAndItsPlace()
    {
        QFETCH(qsizetype, at);
        const Mistake &mistake = Mistakes()[at];
        const QString before = mistake.sql.section(u'^', 0, 0);
        const qsizetype position = before.toUtf8().size();
        Expect(before + mistake.sql.section(u'^', 1), mistake.code, position,
               u"查询语句第 %1 字节处：%2"_s.arg(position).arg(mistake.message));
    }

    /// What only a stored value brings to light is in no one place of the statement.
    void NamesAStoredValueThatIsNoNumber()
    {
        Expect(u"SELECT ORG_ID FROM BAS_ORG WHERE ORG_CODE = 7"_s, u"sql.value"_s, -1,
               u"查询语句：“H200001”不是数字"_s);
        Expect(u"SELECT TO_DATE(ORG_CODE) FROM BAS_ORG WHERE ORG_ID='200002'"_s, u"sql.value"_s, -1,
               u"查询语句：“H200002”不是日期"_s);
        Expect(u"SELECT 1/(ORG_ID-200001) FROM BAS_ORG"_s, u"sql.value"_s, -1,
               u"查询语句：除数为零"_s);
    }

private:
    void Expect(const QString &sql, const QString &code, qsizetype position, const QString &message)
    {
        try {
            runner_.Run(sql, 0, 0);
            QFAIL("was run");
        } catch (const Sql::ESqlError &error) {
            QCOMPARE(QString::fromStdString(error.Code()), code);
            QCOMPARE(error.Message(), message);
            QCOMPARE(error.Position(), position);
        }
    }

    TestDatabase data_;
    std::unique_ptr<Store::Connection> reader_ = data_.Database().OpenReader();
    Store::QueryRunner runner_{*reader_, {}};
};

QTEST_GUILESS_MAIN(SqlErrorTest)
#include "SqlErrorTest.moc"
