#pragma once

#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace Qel::Faults {

/// Where the databases of the scenarios stand.
class Bed
{
public:
    virtual ~Bed() = default;

    virtual QString Name() const = 0; ///< "sqlite"
    /// The address of a new, empty database in an own folder below `folder`.
    virtual QString NewDatabase(const QString &folder) = 0;
    /// After a server has died: returns when the database works on nothing that it began.
    virtual void WaitUntilQuiet(const QString &url) = 0;

    QString NewFolder() const;

    static std::unique_ptr<Bed> Make(const QString &name);

private:
    QTemporaryDir folder_;
    mutable int folders_ = 0;
};

} // namespace Qel::Faults
