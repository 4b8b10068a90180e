#include "demo/Products.h"

#include "dataset/QelError.h"
#include "demo/DemoFiles.h"
#include "demo/Random.h"

#include <QSet>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel::Demo {

namespace {

constexpr int Products = 5000;
constexpr int DeletedProducts = 15;
constexpr int DisabledEvery = 61;    ///< one product of so many is disabled
constexpr int TradeNamePercent = 30; ///< so many medicines of a maker have a trade name
constexpr int MakersPerMedicine = 9; ///< at most

/// A dosage form, from forms.csv.
struct Form
{
    QString prefix; ///< of the generic name
    QString suffix;
    QString doseName;
    QString piece; ///< what is counted in a pack
    QStringList packs;
    QString unit;
    QStringList wraps;
    int fenLow = 0; ///< price of a piece, 1/100 yuan
    int fenHigh = 0;
};

/// A medicine in one dosage form.
struct Drug
{
    QString name;
    const Form *form = nullptr;
    QStringList specs; ///< strengths; places of origin of a herb
    bool herb = false;
    int pieceFen = 0;
    std::vector<const Organisation *> makers;
};

struct Product
{
    const Drug *drug = nullptr;
    const Organisation *maker = nullptr;
    QString spec;
    QString pack;
    QString tradeName;

    QString Key() const
    {
        return drug->name + drug->form->doseName + maker->id + tradeName + spec + pack;
    }
};

class Maker
{
public:
    Maker(const std::vector<Organisation> &organisations, const Initials &initials)
        : initials_(initials)
    {
        ReadForms();
        ReadDrugs(organisations);
    }

    TableRows Make()
    {
        for (int made = 0; made < Products + DeletedProducts;) {
            const Drug &drug = drugs_[static_cast<std::size_t>(round_++) % drugs_.size()];
            const Product product = Draw(drug);
            if (taken_.contains(product.Key()))
                continue;
            taken_.insert(product.Key());
            Add(product, made < Products ? State::Live : State::Deleted);
            ++made;
        }
        return std::move(rows_);
    }

private:
    void ReadForms()
    {
        for (const QStringList &record :
             ReadDemoFile(u"forms.csv"_s,
                          {u"FORM"_s, u"PREFIX"_s, u"SUFFIX"_s, u"DOSE_NAME"_s, u"PIECE"_s,
                           u"PACKS"_s, u"UNIT_NAME"_s, u"WRAPS"_s, u"FEN_LOW"_s, u"FEN_HIGH"_s}))
            forms_.insert(record[0],
                          {record[1], record[2], record[3], record[4], record[5].split(u' '),
                           record[6], record[7].split(u' '), record[8].toInt(), record[9].toInt()});
    }

    void ReadDrugs(const std::vector<Organisation> &organisations)
    {
        std::vector<const Organisation *> herbMakers;
        std::vector<const Organisation *> drugMakers;
        for (const Organisation &organisation : organisations) {
            if (organisation.type == OrgType::Manufacturer && organisation.InUse())
                (organisation.MakesHerbs() ? herbMakers : drugMakers).push_back(&organisation);
        }
        for (const QStringList &record :
             ReadDemoFile(u"drugs.csv"_s, {u"NAME"_s, u"FORM"_s, u"SPECS"_s})) {
            const auto form = forms_.constFind(record[1]);
            if (form == forms_.cend())
                throw EQelError(u"示例数据中没有剂型“%1”"_s.arg(record[1]));
            Drug drug{form->prefix + record[0] + form->suffix,
                      &*form,
                      record[2].split(u' '),
                      record[1] == u"饮片"_s,
                      0,
                      {}};
            // Most prices lie near the lower end.
            const int range = form->fenHigh - form->fenLow;
            drug.pieceFen =
                form->fenLow + std::min(random_.Below(range + 1), random_.Below(range + 1)) / 2;
            for (int maker = random_.Between(3, MakersPerMedicine); maker > 0; --maker)
                drug.makers.push_back(random_.Pick(drug.herb ? herbMakers : drugMakers));
            drugs_.push_back(std::move(drug));
        }
        random_.Shuffle(drugs_);
    }

    Product Draw(const Drug &drug)
    {
        Product product{&drug,
                        random_.Pick(drug.makers),
                        random_.Pick(drug.specs),
                        random_.Pick(drug.form->packs),
                        {}};
        if (drug.herb) {
            product.tradeName = product.spec; // the place of origin
            product.spec = random_.Pick(words_[u"饮片等级"_s]);
        } else {
            product.tradeName = TradeName(drug, *product.maker);
        }
        return product;
    }

    /// A maker sells all packs of a medicine under one name, or under none.
    QString TradeName(const Drug &drug, const Organisation &maker)
    {
        QString &name = tradeNames_[drug.name + maker.id];
        if (!name.isNull())
            return name;
        name = u""_s;
        if (random_.Chance(TradeNamePercent)) {
            const QString &tail = random_.Pick(words_[u"商品名尾"_s]);
            name = random_.Pick(words_[u"商品名头"_s]) + tail;
        }
        return name;
    }

    static QString FullSpec(const Product &product)
    {
        const Form &form = *product.drug->form;
        if (product.drug->herb)
            return product.spec + u" 1kg/袋"_s;
        const bool single = product.pack == u"1"_s && form.piece == form.unit;
        return single ? product.spec + u'/' + form.unit
                      : product.spec + u'×' + product.pack + form.piece + u'/' + form.unit;
    }

    void Add(const Product &product, State state)
    {
        const Drug &drug = *product.drug;
        const Form &form = *drug.form;
        const qsizetype index = rows_.Count();
        const int fen = drug.pieceFen * product.pack.toInt() * random_.Between(80, 125) / 100;
        rows_.Add({MakeId(IdSeries::Product, index),
                   (drug.herb ? u"ZY"_s : u"YP"_s) + Padded(index + 1, 6),
                   drug.herb ? u"02"_s : u"01"_s,
                   drug.name,
                   initials_.Pinyin(drug.name),
                   initials_.Wubi(drug.name),
                   product.tradeName,
                   initials_.Pinyin(product.tradeName),
                   initials_.Wubi(product.tradeName),
                   form.doseName,
                   product.spec,
                   FullSpec(product),
                   random_.Pick(form.wraps),
                   form.unit,
                   random_.Pick(words_[u"质量层次"_s]),
                   Yuan(std::max(fen, 10)),
                   product.maker->id,
                   product.maker->name,
                   product.maker->abbr,
                   initials_.Pinyin(product.maker->name),
                   index % DisabledEvery == DisabledEvery - 1 ? u"0"_s : u"1"_s},
                  state);
    }

    const Initials &initials_;
    WordLists words_;
    Random random_{u"BAS_PRODUCT"};
    QHash<QString, Form> forms_;
    std::vector<Drug> drugs_;
    std::size_t round_ = 0;
    QHash<QString, QString> tradeNames_; ///< by generic name and maker
    QSet<QString> taken_;
    TableRows rows_{
        u"BAS_PRODUCT"_s,
        {u"PRODUCT_ID"_s,      u"PRODUCT_SERIAL"_s,  u"PRODUCT_CLASS"_s, u"PRODUCT_NAME"_s,
         u"PRODUCT_NAME_PY"_s, u"PRODUCT_NAME_WB"_s, u"TRADE_NAME"_s,    u"TRADE_NAME_PY"_s,
         u"TRADE_NAME_WB"_s,   u"DOSE_NAME"_s,       u"SPEC"_s,          u"FULL_SPEC"_s,
         u"WRAP_NAME"_s,       u"UNIT_NAME"_s,       u"PRODUCT_LEVEL"_s, u"RETAIL_PRICE"_s,
         u"FACTORY_ID"_s,      u"FACTORY_NAME"_s,    u"FACTORY_ABBR"_s,  u"FACTORY_NAME_PY"_s,
         u"ENABLE_FLAG"_s}};
};

} // namespace

TableRows ProductRows(const std::vector<Organisation> &organisations, const Initials &initials)
{
    return Maker(organisations, initials).Make();
}

} // namespace Qel::Demo
