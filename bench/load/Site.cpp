#include "Site.h"

#include "server/Organisations.h"
#include "server/ServerRun.h"
#include "store/Database.h"
#include "store/Schema.h"
#include "store/Statistics.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace Qel::Bench {

namespace {

/// The one that the posts change, of every organisation.
void FillRules(Store::Connection &connection)
{
    QByteArray id;
    int at = 0;
    connection.InsertRows("UNI_ORG_RULE",
                          "ORG_ID, RULE_CODE, RULE_NAME, RULE_VALUE, VALUE_TYPE, LAST_UPDATE",
                          [&](QList<QByteArrayView> &row) {
                              if (at == OrganisationCount)
                                  return false;
                              id = QByteArray::number(200'000 + at++);
                              row = {id, "ORG_HPTX", "到货提醒", "2", "B", "2026-01-01 08:00:00"};
                              return true;
                          });
}

void Fill(const QString &url)
{
    const auto connection = Store::Database::Open(url)->OpenWriter();
    Store::CreateSchema(*connection);
    {
        Store::Transaction transaction(*connection);
        FillOrganisations(*connection, OrganisationCount);
        FillRules(*connection);
        AddOperator(*connection);
        transaction.Commit();
    }
    Store::UpdateStatistics(*connection);
}

} // namespace

Site::Site(Kind kind)
{
    if (kind == Kind::Postgres) {
        cluster_ = std::make_unique<Cluster>();
        served_ = cluster_->NewDatabase(u"served"_s);
        Fill(served_);
        copy_ = cluster_->NewDatabase(u"copy"_s, u"served"_s);
        return;
    }
    const QString file = folder_.filePath(u"served.sqlite"_s);
    const QString copied = folder_.filePath(u"copy.sqlite"_s);
    served_ = u"sqlite:"_s + file;
    copy_ = u"sqlite:"_s + copied;
    Fill(served_);
    QFile::copy(file, copied);
}

} // namespace Qel::Bench
