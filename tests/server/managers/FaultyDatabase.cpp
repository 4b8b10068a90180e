#include "FaultyDatabase.h"

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

using Break = FaultyDatabase::Break;

class FaultyConnection : public Store::Connection
{
public:
    FaultyConnection(FaultyDatabase &database, std::unique_ptr<Store::Connection> real)
        : database_(database)
        , real_(std::move(real))
    {
    }
    ~FaultyConnection() override { ForgetPrepared(); }
    Q_DISABLE_COPY_MOVE(FaultyConnection)

    Store::Dialect CurrentDialect() const override { return real_->CurrentDialect(); }
    void Execute(QByteArrayView sql) override { Real().Execute(sql); }
    std::unique_ptr<Store::Statement> Prepare(QByteArrayView sql) override
    {
        if (database_.Breaks(Break::InStatement))
            BreakNow();
        return Real().Prepare(sql);
    }
    std::unique_ptr<Store::Statement> PrepareQuery(QByteArrayView sql) override
    {
        return Real().PrepareQuery(sql);
    }
    qint64 ChangedRows() const override { return real_->ChangedRows(); }
    bool IsAtRest() const override { return !broken_ && real_->IsAtRest(); }
    void StopWhen(std::function<bool()> condition) override
    {
        real_->StopWhen(std::move(condition));
    }
    void Begin(Scope scope) override
    {
        depth_ = Real().IsAtRest() ? 1 : depth_ + 1;
        Real().Begin(scope);
    }
    void Commit() override
    {
        const bool isWhole = depth_ == 1;
        if (isWhole && database_.Breaks(Break::BeforeCommit)) {
            real_->Rollback();
            BreakNow();
        }
        Real().Commit();
        --depth_;
        if (!isWhole)
            return;
        database_.CountCommit();
        if (database_.Breaks(Break::AfterCommit))
            BreakNow();
    }
    void Rollback() noexcept override
    {
        real_->Rollback();
        --depth_;
    }

private:
    Store::Connection &Real()
    {
        if (broken_)
            BreakNow();
        return *real_;
    }
    [[noreturn]] void BreakNow()
    {
        broken_ = true;
        throw Store::EStoreError(Store::EStoreError::Kind::Lost, u"connection lost"_s);
    }

    FaultyDatabase &database_;
    std::unique_ptr<Store::Connection> real_;
    bool broken_ = false;
    int depth_ = 0; ///< of transactions, parts included
};

} // namespace

std::unique_ptr<Store::Connection> FaultyDatabase::OpenWriter()
{
    ++opened_;
    return std::make_unique<FaultyConnection>(*this, real_.OpenWriter());
}

} // namespace Qel
