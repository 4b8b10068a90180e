#include "SampleDatabase.h"

#include "managers/PostRunner.h"
#include "store/Credentials.h"
#include "store/QueryRunner.h"

#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;

namespace {

/// A line of the first table of the page.
struct RollBack
{
    QString tab;
    QString order;
    QString buyer;
    QString product;
    QString action;
    QString answer;
};

/// What a tab shows, and what its actions post.
struct Tab
{
    QString name;
    QByteArray rows; ///< FROM and WHERE of what it lists; S is the key's table, R the one with
                     ///< ORD_CODE and BUY_ORGID, D the one with PRODUCT_ID
    QByteArray date; ///< of its date filter
    QString key;
};

const QList<Tab> Tabs{
    {u"买方订单回退"_s,
     "TRA_ORDER_ITEM S, TRA_ORDER R, TRA_ORDER_ITEM D WHERE R.ORD_ID = S.ORD_ID AND "
     "D.ORD_ITEM_ID = S.ORD_ITEM_ID",
     "R.ORD_DATE", u"ORD_ITEM_ID"_s},
    {u"买方退货回退"_s,
     "TRA_RETURN S, TRA_SEND R, TRA_SEND D WHERE R.SEND_ID = S.SEND_ID AND D.SEND_ID = S.SEND_ID",
     "S.LAST_UPDATE", u"RETURN_ID"_s},
    {u"买方验收回退"_s,
     "TRA_SEND S, TRA_SEND R, TRA_SEND D WHERE R.SEND_ID = S.SEND_ID AND D.SEND_ID = S.SEND_ID "
     "AND S.SEND_FLAG = '1' AND S.RECEIVE_FLAG = '1'",
     "R.CREATE_DATE", u"SEND_ID"_s},
};

const QHash<QString, QString> MethodOf{
    {u"整单回退"_s, u"DataRollBack"_s},
    {u"明细回退"_s, u"DataRollBack"_s},
    {u"退货记录回退"_s, u"ReturnRollBack"_s},
    {u"验收回退"_s, u"ReceiveRollBack"_s},
};

QString ReadManual()
{
    QFile file(QStringLiteral(QEL_MANUAL));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

const QString Group = u"浙江省卫生系统药品采购集团"_s;
const QString BigSeller = u"广安睿禾医药贸易有限公司"_s;
const QString Seller = u"海口百草园医药销售有限公司"_s;

} // namespace

/// docs/manual/sample-answers.md says what the server does: every record that it names is posted as
/// the screens post it. The steps change the data and run in the page's order.
class SampleAnswersTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        manual_ = ReadManual();
        QVERIFY(!manual_.isEmpty());
        data_ = std::make_unique<SampleDatabase>();
        const QByteArray token = "0123456789abcdef";
        Store::SetToken(*data_->connection, u"admin"_s, token);
        operator_ = *Store::FindOperator(*data_->connection, u"admin"_s, token);
    }

    void RollBackAnswers_data()
    {
        QTest::addColumn<QStringList>("cells");
        int number = 0;
        for (const QString &line : manual_.split(u'\n')) {
            QStringList cells = line.split(u'|');
            for (QString &cell : cells)
                cell = cell.trimmed();
            if (cells.size() == 9 && MethodOf.contains(cells[5]))
                QTest::addRow("%d", ++number) << cells.mid(1, 7);
        }
        QCOMPARE(number, 17);
    }
    void RollBackAnswers()
    {
        QFETCH(QStringList, cells);
        const RollBack row{cells[0], cells[1], cells[2], cells[3], cells[4], cells[5]};
        if (row.answer == u"-2"_s)
            data_->connection->Execute(SellersConfirmation());
        const QString key = KeyOf(row);
        QVERIFY2(!key.isEmpty(), qPrintable(row.order));
        Wire::NamedValues values{{TabOf(row).key, key}};
        if (MethodOf[row.action] == u"DataRollBack"_s)
            values.append({u"ALL_FLAG"_s, row.action == u"整单回退"_s ? u"1"_s : u"0"_s});
        QCOMPARE(Post(u"com.business.rollback.BusDataRollBack"_s, MethodOf[row.action], {values}),
                 row.answer);
    }

    void EveryAnswerOfTheRollBacksIsNamed_data()
    {
        QTest::addColumn<QString>("line");
        for (const char *line :
             {"整单回退 | 1 |", "整单回退 | -1 |", "整单回退 | 0 |", "明细回退 | 1 |",
              "明细回退 | -1 |", "明细回退 | 0 |", "退货记录回退 | 1 |", "退货记录回退 | -1 |",
              "退货记录回退 | -2 |", "退货记录回退 | 0 |", "验收回退 | 1 |", "验收回退 | -1 |",
              "验收回退 | 0 |"})
            QTest::newRow(line) << QString::fromUtf8(line);
    }
    void EveryAnswerOfTheRollBacksIsNamed()
    {
        QFETCH(QString, line);
        QVERIFY(manual_.contains(line));
    }

    void ProductPriceIsSaved()
    {
        QCOMPARE(Post(Prices, SaveProducts, {ProductPrice(u"YP001829"_s)}), u"1"_s);
    }

    void PriceOfProductThatWasMovedOutIsRefused()
    {
        const Wire::NamedValues price = ProductPrice(u"YP002151"_s);
        QCOMPARE(
            Post(u"com.business.admin.Uni_Product"_s, u"move_out_Uni_Product"_s,
                 {{{u"UNION_ID"_s, GroupId(Group)}, {u"PRODUCT_ID"_s, ProductId(u"YP002151"_s)}}}),
            u"1"_s);
        QCOMPARE(Post(Prices, SaveProducts, {price}), u"0"_s);
    }

    void PriceTypeThatBuyersHaveIsNotDeleted()
    {
        QCOMPARE(Post(Prices, SaveTypes, {Deletion(u"二级医院价"_s)}), u"-1"_s);
    }

    void SlotIsNamedOnce()
    {
        const Wire::NamedValues type = Type({}, u"新价格"_s, u"01"_s);
        QCOMPARE(Post(Prices, SaveTypes, {type}), u"1"_s);
        QCOMPARE(Post(Prices, SaveTypes, {type}), u"-1"_s);
    }

    void PriceTypeThatIsGoneIsNotRenamed()
    {
        const QString id = TypeId(Named(u"带量采购价"_s));
        QCOMPARE(Post(Prices, SaveTypes, {Deletion(u"带量采购价"_s)}), u"1"_s);
        QCOMPARE(Post(Prices, SaveTypes, {Type(id, u"新价格"_s, u"06"_s)}), u"0"_s);
    }

    void BuyerGetsPriceTypeInUseOnly()
    {
        QVERIFY(manual_.contains(u"丽水市第三"_s));
        QCOMPARE(Post(Prices, SaveBuyers, {Buyer(TypeId(Named(u"促销价"_s)))}), u"1"_s);
        const QString id = TypeId(Named(u"联盟协议价"_s));
        Wire::NamedValues off = Type(id, u"联盟协议价"_s, u"05"_s, u"0"_s);
        QCOMPARE(Post(Prices, SaveTypes, {off}), u"1"_s);
        QCOMPARE(Post(Prices, SaveBuyers, {Buyer(id)}), u"0"_s);
    }

    void UsersAreMovedInAndOut_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("method");
        QTest::addColumn<QString>("answer");
        QTest::newRow("in") << u"mdm0070"_s << u"insertUniUser"_s << u"1"_s;
        QTest::newRow("in, deleted") << u"llx0800"_s << u"insertUniUser"_s << u"0"_s;
        QTest::newRow("out") << u"lcl0079"_s << u"deleteUniUser"_s << u"1"_s;
    }
    void UsersAreMovedInAndOut()
    {
        QFETCH(QString, code);
        QFETCH(QString, method);
        const QString group = GroupId(Named(u"杭州市医疗机构采购联合体"_s));
        const QString user = data_->Text("SELECT USER_ID FROM USR_USER WHERE USER_CODE = '" +
                                         Named(code).toUtf8() + '\'');
        const bool isMember =
            data_->Number("SELECT COUNT(*) FROM UNI_USER_UNION WHERE LAST_OPERATE <> 'D' AND "
                          "USER_ID = '" +
                          user.toUtf8() + "' AND UNION_ID = '" + group.toUtf8() + '\'') == 1;
        QCOMPARE(isMember, method == u"deleteUniUser"_s);
        QTEST(Post(u"com.business.admin.UniUser"_s, method,
                   {{{u"USER_ID"_s, user}, {u"UNION_ID"_s, group}}}),
              "answer");
    }

    void AnnouncementsAreAnswered_data()
    {
        QTest::addColumn<QString>("line");
        for (const QString &line : manual_.split(u'\n')) {
            if (line.contains(u"（第 21 号） | "_s))
                QTest::newRow(qPrintable(line)) << line;
        }
    }
    void AnnouncementsAreAnswered()
    {
        QFETCH(QString, line);
        const QString title = line.section(u'|', 1, 1).trimmed();
        const QString row = u"FROM SYS_AFFICHE WHERE AFFICHE_TITLE = '"_s + title + u'\'';
        const auto known = ids_.constFind(title); // also of one that is deleted by now
        const QString id = known == ids_.cend() ? data_->Text("SELECT ID " + row.toUtf8()) : *known;
        ids_.insert(title, id);
        QVERIFY(!id.isEmpty());
        Wire::NamedValues values{{u"ID"_s, id}};
        QString method = u"deleteNotic"_s;
        if (line.contains(u"工作简报"_s)) {
            method = u"confirmNotic"_s;
            values.append({u"ENABLE_FLAG"_s, u"1"_s});
        } else if (line.contains(u"修改"_s)) {
            method = u"insertUpdateNotic"_s;
            for (const QString &column : {u"START_DATE"_s, u"END_DATE"_s, u"AFFICHE_TYPE"_s,
                                          u"AFFICHE_TITLE"_s, u"AFFICHE_CONTENT"_s, u"UNION_ID"_s,
                                          u"PUBLIC_FLAG"_s, u"SALER_FLAG"_s, u"BUYER_FLAG"_s})
                values.append({column, data_->Text((u"SELECT "_s + column + u' ' + row).toUtf8())});
            values.append({u"ENABLE_FLAG"_s, u"0"_s});
            if (line.contains(u"before"_s))
                values[2].second = u"2020-01-01"_s;
        }
        QCOMPARE(Post(u"com.notic.NoticManager"_s, method, {values}),
                 line.section(u'|', 3, 3).trimmed());
    }

    void EveryAnswerOfTheAnnouncementsIsNamed()
    {
        for (const QString &line : {u"发布 | 1 |"_s, u"发布公告失败！"_s, u"保存 | 1 |"_s,
                                    u"保存数据失败！"_s, u"删除 | 1 |"_s, u"数据删除失败！"_s})
            QVERIFY2(manual_.contains(line), qPrintable(line));
    }

private:
    const QString Prices = u"com.business.admin.UniPrice"_s;
    const QString SaveProducts = u"insertUpdatePrcUniPriceProduct"_s;
    const QString SaveTypes = u"insertUpdatePrcUniPriceType"_s;
    const QString SaveBuyers = u"insertUpdatePrcUniPriceOrg"_s;

    QString Post(const QString &manager, const QString &method,
                 const QList<Wire::NamedValues> &rows)
    {
        const auto answer =
            Managers::RunPost(*data_->connection, operator_,
                              {.request = {manager, method, rows}, .key = {}, .body = {}});
        return answer.rows.front().code;
    }

    static const Tab &TabOf(const RollBack &row)
    {
        return *std::find_if(Tabs.begin(), Tabs.end(),
                             [&](const Tab &tab) { return tab.name == row.tab; });
    }

    /// Of the one record that the filters of the page and the dates of the last week find, or
    /// found before it was taken back.
    QString KeyOf(const RollBack &row)
    {
        if (const auto known = keys_.constFind(row.order + row.product); known != keys_.cend())
            return *known;
        const Tab &tab = TabOf(row);
        const QByteArray found =
            " FROM " + tab.rows + " AND S.LAST_OPERATE <> 'D' AND R.LAST_OPERATE <> 'D' AND " +
            tab.date + " >= '2026-11-14' AND R.ORD_CODE = '" + row.order.toUtf8() +
            "' AND R.BUY_ORGID = (SELECT ORG_ID FROM BAS_ORG WHERE "
            "ORG_NAME = '" +
            row.buyer.toUtf8() +
            "') AND D.PRODUCT_ID IN (SELECT PRODUCT_ID FROM BAS_PRODUCT "
            "WHERE PRODUCT_NAME = '" +
            row.product.toUtf8() + "')";
        if (data_->Number("SELECT COUNT(*)" + found) != 1)
            return {};
        const QString key = data_->Text("SELECT S." + tab.key.toUtf8() + found);
        keys_.insert(row.order + row.product, key);
        return key;
    }

    QByteArray SellersConfirmation() const
    {
        for (const QString &line : manual_.split(u'\n')) {
            if (line.trimmed().startsWith(u"UPDATE TRA_RETURN"_s))
                return line.trimmed().toUtf8();
        }
        return {};
    }

    /// The name, which the page must hold.
    QString Named(const QString &name) const
    {
        return manual_.contains(name) ? name : u"not in the page: "_s + name;
    }

    QString GroupId(const QString &name)
    {
        return data_->Text("SELECT UNION_ID FROM UNI_UNION WHERE LAST_OPERATE <> 'D' AND "
                           "UNION_NAME = '" +
                           Named(name).toUtf8() + '\'');
    }
    QString OrgId(const QString &name)
    {
        return data_->Text("SELECT ORG_ID FROM BAS_ORG WHERE ORG_NAME = '" + name.toUtf8() + '\'');
    }
    QString TypeId(const QString &name)
    {
        return data_->Text("SELECT PRICE_TYPE_ID FROM PRC_UNI_PRICE_TYPE WHERE UNION_ID = '" +
                           GroupId(Group).toUtf8() + "' AND SALE_ORGID = '" +
                           OrgId(Named(Seller)).toUtf8() + "' AND PRICE_NAME = '" + name.toUtf8() +
                           "' AND LAST_OPERATE <> 'D'");
    }

    QString ProductId(const QString &serial)
    {
        return data_->Text("SELECT PRODUCT_ID FROM BAS_PRODUCT WHERE PRODUCT_SERIAL = '" +
                           Named(serial).toUtf8() + '\'');
    }

    /// A new price for a product of the big seller.
    Wire::NamedValues ProductPrice(const QString &serial)
    {
        const QString product = ProductId(serial);
        const QString seller = OrgId(Named(BigSeller));
        const QString id =
            data_->Text("SELECT PRICE_ID FROM PRC_UNI_PRICE_PRODUCT WHERE "
                        "SALE_ORGID = '" +
                        seller.toUtf8() + "' AND UNION_ID = '" + GroupId(Group).toUtf8() +
                        "' AND PRODUCT_ID = '" + product.toUtf8() + '\'');
        Wire::NamedValues row{{u"PRICE_ID"_s, id},        {u"UNION_ID"_s, GroupId(Group)},
                              {u"SALE_ORGID"_s, seller},  {u"SEND_ORGID"_s, seller},
                              {u"PRODUCT_ID"_s, product}, {u"COST_PRICE"_s, u"12.34"_s}};
        for (int slot = 1; slot <= 9; ++slot)
            row.append({u"PRICE_0%1"_s.arg(slot), u"11.11"_s});
        row.append({u"LAST_OPERATE"_s, u"1"_s});
        row.append({u"LAST_USER"_s, operator_.userName});
        return row;
    }

    Wire::NamedValues Type(const QString &id, const QString &name, const QString &slot,
                           const QString &enabled = u"1"_s, const QString &operation = u"1"_s)
    {
        return {{u"PRICE_TYPE_ID"_s, id},
                {u"UNION_ID"_s, GroupId(Group)},
                {u"SALE_ORGID"_s, OrgId(Named(Seller))},
                {u"PRICE_NAME"_s, name},
                {u"PRICE_FIELD"_s, slot},
                {u"ENABLE_FLAG"_s, enabled},
                {u"LAST_USER"_s, operator_.userCode},
                {u"LAST_OPERATE"_s, operation}};
    }

    Wire::NamedValues Deletion(const QString &name)
    {
        const QString id = TypeId(Named(name));
        const QString slot = data_->Text("SELECT PRICE_FIELD FROM PRC_UNI_PRICE_TYPE WHERE "
                                         "PRICE_TYPE_ID = '" +
                                         id.toUtf8() + '\'');
        return Type(id, u"删除"_s, slot, u"0"_s, u"D"_s);
    }

    Wire::NamedValues Buyer(const QString &type)
    {
        return {{u"BUY_ORGID"_s, OrgId(u"丽水市第三人民医院"_s)},
                {u"SALE_ORGID"_s, OrgId(Named(Seller))},
                {u"UNION_ID"_s, GroupId(Group)},
                {u"PRICE_TYPE_ID"_s, type},
                {u"LAST_USER"_s, operator_.userName}};
    }

    QString manual_;
    std::unique_ptr<SampleDatabase> data_;
    Store::Operator operator_;
    QHash<QString, QString> keys_; ///< by order and product
    QHash<QString, QString> ids_;  ///< of announcements, by title
};

QTEST_GUILESS_MAIN(SampleAnswersTest)
#include "SampleAnswersTest.moc"
